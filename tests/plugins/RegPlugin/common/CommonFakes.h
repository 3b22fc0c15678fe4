// Fakes shared by the provider-framework tests.
#ifndef TESTS_PLUGINS_REGPLUGIN_COMMON_COMMONFAKES_H
#define TESTS_PLUGINS_REGPLUGIN_COMMON_COMMONFAKES_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "../PluginTestSupport.h"
#include "RegPluginConstants.h"
#include "common/PreloadedDataProvider.h"

namespace RegPluginTest {

using RegPlugin::RegistryPackage;
using Lines = std::vector<std::string>;
using Registry = std::vector<std::pair<const wchar_t*, RegistryPackage::Type>>;

// retrieveProperty stores the value from `lazy`, or returns `retrieveResult`.
class FakePackage : public RegistryPackage {
  public:
    explicit FakePackage(const wchar_t* key, Type kind = PRODUCT, int* destroyed = nullptr)
        : RegistryPackage(key, L"FAKE"), destroyed(destroyed) {
        type = kind;
        setProperty(L"name", key);
    }
    ~FakePackage() override {
        if (destroyed)
            ++*destroyed;
    }
    TErrorCode retrieveProperty(const PluginSDK::String& name) override {
        ++retrieveCalls;
        auto found = lazy.find(name);
        return found == lazy.end() ? retrieveResult : setProperty(name, found->second);
    }
    std::map<PluginSDK::String, PluginSDK::String> lazy;
    TErrorCode retrieveResult = REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    int retrieveCalls = 0;
    int* destroyed;
};

// load() adds `registry`, then returns `loadResult`.
class FakePreloadedProvider : public RegPlugin::PreloadedDataProvider {
  public:
    explicit FakePreloadedProvider(Registry r = {}, TErrorCode result = 0)
        : registry(std::move(r)), loadResult(result) {}
    TErrorCode load() override {
        ++loadCalls;
        for (const auto& [key, kind] : registry)
            add(new FakePackage(key, kind));
        return loadResult;
    }
    Registry registry;
    TErrorCode loadResult;
    int loadCalls = 0;
};

inline Lines keysOf(const PluginSDK::StringVector& keys) {
    Lines out;
    for (const PluginSDK::String& key : keys)
        out.push_back(key.toUtf8());
    return out;
}

}  // namespace RegPluginTest

#endif

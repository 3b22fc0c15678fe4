// Fakes shared by the provider-framework tests.
#ifndef TESTS_PLUGINS_REGPLUGIN_COMMON_COMMONFAKES_H
#define TESTS_PLUGINS_REGPLUGIN_COMMON_COMMONFAKES_H

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "RegPluginConstants.h"
#include "common/PreloadedDataProvider.h"
#include "common/UnpreloadedDataProvider.h"
#include "trace/Tracer.h"

namespace PluginSDK {
inline void PrintTo(const String& text, std::ostream* out) {
    *out << '"' << text.toUtf8() << '"';
}
}  // namespace PluginSDK

namespace RegPluginTest {

using RegPlugin::RegistryPackage;
using Lines = std::vector<std::string>;
using Registry = std::vector<std::pair<const wchar_t*, RegistryPackage::Type>>;

// retrieveProperty stores the value from `lazy`, or returns `retrieveResult`.
class FakePackage : public RegistryPackage {
  public:
    explicit FakePackage(const wchar_t* key, Type kind = PRODUCT, int* destroyed = nullptr)
        : RegistryPackage(key, L"FAKE"), m_destroyed(destroyed) {
        type = kind;
        setProperty(L"name", key);
    }
    ~FakePackage() override {
        if (m_destroyed)
            ++*m_destroyed;
    }
    TErrorCode retrieveProperty(const PluginSDK::String& name) override {
        ++retrieveCalls;
        auto found = lazy.find(name);
        return found == lazy.end() ? retrieveResult : setProperty(name, found->second);
    }
    std::map<PluginSDK::String, PluginSDK::String> lazy;
    TErrorCode retrieveResult = REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    int retrieveCalls = 0;

  private:
    int* m_destroyed;
};

// load() adds `registry`, then returns `loadResult`.
class FakePreloadedProvider : public RegPlugin::PreloadedDataProvider {
  public:
    explicit FakePreloadedProvider(Registry r = {}, TErrorCode result = 0)
        : registry(std::move(r)), loadResult(result) {}
    TErrorCode load() override {
        ++loadCalls;
        for (const auto& [key, kind] : registry) {
            add(new FakePackage(key, kind));
        }
        return loadResult;
    }
    Registry registry;
    TErrorCode loadResult;
    int loadCalls = 0;
};

// get() makes a package (keyed `madeKey`, or the asked key) for a key in `registry`.
class FakeUnpreloadedProvider : public RegPlugin::UnpreloadedDataProvider {
  public:
    explicit FakeUnpreloadedProvider(Registry r) : registry(std::move(r)) {}
    TErrorCode enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys) override {
        for (const auto& [key, kind] : registry) {
            if (type == RegistryPackage::ANY || kind == type)
                keys.addString(key);
        }
        return 0;
    }
    TErrorCode get(const PluginSDK::String& key, RegistryPackage*& package) override {
        ++getCalls;
        if (getResult == 0 && holds(key))
            package = new FakePackage(madeKey ? madeKey : key.c_str());
        return getResult;
    }
    TErrorCode exists(const PluginSDK::String& key, bool& found) override {
        ++existsCalls;
        found = holds(key);
        return existsResult;
    }
    bool holds(const PluginSDK::String& key) const {
        for (const auto& entry : registry) {
            if (key == entry.first)
                return true;
        }
        return false;
    }
    Registry registry;
    TErrorCode getResult = 0, existsResult = 0;
    const wchar_t* madeKey = nullptr;
    int getCalls = 0, existsCalls = 0;
};

// getPackage answers `getResult` and `package` (not owned) for every key.
class ScriptedProvider : public RegPlugin::RegistryDataProvider {
  public:
    TErrorCode enumPackages(RegistryPackage::Type, PluginSDK::StringVector&) override { return 0; }
    TErrorCode getPackage(const PluginSDK::String&, RegistryPackage** out) override {
        *out = package;
        return getResult;
    }
    TErrorCode packageExists(const PluginSDK::String&, bool&) override { return 0; }
    TErrorCode getResult = 0;
    RegistryPackage* package = nullptr;
};

// Captures every trace line written during its lifetime.
struct TraceCapture {
    TraceCapture() {
        Tracer::setSink(&sink);
        Tracer::setLevel(3);
    }
    ~TraceCapture() {
        Tracer::setLevel(0);
        Tracer::setSink(nullptr);
    }
    MemoryTraceSink sink;
};

inline Lines keysOf(const PluginSDK::StringVector& keys) {
    Lines out;
    for (const PluginSDK::String& key : keys)
        out.push_back(key.toUtf8());
    return out;
}

}  // namespace RegPluginTest

#endif

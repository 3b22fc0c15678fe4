// Registries of packages with a name, version and vendor, installed in the provider
// factory for the cross-registry queries.
#ifndef TESTS_PLUGINS_REGPLUGIN_CROSS_PACKAGE_CROSSFAKES_H
#define TESTS_PLUGINS_REGPLUGIN_CROSS_PACKAGE_CROSSFAKES_H

#include <string>
#include <utility>
#include <vector>

#include "../../PluginTestSupport.h"
#include "RegPluginConstants.h"
#include "common/PreloadedDataProvider.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPluginTest {

using Factory = RegPlugin::RegistryDataProviderFactory;
using RegPlugin::RegistryPackage;

// One package; a null field is a property the package does not have.
struct Row {
    const wchar_t* key;
    const wchar_t* name;
    const wchar_t* version;
    const wchar_t* vendor;
    const wchar_t* installDir = nullptr;
};

class RowPackage : public RegistryPackage {
  public:
    RowPackage(const Row& row, const wchar_t* tag) : RegistryPackage(row.key, tag) {
        const std::pair<const wchar_t*, const wchar_t*> fields[] = {
            {L"name", row.name},
            {L"version", row.version},
            {L"vendor", row.vendor},
            {L"installDir", row.installDir}};
        for (const auto& [field, value] : fields) {
            if (value != nullptr)
                setProperty(field, value);
        }
    }
    TErrorCode retrieveProperty(const PluginSDK::String&) override { return 0; }
};

// Loads `rows`, then returns `loadResult`; `enumResult`, when set, is what every
// enumeration answers instead.
class RowProvider : public RegPlugin::PreloadedDataProvider {
  public:
    RowProvider(std::vector<Row> rows, const wchar_t* tag, TErrorCode loadResult = 0)
        : m_rows(std::move(rows)), m_tag(tag), m_loadResult(loadResult) {}
    TErrorCode load() override {
        ++loadCalls;
        for (const Row& row : m_rows)
            add(new RowPackage(row, m_tag));
        return m_loadResult;
    }
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys) override {
        if (enumResult != 0)
            return enumResult;
        return PreloadedDataProvider::enumPackages(type, keys);
    }
    int loadCalls = 0;
    TErrorCode enumResult = 0;

  private:
    std::vector<Row> m_rows;
    const wchar_t* m_tag;
    TErrorCode m_loadResult;
};

// Leaves every class of the factory without a provider.
inline void clearFactory() {
    Factory::cleanup();
    for (int which = 0; which < 8; ++which)
        Factory::setDataProvider(static_cast<Factory::DataProviderClass>(which), nullptr);
}

// Installs a registry of `rows` as the provider of `which` and returns it (owned by
// the factory).
inline RowProvider* install(Factory::DataProviderClass which, std::vector<Row> rows,
                            const wchar_t* tag = L"FAKE", TErrorCode loadResult = 0) {
    RowProvider* provider = new RowProvider(std::move(rows), tag, loadResult);
    Factory::setDataProvider(which, provider);
    return provider;
}

inline int matchCountOf(Factory::DataProviderClass which, const wchar_t* key) {
    RegistryPackage* package = nullptr;
    Factory::getDataProvider(which)->getPackage(key, &package);
    return package != nullptr ? package->matchCount : -1;
}

}  // namespace RegPluginTest

#endif

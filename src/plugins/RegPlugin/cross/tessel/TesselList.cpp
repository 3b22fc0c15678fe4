#include "cross/tessel/TesselList.h"

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "cross/tessel/TesselCriteria.h"

namespace RegPlugin {

TesselList::TesselList() = default;

TesselList::~TesselList() = default;

TErrorCode TesselList::enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) {
    TesselDataProvider* provider = TesselCriteria::getProvider();
    REG_TRACE_SCOPE("TesselList::enumPackages(RegistryPackage::Type, PluginSDK::StringVector &)");
    if (provider == nullptr) {
        // Unlike every other List: no catalog is an empty list.
        return PluginSDK::RESULT_OK;
    }
    const wchar_t* name = getProperty(REG_PLUGIN_PROPERTY_NAME);
    bool showUncommitted = false;
    bool showRemoved = false;
    if (TesselCriteria::read(*this, *provider, showUncommitted, showRemoved) !=
        PluginSDK::RESULT_OK) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    if (showUncommitted && showRemoved && name == nullptr) {
        return provider->enumPackages(type, out);
    }

    PluginSDK::StringVector keys;
    TErrorCode rc = provider->enumPackages(type, keys);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    const PluginSDK::String wantedName(name);
    PluginSDK::String packageName;
    for (const PluginSDK::String& key : keys) {
        RegistryPackage* package = nullptr;
        // Every enumerated key is there.
        (void)provider->getPackage(key, &package);
        if (name != nullptr) {
            if (package == nullptr) {
                return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
            }
            rc = package->getProperty(REG_PLUGIN_PROPERTY_FIELD_NAME, packageName);
            if (rc != PluginSDK::RESULT_OK) {
                return rc;
            }
            if (packageName != wantedName) {
                continue;
            }
        }
        bool matches = false;
        rc = provider->checkCriteria(package, &matches, showUncommitted, showRemoved);
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
        if (matches) {
            out.addString(key);
        }
    }
    return rc;
}

}  // namespace RegPlugin

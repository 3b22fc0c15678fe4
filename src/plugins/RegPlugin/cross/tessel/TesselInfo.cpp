#include "cross/tessel/TesselInfo.h"

#include "RegPluginConstants.h"
#include "common/ProviderQueries.h"
#include "cross/tessel/TesselCriteria.h"

namespace RegPlugin {

TesselInfo::TesselInfo() = default;

TesselInfo::~TesselInfo() = default;

TErrorCode TesselInfo::getScalarResult(PluginSDK::String& result) {
    result = static_cast<const wchar_t*>(nullptr);
    TErrorCode rc = validateProperties();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    TesselDataProvider* provider = TesselCriteria::getProvider();
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    bool showUncommitted = false;
    bool showRemoved = false;
    TesselCriteria::read(*this, *provider, showUncommitted, showRemoved);

    const PluginSDK::String key(getProperty(REG_PLUGIN_PROPERTY_CODE));
    const PluginSDK::String field(getProperty(REG_PLUGIN_PROPERTY_FIELD));
    bool found = false;
    // Only the answer counts: a catalog that could not be read holds nothing.
    (void)provider->packageExists(key, found);
    if (!found) {
        return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
    }
    RegistryPackage* package = nullptr;
    rc = provider->getPackage(key, &package);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    bool matches = false;
    rc = provider->checkCriteria(package, &matches, showUncommitted, showRemoved);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    if (!matches) {
        return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
    }
    return package->getProperty(field, result);
}

TErrorCode TesselInfo::validateProperties() {
    return validateCodeAndFieldProperties(*this);
}

}  // namespace RegPlugin

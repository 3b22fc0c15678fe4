#include "cross/tessel/TesselExists.h"

#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "common/ProviderQueries.h"
#include "cross/tessel/TesselCriteria.h"

namespace RegPlugin {

TesselExists::TesselExists() = default;

TesselExists::~TesselExists() = default;

TErrorCode TesselExists::getScalarResult(PluginSDK::String& result) {
    result = static_cast<const wchar_t*>(nullptr);
    TErrorCode rc = validateProperties();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    TesselDataProvider* provider = TesselCriteria::getProvider();
    // The scope's text has always been this one, unclosed parenthesis included.
    REG_TRACE_SCOPE("TesselList::getScalarResult(PluginSDK::String &");
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    bool showUncommitted = false;
    bool showRemoved = false;
    // Not checked: getProperties has no failure for a well-formed rule.
    TesselCriteria::read(*this, *provider, showUncommitted, showRemoved);
    // Read, but no part of the answer.
    (void)getProperty(REG_PLUGIN_PROPERTY_NAME);

    const PluginSDK::String key(getProperty(REG_PLUGIN_PROPERTY_CODE));
    bool found = false;
    rc = provider->packageExists(key, found);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    if (found) {
        RegistryPackage* package = nullptr;
        rc = provider->getPackage(key, &package);
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
        rc = provider->checkCriteria(package, &found, showUncommitted, showRemoved);
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
    }
    result = found ? PLUGIN_RESULT_TRUE : PLUGIN_RESULT_FALSE;
    return PluginSDK::RESULT_OK;
}

TErrorCode TesselExists::validateProperties() {
    return validateCodeProperty(*this);
}

}  // namespace RegPlugin

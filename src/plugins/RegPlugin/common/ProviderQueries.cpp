#include "common/ProviderQueries.h"

#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"

namespace RegPlugin {

TErrorCode validateCodeProperty(const PluginSDK::Expression& expression) {
    if (expression.getProperty(REG_PLUGIN_PROPERTY_CODE) == nullptr) {
        return REG_PLUGIN_ERROR_UNSPECIFIED_CODE;
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode validateCodeAndFieldProperties(const PluginSDK::Expression& expression) {
    const TErrorCode rc = validateCodeProperty(expression);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    if (expression.getProperty(REG_PLUGIN_PROPERTY_FIELD) == nullptr) {
        return REG_PLUGIN_ERROR_UNSPECIFIED_FIELD;
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode queryProductExists(const PluginSDK::Expression& expression,
                              RegistryDataProviderFactory::DataProviderClass which,
                              PluginSDK::String& result) {
    const PluginSDK::String key(expression.getProperty(REG_PLUGIN_PROPERTY_CODE));
    bool found = false;
    RegistryDataProvider* provider = RegistryDataProviderFactory::getDataProvider(which);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    const TErrorCode rc = provider->packageExists(key, found);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    result = found ? PLUGIN_RESULT_TRUE : PLUGIN_RESULT_FALSE;
    return PluginSDK::RESULT_OK;
}

TErrorCode queryProductInfo(const PluginSDK::Expression& expression,
                            RegistryDataProviderFactory::DataProviderClass which,
                            bool filteredPassThrough, PluginSDK::String& result) {
    const PluginSDK::String key(expression.getProperty(REG_PLUGIN_PROPERTY_CODE));
    const PluginSDK::String field(expression.getProperty(REG_PLUGIN_PROPERTY_FIELD));
    RegistryDataProvider* provider = RegistryDataProviderFactory::getDataProvider(which);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    RegistryPackage* package = nullptr;
    const TErrorCode rc = provider->getPackage(key, &package);
    if (rc != PluginSDK::RESULT_OK) {
        const bool passedOn = rc == REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST ||
                              rc == REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
        if (!filteredPassThrough || passedOn) {
            return rc;
        }
    }
    if (package == nullptr) {
        return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    }
    return package->getProperty(field, result);
}

TErrorCode queryProductList(RegistryDataProviderFactory::DataProviderClass which,
                            RegistryPackage::Type type, PluginSDK::StringVector& out) {
    RegistryDataProvider* provider = RegistryDataProviderFactory::getDataProvider(which);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    return provider->enumPackages(type, out);
}

}  // namespace RegPlugin

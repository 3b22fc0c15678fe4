#include "cross/orlo/OrloProductInfo.h"

#include "RegPluginConstants.h"
#include "common/ProviderQueries.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

OrloProductInfo::OrloProductInfo() = default;

OrloProductInfo::~OrloProductInfo() = default;

void OrloProductInfo::disposeExpression() {}

TErrorCode OrloProductInfo::validateProperties() {
    return validateCodeAndFieldProperties(*this);
}

TErrorCode OrloProductInfo::getScalarResult(PluginSDK::String& result) {
    result = static_cast<const wchar_t*>(nullptr);
    TErrorCode rc = validateProperties();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    const PluginSDK::String code(getProperty(REG_PLUGIN_PROPERTY_CODE));
    const PluginSDK::String field(getProperty(REG_PLUGIN_PROPERTY_FIELD));
    RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::ORLO_PROVIDER);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    RegistryPackage* package = nullptr;
    rc = provider->getPackage(code, &package);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    // The provider answers an unknown key with success and no package.
    if (package == nullptr) {
        return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
    }
    // Deliberately not passed on: a missing field reads as an empty value.
    package->getProperty(field, result);
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin

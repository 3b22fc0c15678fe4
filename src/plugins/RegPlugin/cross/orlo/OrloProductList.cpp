#include "cross/orlo/OrloProductList.h"

#include "RegPluginConstants.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/orlo/OrloDataProvider.h"

namespace RegPlugin {

OrloProductList::OrloProductList() = default;

OrloProductList::~OrloProductList() = default;

void OrloProductList::disposeExpression() {}

TErrorCode OrloProductList::enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) {
    RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::ORLO_PROVIDER);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    RegistryDataProviderFactory::DataProviderClass which =
        RegistryDataProviderFactory::INVALID_PROVIDER;
    const wchar_t* keyword = getProperty(REG_PLUGIN_PROPERTY_PROVIDER);
    if (keyword != nullptr && keyword[0] != L'\0') {
        which = RegistryDataProviderFactory::getDataProviderClass(keyword);
        if (which == RegistryDataProviderFactory::INVALID_PROVIDER) {
            return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
        }
    }
    // A provider installed in place of the Orlo one (tests) knows no asking class.
    OrloDataProvider* orlo = dynamic_cast<OrloDataProvider*>(provider);
    if (orlo == nullptr) {
        return provider->enumPackages(type, out);
    }
    return orlo->enumPackages(type, out, which);
}

}  // namespace RegPlugin

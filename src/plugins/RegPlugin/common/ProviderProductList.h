// The generic List expression of a registry: the keys of the provider's packages,
// selected by "type" and "filter" (ProductList).
#ifndef REGPLUGIN_COMMON_PROVIDERPRODUCTLIST_H
#define REGPLUGIN_COMMON_PROVIDERPRODUCTLIST_H

#include "common/ProductList.h"
#include "common/ProviderQueries.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

template <RegistryDataProviderFactory::DataProviderClass Which>
class ProviderProductList : public ProductList {
  public:
    // Nothing to release.
    void disposeExpression() override {}

    // Appends the provider's keys of kind `type`; REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER
    // without a provider, else the provider's code.
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) override {
        return queryProductList(Which, type, out);
    }
};

}  // namespace RegPlugin

#endif

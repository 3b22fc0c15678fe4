// "OrloProductList": the keys of the Orlo packages found under the install
// directories of one provider ("provider" = "rpm", "os", "any", "ismp", "corvu",
// "tessel"), or of every provider but the Tessel catalog when "provider" is absent
// or empty; selected by "type" and "filter" (ProductList).
#ifndef REGPLUGIN_CROSS_ORLO_ORLOPRODUCTLIST_H
#define REGPLUGIN_CROSS_ORLO_ORLOPRODUCTLIST_H

#include "common/ProductList.h"

namespace RegPlugin {

class OrloProductList : public ProductList {
  public:
    OrloProductList();
    ~OrloProductList() override;

    // Nothing to release.
    void disposeExpression() override;

    // Sets `out` to the keys of kind `type`. REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER
    // without the Orlo provider or for an unknown "provider" keyword;
    // REG_PLUGIN_ERROR_INVALID_PROVIDER for "orlo" itself; else 0.
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) override;
};

}  // namespace RegPlugin

#endif

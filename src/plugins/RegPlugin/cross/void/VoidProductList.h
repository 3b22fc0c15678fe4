// "VoidProductList": the List query of a registry that is never present. "type"
// and "filter" are checked by ProductList as for every list; the list is empty.
#ifndef REGPLUGIN_CROSS_VOID_VOIDPRODUCTLIST_H
#define REGPLUGIN_CROSS_VOID_VOIDPRODUCTLIST_H

#include "common/ProductList.h"

namespace RegPlugin {

class VoidProductList : public ProductList {
  public:
    VoidProductList();
    ~VoidProductList() override;

    // Nothing to release.
    void disposeExpression() override;
    // Appends nothing; returns 0.
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) override;
};

}  // namespace RegPlugin

#endif

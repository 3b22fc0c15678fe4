// "TesselCatalogList": the keys of the catalog packages that pass the state
// criteria, optionally only those whose name is "name", selected by "type" and
// "filter" (ProductList).
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELLIST_H
#define REGPLUGIN_CROSS_TESSEL_TESSELLIST_H

#include "common/ProductList.h"

namespace RegPlugin {

class TesselList : public ProductList {
  public:
    TesselList();
    ~TesselList() override;

    // Nothing to release.
    void disposeExpression() override {}

    // Appends the keys of kind `type` that pass, in catalog order. Without a
    // provider returns 0 and appends nothing. REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER
    // when the show flags cannot be read; the enumeration's error when the catalog
    // cannot be read; a field lookup's error ends the walk and is returned (`out`
    // keeps what was appended).
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) override;
};

}  // namespace RegPlugin

#endif

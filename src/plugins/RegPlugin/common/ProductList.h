// The base of every List expression: "type" selects the kind of package, "filter"
// an optional glob pattern over the keys; the subclass enumerates.
#ifndef REGPLUGIN_COMMON_PRODUCTLIST_H
#define REGPLUGIN_COMMON_PRODUCTLIST_H

#include "PluginSDK/StringVector.h"
#include "PluginSDK/VectorOperand.h"
#include "common/RegistryPackage.h"

namespace RegPlugin {

class ProductList : public PluginSDK::VectorOperand {
  public:
    ProductList();
    ~ProductList() override;

    // Empties `out`, then fills it with the keys of the selected kind that match the
    // filter, in enumeration order. Returns 0, REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE
    // for an unknown "type", the glob compiler's non-zero code for a malformed
    // "filter" (`out` stays empty then), or the enumeration's error (with a filter,
    // `out` stays empty; without one, it holds what the enumeration appended).
    TErrorCode getVectorResult(PluginSDK::StringVector& out) override;
    // Appends the keys of kind `type` to `out`.
    virtual TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) = 0;

    // The "type" property, compared exactly: absent or "any" gives ANY; "product",
    // "subproduct", "patch" their kinds; any other text returns
    // REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE and leaves `type` untouched.
    TErrorCode getProductType(RegistryPackage::Type& type);
};

}  // namespace RegPlugin

#endif

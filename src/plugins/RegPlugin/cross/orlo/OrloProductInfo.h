// "OrloProductInfo": the property "field" of the Orlo package whose key is "code"
// (name "#" version "@" root). A key is known only after an "OrloProductList"
// enumeration produced it. A field the package does not have is not an error: the
// result is then empty and the code 0.
#ifndef REGPLUGIN_CROSS_ORLO_ORLOPRODUCTINFO_H
#define REGPLUGIN_CROSS_ORLO_ORLOPRODUCTINFO_H

#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"

namespace RegPlugin {

class OrloProductInfo : public PluginSDK::ScalarOperand {
  public:
    OrloProductInfo();
    ~OrloProductInfo() override;

    // Nothing to release.
    void disposeExpression() override;

    // Empties `result`; REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code",
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field",
    // REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without the Orlo provider, the
    // provider's error, REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST for a key no
    // enumeration produced; otherwise 0 with the field's value (empty when the
    // package has no such field).
    TErrorCode getScalarResult(PluginSDK::String& result) override;

    // REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code", else
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field", else 0.
    TErrorCode validateProperties();
};

}  // namespace RegPlugin

#endif

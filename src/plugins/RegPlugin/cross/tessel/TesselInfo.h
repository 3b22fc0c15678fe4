// "TesselCatalogInfo": the property "field" of the catalog package whose key is
// "code", when that package passes the state criteria.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELINFO_H
#define REGPLUGIN_CROSS_TESSEL_TESSELINFO_H

#include "PluginSDK/ScalarOperand.h"

namespace RegPlugin {

class TesselInfo : public PluginSDK::ScalarOperand {
  public:
    TesselInfo();
    ~TesselInfo() override;

    // Nothing to release.
    void disposeExpression() override {}

    // Empties `result`; then REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code",
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field",
    // REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider,
    // REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST when the package is not there (also
    // when the catalog could not be read: only the answer of packageExists is used,
    // not its code) or fails the criteria, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND for
    // a field it does not have; 0 and the value otherwise.
    TErrorCode getScalarResult(PluginSDK::String& result) override;

    // REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code", else
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field", else 0.
    TErrorCode validateProperties();
};

}  // namespace RegPlugin

#endif

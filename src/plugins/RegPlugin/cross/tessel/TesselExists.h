// "TesselCatalogExists": whether the catalog holds the package whose key is "code"
// and that package passes the state criteria (TesselDataProvider::checkCriteria);
// the host's true or false text.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELEXISTS_H
#define REGPLUGIN_CROSS_TESSEL_TESSELEXISTS_H

#include "PluginSDK/ScalarOperand.h"

namespace RegPlugin {

class TesselExists : public PluginSDK::ScalarOperand {
  public:
    TesselExists();
    ~TesselExists() override;

    // Nothing to release.
    void disposeExpression() override {}

    // Empties `result`; then REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code",
    // REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider, or the provider's
    // error (`result` stays empty); otherwise PLUGIN_RESULT_TRUE when the package is
    // there and passes the criteria, else PLUGIN_RESULT_FALSE, and 0. The show flags
    // come from "showUncommittedPackages" / "showRemovedPackages" or the
    // configuration; a "name" property is read but plays no part.
    TErrorCode getScalarResult(PluginSDK::String& result) override;

    // REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code", else 0.
    TErrorCode validateProperties();
};

}  // namespace RegPlugin

#endif

// The generic Exists expression of a registry: "code" names the package key; the
// result is the host's true or false text.
#ifndef REGPLUGIN_COMMON_PROVIDERPRODUCTEXISTS_H
#define REGPLUGIN_COMMON_PROVIDERPRODUCTEXISTS_H

#include "PluginSDK/ScalarOperand.h"
#include "common/ProviderQueries.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

template <RegistryDataProviderFactory::DataProviderClass Which>
class ProviderProductExists : public PluginSDK::ScalarOperand {
  public:
    // Nothing to release.
    void disposeExpression() override {}

    // Empties `result`; then REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code" (the
    // provider is not touched), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a
    // provider, or the provider's error, leaving `result` empty; otherwise sets it to
    // PLUGIN_RESULT_TRUE or PLUGIN_RESULT_FALSE and returns 0.
    TErrorCode getScalarResult(PluginSDK::String& result) override {
        result = static_cast<const wchar_t*>(nullptr);
        const TErrorCode rc = validateProperties();
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
        return queryProductExists(*this, Which, result);
    }

    // REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code", else 0.
    TErrorCode validateProperties() { return validateCodeProperty(*this); }
};

}  // namespace RegPlugin

#endif

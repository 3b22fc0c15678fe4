// The generic Info expression of a registry: the property "field" of the package
// whose key is "code".
#ifndef REGPLUGIN_COMMON_PROVIDERPRODUCTINFO_H
#define REGPLUGIN_COMMON_PROVIDERPRODUCTINFO_H

#include "PluginSDK/ScalarOperand.h"
#include "common/ProviderQueries.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

// With `FilteredPassThrough`, only the two "does not exist" codes of getPackage are
// returned; see queryProductInfo.
template <RegistryDataProviderFactory::DataProviderClass Which, bool FilteredPassThrough = false>
class ProviderProductInfo : public PluginSDK::ScalarOperand {
  public:
    // Nothing to release.
    void disposeExpression() override {}

    // Empties `result`; then REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code",
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field" (the provider is not touched
    // for either), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider, the
    // provider's not-found code for an unknown key, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND
    // for a missing field; `result` stays empty on every failure. 0 and the value
    // otherwise.
    TErrorCode getScalarResult(PluginSDK::String& result) override {
        result = static_cast<const wchar_t*>(nullptr);
        const TErrorCode rc = validateProperties();
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
        return queryProductInfo(*this, Which, FilteredPassThrough, result);
    }

    // REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code", else
    // REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field", else 0.
    TErrorCode validateProperties() { return validateCodeAndFieldProperties(*this); }
};

}  // namespace RegPlugin

#endif

// The bodies of the generic Exists / Info / List expressions, written once for every
// registry. The expression templates (ProviderProductExists, ProviderProductInfo,
// ProviderProductList) forward to these with their provider class; the provider is
// fetched from the factory on every call and never kept or deleted here.
#ifndef REGPLUGIN_COMMON_PROVIDERQUERIES_H
#define REGPLUGIN_COMMON_PROVIDERQUERIES_H

#include "PluginSDK/Expression.h"
#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "PluginSDK/Types.h"
#include "common/RegistryDataProviderFactory.h"
#include "common/RegistryPackage.h"

namespace RegPlugin {

// REG_PLUGIN_ERROR_UNSPECIFIED_CODE when `expression` has no "code", else 0.
TErrorCode validateCodeProperty(const PluginSDK::Expression& expression);
// As validateCodeProperty, then REG_PLUGIN_ERROR_UNSPECIFIED_FIELD without "field".
TErrorCode validateCodeAndFieldProperties(const PluginSDK::Expression& expression);

// Asks the provider of `which` whether it holds the package "code" and sets `result`
// to the host's true or false text. Returns 0,
// REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider, or the provider's error;
// `result` is untouched on failure. "code" must be there (validated before).
TErrorCode queryProductExists(const PluginSDK::Expression& expression,
                              RegistryDataProviderFactory::DataProviderClass which,
                              PluginSDK::String& result);

// Sets `result` to the property "field" of the package "code" of the provider of
// `which`. Returns 0, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider,
// getPackage's error, or the property lookup's error (REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND
// for a field the package does not have); `result` is untouched on failure.
// With `filteredPassThrough`, getPackage's error is returned only when it is
// REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST or REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
// after another error the lookup goes ahead on whatever package was left, and
// REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND is returned when there is none. "code" and
// "field" must be there (validated before).
TErrorCode queryProductInfo(const PluginSDK::Expression& expression,
                            RegistryDataProviderFactory::DataProviderClass which,
                            bool filteredPassThrough, PluginSDK::String& result);

// Appends the keys of kind `type` of the provider of `which` to `out`. Returns the
// provider's code, or REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER without a provider.
TErrorCode queryProductList(RegistryDataProviderFactory::DataProviderClass which,
                            RegistryPackage::Type type, PluginSDK::StringVector& out);

}  // namespace RegPlugin

#endif

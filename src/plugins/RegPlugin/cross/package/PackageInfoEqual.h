// "PackageInfoEqual": is the package "code" installed with exactly the description
// "value" (name, version and vendor joined by blanks)? It looks in the operating
// system's package database ("provider" = "os"), the ISMP registry ("ismp") or both,
// the database first ("any").
#ifndef REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOEQUAL_H
#define REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOEQUAL_H

#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/String.h"

namespace RegPlugin {

class PackageInfoEqual : public PluginSDK::ScalarOperand {
  public:
    PackageInfoEqual();
    ~PackageInfoEqual() override;

    // Nothing to release.
    void disposeExpression() override;
    // Sets `result` to PLUGIN_RESULT_TRUE when a package matched, else
    // PLUGIN_RESULT_FALSE, in every case, and returns 0 or the error met last: a
    // property error, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, or a registry's own code.
    // With "any", an ISMP lookup replaces the native lookup's error.
    TErrorCode getScalarResult(PluginSDK::String& result) override;

  private:
    // REG_PLUGIN_ERROR_UNSPECIFIED_PROVIDER without "provider",
    // REG_PLUGIN_ERROR_INVALID_PROVIDER for a provider other than "any", "ismp" and
    // "os", else REG_PLUGIN_ERROR_UNSPECIFIED_CODE without "code",
    // REG_PLUGIN_ERROR_UNSPECIFIED_VALUE without "value", else 0.
    TErrorCode validateProperties();
    // Looks `code` up as a key of the OS_PROVIDER registry. An absent package is
    // compared as the empty description, so an empty `value` finds it.
    TErrorCode lookupPackageInNativeRegistry(const PluginSDK::String& code,
                                             const PluginSDK::String& value, bool& found);
    // Looks for ISMP keys whose identifier (the text before the last "@") is `code`.
    // One description accumulates over the candidates. No ISMP registry file: 0.
    TErrorCode lookupPackageInISMPRegistry(const PluginSDK::String& code,
                                           const PluginSDK::String& value, bool& found);
};

}  // namespace RegPlugin

#endif

// "PackageInfoMatch": is any package installed whose vendor, name and version match
// the wild-card patterns "vendor", "name" and "version" ("ignoreCase" "true" folds
// case)? Every registry of searchedProviders is searched to the end, and every
// matching package's matchCount grows by one per evaluation: that mark is what the
// unknown-software repository later leaves out.
#ifndef REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOMATCH_H
#define REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOMATCH_H

#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/String.h"

namespace RegPlugin {

class PackageInfoMatch : public PluginSDK::ScalarOperand {
  public:
    PackageInfoMatch();
    ~PackageInfoMatch() override;

    // Nothing to release.
    void disposeExpression() override;
    // Sets `result` to PLUGIN_RESULT_TRUE when at least one package matched, else
    // PLUGIN_RESULT_FALSE, in every case. Returns 0, a property error
    // (REG_PLUGIN_ERROR_UNSPECIFIED_VENDOR / _NAME / _VERSION, the first missing;
    // REG_PLUGIN_ERROR_INVALID_IGNORECASE) or the GlobFilter error of a pattern that
    // does not compile. A registry or package that cannot be read is traced and
    // skipped, never returned.
    TErrorCode getScalarResult(PluginSDK::String& result) override;

  private:
    TErrorCode validateProperties();
    TErrorCode lookupPackageInRegistry(const PluginSDK::String& vendor,
                                       const PluginSDK::String& name,
                                       const PluginSDK::String& version, bool& found,
                                       bool ignoreCase);
};

}  // namespace RegPlugin

#endif

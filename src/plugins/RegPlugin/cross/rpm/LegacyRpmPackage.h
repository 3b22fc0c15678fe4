// One package of the rpm database, as LegacyRpmDataProvider reads it: keyed by
// name-version-release-arch, provider tag "RPM", every property set at load time.
#ifndef REGPLUGIN_CROSS_RPM_LEGACYRPMPACKAGE_H
#define REGPLUGIN_CROSS_RPM_LEGACYRPMPACKAGE_H

#include "common/RegistryPackage.h"

namespace RegPlugin {

class LegacyRpmPackage : public RegistryPackage {
  public:
    // Keyed by `key`, type PRODUCT, no properties yet.
    explicit LegacyRpmPackage(const PluginSDK::String& key);
    ~LegacyRpmPackage() override;

    // Every property is set while the database is listed, so there is nothing to
    // compute: returns 0 and stores nothing (getProperty then reports an unknown
    // name as REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND).
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // The provider tag "RPM", one string shared by every package.
    static const PluginSDK::String& providerTag();
};

}  // namespace RegPlugin

#endif

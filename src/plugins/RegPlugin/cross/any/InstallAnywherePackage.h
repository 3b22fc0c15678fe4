// One product or component of the InstallAnywhere registry: keyed by its "id"
// attribute, provider tag "ANYWHERE". Products are of type PRODUCT, components of
// type SUBPRODUCT; every property is set while the registry is loaded.
#ifndef REGPLUGIN_CROSS_ANY_INSTALLANYWHEREPACKAGE_H
#define REGPLUGIN_CROSS_ANY_INSTALLANYWHEREPACKAGE_H

#include "common/RegistryPackage.h"

namespace RegPlugin {

class InstallAnywherePackage : public RegistryPackage {
  public:
    // Keyed by `key`, type PRODUCT, no properties.
    explicit InstallAnywherePackage(const PluginSDK::String& key);
    ~InstallAnywherePackage() override;

    // Nothing is computed later: always REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // The provider tag "ANYWHERE", one string shared by every package.
    static const PluginSDK::String& providerTag();
};

}  // namespace RegPlugin

#endif

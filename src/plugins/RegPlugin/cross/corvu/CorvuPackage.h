// One package of the Corvu installer: keyed "id#version@path" (the package's id
// and version attributes and its location's path), provider tag "CORVU", type
// PRODUCT; the properties kind, name, id, version, installDir and vendor are set
// while the registry is loaded.
#ifndef REGPLUGIN_CROSS_CORVU_CORVUPACKAGE_H
#define REGPLUGIN_CROSS_CORVU_CORVUPACKAGE_H

#include "common/RegistryPackage.h"

namespace RegPlugin {

class CorvuPackage : public RegistryPackage {
  public:
    // Keyed by `key`, type PRODUCT, no properties.
    explicit CorvuPackage(const PluginSDK::String& key);
    ~CorvuPackage() override;

    // Nothing is computed later: returns 0 and stores nothing, so getProperty
    // reports a property not set at load time as REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // The provider tag "CORVU", one string shared by every package.
    static const PluginSDK::String& providerTag();
};

}  // namespace RegPlugin

#endif

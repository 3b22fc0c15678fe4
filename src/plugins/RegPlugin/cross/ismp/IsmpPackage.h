// One product or feature of the ISMP registry (vpd.properties): key
// "identifier@version", provider tag "ISMP", type PRODUCT (SUBPRODUCT for a
// feature), and the properties that IsmpDataProvider sets while it reads the line
// (name, version, instance, description, vendor, installDir, uninstData).
#ifndef REGPLUGIN_CROSS_ISMP_ISMPPACKAGE_H
#define REGPLUGIN_CROSS_ISMP_ISMPPACKAGE_H

#include "common/RegistryPackage.h"

namespace RegPlugin {

class IsmpPackage : public RegistryPackage {
  public:
    // Empty key (the parser sets it), tag "ISMP", type PRODUCT, no properties.
    IsmpPackage();
    ~IsmpPackage() override;

    // Nothing is computed later: every property is set while the registry is read.
    // Makes sure the factory's ISMP_PROVIDER is loaded and returns its load error
    // (REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST after a failed load,
    // REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER when the factory has none); otherwise 0
    // when this package holds `name`, else REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // The provider tag "ISMP", one string shared by every package.
    static const PluginSDK::String& providerTag();
};

}  // namespace RegPlugin

#endif

// One package of the software-distribution catalog: keyed by name "." version,
// provider tag "TESSEL", every field set when the listing is read.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELPACKAGE_H
#define REGPLUGIN_CROSS_TESSEL_TESSELPACKAGE_H

#include "common/RegistryPackage.h"

namespace RegPlugin {

class TesselPackage : public RegistryPackage {
  public:
    // Keyed by `key`, type PRODUCT, no properties yet.
    explicit TesselPackage(const PluginSDK::String& key);
    ~TesselPackage() override;

    // Every field is set at load time: nothing to compute. Always
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // Stores `value` under `key`, replacing an earlier value. Returns 0.
    TErrorCode setProperty(const PluginSDK::String& key, const PluginSDK::String& value);

    // The provider tag "TESSEL", one string shared by every package.
    static const PluginSDK::String& providerTag();
};

}  // namespace RegPlugin

#endif

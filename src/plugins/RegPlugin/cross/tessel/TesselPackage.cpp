#include "cross/tessel/TesselPackage.h"

#include "RegPluginConstants.h"

namespace RegPlugin {

TesselPackage::TesselPackage(const PluginSDK::String& key) : RegistryPackage(key, providerTag()) {}

TesselPackage::~TesselPackage() = default;

TErrorCode TesselPackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
}

TErrorCode TesselPackage::setProperty(const PluginSDK::String& key,
                                      const PluginSDK::String& value) {
    return RegistryPackage::setProperty(key, value);
}

const PluginSDK::String& TesselPackage::providerTag() {
    static const PluginSDK::String tag(L"TESSEL");
    return tag;
}

}  // namespace RegPlugin

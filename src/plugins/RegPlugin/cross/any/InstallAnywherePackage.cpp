#include "cross/any/InstallAnywherePackage.h"

#include "RegPluginConstants.h"

namespace RegPlugin {

InstallAnywherePackage::InstallAnywherePackage(const PluginSDK::String& key)
    : RegistryPackage(key, providerTag()) {}

InstallAnywherePackage::~InstallAnywherePackage() = default;

TErrorCode InstallAnywherePackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
}

const PluginSDK::String& InstallAnywherePackage::providerTag() {
    static const PluginSDK::String tag(L"ANYWHERE");
    return tag;
}

}  // namespace RegPlugin

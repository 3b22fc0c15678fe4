#include "cross/corvu/CorvuPackage.h"

namespace RegPlugin {

CorvuPackage::CorvuPackage(const PluginSDK::String& key) : RegistryPackage(key, providerTag()) {}

CorvuPackage::~CorvuPackage() = default;

TErrorCode CorvuPackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return PluginSDK::RESULT_OK;
}

const PluginSDK::String& CorvuPackage::providerTag() {
    static const PluginSDK::String tag(L"CORVU");
    return tag;
}

}  // namespace RegPlugin

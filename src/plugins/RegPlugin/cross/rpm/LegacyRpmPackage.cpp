#include "cross/rpm/LegacyRpmPackage.h"

#include "common/PluginTrace.h"

namespace RegPlugin {

LegacyRpmPackage::LegacyRpmPackage(const PluginSDK::String& key)
    : RegistryPackage(key, providerTag()) {}

LegacyRpmPackage::~LegacyRpmPackage() {
    REG_TRACE_SCOPE("LegacyRpmPackage::~LegacyRpmPackage()");
}

TErrorCode LegacyRpmPackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return PluginSDK::RESULT_OK;
}

const PluginSDK::String& LegacyRpmPackage::providerTag() {
    static const PluginSDK::String tag(L"RPM");
    return tag;
}

}  // namespace RegPlugin

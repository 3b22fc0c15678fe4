#include "cross/package/PackageInfoUnknown.h"

namespace RegPlugin {

PackageInfoUnknown::PackageInfoUnknown() = default;

PackageInfoUnknown::~PackageInfoUnknown() = default;

TErrorCode PackageInfoUnknown::init() {
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getNext() {
    return PluginSDK::ERROR_NO_MORE_ITEMS;
}

TErrorCode PackageInfoUnknown::getProvider(PluginSDK::String* /*out*/) {
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getVendor(PluginSDK::String* /*out*/) {
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getName(PluginSDK::String* /*out*/) {
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getVersion(PluginSDK::String* /*out*/) {
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getInstallDir(PluginSDK::String* /*out*/) {
    return PluginSDK::RESULT_OK;
}

int PackageInfoUnknown::getSize() {
    return 0;
}

}  // namespace RegPlugin

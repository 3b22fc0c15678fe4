// The iterator over installed software that no rule recognised, as the plug-in
// hands it to the host.
//
// It lists nothing yet: init() succeeds with an empty repository, getNext() is at
// the end at once, and the getters leave the caller's string unchanged.
#ifndef REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOUNKNOWN_H
#define REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOUNKNOWN_H

#include "PluginSDK/UnknownSoftwareRepository.h"

namespace RegPlugin {

class PackageInfoUnknown : public PluginSDK::UnknownSoftwareRepository {
  public:
    PackageInfoUnknown();

    // Returns 0.
    TErrorCode init() override;
    // Returns ERROR_NO_MORE_ITEMS (-10009).
    TErrorCode getNext() override;
    // Each returns 0 and leaves `out` unchanged.
    TErrorCode getProvider(PluginSDK::String* out) override;
    TErrorCode getVendor(PluginSDK::String* out) override;
    TErrorCode getName(PluginSDK::String* out) override;
    TErrorCode getVersion(PluginSDK::String* out) override;
    TErrorCode getInstallDir(PluginSDK::String* out) override;
    // 0.
    int getSize() override;

    ~PackageInfoUnknown() override;
};

}  // namespace RegPlugin

#endif

// The iterator over installed software that no pattern query recognised, as the
// plug-in hands it to the host (getUnknownSoftware): every package of the
// registries of searchedProviders whose matchCount was 0 when init() ran, when the
// configuration property "listUnmatchedSoftware" is the host's true text.
//
// The packages are borrowed from their providers: the iterator must not be used
// after the provider factory's cleanup.
#ifndef REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOUNKNOWN_H
#define REGPLUGIN_CROSS_PACKAGE_PACKAGEINFOUNKNOWN_H

#include <list>

#include "PluginSDK/UnknownSoftwareRepository.h"
#include "common/RegistryPackage.h"

namespace RegPlugin {

class PackageInfoUnknown : public PluginSDK::UnknownSoftwareRepository {
  public:
    // Empty, at the end.
    PackageInfoUnknown();

    // Takes a new snapshot: empties the list, then collects when
    // "listUnmatchedSoftware" is the true text. Returns 0 (also without a
    // configuration store or with listing off), or the configuration's error when
    // the property is not set. After collecting, the first package is current.
    TErrorCode init() override;
    // Moves to the next package and returns 0 (also when that reaches the end);
    // at the end already, returns ERROR_NO_MORE_ITEMS (-10009) and stays there.
    TErrorCode getNext() override;
    // Copy the current package's provider tag ("RPM", "DPKG", ...) or its property
    // "vendor", "name", "version", "installDir" into `out`. Always 0; at the end, or
    // when the package has no such property, `out` is left as it was.
    TErrorCode getProvider(PluginSDK::String* out) override;
    TErrorCode getVendor(PluginSDK::String* out) override;
    TErrorCode getName(PluginSDK::String* out) override;
    TErrorCode getVersion(PluginSDK::String* out) override;
    TErrorCode getInstallDir(PluginSDK::String* out) override;
    // The number of packages in the snapshot, wherever the iterator is.
    int getSize() override;

    // Frees the list only; the packages belong to their providers.
    ~PackageInfoUnknown() override;

  private:
    // Appends every unmatched package of every searched registry; single failures
    // are traced, never returned. Leaves the first package current. Returns 0.
    TErrorCode fetchData();
    // Copies the current package's property `name` into `out` when both exist.
    void copyProperty(const wchar_t* name, PluginSDK::String* out);

    std::list<RegistryPackage*> unknownPackages;
    std::list<RegistryPackage*>::iterator position;
};

}  // namespace RegPlugin

#endif

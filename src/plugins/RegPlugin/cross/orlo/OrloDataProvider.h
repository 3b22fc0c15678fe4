// The Orlo tag inventory as a provider: it owns no registry of its own, but asks
// other providers for the install directories of their packages, derives candidate
// directories from them, has OrloInventory read the tag files there and serves the
// products found as OrloPackages.
//
// Packages are merged into one overall inventory and one inventory per asking
// provider class. A class is inventoried once for the provider's life: tag files
// added or removed later are not seen until the provider is made anew. Lookups
// (get) never refresh; only enumerations do. Only a self-query (ORLO_PROVIDER) and a
// null output pointer are refused with an error code; every other trouble (another
// provider failing, a missing directory, a bad tag file) is traced and skipped.
#ifndef REGPLUGIN_CROSS_ORLO_ORLODATAPROVIDER_H
#define REGPLUGIN_CROSS_ORLO_ORLODATAPROVIDER_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "common/RegistryDataProviderFactory.h"
#include "common/UnpreloadedDataProvider.h"
#include "cross/orlo/OrloPackage.h"

namespace RegPlugin {

class OrloDataProvider : public UnpreloadedDataProvider {
  public:
    typedef RegistryDataProviderFactory::DataProviderClass DataProviderClass;

    OrloDataProvider();
    // Releases every package ever made.
    ~OrloDataProvider() override;

    // Empties `keys`, then enumerate(type, keys, which).
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys,
                            DataProviderClass which);
    // -101 for a null `package`; otherwise get(key, *package, which), which sets
    // `*package` to the package or null and returns 0.
    TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package,
                          DataProviderClass which);
    // Inventories the install directories of `which` (of every other provider but
    // the Tessel catalog with INVALID_PROVIDER) unless that was done before, then
    // sets `keys` to the keys of that inventory of kind `type` (every kind for ANY),
    // ascending. REG_PLUGIN_ERROR_INVALID_PROVIDER (and nothing listed) for
    // ORLO_PROVIDER; 0 otherwise.
    TErrorCode enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys,
                         DataProviderClass which);
    // Sets `package` to the package of `key` in the inventory of `which` (the overall
    // one for INVALID_PROVIDER), or null when it is not there. Never refreshes.
    // Always 0. The package stays the provider's.
    TErrorCode get(const PluginSDK::String& key, RegistryPackage*& package,
                   DataProviderClass which);

    // The same with INVALID_PROVIDER: no particular provider.
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys) override;
    TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package) override;
    TErrorCode enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys) override;
    TErrorCode get(const PluginSDK::String& key, RegistryPackage*& package) override;
    // Does nothing: `exists` is left as the caller set it. Returns 0.
    TErrorCode exists(const PluginSDK::String& key, bool& exists) override;

  private:
    typedef std::map<PluginSDK::String, OrloPackage*> Inventory;

    // Inventories each class of `classes` that has no inventory yet.
    void updateInventory(const std::vector<DataProviderClass>& classes);
    // Appends the "installDir" of each package of `provider` to `paths`; true when
    // at least one was appended.
    bool queryProvider(RegistryDataProvider* provider, std::vector<std::wstring>& paths);
    // The candidate directories of `installDirs`: each directory (a file's parent),
    // its sub-directories when it is seen for the first time, and its parent.
    std::vector<std::wstring> candidateDirectories(const std::vector<std::wstring>& installDirs);

    std::list<OrloPackage*> allPackages;  // owned, in creation order
    Inventory overallInventory;
    std::map<DataProviderClass, Inventory> classInventory;
    std::map<std::wstring, bool> seenDirectories;
};

}  // namespace RegPlugin

#endif

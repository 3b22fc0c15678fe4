// A provider that reads on demand: each question consults the cache first and
// otherwise asks the subclass; packages fetched by getPackage are cached.
#ifndef REGPLUGIN_COMMON_UNPRELOADEDDATAPROVIDER_H
#define REGPLUGIN_COMMON_UNPRELOADEDDATAPROVIDER_H

#include <list>
#include <map>

#include "common/CachedDataProvider.h"

namespace RegPlugin {

class UnpreloadedDataProvider : public CachedDataProvider {
  public:
    UnpreloadedDataProvider();
    ~UnpreloadedDataProvider() override;

    // Empties `keys`, then returns enumerate(type, keys).
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys) override;
    TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package) override;
    TErrorCode packageExists(const PluginSDK::String& key, bool& exists) override;

    // Adds the keys of every package of kind `type` to `keys`.
    virtual TErrorCode enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys) = 0;
    // Reads the package with `key`: on success `package` is a new package (the
    // caller owns it) or null when there is none; on failure it stays null.
    virtual TErrorCode get(const PluginSDK::String& key, RegistryPackage*& package) = 0;
    // Says whether the registry holds `key`, caching nothing.
    virtual TErrorCode exists(const PluginSDK::String& key, bool& exists) = 0;

  protected:
    // A second list and map for the subclass's own use; the base only frees their
    // elements (never the packages).
    std::list<RegistryPackage*> ownPackages;
    std::map<PluginSDK::String, RegistryPackage*> ownIndex;
};

}  // namespace RegPlugin

#endif

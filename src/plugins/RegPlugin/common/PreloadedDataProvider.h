// A provider that reads its whole registry once, on the first question, and
// answers everything from the cache afterwards. A failed load is remembered and
// never retried.
#ifndef REGPLUGIN_COMMON_PRELOADEDDATAPROVIDER_H
#define REGPLUGIN_COMMON_PRELOADEDDATAPROVIDER_H

#include <cstdint>

#include "common/CachedDataProvider.h"

namespace RegPlugin {

class PreloadedDataProvider : public CachedDataProvider {
  public:
    enum PreloadState : int32_t { NOT_LOADED = 0, LOADED = 1, LOAD_FAILED = 2 };

    PreloadedDataProvider();
    ~PreloadedDataProvider() override;

    // Appends (does not replace) the keys of kind `type`, in load order. The pattern
    // query reads a loaded cache directly (matchFields) instead of listing keys, so
    // a subclass must not list anything else here.
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys) override;
    TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package) override;
    TErrorCode packageExists(const PluginSDK::String& key, bool& exists) override;

    // Reads the whole registry into the cache with add / addToMap. 0 or an error.
    virtual TErrorCode load() = 0;

    // The load-once latch: runs load() on first use; returns 0 once loaded, and
    // REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST now and forever after a failure.
    TErrorCode preload();

  protected:
    int32_t preloadState;
};

}  // namespace RegPlugin

#endif

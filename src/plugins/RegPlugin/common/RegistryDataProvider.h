// The contract of every registry reader.
#ifndef REGPLUGIN_COMMON_REGISTRYDATAPROVIDER_H
#define REGPLUGIN_COMMON_REGISTRYDATAPROVIDER_H

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "PluginSDK/Types.h"
#include "common/RegistryPackage.h"

namespace RegPlugin {

class RegistryDataProvider {
  public:
    RegistryDataProvider() = default;
    virtual ~RegistryDataProvider();
    RegistryDataProvider(const RegistryDataProvider&) = delete;
    RegistryDataProvider& operator=(const RegistryDataProvider&) = delete;

    // Adds the keys of the packages of kind `type` (every kind for ANY) to `keys`.
    virtual TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys) = 0;
    // Sets `*package` to the package with `key`, owned by the provider.
    virtual TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package) = 0;
    // Sets `exists` to whether a package with `key` is there.
    virtual TErrorCode packageExists(const PluginSDK::String& key, bool& exists) = 0;
};

}  // namespace RegPlugin

#endif

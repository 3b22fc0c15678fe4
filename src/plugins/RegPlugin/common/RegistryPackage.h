// One installed package as a registry knows it: the record every provider makes
// and every query reads.
//
// Owned by exactly one provider cache once added (CachedDataProvider::add);
// expressions and the unknown-software repository only borrow pointers for one
// call. Subclasses fill properties at load time or compute them on demand in
// retrieveProperty.
#ifndef REGPLUGIN_COMMON_REGISTRYPACKAGE_H
#define REGPLUGIN_COMMON_REGISTRYPACKAGE_H

#include <cstdint>
#include <map>

#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"

namespace RegPlugin {

class RegistryPackage {
  public:
    enum Type : int32_t {
        ANY = 0,      // queries only: every kind
        PRODUCT = 1,  // the default of every package
        SUBPRODUCT = 2,
        PATCH = 3,
    };

    // Type PRODUCT, match count 0, no properties.
    RegistryPackage(const PluginSDK::String& key, const PluginSDK::String& provider);
    virtual ~RegistryPackage();
    RegistryPackage(const RegistryPackage&) = delete;
    RegistryPackage& operator=(const RegistryPackage&) = delete;

    // The subclass's chance to make the property `name` available (by storing it
    // with setProperty). Returns 0 when it did, or an error code. A 0 that stored
    // nothing makes getProperty report REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    virtual TErrorCode retrieveProperty(const PluginSDK::String& name) = 0;

    // Copies the property `name` into `value` and returns 0. A property not stored
    // yet is asked of retrieveProperty; its error is returned unchanged; a property
    // still missing afterwards gives REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND. `value` is
    // written only on success.
    TErrorCode getProperty(const PluginSDK::String& name, PluginSDK::String& value);

    // Stores `value` under `name`, replacing an earlier value. Always returns 0.
    TErrorCode setProperty(const PluginSDK::String& name, const PluginSDK::String& value);

    PluginSDK::String key;       // identity inside its provider
    PluginSDK::String provider;  // the registry's tag, e.g. "RPM"
    Type type;
    std::map<PluginSDK::String, PluginSDK::String> properties;
    int32_t matchCount;  // pattern-query matches; never reset
};

}  // namespace RegPlugin

#endif

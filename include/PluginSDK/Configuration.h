// The host's configuration stores: one store of named text properties per plug-in.
#ifndef PLUGINSDK_CONFIGURATION_H
#define PLUGINSDK_CONFIGURATION_H

#include <map>

#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API Configuration {
  public:
    // Sets `out` to the store of the plug-in named `pluginName`, making an empty one
    // on the first request; the store stays valid until cleanup() of that name.
    // Returns 0; with a null name, ERROR_NULL_ARGUMENT and `out` set to null.
    static TErrorCode get(const wchar_t* pluginName, Configuration*& out);
    // Discards the named store; a later get() starts an empty one. Returns 0 (also
    // when there was no store); ERROR_NULL_ARGUMENT for a null name.
    static TErrorCode cleanup(const wchar_t* pluginName);

    // Copies the property into `value` and returns 0, or returns
    // ERROR_PROPERTY_NOT_FOUND and leaves `value` untouched.
    TErrorCode getProperty(const String& name, String& value) const;
    // Stores `value` under `name`, replacing an earlier value. Returns 0.
    TErrorCode setProperty(const String& name, const String& value);
    // Every property, in ascending name order.
    const std::map<String, String>& properties() const { return m_properties; }

  private:
    Configuration() = default;
    std::map<String, String> m_properties;
};

}  // namespace PluginSDK

#endif

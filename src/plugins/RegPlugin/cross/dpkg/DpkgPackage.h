// One package of the dpkg status file: its bare name as the key, the provider tag
// "DPKG", and the properties name, version, displayVersion and description, all set
// while the file is read.
#ifndef REGPLUGIN_CROSS_DPKG_DPKGPACKAGE_H
#define REGPLUGIN_CROSS_DPKG_DPKGPACKAGE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/RegistryPackage.h"

namespace RegPlugin {

class DpkgPackage : public RegistryPackage {
  public:
    // Keyed by `key` (the value of the paragraph's first "Package" field), type
    // PRODUCT, not installed, no properties.
    explicit DpkgPackage(const PluginSDK::String& key);
    ~DpkgPackage() override;

    // Every property is set while the file is read, so there is nothing to compute:
    // returns 0 and stores nothing (getProperty then reports an unknown name as
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND).
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // Stores one finished status-file field: "Package" sets the name property,
    // "Version" both version and displayVersion (one shared string), "Description"
    // the description, "Status" the installed flag when the value contains
    // " installed" (leading space included, so "not-installed" and "half-installed"
    // do not count; a flag once set stays set). Other names change nothing. A later
    // field of the same name replaces the earlier value. The value is UTF-8; bytes
    // that are not are kept as escape characters. Always returns 0; neither argument
    // is modified.
    TErrorCode handle_field(std::string& name, std::string& value);

    // True once a "Status" value containing " installed" was stored (or setInstalled
    // was called).
    bool isInstalled();

    // What handle_field does for each field, for callers that already hold the
    // converted value. setVersion stores `value` as version and displayVersion.
    // Cheapest when called in property-name order: description, version, name.
    void setName(PluginSDK::String value);
    void setVersion(PluginSDK::String value);
    void setDescription(PluginSDK::String value);
    void setInstalled();

    // True when the `length` bytes at `status` contain " installed".
    static bool statusIsInstalled(const char* status, std::size_t length);

    // The provider tag "DPKG", one string shared by every package.
    static const PluginSDK::String& providerTag();

  private:
    // setProperty, faster when `name` sorts after every stored name; takes `value`.
    void store(const PluginSDK::String& name, PluginSDK::String&& value);

    int32_t installed;  // 0 or 1
};

}  // namespace RegPlugin

#endif

// One package of the dpkg status file: its bare name as the key, the provider tag
// "DPKG", and the properties name, version, displayVersion and description.
//
// The loader sets the name and hands over the version and description as the file's
// bytes (deferText); their wide strings are made the first time one of them is asked
// for. Most packages of a large status file are never asked, and a wide string with
// its map entry is several times the size of the bytes, so this keeps a loaded
// registry at about half the memory. Through getProperty the package reads exactly
// as if every property had been set while the file was read.
#ifndef REGPLUGIN_CROSS_DPKG_DPKGPACKAGE_H
#define REGPLUGIN_CROSS_DPKG_DPKGPACKAGE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "common/RegistryPackage.h"

namespace RegPlugin {

class DpkgPackage : public RegistryPackage {
  public:
    // Keyed by `key` (the value of the paragraph's first "Package" field), type
    // PRODUCT, not installed, no properties.
    explicit DpkgPackage(const PluginSDK::String& key);
    ~DpkgPackage() override;

    // Makes the version (with displayVersion) or the description from the deferred
    // text when `name` is one of them and its text is still pending. Always returns
    // 0; for any other name it stores nothing, so getProperty reports
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
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
    // Cheapest when called in property-name order: description, version, name. They
    // replace deferred text of the same property.
    void setName(PluginSDK::String value);
    void setVersion(PluginSDK::String value);
    void setDescription(PluginSDK::String value);
    void setInstalled();

    // Keeps the UTF-8 `version` and `description` (null: the field was not there)
    // until version, displayVersion or description is first asked for. For a package
    // that has none of the three yet; neither text may contain a NUL byte.
    void deferText(const std::string* version, const std::string* description);

    // True when the `length` bytes at `status` contain " installed".
    static bool statusIsInstalled(const char* status, std::size_t length);

    // The provider tag "DPKG", one string shared by every package.
    static const PluginSDK::String& providerTag();

  private:
    // setProperty, faster when `name` sorts after every stored name; takes `value`.
    void store(const PluginSDK::String& name, PluginSDK::String&& value);

    enum Deferred : uint8_t { DEFERRED_VERSION = 1, DEFERRED_DESCRIPTION = 2 };

    // The deferred text: the version and then the description, each followed by a
    // NUL byte (a missing one is empty); which of them are pending is in m_deferred.
    // Freed once nothing is pending.
    const char* deferredVersion() const { return m_deferredText.get(); }
    const char* deferredDescription() const;
    void settle(uint8_t done);

    int32_t installed;   // 0 or 1
    uint8_t m_deferred;  // Deferred bits
    std::unique_ptr<char[]> m_deferredText;
};

}  // namespace RegPlugin

#endif

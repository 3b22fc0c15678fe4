#include "cross/dpkg/DpkgPackage.h"

#include <cstring>
#include <utility>

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

namespace {

// The property names, made once: every package's map shares their storage.
const PluginSDK::String& nameProperty() {
    static const PluginSDK::String name(REG_PLUGIN_PROPERTY_FIELD_NAME);
    return name;
}

const PluginSDK::String& versionProperty() {
    static const PluginSDK::String name(REG_PLUGIN_PROPERTY_FIELD_VERSION);
    return name;
}

const PluginSDK::String& displayVersionProperty() {
    static const PluginSDK::String name(REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION);
    return name;
}

const PluginSDK::String& descriptionProperty() {
    static const PluginSDK::String name(REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION);
    return name;
}

const char kInstalled[] = " installed";
const std::size_t kInstalledLength = sizeof(kInstalled) - 1;

}  // namespace

DpkgPackage::DpkgPackage(const PluginSDK::String& key)
    : RegistryPackage(key, providerTag()), installed(0) {}

DpkgPackage::~DpkgPackage() {
    REG_TRACE_SCOPE("DpkgPackage::~DpkgPackage()");
}

TErrorCode DpkgPackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return PluginSDK::RESULT_OK;
}

TErrorCode DpkgPackage::handle_field(std::string& name, std::string& value) {
    const PluginSDK::String converted(value.data(), value.size());
    if (name == "Version") {
        setVersion(converted);
    } else if (name == "Package") {
        setName(converted);
    } else if (name == "Description") {
        setDescription(converted);
    } else if (name == "Status") {
        if (statusIsInstalled(value.data(), value.size())) {
            setInstalled();
        }
    }
    return PluginSDK::RESULT_OK;
}

bool DpkgPackage::isInstalled() {
    return installed != 0;
}

void DpkgPackage::setName(PluginSDK::String value) {
    store(nameProperty(), std::move(value));
}

void DpkgPackage::setVersion(PluginSDK::String value) {
    store(displayVersionProperty(), PluginSDK::String(value));
    store(versionProperty(), std::move(value));
}

void DpkgPackage::setDescription(PluginSDK::String value) {
    store(descriptionProperty(), std::move(value));
}

void DpkgPackage::store(const PluginSDK::String& name, PluginSDK::String&& value) {
    // Properties set in name order (as the loader does) go straight to the end of
    // the map.
    if (properties.empty() || properties.rbegin()->first < name) {
        properties.emplace_hint(properties.end(), name, std::move(value));
    } else {
        setProperty(name, value);
    }
}

void DpkgPackage::setInstalled() {
    installed = 1;
}

bool DpkgPackage::statusIsInstalled(const char* status, std::size_t length) {
    // A status value is three short words; a plain scan is enough (and, unlike
    // strstr, not stopped by a NUL byte).
    if (length < kInstalledLength) {
        return false;
    }
    for (std::size_t at = 0; at + kInstalledLength <= length; ++at) {
        if (status[at] == ' ' && std::memcmp(status + at, kInstalled, kInstalledLength) == 0) {
            return true;
        }
    }
    return false;
}

const PluginSDK::String& DpkgPackage::providerTag() {
    static const PluginSDK::String tag(L"DPKG");
    return tag;
}

}  // namespace RegPlugin

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
    : RegistryPackage(key, providerTag()), installed(0), m_deferred(0) {}

DpkgPackage::~DpkgPackage() {
    REG_TRACE_SCOPE("DpkgPackage::~DpkgPackage()");
}

TErrorCode DpkgPackage::retrieveProperty(const PluginSDK::String& name) {
    if ((m_deferred & DEFERRED_VERSION) != 0 &&
        (name == versionProperty() || name == displayVersionProperty())) {
        const char* text = deferredVersion();
        setVersion(PluginSDK::String(text, std::strlen(text)));
    } else if ((m_deferred & DEFERRED_DESCRIPTION) != 0 && name == descriptionProperty()) {
        const char* text = deferredDescription();
        setDescription(PluginSDK::String(text, std::strlen(text)));
    }
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
    settle(DEFERRED_VERSION);
    store(displayVersionProperty(), PluginSDK::String(value));
    store(versionProperty(), std::move(value));
}

void DpkgPackage::setDescription(PluginSDK::String value) {
    settle(DEFERRED_DESCRIPTION);
    store(descriptionProperty(), std::move(value));
}

void DpkgPackage::deferText(const std::string* version, const std::string* description) {
    m_deferred = 0;
    m_deferredText.reset();
    const std::size_t versionSize = version != nullptr ? version->size() : 0;
    const std::size_t descriptionSize = description != nullptr ? description->size() : 0;
    if (version == nullptr && description == nullptr) {
        return;
    }
    m_deferredText.reset(new char[versionSize + descriptionSize + 2]);
    char* out = m_deferredText.get();
    if (version != nullptr) {
        std::memcpy(out, version->data(), versionSize);
        m_deferred |= DEFERRED_VERSION;
    }
    out[versionSize] = '\0';
    out += versionSize + 1;
    if (description != nullptr) {
        std::memcpy(out, description->data(), descriptionSize);
        m_deferred |= DEFERRED_DESCRIPTION;
    }
    out[descriptionSize] = '\0';
}

const char* DpkgPackage::deferredDescription() const {
    const char* version = deferredVersion();
    return version + std::strlen(version) + 1;
}

void DpkgPackage::settle(uint8_t done) {
    m_deferred = static_cast<uint8_t>(m_deferred & ~done);
    if (m_deferred == 0) {
        m_deferredText.reset();
    }
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

#include "cross/orlo/OrloPackage.h"

#include <string>

#include "RegPluginConstants.h"

namespace RegPlugin {

namespace {

const PluginSDK::String& providerTag() {
    static const PluginSDK::String tag(L"ORLOINV");
    return tag;
}

PluginSDK::String wideOf(const std::wstring& text) {
    return PluginSDK::String(text.data(), text.size());
}

std::wstring propertyOf(const OrloProduct& product, const wchar_t* name) {
    const auto found = product.properties.find(name);
    return found == product.properties.end() ? std::wstring() : found->second;
}

RegistryPackage::Type typeOfKind(const std::string& kind) {
    if (kind == "Component") {
        return RegistryPackage::SUBPRODUCT;
    }
    if (kind == "Fix") {
        return RegistryPackage::PATCH;
    }
    return RegistryPackage::PRODUCT;
}

}  // namespace

OrloPackage::OrloPackage(const OrloProduct& product)
    : RegistryPackage(makeKey(product), providerTag()) {
    type = typeOfKind(product.kind);
    setProperty(REG_PLUGIN_PROPERTY_FIELD_INSTDIR, wideOf(product.installRoot));
    setProperty(L"kind", PluginSDK::String(product.kind.data(), product.kind.size()));
    setProperty(L"TAG_FILE", wideOf(product.tagFile));
    for (const auto& property : product.properties) {
        setProperty(wideOf(property.first), wideOf(property.second));
    }
}

OrloPackage::~OrloPackage() = default;

TErrorCode OrloPackage::retrieveProperty(const PluginSDK::String& /*name*/) {
    return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
}

PluginSDK::String OrloPackage::makeKey(const OrloProduct& product) {
    std::wstring key = propertyOf(product, L"name");
    key += L'#';
    key += propertyOf(product, L"version");
    key += L'@';
    key += product.installRoot;
    return wideOf(key);
}

}  // namespace RegPlugin

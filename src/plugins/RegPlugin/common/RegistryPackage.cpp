#include "common/RegistryPackage.h"

#include "RegPluginConstants.h"

namespace RegPlugin {

RegistryPackage::RegistryPackage(const PluginSDK::String& key, const PluginSDK::String& provider)
    : key(key), provider(provider), type(PRODUCT), matchCount(0) {}

RegistryPackage::~RegistryPackage() = default;

TErrorCode RegistryPackage::getProperty(const PluginSDK::String& name, PluginSDK::String& value) {
    auto found = properties.find(name);
    if (found != properties.end()) {
        value = found->second;
        return PluginSDK::RESULT_OK;
    }
    const TErrorCode rc = retrieveProperty(name);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    found = properties.find(name);
    if (found == properties.end()) {
        return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    }
    value = found->second;
    return PluginSDK::RESULT_OK;
}

TErrorCode RegistryPackage::setProperty(const PluginSDK::String& name,
                                        const PluginSDK::String& value) {
    auto position = properties.lower_bound(name);
    if (position == properties.end() || name < position->first) {
        position = properties.emplace_hint(position, name, PluginSDK::String());
    }
    position->second = value;
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin

#include "cross/orlo/OrloProduct.h"

namespace RegPlugin {

bool OrloProduct::getPropertiesNames(PluginSDK::StringVector& names) const {
    names.removeAll();
    for (const auto& property : properties) {
        names.addString(property.first.c_str());
    }
    return true;
}

bool OrloProduct::getProperty(const wchar_t* name, PluginSDK::String& value) const {
    if (name == nullptr) {
        return false;
    }
    const auto found = properties.find(name);
    if (found == properties.end()) {
        return false;
    }
    value = PluginSDK::String(found->second.data(), found->second.size());
    return true;
}

}  // namespace RegPlugin

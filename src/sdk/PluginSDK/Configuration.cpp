#include "PluginSDK/Configuration.h"

#include <map>
#include <memory>
#include <string>

namespace PluginSDK {

namespace {

// The stores by plug-in name. The host calls plug-ins from one thread at a time.
std::map<std::wstring, std::unique_ptr<Configuration>>& stores() {
    static std::map<std::wstring, std::unique_ptr<Configuration>> all;
    return all;
}

}  // namespace

TErrorCode Configuration::get(const wchar_t* pluginName, Configuration*& out) {
    if (pluginName == nullptr) {
        out = nullptr;
        return ERROR_NULL_ARGUMENT;
    }
    std::unique_ptr<Configuration>& slot = stores()[pluginName];
    if (!slot) {
        slot.reset(new Configuration());
    }
    out = slot.get();
    return RESULT_OK;
}

TErrorCode Configuration::cleanup(const wchar_t* pluginName) {
    if (pluginName == nullptr) {
        return ERROR_NULL_ARGUMENT;
    }
    stores().erase(pluginName);
    return RESULT_OK;
}

TErrorCode Configuration::getProperty(const String& name, String& value) const {
    auto found = m_properties.find(name);
    if (found == m_properties.end()) {
        return ERROR_PROPERTY_NOT_FOUND;
    }
    value = found->second;
    return RESULT_OK;
}

TErrorCode Configuration::setProperty(const String& name, const String& value) {
    m_properties[name] = value;
    return RESULT_OK;
}

}  // namespace PluginSDK

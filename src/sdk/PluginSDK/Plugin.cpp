#include "PluginSDK/Plugin.h"

#include <algorithm>

#include "PluginSDK/PluginResult.h"

const wchar_t* const PLUGIN_RESULT_TRUE = L"TRUE";
const wchar_t* const PLUGIN_RESULT_FALSE = L"FALSE";

namespace PluginSDK {

Plugin::Plugin() = default;
Plugin::~Plugin() = default;

TErrorCode Plugin::addExpression(const wchar_t* name) {
    if (name == nullptr) {
        return ERROR_NULL_ARGUMENT;
    }
    if (std::find(m_expressionNames.begin(), m_expressionNames.end(), name) ==
        m_expressionNames.end()) {
        m_expressionNames.emplace_back(name);
    }
    return RESULT_OK;
}

}  // namespace PluginSDK

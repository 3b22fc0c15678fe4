// Basic types of the plug-in SDK.
#ifndef PLUGINSDK_TYPES_H
#define PLUGINSDK_TYPES_H

#include <cstdint>

#include "base/Export.h"

// The result of every plug-in operation that can fail: 0 is success.
typedef int32_t TErrorCode;

namespace PluginSDK {

// Codes that the host's own operations give.
constexpr TErrorCode RESULT_OK = 0;
constexpr TErrorCode ERROR_NULL_ARGUMENT = -101;         // a required pointer is null
constexpr TErrorCode ERROR_NO_SUCH_EXPRESSION = -10008;  // createExpression: unknown name
constexpr TErrorCode ERROR_NO_MORE_ITEMS = -10009;       // an iterator is at its end
constexpr TErrorCode ERROR_PROPERTY_NOT_FOUND = -10010;  // Configuration::getProperty

// Expression kinds, as getType() gives them.
constexpr int EXPRESSION_TYPE_SCALAR = 0;
constexpr int EXPRESSION_TYPE_VECTOR = 1;

// A plug-in's version: four numbers, most significant first.
struct PluginVersion {
    int32_t version;
    int32_t release;
    int32_t modification;
    int32_t fixLevel;
};

}  // namespace PluginSDK

#endif

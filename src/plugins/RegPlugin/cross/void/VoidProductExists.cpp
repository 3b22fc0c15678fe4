#include "cross/void/VoidProductExists.h"

#include "PluginSDK/PluginResult.h"

namespace RegPlugin {

VoidProductExists::VoidProductExists() = default;

VoidProductExists::~VoidProductExists() = default;

void VoidProductExists::disposeExpression() {}

TErrorCode VoidProductExists::getScalarResult(PluginSDK::String& result) {
    result = PLUGIN_RESULT_FALSE;
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin

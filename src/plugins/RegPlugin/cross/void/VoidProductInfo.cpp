#include "cross/void/VoidProductInfo.h"

namespace RegPlugin {

VoidProductInfo::VoidProductInfo() = default;

VoidProductInfo::~VoidProductInfo() = default;

void VoidProductInfo::disposeExpression() {}

TErrorCode VoidProductInfo::getScalarResult(PluginSDK::String& result) {
    result = static_cast<const wchar_t*>(nullptr);
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin

#include "cross/void/VoidProductList.h"

namespace RegPlugin {

VoidProductList::VoidProductList() = default;

VoidProductList::~VoidProductList() = default;

void VoidProductList::disposeExpression() {}

TErrorCode VoidProductList::enumPackages(RegistryPackage::Type /*type*/,
                                         PluginSDK::StringVector& /*out*/) {
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin

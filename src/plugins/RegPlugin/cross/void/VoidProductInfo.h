// "VoidProductInfo": the Info query of a registry that is never present.
#ifndef REGPLUGIN_CROSS_VOID_VOIDPRODUCTINFO_H
#define REGPLUGIN_CROSS_VOID_VOIDPRODUCTINFO_H

#include "PluginSDK/ScalarOperand.h"

namespace RegPlugin {

class VoidProductInfo : public PluginSDK::ScalarOperand {
  public:
    VoidProductInfo();
    ~VoidProductInfo() override;

    // Nothing to release.
    void disposeExpression() override;
    // Sets `result` to the empty text and returns 0, whatever the properties.
    TErrorCode getScalarResult(PluginSDK::String& result) override;
};

}  // namespace RegPlugin

#endif

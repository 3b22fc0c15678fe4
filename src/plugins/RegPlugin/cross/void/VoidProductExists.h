// "VoidProductExists": the Exists query of a registry that is never present.
#ifndef REGPLUGIN_CROSS_VOID_VOIDPRODUCTEXISTS_H
#define REGPLUGIN_CROSS_VOID_VOIDPRODUCTEXISTS_H

#include "PluginSDK/ScalarOperand.h"

namespace RegPlugin {

class VoidProductExists : public PluginSDK::ScalarOperand {
  public:
    VoidProductExists();
    ~VoidProductExists() override;

    // Nothing to release.
    void disposeExpression() override;
    // Sets `result` to PLUGIN_RESULT_FALSE and returns 0, whatever the properties.
    TErrorCode getScalarResult(PluginSDK::String& result) override;
};

}  // namespace RegPlugin

#endif

// A scalar expression that is an operand: always ready to be evaluated.
#ifndef PLUGINSDK_SCALAROPERAND_H
#define PLUGINSDK_SCALAROPERAND_H

#include "PluginSDK/ScalarExpression.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API ScalarOperand : public ScalarExpression {
  public:
    ~ScalarOperand() override;
    int isOperator() override;  // 0
    int isReady() override;     // 1
};

}  // namespace PluginSDK

#endif

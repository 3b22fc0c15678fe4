// A vector expression that is an operand: always ready to be evaluated.
#ifndef PLUGINSDK_VECTOROPERAND_H
#define PLUGINSDK_VECTOROPERAND_H

#include "PluginSDK/VectorExpression.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API VectorOperand : public VectorExpression {
  public:
    ~VectorOperand() override;
    int isOperator() override;  // 0
    int isReady() override;     // 1
};

}  // namespace PluginSDK

#endif

// An expression whose result is one string.
#ifndef PLUGINSDK_SCALAREXPRESSION_H
#define PLUGINSDK_SCALAREXPRESSION_H

#include "PluginSDK/Expression.h"
#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API ScalarExpression : public Expression {
  public:
    ~ScalarExpression() override;
    // 1 for an operator, 0 for an operand.
    virtual int isOperator() = 0;
    // EXPRESSION_TYPE_SCALAR.
    virtual int getType();
    // 1 when the expression can be evaluated.
    virtual int isReady() = 0;
    // Releases what the expression holds for the host; called before destruction.
    virtual void disposeExpression() = 0;
    // Evaluates the expression into `result`; returns 0 or an error code.
    virtual TErrorCode getScalarResult(String& result) = 0;
};

}  // namespace PluginSDK

#endif

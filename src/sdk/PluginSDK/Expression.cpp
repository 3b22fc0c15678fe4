#include "PluginSDK/Expression.h"

#include "PluginSDK/ScalarExpression.h"
#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "PluginSDK/VectorExpression.h"
#include "PluginSDK/VectorOperand.h"

namespace PluginSDK {

Expression::Expression() = default;
Expression::~Expression() = default;

const wchar_t* Expression::getProperty(const wchar_t* name) const {
    if (name == nullptr) {
        return nullptr;
    }
    auto found = m_properties.find(name);
    return found == m_properties.end() ? nullptr : found->second.c_str();
}

void Expression::setProperty(const wchar_t* name, const wchar_t* value) {
    if (name == nullptr) {
        return;
    }
    if (value == nullptr) {
        m_properties.erase(name);
    } else {
        m_properties[name] = value;
    }
}

ScalarExpression::~ScalarExpression() = default;
int ScalarExpression::getType() {
    return EXPRESSION_TYPE_SCALAR;
}

ScalarOperand::~ScalarOperand() = default;
int ScalarOperand::isOperator() {
    return 0;
}
int ScalarOperand::isReady() {
    return 1;
}

VectorExpression::~VectorExpression() = default;
int VectorExpression::getType() {
    return EXPRESSION_TYPE_VECTOR;
}

VectorOperand::~VectorOperand() = default;
int VectorOperand::isOperator() {
    return 0;
}
int VectorOperand::isReady() {
    return 1;
}

UnknownSoftwareRepository::UnknownSoftwareRepository() = default;
UnknownSoftwareRepository::~UnknownSoftwareRepository() = default;

}  // namespace PluginSDK

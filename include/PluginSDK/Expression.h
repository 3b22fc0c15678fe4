// The base of every expression: the property set that the host fills in from the
// expression's definition before it asks for a result.
#ifndef PLUGINSDK_EXPRESSION_H
#define PLUGINSDK_EXPRESSION_H

#include <map>
#include <string>

#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API Expression {
  public:
    Expression();
    virtual ~Expression();
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    // The value of the property `name`, or null when it was never set (or `name` is
    // null). An empty value is a set property. The pointer stays valid until the
    // property is set again or the expression is destroyed.
    const wchar_t* getProperty(const wchar_t* name) const;

    // Host side: sets the property `name` to `value`, replacing an earlier value; a
    // null `value` removes the property. A null `name` is ignored.
    void setProperty(const wchar_t* name, const wchar_t* value);

  private:
    std::map<std::wstring, std::wstring> m_properties;
};

}  // namespace PluginSDK

#endif

// The expressions that createExpression can build, one row per name.
//
// A registry makes its expressions creatable by adding one row per class to the
// table in ExpressionTable.cpp; the plug-in object does not change. Names that
// are announced but have no row are answered with ERROR_NO_SUCH_EXPRESSION.
#ifndef REGPLUGIN_EXPRESSIONTABLE_H
#define REGPLUGIN_EXPRESSIONTABLE_H

#include <cstddef>

#include "PluginSDK/Expression.h"

namespace RegPlugin {

// Builds one new expression owned by the caller.
typedef PluginSDK::Expression* (*ExpressionFactory)();

struct ExpressionTableRow {
    const wchar_t* name;  // one of the REG_PLUGIN_EXPRESSION_* constants
    ExpressionFactory create;
};

// The rows in dispatch order (the order in which the names are announced), and
// their number in `count`. The array lives as long as the library.
const ExpressionTableRow* expressionTable(std::size_t& count);

// The row whose name equals `name` exactly (case-sensitive), the first one in
// table order; null when there is none or `name` is null.
const ExpressionTableRow* findExpression(const wchar_t* name);

}  // namespace RegPlugin

#endif

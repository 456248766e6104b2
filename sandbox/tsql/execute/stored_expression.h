// Expressions of defaults, checks and computed columns as the catalogue keeps and shows them. Used where tables are
// made and altered.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/tsql/syntax/ast_expression.h"

namespace sandbox {

// "([a]>(0) AND [b] like 'x%')", "((1))", "(getdate())". What there is no rule for here (CASE, casts, floats, NOT)
// leaves the whole as it was written, within one pair of parentheses.
[[nodiscard]] std::string storedExpression(const ast::Expr& expression, std::string_view written);

}  // namespace sandbox

// From T-SQL text to a syntax tree. A batch is parsed whole before any of it runs. Errors are thrown as SqlError with
// the number, line and text that SQL Server gives, severity 15 and Effect::Batch; nothing is ever half parsed.
#pragma once

#include <string_view>
#include <vector>

#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

struct ParseOptions {
    bool quotedIdentifier = true;  // OFF: "double quotes" are text
    int firstLine = 1;             // line number of the text's first line
};

// Text is UTF-8. An empty text, or one of comments only, is a batch without statements.
[[nodiscard]] ast::Batch parseBatch(std::string_view text, const ParseOptions& options = {});

// A value alone, as a stored default or a computed column is.
[[nodiscard]] ast::ExprPtr parseExpression(std::string_view text, const ParseOptions& options = {});

// A condition alone, as a stored check constraint is.
[[nodiscard]] ast::ExprPtr parseCondition(std::string_view text, const ParseOptions& options = {});

// "@a int, @b varchar(10) OUTPUT"; an empty text declares nothing.
[[nodiscard]] std::vector<ast::Parameter> parseDeclarations(std::string_view text, const ParseOptions& options = {});

// The statement that announces a bulk load: it must be that one alone.
[[nodiscard]] ast::InsertBulk parseInsertBulk(std::string_view text, const ParseOptions& options = {});

}  // namespace sandbox

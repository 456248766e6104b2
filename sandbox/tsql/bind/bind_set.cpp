// Rows put together: UNION, EXCEPT and INTERSECT with their common types, and tables of VALUES.
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {

namespace {

std::string_view nameOf(ast::SetOperator op) {
    switch (op) {
        case ast::SetOperator::UnionAll: return "UNION ALL";
        case ast::SetOperator::Except: return "EXCEPT";
        case ast::SetOperator::Intersect: return "INTERSECT";
        default: return "UNION";
    }
}

}  // namespace

QueryNodePtr Binder::setOperation(const ast::SetOperation& operation, Scope* parent, SelectExtras* extras) {
    auto node = std::make_unique<QueryNode>();
    node->op = operation.op;
    node->notUpdatable = NotUpdatable::Union;
    node->left = body(*operation.left, parent, nullptr, extras);
    node->right = body(*operation.right, parent, nullptr, nullptr);
    node->failed = node->left->failed || node->right->failed;
    const int line = operation.left->place.line;
    const std::vector<OutputColumn>& left = node->left->columns;
    const std::vector<OutputColumn>& right = node->right->columns;
    if (node->failed) {
        node->columns = left;
        return node;
    }
    if (left.size() != right.size()) {
        fail(errorMessage<205>(), line);
        node->failed = true;
        node->columns = left;
        return node;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        OutputColumn column = left[i];
        column.identity = false;
        column.updatable = false;
        column.base = {};
        column.nullable = left[i].nullable || right[i].nullable;
        column.failed = left[i].failed || right[i].failed;
        if (!column.failed) {
            const bool bothNull = left[i].type.id == TypeId::Null && right[i].type.id == TypeId::Null;
            const bool met = guard(line, [&] {
                if (!bothNull) column.type = commonType(left[i].type, right[i].type);
            });
            if (met && node->op != ast::SetOperator::UnionAll && !isComparable(column.type)) {
                fail(errorMessage<5335>(typeName(column.type)), line);
            }
        }
        const bool atOdds = left[i].coercibility == Coercibility::Implicit &&
                            right[i].coercibility == Coercibility::Implicit &&
                            !sandbox::sameName(left[i].collation, right[i].collation);
        if (right[i].coercibility > column.coercibility) {
            column.coercibility = right[i].coercibility;
            column.collation = right[i].collation;
            column.conflict = right[i].conflict;
        } else if (atOdds) {
            if (node->op == ast::SetOperator::UnionAll) {
                column.coercibility = Coercibility::Conflict;
                column.conflict =
                    "\"" + left[i].collation + "\" and \"" + right[i].collation + "\" in the UNION ALL operator";
            } else {
                fail(errorMessage<468>(left[i].collation, right[i].collation, nameOf(node->op)), line);
            }
        }
        node->columns.push_back(std::move(column));
    }
    if (extras != nullptr && extras->into) {
        for (std::size_t i = 0; i < node->columns.size() && i < extras->into->columns.size(); ++i) {
            ColumnDef& column = extras->into->columns[i];
            column.type = node->columns[i].type;
            column.nullable = node->columns[i].nullable;
            column.identity = false;
        }
    }
    return node;
}

QueryNodePtr Binder::values(const std::vector<ast::ExprList>& rows, Scope* parent, int line) {
    Scope scope;
    scope.parent = parent;
    scope.clause = Clause::Values;
    auto node = std::make_unique<QueryNode>();
    const std::size_t width = rows.front().size();
    std::vector<std::vector<Bound>> cells(width);  // by column
    for (const ast::ExprList& row : rows) {
        if (row.size() != width) {
            fail(errorMessage<10709>(), line);
            node->failed = true;
            return node;
        }
        for (std::size_t i = 0; i < width; ++i) cells[i].push_back(value(*row[i], scope));
    }
    const std::string alias = newAlias('v');
    for (std::size_t i = 0; i < width; ++i) {
        Bound column = unify(cells[i], line);
        column.sql = alias + ".column" + std::to_string(i + 1);
        column.constant = false;
        node->columns.push_back(outputOf(column, ""));
        node->items.push_back(std::move(column));
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
        node->from += r == 0 ? "(VALUES (" : ", (";
        for (std::size_t i = 0; i < width; ++i) node->from += (i == 0 ? "" : ", ") + cells[i][r].sql;
        node->from += ")";
    }
    node->from += ") AS " + alias;
    node->fromTables = 1;
    node->inlineable = true;
    return node;
}

}  // namespace sandbox::binder

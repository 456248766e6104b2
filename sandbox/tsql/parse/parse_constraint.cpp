// Constraints of columns and tables.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

bool Parser::seesConstraint() const {
    return seesAnyWord({"CONSTRAINT", "PRIMARY", "UNIQUE", "FOREIGN", "REFERENCES", "CHECK", "DEFAULT"});
}

void Parser::refuseSubquery(const ast::Expr& expr) const {
    ast::forEachExpr(expr, [&](const ast::Expr& each) {
        if (!ast::as<ast::Subquery>(each) && !ast::as<ast::Exists>(each)) return;
        fail(errorMessage<1046>(), each.place);
    });
}

// [CONSTRAINT name] (PRIMARY KEY ... | UNIQUE ... | [FOREIGN KEY [( columns )]] REFERENCES ...
//     | CHECK [NOT FOR REPLICATION] ( condition ) | DEFAULT value [FOR column] [WITH VALUES])
ast::Constraint Parser::constraint() {
    ast::Constraint node;
    node.place = peek().place;
    if (acceptWord("CONSTRAINT")) node.name = identifier();
    if (acceptWord("PRIMARY")) {
        expectWord("KEY");
        node.kind = ast::Constraint::Kind::PrimaryKey;
        keyConstraint(node);
    } else if (acceptWord("UNIQUE")) {
        node.kind = ast::Constraint::Kind::Unique;
        keyConstraint(node);
    } else if (seesAnyWord({"FOREIGN", "REFERENCES"})) {
        node.kind = ast::Constraint::Kind::ForeignKey;
        referenceConstraint(node);
    } else if (acceptWord("CHECK")) {
        node.kind = ast::Constraint::Kind::Check;
        if (acceptWords("NOT", "FOR")) expectWord("REPLICATION");
        const std::uint32_t begin = peek().place.offset;
        expectSymbol("(");
        node.expr = condition();
        refuseSubquery(*node.expr);
        expectSymbol(")");
        node.exprText = textOf({begin, previous().end});
    } else {
        expectWord("DEFAULT");
        node.kind = ast::Constraint::Kind::Default;
        node.expr = value();
        refuseSubquery(*node.expr);
        node.exprText = textOf(node.expr->text);
        if (acceptWord("FOR")) node.forColumn = identifier();
        node.withValues = acceptWords("WITH", "VALUES");
    }
    return node;
}

// [CLUSTERED | NONCLUSTERED] [( column [ASC | DESC] {, ...} )] [options] [ON place]
void Parser::keyConstraint(ast::Constraint& node) {
    if (seesAnyWord({"CLUSTERED", "NONCLUSTERED"})) node.clustered = take().upper == "CLUSTERED";
    if (seesSymbol("(")) node.columns = indexColumns();
    indexOptions();
    tableStorage();
}

// [FOREIGN KEY [( columns )]] REFERENCES name [( columns )] {ON (DELETE | UPDATE) action} [NOT FOR REPLICATION]
void Parser::referenceConstraint(ast::Constraint& node) {
    if (acceptWord("FOREIGN")) {
        expectWord("KEY");
        if (seesSymbol("(")) {
            take();
            do {
                ast::IndexColumn column;
                column.place = peek().place;
                column.name = identifier();
                node.columns.push_back(std::move(column));
            } while (acceptSymbol(","));
            expectSymbol(")");
        }
    }
    expectWord("REFERENCES");
    node.parent = objectName();
    if (seesSymbol("(")) node.parentColumns = identifierList();
    while (seesWord("ON") && seesAnyWord({"DELETE", "UPDATE"}, 1)) {
        take();
        ast::ReferenceAction& action = take().upper == "DELETE" ? node.onDelete : node.onUpdate;
        if (acceptWord("CASCADE")) {
            action = ast::ReferenceAction::Cascade;
        } else if (acceptWord("SET")) {
            action = expectAnyWord({"NULL", "DEFAULT"}) == "NULL" ? ast::ReferenceAction::SetNull
                                                                  : ast::ReferenceAction::SetDefault;
        } else {
            expectWord("NO");
            expectWord("ACTION");
            action = ast::ReferenceAction::NoAction;
        }
    }
    if (acceptWords("NOT", "FOR")) expectWord("REPLICATION");
}

}  // namespace sandbox

// CREATE TABLE and ALTER TABLE.
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// CREATE TABLE name definition [storage]
Parser::Node Parser::createTable() {
    expectWord("TABLE");
    ast::CreateTable node;
    node.table = objectName();
    node.definition = tableDefinition();
    tableStorage();
    return node;
}

// ( element {, element} [,] )
ast::TableDefinition Parser::tableDefinition() {
    ast::TableDefinition definition;
    expectSymbol("(");
    do {
        if (!definition.columns.empty() && seesSymbol(")")) break;
        tableElement(definition);
    } while (acceptSymbol(","));
    if (definition.columns.empty()) unexpected();
    expectSymbol(")");
    return definition;
}

// element := constraint | INDEX name [UNIQUE] [CLUSTERED | NONCLUSTERED] ( columns ) | column
// The comma before a constraint may be missing.
void Parser::tableElement(ast::TableDefinition& definition) {
    if (seesConstraint()) {
        definition.constraints.push_back(constraint());
        const ast::Constraint& made = definition.constraints.back();
        const bool ofColumns = made.kind != ast::Constraint::Kind::Check && made.kind != ast::Constraint::Kind::Default;
        if (ofColumns && made.columns.empty()) unexpected();
        return;
    }
    if (acceptWord("INDEX")) {
        ast::TableDefinition::InlineIndex index;
        index.name = identifier();
        index.unique = acceptWord("UNIQUE");
        if (seesAnyWord({"CLUSTERED", "NONCLUSTERED"})) index.clustered = take().upper == "CLUSTERED";
        index.columns = indexColumns();
        indexOptions();
        tableStorage();
        definition.indexes.push_back(std::move(index));
        return;
    }
    if (seesAnyWord({"PERIOD"}) && seesWord("FOR", 1)) unsupported("PERIOD FOR SYSTEM_TIME");
    definition.columns.push_back(columnDefinition());
}

// name (AS value [PERSISTED [NOT NULL]] | type) {option} | TIMESTAMP {option}
ast::ColumnDefinition Parser::columnDefinition() {
    ast::ColumnDefinition column;
    column.place = peek().place;
    column.name = identifier();
    if (acceptWord("AS")) {
        column.computed = value();
        column.computedText = textOf(column.computed->text);
        column.persisted = acceptWord("PERSISTED");
    } else {
        const bool bare = seesSymbol(",") || seesSymbol(")") || seesAnyWord({"NULL", "NOT"});
        if (bare && sameName(column.name, "timestamp")) {
            column.type.place = column.place;
            column.type.written = "timestamp";
            typeSize(column.type, TypeUse::Declared, {});
        } else {
            if (seesSymbol(",") || seesSymbol(")")) fail(errorMessage<173>(column.name), column.place);
            column.type = typeName(TypeUse::Declared, "column '" + column.name + "'");
        }
    }
    while (columnOption(column)) {
    }
    return column;
}

// option := NULL | NOT NULL | IDENTITY [( seed , increment )] [NOT FOR REPLICATION] | ROWGUIDCOL | COLLATE name
//         | constraint
bool Parser::columnOption(ast::ColumnDefinition& column) {
    if (acceptWord("NULL")) {
        column.nullable = true;
    } else if (seesWord("NOT") && seesWord("NULL", 1)) {
        at_ += 2;
        column.nullable = false;
    } else if (seesWord("NOT") && seesWord("FOR", 1) && column.identity) {
        at_ += 2;
        expectWord("REPLICATION");
    } else if (acceptWord("IDENTITY")) {
        column.identity = identity();
    } else if (acceptWord("ROWGUIDCOL")) {
        column.rowGuid = true;
    } else if (acceptWord("COLLATE")) {
        column.collation = identifier();
    } else if (seesAnyWord({"SPARSE", "MASKED", "ENCRYPTED", "GENERATED", "FILESTREAM", "HIDDEN"})) {
        unsupported(peek().upper);
    } else if (seesConstraint()) {
        column.constraints.push_back(constraint());
    } else {
        return false;
    }
    return true;
}

// [( seed , increment )]
ast::Identity Parser::identity() {
    ast::Identity node;
    if (!acceptSymbol("(")) return node;
    node.seed = integer();
    expectSymbol(",");
    node.increment = integer();
    expectSymbol(")");
    return node;
}

// {ON place | TEXTIMAGE_ON place | FILESTREAM_ON place | WITH ( options )}: where and how the table is stored means
// nothing here, as it means nothing to those who read the table.
void Parser::tableStorage() {
    while (true) {
        if (seesAnyWord({"ON", "TEXTIMAGE_ON", "FILESTREAM_ON"})) {
            take();
            if (!acceptWord("PRIMARY") && !acceptWord("DEFAULT")) identifier();
            if (seesSymbol("(")) identifierList();
        } else if (seesWord("WITH") && seesSymbol("(", 1)) {
            take();
            optionTexts();
        } else {
            return;
        }
    }
}

// ALTER TABLE name (ALTER COLUMN column | [WITH (CHECK | NOCHECK)] ADD element {, element} | DROP ...
//     | [WITH (CHECK | NOCHECK)] (CHECK | NOCHECK) CONSTRAINT ... | (ENABLE | DISABLE) TRIGGER names)
Parser::Node Parser::alterTable() {
    expectWord("TABLE");
    ast::AlterTable node;
    node.table = objectName();
    bool withCheck = false;
    bool withNoCheck = false;
    if (acceptWord("WITH")) {
        withCheck = expectAnyWord({"CHECK", "NOCHECK"}) == "CHECK";
        withNoCheck = !withCheck;
        if (!seesAnyWord({"ADD", "CHECK", "NOCHECK"})) unexpected();
    }
    if (acceptWord("ADD")) {
        ast::AlterTable::Add add{.withNoCheck = withNoCheck};
        do {
            tableElement(add.definition);
        } while (acceptSymbol(","));
        node.action = std::move(add);
    } else if (acceptWord("ALTER")) {
        expectWord("COLUMN");
        if (seesIdentifier() && seesAnyWord({"ADD", "DROP"}, 1)) unsupported("ALTER COLUMN " + peek(1).upper);
        node.action = ast::AlterTable::AlterColumn{columnDefinition()};
    } else if (acceptWord("DROP")) {
        node.action = alterTableDrop();
    } else if (seesAnyWord({"CHECK", "NOCHECK"})) {
        node.action = checkConstraint(withCheck);
    } else if (seesAnyWord({"ENABLE", "DISABLE"}) && seesWord("TRIGGER", 1)) {
        node.action = ast::AlterTable::Trigger{take().upper == "ENABLE"};
        take();
        do {
            if (!acceptWord("ALL")) objectName();
        } while (acceptSymbol(","));
    } else if (seesAnyWord({"SWITCH", "REBUILD", "SET"})) {
        unsupported("ALTER TABLE " + peek().upper);
    } else {
        unexpected();
    }
    return node;
}

// [COLUMN | CONSTRAINT] [IF EXISTS] name {, ...}; the word holds until another one comes
ast::AlterTable::Drop Parser::alterTableDrop() {
    ast::AlterTable::Drop drop;
    bool isColumn = false;
    do {
        ast::AlterTable::DropItem item;
        if (acceptWord("COLUMN"))
            isColumn = true;
        else if (acceptWord("CONSTRAINT"))
            isColumn = false;
        item.ifExists = acceptWords("IF", "EXISTS");
        item.isColumn = isColumn;
        item.place = peek().place;
        item.name = identifier();
        if (!isColumn && seesWord("WITH") && seesSymbol("(", 1)) {
            take();
            optionTexts();
        }
        drop.items.push_back(std::move(item));
    } while (acceptSymbol(","));
    return drop;
}

// (CHECK | NOCHECK) CONSTRAINT (ALL | name {, name})
ast::AlterTable::CheckConstraint Parser::checkConstraint(bool withCheck) {
    ast::AlterTable::CheckConstraint node;
    node.enable = take().upper == "CHECK";
    node.withCheck = withCheck;
    expectWord("CONSTRAINT");
    node.all = acceptWord("ALL");
    if (node.all) return node;
    do {
        node.names.push_back(identifier());
    } while (acceptSymbol(","));
    return node;
}

}  // namespace sandbox

// CREATE INDEX and DROP INDEX.
#include <algorithm>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// ( column [ASC | DESC] {, ...} )
std::vector<ast::IndexColumn> Parser::indexColumns() {
    std::vector<ast::IndexColumn> columns;
    expectSymbol("(");
    do {
        ast::IndexColumn column;
        column.place = peek().place;
        column.name = identifier();
        column.descending = acceptWord("DESC");
        if (!column.descending) acceptWord("ASC");
        columns.push_back(std::move(column));
    } while (acceptSymbol(","));
    expectSymbol(")");
    return columns;
}

// [WITH (( options ) | option {, option})]; option := name [= (value | ON | OFF)]
std::vector<std::string> Parser::indexOptions() {
    if (!seesWord("WITH")) return {};
    if (seesSymbol("(", 1)) {
        take();
        return optionTexts();
    }
    if (!seesAnyWord(
            {"FILLFACTOR", "PAD_INDEX", "IGNORE_DUP_KEY", "DROP_EXISTING", "STATISTICS_NORECOMPUTE", "SORT_IN_TEMPDB"},
            1)) {
        return {};
    }
    take();
    std::vector<std::string> options;
    do {
        std::string option = identifierOrReserved();
        for (char& c : option) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
        if (acceptSymbol("=")) {
            option += seesAnyWord({"ON", "OFF"}) ? " = " + take().upper : " = " + std::to_string(integer());
        }
        options.push_back(std::move(option));
    } while (acceptSymbol(","));
    return options;
}

// CREATE [UNIQUE] [CLUSTERED | NONCLUSTERED] INDEX name ON table ( columns ) [INCLUDE ( columns )] [WHERE condition]
//     [WITH ...] [ON place]
Parser::Node Parser::createIndex() {
    ast::CreateIndex node;
    node.unique = acceptWord("UNIQUE");
    node.clustered = acceptWord("CLUSTERED");
    if (!node.clustered) acceptWord("NONCLUSTERED");
    if (seesWord("COLUMNSTORE")) unsupported("COLUMNSTORE");
    expectWord("INDEX");
    node.namePlace = peek().place;
    node.name = identifier();
    expectWord("ON");
    node.table = objectName();
    node.columns = indexColumns();
    if (acceptWord("INCLUDE")) node.included = identifierList();
    if (acceptWord("WHERE")) {
        node.where = condition();
        node.whereText = textOf(node.where->text);
    }
    const std::vector<std::string> options = indexOptions();
    node.dropExisting = std::ranges::find(options, "DROP_EXISTING = ON") != options.end() ||
                        std::ranges::find(options, "DROP_EXISTING") != options.end();
    node.ignoreDuplicates = std::ranges::find(options, "IGNORE_DUP_KEY = ON") != options.end() ||
                            std::ranges::find(options, "IGNORE_DUP_KEY") != options.end();
    tableStorage();
    return node;
}

// DROP INDEX [IF EXISTS] (table.name | name ON table [WITH ( options )]) {, ...}
Parser::Node Parser::dropIndex() {
    expectWord("INDEX");
    ast::DropIndex node;
    node.ifExists = acceptWords("IF", "EXISTS");
    do {
        ast::DropIndex::Item item;
        item.place = peek().place;
        std::vector<std::string> parts = nameParts();
        item.name = std::move(parts.back());
        parts.pop_back();
        if (acceptWord("ON")) {
            if (!parts.empty()) unexpected();
            item.table = objectName();
            if (seesWord("WITH") && seesSymbol("(", 1)) {
                take();
                optionTexts();
            }
        } else {
            if (parts.empty()) {
                fail(errorMessage<159>(), item.place);
            }
            item.table = makeObjectName(parts, item.place);
        }
        node.items.push_back(std::move(item));
    } while (acceptSymbol(","));
    return node;
}

}  // namespace sandbox

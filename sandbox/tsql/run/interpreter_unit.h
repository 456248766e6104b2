// One parsed text with everything known about it: a batch, the body of a procedure, the text of EXEC or sp_executesql.
// It keeps the bound form of each syntax tree node, so that running it again costs neither parsing nor binding. A unit
// belongs to one session.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

// What the binder made of one node; nothing while an object that it names is missing.
struct BoundNode {
    std::variant<std::monostate, BoundQuery, BoundInsert, BoundUpdate, BoundDelete> bound;
    int options = 0;          // the session's settings that it was bound under
    std::size_t visible = 0;  // how many of the unit's variables are declared at this place

    [[nodiscard]] BoundQuery& query();
};

struct Unit {
    struct Variable {
        std::string name;  // with its "@"
        Type type;
        bool table = false;
        bool cursor = false;
    };

    std::string text;
    ast::Batch tree;
    const ast::Statements* body = nullptr;            // in tree
    const ast::CreateProcedure* procedure = nullptr;  // in tree; its body is what runs
    std::vector<ast::Parameter> declared;             // of sp_executesql; a procedure's are in its node
    std::string name;                                 // what errors tell as their procedure; empty in a batch
    std::string database;                             // where its names are resolved
    std::string schema;                               // and first of all, of a procedure; empty: dbo
    std::vector<Variable> variables;                  // parameters first
    std::vector<const ast::Declare::Item*> tables;    // DECLARE @t TABLE, all of the body
    std::uint64_t compiledAt = 0;                     // catalogue stamp of the last whole compile pass
    int compiledOptions = 0;
    std::unordered_map<const void*, BoundNode> nodes;

    [[nodiscard]] const std::vector<ast::Parameter>& parameters() const;
    [[nodiscard]] std::optional<int> findVariable(std::string_view variable, std::size_t visible) const;
};

// Parses a text; declarations as sp_executesql takes them. Compound assignments become plain ones. Raises SqlError for
// syntax, for labels (132, 133), BREAK and CONTINUE outside of loops (135, 136), and procedures that share their batch
// (111).
[[nodiscard]] std::shared_ptr<Unit> parseUnit(std::string_view text, std::string_view declarations,
                                              bool quotedIdentifier);

// The unit that runs a procedure's body. text: its whole CREATE statement.
[[nodiscard]] std::shared_ptr<Unit> parseProcedure(std::string_view text, bool quotedIdentifier);

// Errors 2715 and 2724 of the variable or parameter at this place (from 1) of its list.
[[nodiscard]] std::vector<Message> unknownType(const std::string& variable, std::ptrdiff_t place,
                                               const std::string& type);

// Whether the statement is that label or has it inside.
[[nodiscard]] bool holdsLabel(const ast::Statement& statement, std::string_view label);

}  // namespace sandbox

// Parsing of units and the checks that need no catalogue.
#include "sandbox/tsql/run/interpreter_unit.h"

#include <set>
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parser.h"

namespace sandbox {

namespace {

[[noreturn]] void raise(Message message, int line) {
    throw SqlError(std::move(message).atLine(line), Effect::Batch);
}

std::optional<ast::BinaryOp> operatorOf(ast::AssignOp op) {
    switch (op) {
        case ast::AssignOp::Set: return std::nullopt;
        case ast::AssignOp::Add: return ast::BinaryOp::Add;
        case ast::AssignOp::Subtract: return ast::BinaryOp::Subtract;
        case ast::AssignOp::Multiply: return ast::BinaryOp::Multiply;
        case ast::AssignOp::Divide: return ast::BinaryOp::Divide;
        case ast::AssignOp::Modulo: return ast::BinaryOp::Modulo;
        case ast::AssignOp::BitAnd: return ast::BinaryOp::BitAnd;
        case ast::AssignOp::BitOr: return ast::BinaryOp::BitOr;
        case ast::AssignOp::BitXor: return ast::BinaryOp::BitXor;
    }
    return std::nullopt;
}

// SET @x += 1 becomes SET @x = @x + 1.
void makePlain(ast::SetVariable& set, const ast::Place& place) {
    const auto op = operatorOf(set.op);
    if (!op) return;
    auto left = std::make_unique<ast::Expr>();
    left->place = place;
    left->node = ast::Variable{set.variable};
    auto sum = std::make_unique<ast::Expr>();
    sum->place = place;
    sum->height = set.value->height + 1;
    sum->node = ast::Binary{*op, std::move(left), std::move(set.value)};
    set.value = std::move(sum);
    set.op = ast::AssignOp::Set;
}

void addVariable(Unit& unit, Unit::Variable variable, int line) {
    if (unit.findVariable(variable.name, unit.variables.size())) {
        raise(errorMessage<134>(variable.name), line);
    }
    unit.variables.push_back(std::move(variable));
}

struct Checks {
    Unit* unit = nullptr;  // gets the declared variables; none: only looked at
    std::set<std::string> labels;
    std::vector<std::pair<std::string, const ast::Statement*>> gotos;
    int loops = 0;

    void all(ast::Statements& statements) {
        for (auto& s : statements) one(*s);
    }

    void one(ast::Statement& s) {
        if (auto* declare = std::get_if<ast::Declare>(&s.node)) {
            if (unit) add(*declare);
        } else if (auto* set = std::get_if<ast::SetVariable>(&s.node)) {
            makePlain(*set, s.place);
        } else if (auto* block = std::get_if<ast::Block>(&s.node)) {
            all(block->body);
        } else if (auto* branch = std::get_if<ast::If>(&s.node)) {
            one(*branch->then);
            if (branch->otherwise) one(*branch->otherwise);
        } else if (auto* loop = std::get_if<ast::While>(&s.node)) {
            ++loops;
            one(*loop->body);
            --loops;
        } else if (auto* attempt = std::get_if<ast::TryCatch>(&s.node)) {
            all(attempt->tryBody);
            all(attempt->catchBody);
        } else if (auto* label = std::get_if<ast::Label>(&s.node)) {
            if (!labels.insert(foldName(label->name)).second) {
                raise(errorMessage<132>(label->name), s.place.line);
            }
        } else if (auto* jump = std::get_if<ast::Goto>(&s.node)) {
            gotos.emplace_back(jump->label, &s);
        } else if (std::holds_alternative<ast::Break>(s.node) && loops == 0) {
            raise(errorMessage<135>(), s.place.line);
        } else if (std::holds_alternative<ast::Continue>(s.node) && loops == 0) {
            raise(errorMessage<136>(), s.place.line);
        }
    }

    void add(const ast::Declare& declare) const {
        for (const auto& item : declare.items) {
            addVariable(
                *unit,
                {.name = item.name, .type = item.type.type, .table = item.table != nullptr, .cursor = item.cursor},
                item.place.line);
            if (item.table) unit->tables.push_back(&item);
        }
    }

    void finish() const {
        for (const auto& [label, statement] : gotos) {
            if (!labels.contains(foldName(label))) {
                raise(errorMessage<133>(label), statement->place.line);
            }
        }
    }
};

void check(ast::Statements& statements, Unit* unit) {
    Checks checks{.unit = unit, .labels = {}, .gotos = {}};
    checks.all(statements);
    checks.finish();
}

void addParameters(Unit& unit) {
    for (const auto& parameter : unit.parameters()) {
        addVariable(unit, {.name = parameter.name, .type = parameter.type.type}, parameter.place.line);
    }
}

void refuseSharing(const ast::Statements& statements) {
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const ast::Statement& s = *statements[i];
        const bool procedure = ast::as<ast::CreateProcedure>(s) != nullptr;
        const bool view = ast::as<ast::CreateView>(s) != nullptr;
        if ((procedure || view) && i > 0) {
            raise(errorMessage<111>(procedure ? "CREATE/ALTER PROCEDURE" : "CREATE/ALTER VIEW"), s.place.line);
        }
    }
}

}  // namespace

BoundQuery& BoundNode::query() {
    if (auto* insert = std::get_if<BoundInsert>(&bound)) return insert->source;
    if (auto* update = std::get_if<BoundUpdate>(&bound)) return update->source;
    if (auto* del = std::get_if<BoundDelete>(&bound)) return del->source;
    return std::get<BoundQuery>(bound);
}

const std::vector<ast::Parameter>& Unit::parameters() const {
    return procedure ? procedure->parameters : declared;
}

std::optional<int> Unit::findVariable(std::string_view variable, std::size_t visible) const {
    for (std::size_t i = 0; i < visible && i < variables.size(); ++i) {
        if (sameName(variables[i].name, variable)) return static_cast<int>(i);
    }
    return std::nullopt;
}

std::shared_ptr<Unit> parseUnit(std::string_view text, std::string_view declarations, bool quotedIdentifier) {
    auto unit = std::make_shared<Unit>();
    unit->text = text;
    const ParseOptions options{.quotedIdentifier = quotedIdentifier};
    unit->declared = parseDeclarations(declarations, options);
    unit->tree = parseBatch(text, options);
    refuseSharing(unit->tree.statements);
    addParameters(*unit);
    check(unit->tree.statements, unit.get());
    for (auto& s : unit->tree.statements) {
        auto* procedure = std::get_if<ast::CreateProcedure>(&s->node);
        if (!procedure) continue;
        try {
            check(procedure->body, nullptr);
        } catch (SqlError& error) {
            for (Message& message : error.messages) message.procedure = procedure->name.name;
            throw;
        }
    }
    unit->body = &unit->tree.statements;
    return unit;
}

std::shared_ptr<Unit> parseProcedure(std::string_view text, bool quotedIdentifier) {
    auto unit = std::make_shared<Unit>();
    unit->text = text;
    unit->tree = parseBatch(text, {.quotedIdentifier = quotedIdentifier});
    auto& node = std::get<ast::CreateProcedure>(unit->tree.statements.at(0)->node);
    unit->procedure = &node;
    unit->body = &node.body;
    unit->name = node.name.name;
    addParameters(*unit);
    check(node.body, unit.get());
    return unit;
}

bool holdsLabel(const ast::Statement& s, std::string_view label) {
    const auto any = [&](const ast::Statements& statements) {
        for (const auto& inner : statements) {
            if (holdsLabel(*inner, label)) return true;
        }
        return false;
    };
    if (const auto* here = ast::as<ast::Label>(s)) return sameName(here->name, label);
    if (const auto* block = ast::as<ast::Block>(s)) return any(block->body);
    if (const auto* loop = ast::as<ast::While>(s)) return holdsLabel(*loop->body, label);
    if (const auto* attempt = ast::as<ast::TryCatch>(s)) return any(attempt->tryBody) || any(attempt->catchBody);
    if (const auto* branch = ast::as<ast::If>(s)) {
        return holdsLabel(*branch->then, label) || (branch->otherwise && holdsLabel(*branch->otherwise, label));
    }
    return false;
}

}  // namespace sandbox

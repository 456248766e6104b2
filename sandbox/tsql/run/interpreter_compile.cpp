// The compile pass: every statement of a unit whose objects exist is bound before the first one runs, and their errors
// are raised together. A statement over a missing table stays unbound until it runs.
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/bind_output.h"
#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/interpreter_bound.h"

namespace sandbox {

namespace {

std::string unitKey(std::string_view text, std::string_view declarations, const SessionState& session) {
    std::string key;
    key.reserve(text.size() + declarations.size() + 32);
    key += std::to_string(session.connection->current()->id());
    key += session.settings.quotedIdentifier ? 'q' : 't';
    key += declarations;
    key += '\0';
    key += text;
    return key;
}

Message undeclared(std::string_view name, int state, int line) {
    return errorMessage<137, 2>(name).withState(state).atLine(line);
}

}  // namespace

std::vector<Message> unknownType(const std::string& variable, std::ptrdiff_t place, const std::string& type) {
    return {errorMessage<2715, 3>(place, type), errorMessage<2724>(variable)};
}

std::shared_ptr<Unit> Interpreter::unitOf(std::string_view text, std::string_view declarations) {
    const std::string key = unitKey(text, declarations, session_);
    if (auto known = session_.texts.find(key)) return known;
    auto unit = parseUnit(text, declarations, session_.settings.quotedIdentifier);
    unit->database = session_.database();
    session_.texts.put(key, unit);
    return unit;
}

BindContext Interpreter::bindContext(const Unit& unit, std::size_t visible) {
    BindContext context;
    const std::string database = compileDatabase_.empty() ? session_.database() : compileDatabase_;
    context.database = database;
    context.schema = unit.schema;
    context.collation = session_.connection->current()->facts().collation;
    context.find = [this, &unit, database](std::string_view db, std::string_view schema,
                                           std::string_view name) -> std::optional<ResolvedObject> {
        if (name.starts_with('@')) {
            const auto declared = unit.findVariable(name, unit.variables.size());
            if (!declared || !unit.variables[static_cast<std::size_t>(*declared)].table) return std::nullopt;
        }
        auto found = session_.connection->find(db.empty() ? std::string_view(database) : db, schema, name);
        if (!found) {
            if (!name.starts_with('@')) return std::nullopt;
            // Declared, and made when the unit runs.
            throw MissingObject(errorMessage<208, 1>(name), Effect::Scope);
        }
        return ResolvedObject{found->object, found->database->name(), found->database->attachedAs()};
    };
    context.variable = [&unit, visible](std::string_view name) -> std::optional<VariableRef> {
        const auto slot = unit.findVariable(name, visible);
        if (!slot || unit.variables[static_cast<std::size_t>(*slot)].table) return std::nullopt;
        return VariableRef{*slot, unit.variables[static_cast<std::size_t>(*slot)].type};
    };
    context.options = {.quotedIdentifier = session_.settings.quotedIdentifier,
                       .ansiNulls = session_.settings.ansiNulls,
                       .ansiWarnings = session_.settings.ansiWarnings,
                       .concatNullYieldsNull = session_.settings.concatNullYieldsNull};
    return context;
}

std::string Interpreter::identityInsertKey(const ResolvedObject& table) {
    return foldName(table.database + "." + table.object->schema + "." + table.object->name);
}

bool Interpreter::holds(const BoundNode& known) {
    const auto same = [this](const ResolvedObject& object) {
        Connection& connection = *session_.connection;
        const std::string& name = object.object->name;
        if (!object.passed.empty() && connection.find(object.database, object.passed, name)) return false;
        const auto now = connection.find(object.database, object.object->schema, name);
        return now && now->object == object.object;
    };
    const auto reads = [&](const BoundQuery& query) {
        for (const auto& object : query.reads) {
            if (!same(object)) return false;
        }
        return true;
    };
    if (known.options != optionBits()) return false;
    if (const auto* query = std::get_if<BoundQuery>(&known.bound)) return reads(*query);
    if (const auto* insert = std::get_if<BoundInsert>(&known.bound))
        return same(insert->target) && reads(insert->source);
    if (const auto* update = std::get_if<BoundUpdate>(&known.bound))
        return same(update->target) && reads(update->source);
    if (const auto* del = std::get_if<BoundDelete>(&known.bound)) return same(del->target) && reads(del->source);
    return false;
}

int Interpreter::optionBits() const {
    const Settings& s = session_.settings;
    return (s.ansiNulls ? 1 : 0) | (s.ansiWarnings ? 2 : 0) | (s.concatNullYieldsNull ? 4 : 0);
}

BoundNode& Interpreter::node(const void* key) {
    return frame().unit->nodes[key];
}

// One pass over a unit.
class CompilePass {
public:
    CompilePass(Interpreter& interpreter, Unit& unit)
        : interpreter_(interpreter), unit_(unit), visible_(unit.parameters().size()) {}

    void all(const ast::Statements& statements) {
        for (const auto& s : statements) one(*s);
    }

    std::vector<Message> errors;

private:
    template <class Bind>
    void bind(const void* key, int line, Bind make) {
        BoundNode& known = unit_.nodes[key];
        known.visible = visible_;
        if (interpreter_.holds(known)) return;
        known.bound = std::monostate();
        const BindContext context = interpreter_.bindContext(unit_, visible_);
        try {
            known.bound = make(context);
            known.options = interpreter_.optionBits();
        } catch (const MissingObject&) {
            known.bound = std::monostate();
        } catch (const SqlError& e) {
            for (Message m : e.messages) {
                if (m.line == 0) m.line = line;
                errors.push_back(std::move(m));
            }
        }
    }

    void scalar(const ast::ExprPtr& expr, std::optional<Type> wanted = std::nullopt) {
        if (!expr || ast::as<ast::DefaultValue>(*expr)) return;
        bind(expr.get(), expr->place.line, [&](const BindContext& c) { return bindScalar(c, *expr, wanted); });
    }

    void condition(const ast::Expr& expr) {
        bind(&expr, expr.place.line, [&](const BindContext& c) { return bindCondition(c, expr); });
    }

    void needs(const std::string& variable, int state, int line) {
        if (!variable.empty() && !unit_.findVariable(variable, visible_)) {
            errors.push_back(undeclared(variable, state, line));
        }
    }

    std::optional<Type> typeOf(const std::string& variable) const {
        const auto slot = unit_.findVariable(variable, visible_);
        if (!slot) return std::nullopt;
        return unit_.variables[static_cast<std::size_t>(*slot)].type;
    }

    void checkType(const ast::Declare::Item& item, std::ptrdiff_t place) {
        if (!item.type.known) {
            for (Message& message : unknownType(item.name, place, item.type.written)) {
                message.line = item.place.line;
                errors.push_back(std::move(message));
            }
        } else if (isLob(item.type.type.id)) {
            errors.push_back(errorMessage<2739>().atLine(item.place.line));
        }
    }

    void declare(const ast::Declare& d) {
        for (const auto& item : d.items) {
            if (!item.table && !item.cursor) checkType(item, &item - d.items.data() + 1);
            // A declaration's own value does not see it.
            scalar(item.value, item.type.type);
            ++visible_;
        }
    }

    void execute(const ast::Execute& e, int line) {
        needs(e.returnVariable, 1, line);
        needs(e.procedureVariable, 2, line);
        for (const auto& argument : e.arguments) {
            const auto* variable = argument.value ? ast::as<ast::Variable>(*argument.value) : nullptr;
            if (argument.output && !variable) {
                errors.push_back(errorMessage<179>().atLine(line));
            }
            if (variable && isCursor(variable->name)) continue;
            scalar(argument.value);
        }
        for (const auto& part : e.text) scalar(part);
    }

    [[nodiscard]] bool isCursor(const std::string& variable) const {
        const auto slot = unit_.findVariable(variable, visible_);
        return slot && unit_.variables[static_cast<std::size_t>(*slot)].cursor;
    }

    void one(const ast::Statement& s) {
        const int line = s.place.line;
        std::visit(ast::Overloaded{
                       [&](const ast::Block& n) { all(n.body); },
                       [&](const ast::If& n) {
                           condition(*n.condition);
                           one(*n.then);
                           if (n.otherwise) one(*n.otherwise);
                       },
                       [&](const ast::While& n) {
                           condition(*n.condition);
                           one(*n.body);
                       },
                       [&](const ast::TryCatch& n) {
                           all(n.tryBody);
                           all(n.catchBody);
                       },
                       [&](const ast::Declare& n) { declare(n); },
                       [&](const ast::SetVariable& n) {
                           needs(n.variable, 1, line);
                           if (typeOf(n.variable) && !isCursor(n.variable)) scalar(n.value, typeOf(n.variable));
                       },
                       [&](const ast::Return& n) {
                           if (n.value && !unit_.procedure) {
                               errors.push_back(errorMessage<178>().atLine(line));
                           }
                           scalar(n.value, Type{.id = TypeId::Int});
                       },
                       [&](const ast::Print& n) { scalar(n.value); },
                       [&](const ast::WaitFor& n) { scalar(n.value); },
                       [&](const ast::RaiseError& n) {
                           scalar(n.message);
                           scalar(n.severity, Type{.id = TypeId::Int});
                           scalar(n.state, Type{.id = TypeId::Int});
                           for (const auto& argument : n.arguments) scalar(argument);
                       },
                       [&](const ast::Throw& n) {
                           scalar(n.number, Type{.id = TypeId::Int});
                           scalar(n.message, Type{.id = TypeId::NVarChar, .length = 2048});
                           scalar(n.state, Type{.id = TypeId::Int});
                       },
                       [&](const ast::SetOption& n) { scalar(n.value); },
                       [&](const ast::Execute& n) { execute(n, line); },
                       [&](const ast::Transaction& n) { needs(n.variable, 2, line); },
                       [&](const ast::CursorCommand& n) {
                           for (const auto& variable : n.into) needs(variable, 2, line);
                           scalar(n.distance, Type{.id = TypeId::Int});
                       },
                       [&](const ast::DeclareCursor& n) {
                           bind(&s, line, [&](const BindContext& c) { return bindSelect(c, *n.query); });
                       },
                       [&](const ast::Use& n) { interpreter_.compileDatabase_ = n.database; },
                       [&](const ast::SelectStatement& n) {
                           bind(&s, line, [&](const BindContext& c) { return bindSelect(c, *n.query); });
                       },
                       [&](const ast::Insert& n) {
                           if (const auto* call = std::get_if<std::unique_ptr<ast::Execute>>(&n.source))
                               execute(**call, line);
                           bind(&s, line, [&](const BindContext& c) {
                               BoundInsert insert = bindInsert(c, n);
                               if (n.output) (void)bindOutput(c, *n.output, insert.target, {.inserted = true});
                               return insert;
                           });
                       },
                       [&](const ast::Update& n) {
                           bind(&s, line, [&](const BindContext& c) {
                               BoundUpdate update = bindUpdate(c, n);
                               if (n.output) {
                                   (void)bindOutput(c, *n.output, update.target, {.inserted = true, .deleted = true});
                               }
                               return update;
                           });
                       },
                       [&](const ast::Delete& n) {
                           bind(&s, line, [&](const BindContext& c) {
                               BoundDelete deletion = bindDelete(c, n);
                               if (n.output) (void)bindOutput(c, *n.output, deletion.target, {.deleted = true});
                               return deletion;
                           });
                       },
                       [&](const auto&) {},
                   },
                   s.node);
    }

    Interpreter& interpreter_;
    Unit& unit_;
    std::size_t visible_;
};

void Interpreter::compile(Unit& unit) {
    const std::uint64_t stamp = session_.stamp();
    if (unit.compiledAt == stamp && unit.compiledOptions == optionBits()) return;
    struct Restore {
        Interpreter& interpreter;
        ~Restore() { interpreter.compileDatabase_.clear(); }
    } restore{*this};
    CompilePass pass(*this, unit);
    pass.all(*unit.body);
    keepParseErrors(pass.errors);
    if (!pass.errors.empty()) throw SqlError(std::move(pass.errors), Effect::Scope);
    unit.compiledAt = stamp;
    unit.compiledOptions = optionBits();
}

BoundNode& Interpreter::boundExpression(const ast::Expr& expression, std::optional<Type> wanted) {
    return bound(&expression, [&](const BindContext& c) { return bindScalar(c, expression, wanted); });
}

BoundNode& Interpreter::boundCondition(const ast::Expr& expression) {
    return bound(&expression, [&](const BindContext& c) { return bindCondition(c, expression); });
}

}  // namespace sandbox

// Calls: EXEC of procedures and texts, requests that call procedures, parameters in and out, return status.
#include "sandbox/tsql/run/procedures.h"

#include <algorithm>
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/system/system_procedures.h"

namespace sandbox {

namespace {

constexpr int kDeepest = 32;  // nesting of procedures and texts

[[noreturn]] void raiseAt(Message message, const std::string& procedure) {
    throw SqlError(std::move(message).in(procedure).atLine(procedure.empty() ? 0 : kNoLine));
}

[[noreturn]] void raiseMissing(const ast::Parameter& parameter, const std::string& procedure, std::string_view text,
                               std::string_view declarations) {
    if (procedure.empty()) {
        raiseAt(errorMessage<8178>(declarations, text, parameter.name), procedure);
    }
    raiseAt(errorMessage<201, 4>(procedure, parameter.name), procedure);
}

}  // namespace

std::vector<int> matchArguments(const std::vector<ast::Parameter>& parameters,
                                const std::vector<CallArgument>& arguments, const std::string& procedure,
                                std::string_view text, std::string_view declarations) {
    if (parameters.empty() && !arguments.empty()) {
        raiseAt(errorMessage<8146>(procedure), procedure);
    }
    std::vector<int> places(parameters.size(), -1);
    std::vector<bool> given(parameters.size(), false);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const CallArgument& argument = arguments[i];
        std::size_t at = i;
        if (!argument.name.empty()) {
            const auto found = std::find_if(parameters.begin(), parameters.end(),
                                            [&](const ast::Parameter& p) { return sameName(p.name, argument.name); });
            if (found == parameters.end()) {
                raiseAt(errorMessage<8145>(argument.name, procedure), procedure);
            }
            at = static_cast<std::size_t>(found - parameters.begin());
        }
        if (at >= parameters.size()) {
            raiseAt(errorMessage<8144>(procedure), procedure);
        }
        if (given[at]) {
            raiseAt(errorMessage<8143>(parameters[at].name), procedure);
        }
        given[at] = true;
        if (argument.output && !parameters[at].output) {
            raiseAt(errorMessage<8162>(parameters[at].name), procedure);
        }
        places[at] = static_cast<int>(i);
    }
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const bool missing = places[i] < 0 || arguments[static_cast<std::size_t>(places[i])].useDefault;
        if (missing && !parameters[i].defaultValue) raiseMissing(parameters[i], procedure, text, declarations);
    }
    return places;
}

namespace {

// A default is a literal, or a signed one.
Typed defaultOf(const ast::Expr& expr) {
    if (const auto* literal = ast::as<ast::Literal>(expr)) return literal->value;
    if (const auto* unary = ast::as<ast::Unary>(expr)) {
        Typed value = defaultOf(*unary->operand);
        if (unary->op == ast::UnaryOp::Minus) {
            if (auto* n = std::get_if<std::int64_t>(&value.value))
                *n = -*n;
            else if (auto* d = std::get_if<double>(&value.value))
                *d = -*d;
            else if (auto* dec = std::get_if<Decimal>(&value.value))
                dec->unscaled = -dec->unscaled;
        }
        return value;
    }
    if (const auto* column = ast::as<ast::ColumnRef>(expr)) {
        return {Type{.id = TypeId::NVarChar, .length = 128}, column->name};
    }
    return {Type{}, Null{}};
}

// "db.owner.name;1" with [brackets] and "quotes", as a variable or a request holds it.
ast::ObjectName splitName(std::string_view text) {
    std::vector<std::string> parts{""};
    for (std::size_t i = 0; i < text.size() && text[i] != ';'; ++i) {
        const char c = text[i];
        if (c == '.') {
            parts.emplace_back();
        } else if (c == '[' || c == '"') {
            const char close = c == '[' ? ']' : '"';
            for (++i; i < text.size() && (text[i] != close || text.substr(i + 1).starts_with(close)); ++i) {
                if (text[i] == close) ++i;
                parts.back() += text[i];
            }
        } else {
            parts.back() += c;
        }
    }
    ast::ObjectName name;
    name.name = parts.back();
    if (parts.size() > 1) name.schema = parts[parts.size() - 2];
    if (parts.size() > 2) name.database = parts[parts.size() - 3];
    return name;
}

// The settings, the current database and the collected errors of a callee end with it.
class CalleeGuard {
public:
    CalleeGuard(SessionState& session, Reply& reply, std::shared_ptr<Database> home)
        : session_(session), reply_(reply), settings_(session.settings), database_(session.connection->current()) {
        if (home) session_.connection->use(std::move(home));
        home_ = session_.connection->current();
    }
    ~CalleeGuard() {
        session_.settings = settings_;
        session_.applySettings();
        const std::string last = session_.database();
        const bool told = session_.connection->current() != home_;  // by a USE of the callee's own
        session_.connection->use(database_);
        if (told) reply_.databaseChanged(last, database_->name());
        session_.tellProcess();
    }
    CalleeGuard(const CalleeGuard&) = delete;
    CalleeGuard& operator=(const CalleeGuard&) = delete;

private:
    SessionState& session_;
    Reply& reply_;
    Settings settings_;
    std::shared_ptr<Database> database_;  // the caller's
    std::shared_ptr<Database> home_;      // where the callee begins
};

// A system procedure whose body is T-SQL, compiled in the current database.
std::shared_ptr<Unit> systemUnit(SessionState& session, const std::string& name, std::string_view declarations,
                                 std::string_view body) {
    const std::string key = "system " + name + " " + std::to_string(session.connection->current()->id());
    if (auto known = session.texts.find(key)) return known;
    std::string text = "CREATE PROCEDURE " + name + " ";
    text += declarations;
    text += " AS ";
    text += body;
    auto unit = parseProcedure(text, true);
    unit->database = session.database();
    session.texts.put(key, unit);
    return unit;
}

}  // namespace

std::optional<FoundObject> Interpreter::findProcedure(const ast::ObjectName& name) {
    std::optional<FoundObject> found;
    const Unit* caller = session_.frame ? session_.frame->unit.get() : nullptr;
    if (caller && name.schema.empty() && !caller->schema.empty()) {
        found = session_.connection->find(name.database, caller->schema, name.name);
    }
    if (!found) found = session_.connection->find(name.database, name.schema, name.name);
    if (!found && name.schema.empty() && foldName(name.name).starts_with("sp_")) {
        found = session_.connection->find("master", {}, name.name);
    }
    if (!found || found->object->kind != ObjectKind::Procedure) return std::nullopt;
    return found;
}

std::shared_ptr<Unit> Interpreter::procedureUnit(const FoundObject& callee) {
    auto& [object, unit] = session_.procedures[{callee.database->id(), callee.object->id}];
    if (!unit || object != callee.object) {
        unit = parseProcedure(callee.object->text, session_.settings.quotedIdentifier);
        unit->name = callee.object->name;
        unit->database = callee.database->name();
        unit->schema = callee.object->schema;
        object = callee.object;
    }
    return unit;
}

std::optional<std::int32_t> Interpreter::runCallee(Frame& callee, const std::function<std::shared_ptr<Unit>()>& load,
                                                   std::vector<CallArgument>& arguments) {
    const int before = session_.transaction.count();
    bool whole = true;
    try {
        runFrame(callee, load);
    } catch (const ScopeEnded&) {
        whole = false;
    }
    const int after = session_.transaction.count();
    if (after != before) {
        SqlError mismatch(errorMessage<266>(before, after).in(callee.unit->name).atLine(kNoLine));
        fail(mismatch, nullptr, false);
    }
    if (!whole) return std::nullopt;
    const auto& parameters = callee.unit->parameters();
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const int place = callee.argumentPlaces[i];
        if (place < 0 || !arguments[static_cast<std::size_t>(place)].output) continue;
        arguments[static_cast<std::size_t>(place)].value = {parameters[i].type.type, callee.variables[i]};
    }
    return callee.status.value_or(0);
}

std::optional<std::int32_t> Interpreter::callUser(const FoundObject& callee, std::vector<CallArgument>& arguments) {
    Frame inner;
    inner.kind = Frame::Kind::Procedure;
    inner.level = (session_.frame ? session_.frame->level : 0) + 1;
    inner.procedureId = callee.object->id;
    if (inner.level > kDeepest) {
        throw SqlError(errorMessage<217>(), Effect::Batch);
    }
    CalleeGuard guard(session_, *reply_, callee.database->temporary() ? nullptr : callee.database);
    std::shared_ptr<Unit> unit = procedureUnit(callee);
    inner.argumentPlaces = matchArguments(unit->parameters(), arguments, unit->name, {}, {});
    inner.prepare = [&](Frame& frame) { fillParameters(frame, arguments); };
    return runCallee(
        inner, [&] { return std::move(unit); }, arguments);
}

void Interpreter::fillParameters(Frame& callee, const std::vector<CallArgument>& arguments) {
    const auto& parameters = callee.unit->parameters();
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const int place = callee.argumentPlaces[i];
        const CallArgument* given = place < 0 ? nullptr : &arguments[static_cast<std::size_t>(place)];
        const bool byDefault = !given || given->useDefault;
        const Typed usual = byDefault ? defaultOf(*parameters[i].defaultValue) : Typed{};
        const Typed& value = byDefault ? usual : given->value;
        const Type& type = parameters[i].type.type;
        try {
            callee.variables[i] = convert(value.value, value.type, type, session_.connection->functions().convert);
        } catch (const SqlError& e) {
            constexpr int kClash = 206;
            constexpr int kNotImplicit = 257;
            if (e.messages.front().number == kClash || e.messages.front().number == kNotImplicit) throw;
            raiseAt(errors::errorConverting(value.type, type).messages.front(), callee.unit->name);
        }
    }
}

std::optional<std::int32_t> Interpreter::runNested(std::string_view text, std::string_view declarations,
                                                   std::vector<CallArgument>& arguments, int levels,
                                                   const std::string& database, const std::string& procedure) {
    Frame inner;
    inner.kind = procedure.empty() ? Frame::Kind::Text : Frame::Kind::Procedure;
    inner.level = (session_.frame ? session_.frame->level : 0) + levels;
    if (inner.level > kDeepest) {
        throw SqlError(errorMessage<217>(), Effect::Batch);
    }
    CalleeGuard guard(session_, *reply_, database.empty() ? nullptr : session_.connection->attach(database));
    line_ = 1;
    return runCallee(
        inner,
        [&] {
            auto unit =
                procedure.empty() ? unitOf(text, declarations) : systemUnit(session_, procedure, declarations, text);
            inner.argumentPlaces = matchArguments(unit->parameters(), arguments, procedure, text, declarations);
            inner.prepare = [&](Frame& frame) { fillParameters(frame, arguments); };
            return unit;
        },
        arguments);
}

std::optional<std::int32_t> Interpreter::call(const ast::ObjectName& name, std::vector<CallArgument>& arguments) {
    if (const SystemProcedure* system = findSystemProcedure(name)) {
        return system->run(*this, *system, arguments, name.database);
    }
    const auto callee = findProcedure(name);
    if (!callee) {
        throw SqlError(errorMessage<2812>(name.written()));
    }
    return callUser(*callee, arguments);
}

std::vector<CallArgument> Interpreter::argumentsOf(const ast::Execute& n) {
    std::vector<CallArgument> arguments;
    for (const auto& given : n.arguments) {
        CallArgument argument;
        argument.name = given.name;
        argument.output = given.output;
        if (!given.value || ast::as<ast::DefaultValue>(*given.value)) {
            argument.useDefault = true;
        } else {
            argument.value = evaluate(*given.value);
            if (const auto* variable = ast::as<ast::Variable>(*given.value); variable && given.output) {
                argument.target = frame().unit->findVariable(variable->name, frame().unit->variables.size());
            }
        }
        arguments.push_back(std::move(argument));
    }
    return arguments;
}

void Interpreter::storeOutputs(const std::vector<CallArgument>& arguments) {
    for (const CallArgument& argument : arguments) {
        if (!argument.output || !argument.target) continue;
        const Type& type = frame().unit->variables.at(static_cast<std::size_t>(*argument.target)).type;
        setVariable(*argument.target,
                    convert(argument.value.value, argument.value.type, type, session_.connection->functions().convert));
    }
}

void Interpreter::runExecute(const ast::Execute& n) {
    const bool atTop = !inside();
    if (!n.text.empty()) {
        std::string text;
        for (const auto& part : n.text) {
            const Typed value = evaluate(*part);
            if (!isNull(value.value)) text += displayText(value.value, value.type);
        }
        std::vector<CallArgument> none;
        runNested(text, {}, none, 1);
        return;
    }
    std::vector<CallArgument> arguments = argumentsOf(n);
    ast::ObjectName name;
    if (n.procedure) {
        name = *n.procedure;
    } else {
        const auto slot = frame().unit->findVariable(n.procedureVariable, frame().unit->variables.size());
        const auto at = static_cast<std::size_t>(*slot);
        name = splitName(displayText(frame().variables.at(at), frame().unit->variables.at(at).type));
    }
    const auto status = call(name, arguments);
    if (!status) return;
    storeOutputs(arguments);
    if (!n.returnVariable.empty()) {
        const auto slot = frame().unit->findVariable(n.returnVariable, frame().unit->variables.size());
        const Type& type = frame().unit->variables.at(static_cast<std::size_t>(*slot)).type;
        setVariable(*slot, convert(Value{std::int64_t{*status}}, Type{.id = TypeId::Int}, type));
    }
    if (atTop) {
        reply_->returnStatus(*status);
        reply_->procedureDone();
    }
}

void Interpreter::callProcedure(const std::string& name, std::vector<CallArgument> arguments) {
    guarded([&] {
        line_ = 1;
        Frame request;
        std::optional<std::int32_t> status;
        try {
            status = call(splitName(name), arguments);
        } catch (const SqlError& e) {
            fail(e, nullptr, false);
        }
        if (!status) return;
        reply_->returnStatus(*status);
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (arguments[i].output) {
                reply_->outputParameter(static_cast<int>(i), arguments[i].name, arguments[i].value);
            }
        }
    });
    reply_->procedureDone();
}

}  // namespace sandbox

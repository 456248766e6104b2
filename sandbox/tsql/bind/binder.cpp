// What all parts of the binder share: errors, parameters, conversions, collations, names of objects.
#include "sandbox/tsql/bind/binder.h"

#include <algorithm>
#include <array>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/parse/parser.h"

namespace sandbox {

bool keepParseErrors(std::vector<Message>& errors) {
    const auto found = [](const Message& message) { return message.severity == 15; };
    if (std::none_of(errors.begin(), errors.end(), found)) return false;
    std::erase_if(errors, [&](const Message& message) { return !found(message); });
    return true;
}

}  // namespace sandbox

namespace sandbox::binder {

Binder::Binder(const BindContext& context) : context_(context), database_(context.database), schema_(context.schema) {}

int Binder::statementLine(int fallback) const {
    return context_.line != 0 ? context_.line : fallback;
}

void Binder::report(Message message) {
    if (message.procedure.empty()) message.procedure = view_;
    errors_.push_back(std::move(message));
}

Bound Binder::fail(Message message, int line) {
    report(std::move(message).atLine(line));
    Bound failed;
    failed.failed = true;
    return failed;
}

void Binder::reportMissing(const ast::ObjectName& name) {
    if (!missing_.empty()) return;
    missing_.push_back(errorMessage<208, 1>(name.written())
                           .withState(name.isTemporary() ? 0 : 1)
                           .in(view_)
                           .atLine(statementLine(name.place.line)));
}

bool Binder::guard(int line, const std::function<void()>& action) {
    try {
        action();
        return true;
    } catch (const SqlError& error) {
        for (Message message : error.messages) {
            if (message.line == 0) message.line = line;
            report(std::move(message));
        }
        return false;
    }
}

void Binder::throwIfFailed() {
    // SQL Server finds errors of severity 15 while it parses, before it looks for any object.
    if (keepParseErrors(errors_)) missing_.clear();
    if (!missing_.empty()) throw MissingObject(std::move(missing_), Effect::Scope);
    if (errors_.empty()) return;
    // The same mistake may be met twice where an expression is looked at twice.
    std::vector<Message> told;
    for (Message& error : errors_) {
        const bool again = std::any_of(told.begin(), told.end(), [&](const Message& other) {
            return other.number == error.number && other.text == error.text && other.line == error.line &&
                   other.offset == error.offset;
        });
        if (!again) told.push_back(std::move(error));
    }
    errors_.clear();
    throw SqlError(std::move(told), Effect::Scope);
}

BoundQuery Binder::finish(std::string sql) {
    throwIfFailed();
    BoundQuery out;
    out.sql = std::move(sql);
    out.parameters = std::move(parameters_);
    out.reads = std::move(reads_);
    return out;
}

std::string Binder::parameter(Parameter wanted) {
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const Parameter& known = parameters_[i];
        if (known.kind == wanted.kind && known.slot == wanted.slot && known.name == wanted.name &&
            known.kind != Parameter::Kind::Literal) {
            return "?" + std::to_string(i + 1);
        }
    }
    parameters_.push_back(std::move(wanted));
    return "?" + std::to_string(parameters_.size());
}

Bound Binder::combine(std::span<const Bound* const> operands, std::string_view operation) {
    Bound out;
    out.nullable = false;
    out.constant = true;
    for (const Bound* operand : operands) {
        out.nullable = out.nullable || operand->nullable;
        out.constant = out.constant && operand->constant;
        out.failed = out.failed || operand->failed;
        if (operand->coercibility > out.coercibility) {
            out.coercibility = operand->coercibility;
            out.collation = operand->collation;
            out.conflict = operand->conflict;
        } else if (operand->coercibility == out.coercibility && out.coercibility == Coercibility::Implicit &&
                   !sandbox::sameName(operand->collation, out.collation)) {
            out.coercibility = Coercibility::Conflict;
            out.conflict = "\"" + out.collation + "\" and \"" + operand->collation + "\"" + std::string(operation);
        }
    }
    return out;
}

std::string Binder::collationOf(const Bound& a, const Bound& b, std::string_view operation, int line) {
    const std::array<const Bound*, 2> both = {&a, &b};
    const Bound met = combine(both);
    const bool explicitClash = a.coercibility == Coercibility::Explicit && b.coercibility == Coercibility::Explicit &&
                               !sandbox::sameName(a.collation, b.collation);
    if (met.coercibility == Coercibility::Conflict || explicitClash) {
        fail(errorMessage<468>(a.collation, b.collation, operation), line);
    }
    return met.collation.empty() ? context_.collation : met.collation;
}

std::string Binder::withCollation(const Bound& bound) const {
    if (!isCharacter(bound.type.id)) return bound.sql;
    return bound.sql + " COLLATE " + sqliteCollation(bound.collation.empty() ? context_.collation : bound.collation);
}

Bound Binder::converted(const Bound& bound, const Type& to, int line) {
    Bound out = bound;
    if (bound.failed) return out;
    out.type = to;
    if (isCharacter(to.id) && out.coercibility == Coercibility::None) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    if (!isCharacter(to.id)) out.coercibility = Coercibility::None;
    if (bound.type.id == TypeId::Null || bound.type == to) return out;
    out.column = nullptr;
    out.literal.reset();
    out.isVariable = false;
    if (!guard(line, [&] {
            requireImplicitConversion(bound.type, to);
            out.sql = castSql(bound.sql, bound.type, to);
        })) {
        out.failed = true;
    }
    return out;
}

std::string Binder::stored(const Bound& bound, const ColumnDef& column, const std::string& table, int line) {
    if (bound.failed || bound.type.id == TypeId::Null) return bound.sql;
    std::string sql;
    guard(line, [&] {
        requireImplicitConversion(bound.type, column.type);
        // Without ANSI_WARNINGS text and binary are cut in silence.
        const bool cuts = !context_.options.ansiWarnings && (isCharacter(column.type.id) || isBinary(column.type.id));
        sql = cuts ? castSql(bound.sql, bound.type, column.type)
                   : storeSql(bound.sql, bound.type, column.type, table, column.name);
    });
    return sql;
}

Bound Binder::defaultOf(const ColumnDef& column) {
    if (column.defaultText.empty()) {
        Bound none;
        none.type = column.type;
        return none;
    }
    parsed_.push_back(parseExpression(column.defaultText));
    Scope nothing;
    nothing.clause = Clause::Values;
    return value(*parsed_.back(), nothing);
}

std::optional<VariableRef> Binder::assignableVariable(const std::string& name, int line) {
    const std::optional<VariableRef> found =
        viewDepth_ == 0 && context_.variable ? context_.variable(name) : std::nullopt;
    if (!found) fail(errorMessage<137, 1>(name), line);
    return found;
}

std::string Binder::setVariable(const VariableRef& variable, const Bound& value, int line) {
    const Bound fitting = converted(value, variable.type, line);
    return "t_set_var(" + std::to_string(variable.slot) + ", " + fitting.sql + ")";
}

bool isNullLiteral(const Bound& bound) {
    return bound.literal && sandbox::isNull(*bound.literal);
}

bool isComparable(const Type& type) {
    return !isLob(type.id);
}

Message notSupported(std::string_view what, int line) {
    return errorMessage<40510>(what).atLine(line);
}

}  // namespace sandbox::binder

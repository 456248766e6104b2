// Cursors: every one reads a snapshot that OPEN takes, in either direction where it scrolls. Rows cannot be changed
// through a cursor.
#include "sandbox/tsql/run/interpreter_cursor.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/run/globals.h"
#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/interpreter_bound.h"

namespace sandbox {

namespace {

bool has(const std::vector<std::string>& options, std::string_view option) {
    return std::find(options.begin(), options.end(), option) != options.end();
}

}  // namespace

bool Cursor::move(std::string_view direction, std::int64_t distance) {
    const auto count = static_cast<std::int64_t>(rows.size());
    if (direction == "FIRST") {
        at = 1;
    } else if (direction == "LAST") {
        at = count;
    } else if (direction == "PRIOR") {
        --at;
    } else if (direction == "ABSOLUTE") {
        at = distance < 0 ? count + 1 + distance : distance;
    } else {
        at += direction == "RELATIVE" ? distance : 1;
    }
    at = std::clamp<std::int64_t>(at, 0, count + 1);
    return at >= 1 && at <= count;
}

std::shared_ptr<Cursor> Interpreter::findCursor(const std::string& name, bool global) {
    const std::string key = foldName(name);
    if (!global) {
        if (const auto local = frame().cursors.find(key); local != frame().cursors.end()) return local->second;
    }
    const auto found = session_.cursors.find(key);
    if (found == session_.cursors.end()) throw SqlError(errorMessage<16916>(name));
    return found->second;
}

void Interpreter::runDeclareCursor(const ast::Statement& s, const ast::DeclareCursor& n) {
    const BoundNode& known = bound(&s, [&](const BindContext& c) { return bindSelect(c, *n.query); });
    auto cursor = std::make_shared<Cursor>();
    cursor->query = std::get<BoundQuery>(known.bound);
    for (Parameter& parameter : cursor->query.parameters) {
        if (parameter.kind == Parameter::Kind::Variable) {
            parameter.literal = frame().variables.at(static_cast<std::size_t>(parameter.slot));
        } else if (parameter.kind == Parameter::Kind::Global) {
            parameter.literal = globalValue(session_, parameter.name, parameter.type);
        }
        parameter.kind = Parameter::Kind::Literal;
    }
    const auto& options = n.options;
    cursor->scroll =
        has(options, "SCROLL") || (!has(options, "FORWARD_ONLY") && !has(options, "FAST_FORWARD") &&
                                   (has(options, "STATIC") || has(options, "KEYSET") || has(options, "DYNAMIC")));
    auto& place = has(options, "LOCAL") ? frame().cursors : session_.cursors;
    if (!place.emplace(foldName(n.name), std::move(cursor)).second) {
        throw SqlError(errorMessage<16915>(n.name));
    }
    succeed(0);
}

void Interpreter::openCursor(Cursor& cursor) {
    if (cursor.open) throw SqlError(errorMessage<16905>());
    session_.startStatement();
    Statement statement = session_.connection->prepare(cursor.query.sql);
    bindParameters(statement, cursor.query, {});
    cursor.rows.clear();
    while (statement.step()) {
        std::vector<Value>& row = cursor.rows.emplace_back();
        for (std::size_t i = 0; i < cursor.query.columns.size(); ++i) {
            row.push_back(readColumn(statement.get(), static_cast<int>(i), cursor.query.columns[i].type));
        }
    }
    cursor.open = true;
    cursor.at = 0;
    session_.cursorRows = static_cast<std::int64_t>(cursor.rows.size());
}

void Interpreter::fetch(Cursor& cursor, const ast::CursorCommand& n) {
    if (!cursor.open) throw SqlError(errorMessage<16917, 2>());
    if (n.direction != "NEXT" && !cursor.scroll) {
        std::string name = n.direction;
        std::transform(name.begin() + 1, name.end(), name.begin() + 1,
                       [](char c) { return static_cast<char>(c - 'A' + 'a'); });
        throw SqlError(errorMessage<16911>(name));
    }
    const auto& columns = cursor.query.columns;
    if (!n.into.empty() && n.into.size() != columns.size()) {
        throw SqlError(errorMessage<16924>());
    }
    std::int64_t distance = 0;
    if (n.distance) {
        const Typed value = evaluate(*n.distance, Type{.id = TypeId::Int});
        if (!isNull(value.value)) distance = std::get<std::int64_t>(value.value);
    }
    const bool found = cursor.move(n.direction, distance);
    session_.fetchStatus = found ? 0 : -1;
    const std::int64_t count = found ? 1 : 0;
    if (n.into.empty()) {
        reply_->columns(columns);
        if (found) reply_->row(cursor.rows[static_cast<std::size_t>(cursor.at) - 1]);
        succeed(count);
        done(count);
        return;
    }
    for (std::size_t i = 0; found && i < columns.size(); ++i) {
        const Unit& unit = *frame().unit;
        const auto slot = unit.findVariable(n.into[i], unit.variables.size());
        const Type& type = unit.variables.at(static_cast<std::size_t>(*slot)).type;
        setVariable(*slot, convert(cursor.rows[static_cast<std::size_t>(cursor.at) - 1][i], columns[i].type, type,
                                   session_.connection->functions().convert));
    }
    succeed(count);
}

void Interpreter::runCursor(const ast::CursorCommand& n) {
    const std::shared_ptr<Cursor> cursor = findCursor(n.name, n.global);
    switch (n.kind) {
        case ast::CursorCommand::Kind::Open: openCursor(*cursor); break;
        case ast::CursorCommand::Kind::Fetch: fetch(*cursor, n); return;
        case ast::CursorCommand::Kind::Close:
            if (!cursor->open) throw SqlError(errorMessage<16917, 1>());
            cursor->open = false;
            cursor->rows.clear();
            break;
        case ast::CursorCommand::Kind::Deallocate: {
            const std::string key = foldName(n.name);
            if (n.global || frame().cursors.erase(key) == 0) session_.cursors.erase(key);
            break;
        }
    }
    succeed(0);
}

}  // namespace sandbox

// API cursors over rows that are held.
#include "sandbox/server/cursors.h"

#include <algorithm>

#include "sandbox/server/collected_reply.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

// Scroll options and concurrency options of sp_cursoropen.
constexpr std::int32_t kStatic = 0x0008;
constexpr std::int32_t kParameterized = 0x1000;
constexpr std::int32_t kAutoFetch = 0x2000;
constexpr std::int32_t kReadOnly = 0x0001;
constexpr std::int32_t kAllowDirect = 0x2000;
// The client lists what it takes besides what it asks for. The same bit in both options.
constexpr std::int32_t kCheckAccepted = 0x8000;
constexpr std::int32_t kStaticAcceptable = 0x80000;
constexpr std::int32_t kReadOnlyAcceptable = 0x10000;

// Fetch types of sp_cursorfetch.
constexpr std::int32_t kFirst = 0x01, kNext = 0x02, kPrevious = 0x04, kLast = 0x08, kAbsolute = 0x10, kRelative = 0x20,
                       kRefresh = 0x80, kInfo = 0x100, kPreviousNoAdjust = 0x200;

bool takes(std::int32_t options, std::int32_t given, std::int32_t acceptable) {
    return (options & kCheckAccepted) == 0 || (options & (given | acceptable)) != 0;
}

void end(Reply& reply) {
    reply.returnStatus(0);
    reply.procedureDone();
}

}  // namespace

// Where a call's four outputs stand; the prepared forms have their handle in front.
struct Cursors::Outputs {
    const CallArguments& arguments;
    int cursor;
    int scroll;
    int concurrency;
    int rowCount;
    std::int32_t statement = 0;  // the handle of a statement prepared by the same call
};

void Cursors::open(const CallArguments& arguments, ReplyWriter& reply) {
    Statement statement;
    statement.text = arguments.text(1, "@stmt");
    const std::int32_t scroll = arguments.integerIfGiven(2, "@scrollopt").value_or(kStatic);
    std::vector<Argument> values;
    if ((scroll & kParameterized) != 0) {
        statement.declarations = arguments.textOrEmpty(5, "@paramdef");
        values = arguments.rest(6);
    }
    run(statement, values, {arguments, 0, 2, 3, 4}, scroll, arguments.integerIfGiven(4, "@rowcount").value_or(0),
        reply);
}

void Cursors::prepare(const CallArguments& arguments, ReplyWriter& reply) {
    Statement statement{arguments.textOrEmpty(1, "@params"), arguments.text(2, "@stmt")};
    const std::vector<ResultColumn> columns = session_.describe(statement.text, statement.declarations);
    if (!columns.empty() && (arguments.integerIfGiven(3, "@options").value_or(0) & 1) != 0) {
        reply.columns(columns);
        reply.statementDone(0, true);
    }
    const std::int32_t handle = nextStatement_++;
    statements_[handle] = std::move(statement);
    reply.returnStatus(0);
    reply.outputParameter(0, arguments.nameAt(0), intValue(handle));
    reply.outputParameter(4, arguments.nameAt(4), intValue(kStatic));
    reply.outputParameter(5, arguments.nameAt(5), intValue(kReadOnly));
    reply.procedureDone();
}

void Cursors::execute(const CallArguments& arguments, ReplyWriter& reply) {
    const std::int32_t handle = arguments.integer(0, "@prepared_handle");
    const auto found = statements_.find(handle);
    if (found == statements_.end()) {
        throw SqlError(errorMessage<8179, 1>(handle));
    }
    const Statement statement = found->second;
    run(statement, arguments.rest(5), {arguments, 1, 2, 3, 4},
        arguments.integerIfGiven(2, "@scrollopt").value_or(kStatic),
        arguments.integerIfGiven(4, "@rowcount").value_or(0), reply);
}

void Cursors::prepareAndExecute(const CallArguments& arguments, ReplyWriter& reply) {
    const Statement statement{arguments.textOrEmpty(2, "@params"), arguments.text(3, "@stmt")};
    const std::int32_t handle = nextStatement_++;
    statements_[handle] = statement;
    run(statement, arguments.rest(7), {arguments, 1, 4, 5, 6, handle},
        arguments.integerIfGiven(4, "@scrollopt").value_or(kStatic),
        arguments.integerIfGiven(6, "@rowcount").value_or(0), reply);
}

void Cursors::unprepare(const CallArguments& arguments, ReplyWriter& reply) {
    const std::int32_t handle = arguments.integer(0, "@prepared_handle");
    if (statements_.erase(handle) == 0) {
        throw SqlError(errorMessage<8179, 1>(handle));
    }
    end(reply);
}

void Cursors::run(const Statement& statement, const std::vector<Argument>& values, const Outputs& outputs,
                  std::int32_t scrollOption, std::int64_t fetchSize, ReplyWriter& reply) {
    const std::int32_t concurrency =
        outputs.arguments.integerIfGiven(static_cast<std::size_t>(outputs.concurrency), "@ccopt").value_or(0);
    const bool acceptable =
        takes(scrollOption, kStatic, kStaticAcceptable) && takes(concurrency, kReadOnly, kReadOnlyAcceptable);
    const bool mayBeDirect = (concurrency & kAllowDirect) != 0;
    if (!acceptable && !mayBeDirect) throw SqlError(errorMessage<16955>());
    RowSetReply rowSet(reply, mayBeDirect, acceptable ? 1 : 0);
    session_.execute(statement.text, statement.declarations, values, rowSet);
    if (rowSet.rowSets > 1 && !rowSet.direct) {
        throw SqlError(errorMessage<16937>());
    }
    std::int32_t handle = 0;
    if (rowSet.rowSets == 1 && !rowSet.failed && !rowSet.direct) {
        handle = nextCursor_;
        nextCursor_ += 2;
        Cursor& cursor = cursors_[handle];
        cursor.columns = std::move(rowSet.heads);
        cursor.rows = std::move(rowSet.rows);
        if ((scrollOption & kAutoFetch) != 0 && fetchSize > 0) {
            cursor.first = 1;
            cursor.count = std::min(fetchSize, static_cast<std::int64_t>(cursor.rows.size()));
            sendRows(cursor, reply);
        } else {
            describe(cursor, reply);
            reply.statementDone(0, true);
        }
    }
    const std::int64_t rowCount = handle == 0 ? 0 : static_cast<std::int64_t>(cursors_[handle].rows.size());
    const auto tell = [&](int place, std::int64_t value) {
        reply.outputParameter(place, outputs.arguments.nameAt(static_cast<std::size_t>(place)), intValue(value));
    };
    reply.returnStatus(rowSet.failed ? 1 : 0);
    if (outputs.statement != 0) tell(0, outputs.statement);
    tell(outputs.cursor, handle);
    tell(outputs.scroll, kStatic);
    tell(outputs.concurrency, kReadOnly);
    tell(outputs.rowCount, rowCount);
    reply.procedureDone();
}

void Cursors::fetch(const CallArguments& arguments, ReplyWriter& reply) {
    Cursor& cursor = find(arguments.integer(0, "@cursor"));
    const std::int32_t kind = arguments.integerIfGiven(1, "@fetchtype").value_or(kNext);
    const std::int64_t number = arguments.integerIfGiven(2, "@rownum").value_or(0);
    const std::int64_t wanted = arguments.integerIfGiven(3, "@nrows").value_or(1);
    const auto rows = static_cast<std::int64_t>(cursor.rows.size());
    std::int64_t first = cursor.first;
    switch (kind) {
        case kFirst: first = wanted > 0 ? 1 : 0; break;  // of no rows: before the first
        case kNext: first = cursor.first + cursor.count; break;
        case kPrevious:
        case kPreviousNoAdjust: first = cursor.first - wanted; break;
        case kLast: first = rows - wanted + 1; break;
        case kAbsolute: first = number < 0 ? rows + number + 1 : number; break;
        case kRelative: first = cursor.first + number; break;
        case kRefresh: break;
        case kInfo:
            reply.returnStatus(0);
            reply.outputParameter(2, arguments.nameAt(2), intValue(cursor.first));
            reply.outputParameter(3, arguments.nameAt(3), intValue(rows));
            return reply.procedureDone();
        default: throw SqlError(errorMessage<16902>("sp_cursorfetch", "fetchtype"));
    }
    if (kind == kNext && cursor.first == 0) first = 1;
    // A block that would begin before the first row begins with it, as long as some of it is there.
    if ((kind == kPrevious || kind == kLast) && first < 1 && first + wanted > 1) first = 1;
    cursor.first = std::clamp<std::int64_t>(first, 0, rows + 1);
    cursor.count =
        first < 1 ? 0 : std::clamp<std::int64_t>(rows - cursor.first + 1, 0, std::max<std::int64_t>(wanted, 0));
    sendRows(cursor, reply);
    end(reply);
}

// The state of each row, which every fetch gives too, stands behind the statement's own columns.
void Cursors::describe(const Cursor& cursor, ReplyWriter& reply) {
    std::vector<ResultColumn> columns = cursor.columns;
    ResultColumn state;
    state.name = "ROWSTAT";
    state.type.id = TypeId::Int;
    state.nullable = false;
    columns.push_back(state);
    reply.describe(columns, true);
}

void Cursors::sendRows(const Cursor& cursor, ReplyWriter& reply) {
    constexpr std::int64_t kFetched = 1;
    describe(cursor, reply);
    for (std::int64_t i = 0; i < cursor.count; ++i) {
        std::vector<Value> cells = cursor.rows[static_cast<std::size_t>(cursor.first - 1 + i)];
        cells.emplace_back(kFetched);
        reply.row(cells);
    }
    reply.statementDone(cursor.count, true);
}

void Cursors::option(const CallArguments& arguments, ReplyWriter& reply) {
    constexpr std::int32_t kCursorName = 2;
    Cursor& cursor = find(arguments.integer(0, "@cursor"));
    if (arguments.integer(1, "@code") != kCursorName) {
        throw SqlError(errorMessage<16902>("sp_cursoroption", "code"));
    }
    cursor.name = arguments.text(2, "@value");
    end(reply);
}

void Cursors::close(const CallArguments& arguments, ReplyWriter& reply) {
    constexpr std::int32_t kAll = -1;
    const std::int32_t handle = arguments.integer(0, "@cursor");
    if (handle == kAll) {
        cursors_.clear();
    } else {
        (void)find(handle);
        cursors_.erase(handle);
    }
    end(reply);
}

void Cursors::position(const CallArguments& arguments) {
    (void)find(arguments.integer(0, "@cursor"));
    throw SqlError(errorMessage<16929>());
}

void Cursors::clear() {
    cursors_.clear();
    statements_.clear();
}

Cursors::Cursor& Cursors::find(std::int32_t handle) {
    const auto found = cursors_.find(handle);
    if (found == cursors_.end()) {
        throw SqlError(errorMessage<16909>(handle));
    }
    return found->second;
}

}  // namespace sandbox::server

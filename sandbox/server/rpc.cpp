// Which procedure is done where.
#include "sandbox/server/rpc.h"

#include <array>
#include <optional>
#include <string_view>

#include "sandbox/server/collected_reply.h"
#include "sandbox/server/names.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

using tds::ProcId;

struct Known {
    ProcId id;
    std::string_view name;
};
constexpr std::array<Known, 15> kKnown = {{
    {ProcId::Cursor, "sp_cursor"},
    {ProcId::CursorOpen, "sp_cursoropen"},
    {ProcId::CursorPrepare, "sp_cursorprepare"},
    {ProcId::CursorExecute, "sp_cursorexecute"},
    {ProcId::CursorPrepExec, "sp_cursorprepexec"},
    {ProcId::CursorUnprepare, "sp_cursorunprepare"},
    {ProcId::CursorFetch, "sp_cursorfetch"},
    {ProcId::CursorOption, "sp_cursoroption"},
    {ProcId::CursorClose, "sp_cursorclose"},
    {ProcId::ExecuteSql, "sp_executesql"},
    {ProcId::Prepare, "sp_prepare"},
    {ProcId::Execute, "sp_execute"},
    {ProcId::PrepExec, "sp_prepexec"},
    {ProcId::PrepExecRpc, "sp_prepexecrpc"},
    {ProcId::Unprepare, "sp_unprepare"},
}};

std::string nameOf(ProcId id) {
    return std::string(kKnown[static_cast<std::size_t>(id) - 1].name);
}

// The procedure's number where its name, perhaps behind database and schema, is one of the server's own.
std::optional<ProcId> idOf(const tds::Call& call) {
    if (call.id) return call.id;
    std::string_view name = call.procedure;
    if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) name.remove_prefix(dot + 1);
    if (name.size() > 2 && name.front() == '[' && name.back() == ']') name = name.substr(1, name.size() - 2);
    for (const Known& k : kKnown) {
        if (sameName(name, k.name)) return k.id;
    }
    return std::nullopt;
}

std::vector<Argument> allArguments(const tds::Call& call) {
    std::vector<Argument> out;
    for (const tds::CallParameter& p : call.parameters) out.push_back(toArgument(p));
    return out;
}

}  // namespace

void CallHandler::run(const tds::Call& call, ReplyWriter& reply) {
    const std::optional<ProcId> id = idOf(call);
    try {
        if (!id || *id == ProcId::ExecuteSql) {
            session_.call(id ? nameOf(*id) : call.procedure, allArguments(call), reply);
        } else {
            dispatch(*id, call, reply);
        }
    } catch (const SqlError& e) {
        // The session has told its own errors already; those that arrive here are of the call itself.
        if (e.effect == Effect::Connection) throw;
        for (Message m : e.messages) {
            if (m.procedure.empty() && id) m.procedure = nameOf(*id);
            if (m.line == 0) m.line = 1;
            reply.error(m);
        }
        reply.returnStatus(e.messages.front().number);
        reply.procedureDone();
    }
}

void CallHandler::dispatch(ProcId id, const tds::Call& call, ReplyWriter& reply) {
    const CallArguments arguments(nameOf(id), call.parameters);
    switch (id) {
        case ProcId::Prepare: return prepared_.prepare(arguments, reply);
        case ProcId::PrepExec: return prepared_.prepareAndExecute(arguments, reply);
        case ProcId::Execute: return prepared_.execute(arguments, reply);
        case ProcId::Unprepare: return prepared_.unprepare(arguments, reply);
        case ProcId::CursorOpen: return cursors_.open(arguments, reply);
        case ProcId::CursorPrepare: return cursors_.prepare(arguments, reply);
        case ProcId::CursorExecute: return cursors_.execute(arguments, reply);
        case ProcId::CursorPrepExec: return cursors_.prepareAndExecute(arguments, reply);
        case ProcId::CursorUnprepare: return cursors_.unprepare(arguments, reply);
        case ProcId::CursorFetch: return cursors_.fetch(arguments, reply);
        case ProcId::CursorOption: return cursors_.option(arguments, reply);
        case ProcId::CursorClose: return cursors_.close(arguments, reply);
        case ProcId::Cursor: cursors_.position(arguments);
        case ProcId::ExecuteSql:
        case ProcId::PrepExecRpc: break;
    }
    throw SqlError(errorMessage<2812>(nameOf(id)));
}

void CallHandler::reset() {
    prepared_.clear();
    cursors_.clear();
}

std::string CallHandler::describe(const tds::Call& call) {
    constexpr std::size_t kTextsAmong = 4;  // behind those come the statement's own values
    const std::optional<ProcId> id = idOf(call);
    std::string out = id ? nameOf(*id) : call.procedure;
    for (std::size_t i = 0; id && i < call.parameters.size() && i < kTextsAmong; ++i) {
        if (const auto* text = std::get_if<std::string>(&call.parameters[i].value.value)) out += " " + *text;
    }
    return out;
}

}  // namespace sandbox::server

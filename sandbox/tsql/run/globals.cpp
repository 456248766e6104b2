// One row for each @@ variable.
#include "sandbox/tsql/run/globals.h"

#include <array>
#include <functional>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {

namespace {

constexpr Type kInt{.id = TypeId::Int};

Typed whole(std::int64_t n) {
    return {kInt, n};
}
Typed text(std::string s) {
    return {Type{.id = TypeId::NVarChar, .length = 4000}, std::move(s)};
}

// The documented bits of @@OPTIONS.
std::int64_t optionBits(const Settings& s) {
    return (s.implicitTransactions ? 2 : 0) | (s.cursorCloseOnCommit ? 4 : 0) | (s.ansiWarnings ? 8 : 0) |
           (s.ansiPadding ? 16 : 0) | (s.ansiNulls ? 32 : 0) | (s.arithAbort ? 64 : 0) |
           (s.quotedIdentifier ? 256 : 0) | (s.noCount ? 512 : 0) | (s.ansiNullDefault ? 1024 : 0) |
           (s.concatNullYieldsNull ? 4096 : 0) | (s.xactAbort ? 16384 : 0);
}

struct Row {
    std::string_view name;
    Typed (*get)(SessionState&);
};

constexpr auto kRows = std::to_array<Row>({
    {"@@CURSOR_ROWS", [](SessionState& s) { return whole(s.cursorRows); }},
    {"@@DATEFIRST", [](SessionState& s) { return whole(s.settings.dateFirst); }},
    {"@@DBTS",
     [](SessionState& s) {
         const auto bytes = encodeRowVersion(s.connection->current()->rowVersion());
         return Typed{Type{.id = TypeId::VarBinary, .length = 8}, Bytes(bytes.begin(), bytes.end())};
     }},
    {"@@ERROR", [](SessionState& s) { return whole(s.error); }},
    {"@@FETCH_STATUS", [](SessionState& s) { return whole(s.fetchStatus); }},
    {"@@IDENTITY",
     [](SessionState& s) {
         return s.identity ? Typed{Type{.id = TypeId::BigInt}, *s.identity} : Typed{kInt, Null{}};
     }},
    {"@@LANGID", [](SessionState& s) { return whole(s.settings.language == "us_english" ? 0 : 8); }},
    {"@@LANGUAGE", [](SessionState& s) { return text(s.settings.language); }},
    {"@@LOCK_TIMEOUT", [](SessionState& s) { return whole(s.settings.lockTimeout); }},
    {"@@MAX_CONNECTIONS", [](SessionState&) { return whole(32767); }},
    {"@@MAX_PRECISION", [](SessionState&) { return whole(38); }},
    {"@@MICROSOFTVERSION", [](SessionState&) { return whole(0x0D000000); }},
    {"@@NESTLEVEL", [](SessionState& s) { return whole(s.frame ? s.frame->level : 0); }},
    {"@@OPTIONS", [](SessionState& s) { return whole(optionBits(s.settings)); }},
    {"@@PROCID", [](SessionState& s) { return whole(s.frame ? s.frame->procedureId : 0); }},
    {"@@ROWCOUNT", [](SessionState& s) { return whole(s.rowCount); }},
    {"@@SERVERNAME", [](SessionState& s) { return text(s.shared.options.serverName); }},
    {"@@SERVICENAME", [](SessionState&) { return text("MSSQLSERVER"); }},
    {"@@SPID", [](SessionState& s) { return whole(s.spid); }},
    {"@@TEXTSIZE", [](SessionState& s) { return whole(s.settings.textSize); }},
    {"@@TRANCOUNT", [](SessionState& s) { return whole(s.transaction.count()); }},
    {"@@VERSION", [](SessionState&) { return text(std::string(versionText())); }},
});

}  // namespace

std::string_view versionText() {
    // The form that clients take apart: "Microsoft", a version behind " - ", the processor.
    return "Microsoft SQL Server 2016 (TorvikPosSync sandbox) - 13.0.5026.0 (X64)";
}

Value globalValue(SessionState& session, std::string_view name, const Type& type) {
    for (const Row& row : kRows) {
        if (!sameName(row.name, name)) continue;
        Typed value = row.get(session);
        if (value.type.id == type.id) return std::move(value.value);
        return convert(value.value, value.type, type);
    }
    throw SqlError(errorMessage<40510>(name));
}

}  // namespace sandbox

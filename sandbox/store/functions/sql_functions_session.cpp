// Functions that ask the session, the server or the catalogue.
#include <algorithm>
#include <array>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/text.h"

namespace sandbox::functions {
namespace {

void giveText(Call& call, const std::optional<std::string>& text) {
    text ? call.string(*text) : call.null();
}
void giveInt(Call& call, std::optional<std::int64_t> n) {
    n ? call.integer64(*n) : call.null();
}

const Type kIdentity{.id = TypeId::Decimal, .precision = 38, .scale = 0, .numericName = true};

void giveIdentity(Call& call, const std::optional<Decimal>& n) {
    n ? call.give(kIdentity, *n) : call.null();
}

std::int32_t int32(Call& call, int i) {
    return static_cast<std::int32_t>(call.integer(i));
}

void objectId(Call& call) {
    const auto& hook = call.session().objectId;
    const std::string_view kind = call.count() > 1 ? trimBlanks(call.text(1)) : std::string_view{};
    giveInt(call, hook ? hook(call.text(0), kind) : std::nullopt);
}

template <typename Hook>
void giveOfObject(Call& call, const Hook& hook) {
    const auto database = call.count() > 1 ? std::optional(int32(call, 1)) : std::nullopt;
    giveText(call, hook ? hook(int32(call, 0), database) : std::nullopt);
}

void objectName(Call& call) {
    giveOfObject(call, call.session().objectName);
}

void objectSchemaName(Call& call) {
    giveOfObject(call, call.session().objectSchema);
}

void objectDefinition(Call& call) {
    const auto& hook = call.session().objectDefinition;
    giveText(call, hook ? hook(int32(call, 0)) : std::nullopt);
}

void cursorStatus(Call& call) {
    constexpr std::int32_t kNoSuchCursor = -3;
    const auto& hook = call.session().cursorStatus;
    const std::string_view kind = trimBlanks(call.text(0));
    const bool known = sameName(kind, "global") || sameName(kind, "local");
    call.integer64(hook && known ? hook(sameName(kind, "global"), trimBlanks(call.text(1))) : kNoSuchCursor);
}

void applicationLockMode(Call& call) {
    const auto& hook = call.session().applicationLockMode;
    giveText(call, hook ? std::optional(hook(call.text(0), call.text(1), call.text(2))) : std::nullopt);
}

void applicationLockTest(Call& call) {
    const auto& hook = call.session().applicationLockFree;
    giveInt(call,
            hook ? std::optional<std::int64_t>(hook(call.text(0), call.text(1), call.text(2), call.text(3)) ? 1 : 0)
                 : std::nullopt);
}

void objectProperty(Call& call) {
    const auto& hook = call.session().objectProperty;
    giveInt(call, hook ? hook(int32(call, 0), trimBlanks(call.text(1))) : std::nullopt);
}

void columnLength(Call& call) {
    const auto& hook = call.session().columnLength;
    giveInt(call, hook ? hook(call.text(0), call.text(1)) : std::nullopt);
}

void columnName(Call& call) {
    const auto& hook = call.session().columnName;
    giveText(call, hook ? hook(int32(call, 0), int32(call, 1)) : std::nullopt);
}

void columnProperty(Call& call) {
    const auto& hook = call.session().columnProperty;
    giveInt(call, hook ? hook(int32(call, 0), call.text(1), trimBlanks(call.text(2))) : std::nullopt);
}

void databaseId(Call& call) {
    if (call.count() == 0) return call.integer64(call.session().databaseId);
    const auto& hook = call.session().databaseIdOf;
    giveInt(call, hook ? hook(call.text(0)) : std::nullopt);
}

void databaseName(Call& call) {
    if (call.count() == 0) return call.string(call.session().database);
    const auto& hook = call.session().databaseNameOf;
    giveText(call, hook ? hook(int32(call, 0)) : std::nullopt);
}

void hasAccess(Call& call) {
    const auto& hook = call.session().databaseIdOf;
    giveInt(call, hook && hook(call.text(0)) ? std::optional<std::int64_t>(1) : std::nullopt);
}

void databaseProperty(Call& call) {
    const auto& hook = call.session().databaseProperty;
    const Value value = hook ? hook(call.text(0), trimBlanks(call.text(1))) : Value{};
    if (const auto* n = std::get_if<std::int64_t>(&value)) return call.string(std::to_string(*n));
    if (const auto* text = std::get_if<std::string>(&value)) return call.string(*text);
    call.null();
}

void serverProperty(Call& call) {
    const FunctionContext& session = call.session();
    const struct {
        std::string_view name;
        std::string_view value;
    } rows[] = {
        {"ProductVersion", "13.0.5026.0"},
        {"ProductMajorVersion", "13"},
        {"ProductLevel", "SP2"},
        {"Edition", "Developer Edition (64-bit)"},
        {"EngineEdition", "3"},
        {"ServerName", session.serverName},
        {"MachineName", session.serverName},
        {"ComputerNamePhysicalNetBIOS", session.serverName},
        {"Collation", session.collation.empty() ? kDefaultCollation : std::string_view(session.collation)},
        {"IsClustered", "0"},
        {"IsSingleUser", "0"},
        {"IsIntegratedSecurityOnly", "0"},
        {"IsFullTextInstalled", "0"},
    };
    const std::string_view wanted = trimBlanks(call.text(0));
    for (const auto& row : rows) {
        if (sameName(row.name, wanted)) return call.string(row.value);
    }
    call.null();
}

// The database's users: dbo alone may be asked for by number.
void userName(Call& call) {
    if (call.count() == 0) return call.string(call.session().user);
    giveText(call, call.integer(0) == 1 ? std::optional<std::string>("dbo") : std::nullopt);
}

void userId(Call& call) {
    const std::string_view name = call.count() == 0 ? std::string_view("dbo") : trimBlanks(call.text(0));
    giveInt(call, sameName(name, "dbo") ? std::optional<std::int32_t>(1) : std::nullopt);
}

void loginName(Call& call) {
    call.string(call.session().login);
}
void hostName(Call& call) {
    call.string(call.session().host);
}
void appName(Call& call) {
    call.string(call.session().program);
}

void identCurrent(Call& call) {
    const auto& hook = call.session().identCurrent;
    giveIdentity(call, hook ? hook(call.text(0)) : std::nullopt);
}
void identSeed(Call& call) {
    const auto& hook = call.session().identSeed;
    giveIdentity(call, hook ? hook(call.text(0)) : std::nullopt);
}
void identIncrement(Call& call) {
    const auto& hook = call.session().identIncrement;
    giveIdentity(call, hook ? hook(call.text(0)) : std::nullopt);
}
void scopeIdentity(Call& call) {
    const auto& hook = call.session().scopeIdentity;
    giveIdentity(call, hook ? hook() : std::nullopt);
}

const Message* caught(Call& call) {
    return call.session().caughtError ? call.session().caughtError() : nullptr;
}

template <int Message::*Field>
void errorField(Call& call) {
    const Message* message = caught(call);
    giveInt(call, message ? std::optional<std::int64_t>(message->*Field) : std::nullopt);
}

void errorMessage(Call& call) {
    const Message* message = caught(call);
    giveText(call, message ? std::optional(message->text) : std::nullopt);
}

void errorProcedure(Call& call) {
    const Message* message = caught(call);
    giveText(call, message && !message->procedure.empty() ? std::optional(message->procedure) : std::nullopt);
}

void transactionState(Call& call) {
    call.integer64(call.session().transactionState ? call.session().transactionState() : 0);
}

// sys.types' user_type_id of the system types.
struct TypeNumber {
    std::string_view name;
    int id;
};
constexpr auto kTypeNumbers = std::to_array<TypeNumber>({
    {"image", 34},      {"text", 35},       {"uniqueidentifier", 36}, {"date", 40},        {"time", 41},
    {"datetime2", 42},  {"tinyint", 48},    {"smallint", 52},         {"int", 56},         {"smalldatetime", 58},
    {"real", 59},       {"money", 60},      {"datetime", 61},         {"float", 62},       {"ntext", 99},
    {"bit", 104},       {"decimal", 106},   {"numeric", 108},         {"smallmoney", 122}, {"bigint", 127},
    {"varbinary", 165}, {"varchar", 167},   {"binary", 173},          {"char", 175},       {"nvarchar", 231},
    {"nchar", 239},     {"timestamp", 189}, {"sysname", 256},
});

void typeNumber(Call& call) {
    const auto row = std::find_if(kTypeNumbers.begin(), kTypeNumbers.end(),
                                  [&](const TypeNumber& t) { return sameName(t.name, trimBlanks(call.text(0))); });
    row == kTypeNumbers.end() ? call.null() : call.integer64(row->id);
}

void typeNameOf(Call& call) {
    const auto row = std::find_if(kTypeNumbers.begin(), kTypeNumbers.end(),
                                  [&](const TypeNumber& t) { return t.id == call.integer(0); });
    row == kTypeNumbers.end() ? call.null() : call.string(row->name);
}

void schemaName(Call& call) {
    if (call.count() == 0) return call.string("dbo");
    const auto& hook = call.session().schemaNameOf;
    giveText(call, hook ? hook(int32(call, 0)) : std::nullopt);
}

void schemaId(Call& call) {
    if (call.count() == 0) return call.integer64(1);
    const auto& hook = call.session().schemaIdOf;
    giveInt(call, hook ? hook(call.text(0)) : std::nullopt);
}

// One part of "server.database.schema.object", counted from the right.
void parseName(Call& call) {
    std::vector<std::string> parts(1);
    const std::string_view text = call.text(0);
    char close = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (close) {
            if (c != close)
                parts.back() += c;
            else if (i + 1 < text.size() && text[i + 1] == close)
                parts.back() += text[i++];
            else
                close = 0;
        } else if (c == '[' || c == '"') {
            close = c == '[' ? ']' : '"';
        } else if (c == '.') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    constexpr std::size_t kLongestName = 128;
    const bool tooLong = std::any_of(parts.begin(), parts.end(),
                                     [](const std::string& part) { return utf16Length(part) > kLongestName; });
    const std::int64_t wanted = call.integer(1);
    if (tooLong || parts.size() > 4 || wanted < 1 || wanted > static_cast<std::int64_t>(parts.size()))
        return call.null();
    const std::string& part = parts[parts.size() - static_cast<std::size_t>(wanted)];
    part.empty() ? call.null() : call.string(part);
}

// Those about the catalogue hold for the whole of a statement: SQLite then asks once, not for each row.
constexpr Registration kSession[] = {
    {"t_object_id", -1, strict<objectId>, true},
    {"t_object_name", -1, strict<objectName>, true},
    {"t_object_schema_name", -1, strict<objectSchemaName>, true},
    {"t_object_definition", 1, strict<objectDefinition>, true},
    {"t_cursor_status", 2, strict<cursorStatus>, false},
    {"t_applock_mode", 3, strict<applicationLockMode>, false},
    {"t_applock_test", 4, strict<applicationLockTest>, false},
    {"t_objectproperty", 2, strict<objectProperty>, true},
    {"t_col_length", 2, strict<columnLength>, true},
    {"t_col_name", 2, strict<columnName>, true},
    {"t_columnproperty", 3, strict<columnProperty>, true},
    {"t_db_id", -1, strict<databaseId>, true},
    {"t_db_name", -1, strict<databaseName>, true},
    {"t_has_dbaccess", 1, strict<hasAccess>, false},
    {"t_databasepropertyex", 2, strict<databaseProperty>, true},
    {"t_serverproperty", 1, strict<serverProperty>, false},
    {"t_user_name", -1, strict<userName>, false},
    {"t_user_id", -1, strict<userId>, false},
    {"t_suser_sname", -1, always<loginName>, false},
    {"t_host_name", 0, always<hostName>, false},
    {"t_app_name", 0, always<appName>, false},
    {"t_ident_current", 1, strict<identCurrent>, false},
    {"t_ident_seed", 1, strict<identSeed>, false},
    {"t_ident_incr", 1, strict<identIncrement>, false},
    {"t_scope_identity", 0, always<scopeIdentity>, false},
    {"t_error_number", 0, always<errorField<&Message::number>>, false},
    {"t_error_severity", 0, always<errorField<&Message::severity>>, false},
    {"t_error_state", 0, always<errorField<&Message::state>>, false},
    {"t_error_line", 0, always<errorField<&Message::line>>, false},
    {"t_error_message", 0, always<errorMessage>, false},
    {"t_error_procedure", 0, always<errorProcedure>, false},
    {"t_xact_state", 0, always<transactionState>, false},
    {"t_type_id", 1, strict<typeNumber>},
    {"t_type_name", 1, strict<typeNameOf>},
    {"t_schema_name", -1, strict<schemaName>},
    {"t_schema_id", -1, strict<schemaId>},
    {"t_parsename", 2, strict<parseName>},
};

}  // namespace

std::span<const Registration> sessionFunctions() {
    return kSession;
}

}  // namespace sandbox::functions

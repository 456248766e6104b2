// Which system procedures there are; those over the catalogue have their texts in system_procedures_texts.h.
#include "sandbox/tsql/system/system_procedures.h"

#include <array>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/system/application_locks.h"
#include "sandbox/tsql/system/system_procedure_describe.h"
#include "sandbox/tsql/system/system_procedures_drivers.h"
#include "sandbox/tsql/system/system_procedures_keys.h"
#include "sandbox/tsql/system/system_procedures_locks.h"
#include "sandbox/tsql/system/system_procedures_texts.h"

namespace sandbox {

namespace {

using Status = std::optional<std::int32_t>;

[[noreturn]] void raise(Message message, std::string_view procedure) {
    throw SqlError(std::move(message).in(procedure).atLine(kNoLine));
}

// A text of this folder, run as the procedure's body.
Status runText(ProcedureHost& host, const SystemProcedure& self, std::vector<CallArgument>& arguments,
               const std::string& database) {
    return host.runNested(self.text, self.declarations, arguments, 1, database, std::string(self.name));
}

Status lockForUser(ProcedureHost& host, const SystemProcedure&, std::vector<CallArgument>& arguments,
                   const std::string&) {
    return userLock(host, arguments);
}

Status refuse(ProcedureHost&, const SystemProcedure& self, std::vector<CallArgument>&, const std::string&) {
    raise(errorMessage<40510>(self.name), self.name);
}

std::string unicodeText(const CallArgument& argument, std::string_view parameter, const SystemProcedure& self) {
    const bool fits = isUnicode(argument.value.type.id) || argument.value.type.id == TypeId::Null;
    if (!fits) {
        throw SqlError(errorMessage<214, 2>(parameter, "ntext/nchar/nvarchar").in(self.name).atLine(1));
    }
    const auto* text = std::get_if<std::string>(&argument.value.value);
    return text ? *text : std::string();
}

Status executeSql(ProcedureHost& host, const SystemProcedure& self, std::vector<CallArgument>& arguments,
                  const std::string& database) {
    if (arguments.empty()) {
        raise(errorMessage<201, 10>(self.name, "@statement"), self.name);
    }
    const std::string text = unicodeText(arguments[0], "@statement", self);
    const std::string declarations = arguments.size() > 1 ? unicodeText(arguments[1], "@params", self) : "";
    std::vector<CallArgument> rest;
    for (std::size_t i = 2; i < arguments.size(); ++i) rest.push_back(std::move(arguments[i]));
    const Status status = host.runNested(text, declarations, rest, 2, database, {});
    for (std::size_t i = 0; i < rest.size(); ++i) arguments[i + 2] = std::move(rest[i]);
    return status;
}

// The argument of this place or name as text; empty where it is not given.
std::string textOf(const std::vector<CallArgument>& arguments, std::size_t place, std::string_view name) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool here = arguments[i].name.empty() ? i == place : sameName(arguments[i].name, name);
        if (here && !isNull(arguments[i].value.value)) {
            return displayText(arguments[i].value.value, arguments[i].value.type);
        }
    }
    return {};
}

std::string neededText(const std::vector<CallArgument>& arguments, std::size_t place, std::string_view name,
                       const SystemProcedure& self) {
    std::string text = textOf(arguments, place, name);
    if (text.empty()) {
        raise(errorMessage<201, 4>(self.name, name), self.name);
    }
    return text;
}

Status describeResult(ProcedureHost& host, const SystemProcedure& self, std::vector<CallArgument>& arguments,
                      const std::string&) {
    std::array<std::string, 2> texts;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i].name;
        const std::size_t place = name.empty() ? i : sameName(name, "@tsql") ? 0 : sameName(name, "@params") ? 1 : 2;
        if (place < texts.size()) texts.at(place) = unicodeText(arguments[i], place == 0 ? "@tsql" : "@params", self);
    }
    if (texts[0].empty()) {
        raise(errorMessage<201, 4>(self.name, "@tsql"), self.name);
    }
    describeFirstResultSet(host, texts[0], texts[1]);
    return 0;
}

Status rename(ProcedureHost& host, const SystemProcedure& self, std::vector<CallArgument>& arguments,
              const std::string&) {
    const std::string object = neededText(arguments, 0, "@objname", self);
    const std::string newName = neededText(arguments, 1, "@newname", self);
    try {
        host.renameObject(object, newName, textOf(arguments, 2, "@objtype"));
    } catch (SqlError& error) {
        for (Message& message : error.messages) message.procedure = self.name;
        throw;
    }
    return 0;
}

// What tells of one object: it must be there.
Status runForObject(ProcedureHost& host, const SystemProcedure& self, std::vector<CallArgument>& arguments,
                    const std::string& database) {
    const std::string object = neededText(arguments, 0, "@objname", self);
    if (!host.connection().findByText(object)) {
        raise(errorMessage<15009>(object, host.connection().current()->name()), self.name);
    }
    return runText(host, self, arguments, database);
}

Status resetConnection(ProcedureHost& host, const SystemProcedure&, std::vector<CallArgument>&, const std::string&) {
    host.resetSession();
    return 0;
}

constexpr auto kProcedures = std::to_array<SystemProcedure>({
    {"sp_executesql", &executeSql, {}, {}},
    {"sp_rename", &rename, {}, {}},
    {"sp_reset_connection", &resetConnection, {}, {}},
    {"sp_who", &runText, texts::kWhoParameters, texts::kWho},
    {"sp_databases", &runText, {}, texts::kDatabases},
    {"sp_tables", &runText, texts::kTablesParameters, texts::kTables},
    {"sp_columns", &runText, texts::kColumnsParameters, texts::kColumns},
    {"sp_columns_90", &runText, texts::kColumnsParameters, texts::kColumns},
    {"sp_columns_100", &runText, texts::kColumnsParameters, texts::kColumns},
    {"sp_pkeys", &runText, texts::kKeysParameters, texts::kKeys},
    {"sp_datatype_info", &runText, texts::kTypesParameters, texts::kTypes},
    {"sp_datatype_info_90", &runText, texts::kTypesParameters, texts::kTypes},
    {"sp_datatype_info_100", &runText, texts::kTypesParameters, texts::kTypes},
    {"sp_statistics", &runText, texts::kStatisticsParameters, texts::kStatistics},
    {"sp_statistics_100", &runText, texts::kStatisticsParameters, texts::kStatistics},
    {"sp_special_columns", &runText, texts::kSpecialColumnsParameters, texts::kSpecialColumns},
    {"sp_special_columns_90", &runText, texts::kSpecialColumnsParameters, texts::kSpecialColumns},
    {"sp_special_columns_100", &runText, texts::kSpecialColumnsParameters, texts::kSpecialColumns},
    {"sp_fkeys", &runText, texts::kForeignKeysParameters, texts::kForeignKeys},
    {"sp_stored_procedures", &runText, texts::kProceduresParameters, texts::kProcedures},
    {"sp_sproc_columns", &runText, texts::kProcedureColumnsParameters, texts::kProcedureColumns},
    {"sp_sproc_columns_90", &runText, texts::kProcedureColumnsParameters, texts::kProcedureColumns},
    {"sp_sproc_columns_100", &runText, texts::kProcedureColumnsParameters, texts::kProcedureColumns},
    {"sp_server_info", &runText, texts::kServerInfoParameters, texts::kServerInfo},
    {"sp_table_privileges", &runText, texts::kTablePrivilegesParameters, texts::kTablePrivileges},
    {"sp_column_privileges", &runText, texts::kColumnPrivilegesParameters, texts::kColumnPrivileges},
    {"sp_helptext", &runText, texts::kHelpTextParameters, texts::kHelpText},
    {"sp_tablecollations", &runText, texts::kTableCollationsParameters, texts::kTableCollations},
    {"sp_tablecollations_90", &runText, texts::kTableCollationsParameters, texts::kTableCollations},
    {"sp_tablecollations_100", &runText, texts::kTableCollationsParameters, texts::kTableCollations},
    {"sp_procedure_params_managed", &runText, texts::kManagedParametersParameters, texts::kManagedParameters},
    {"sp_procedure_params_90_managed", &runText, texts::kManagedParametersParameters, texts::kManagedParameters},
    {"sp_procedure_params_100_managed", &runText, texts::kManagedParametersParameters, texts::kManagedParameters},
    {"sp_columns_managed", &runText, texts::kManagedColumnsParameters, texts::kManagedColumns},
    {"sp_indexes_managed", &runText, texts::kManagedIndexesParameters, texts::kManagedIndexes},
    {"sp_indexcolumns_managed", &runText, texts::kManagedIndexColumnsParameters, texts::kManagedIndexColumns},
    {"sp_describe_first_result_set", &describeResult, {}, {}},
    {"sp_describe_undeclared_parameters", &refuse, {}, {}},
    {"sp_help", &refuse, {}, {}},
    {"sp_helpdb", &refuse, {}, {}},
    {"sp_helpindex", &runForObject, texts::kHelpIndexParameters, texts::kHelpIndex},
    {"sp_spaceused", &refuse, {}, {}},
    {"sp_who2", &refuse, {}, {}},
    {"sp_lock", &refuse, {}, {}},
    {"sp_configure", &refuse, {}, {}},
    {"sp_dboption", &refuse, {}, {}},
    {"sp_getapplock", &runText, texts::kGetAppLockParameters, texts::kGetAppLock},
    {"sp_releaseapplock", &runText, texts::kReleaseAppLockParameters, texts::kReleaseAppLock},
    {"xp_userlock", &lockForUser, {}, {}},
    {"sp_addmessage", &refuse, {}, {}},
    {"sp_attach_db", &refuse, {}, {}},
    {"sp_detach_db", &refuse, {}, {}},
    {"xp_cmdshell", &refuse, {}, {}},
    {"xp_msver", &refuse, {}, {}},
});

}  // namespace

const SystemProcedure* findSystemProcedure(const ast::ObjectName& name) {
    if (!name.schema.empty() && !sameName(name.schema, "sys") && !sameName(name.schema, "dbo")) return nullptr;
    for (const SystemProcedure& procedure : kProcedures) {
        if (sameName(procedure.name, name.name)) return &procedure;
    }
    return nullptr;
}

}  // namespace sandbox

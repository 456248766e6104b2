// The columns of msdb's tables, as SQL Server has them.
#include "sandbox/store/databases/msdb_tables.h"

#include <cstring>
#include <string>

namespace sandbox {

namespace {

constexpr Type kBit{.id = TypeId::Bit};
constexpr Type kTinyInt{.id = TypeId::TinyInt};
constexpr Type kInt{.id = TypeId::Int};
constexpr Type kName{.id = TypeId::NVarChar, .length = 128};
constexpr Type kText{.id = TypeId::NVarChar, .length = 4000};
constexpr Type kLong{.id = TypeId::NVarChar, .length = Type::kMax};
constexpr Type kPath{.id = TypeId::NVarChar, .length = 260};
constexpr Type kGuid{.id = TypeId::UniqueIdentifier};
constexpr Type kDateTime{.id = TypeId::DateTime};
constexpr Type kKind{.id = TypeId::Char, .length = 1};
constexpr Type kSize{.id = TypeId::Decimal, .precision = 20, .scale = 0, .numericName = true};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): the rows below read in this order
struct Column {
    const char* table;
    const char* name;
    Type type;
    const char* defaultText = "";
    bool nullable = true;
    bool identity = false;
};

// In the order of each table's columns.
constexpr Column kColumns[] = {
    {"sysjobs", "job_id", kGuid, "newid()", false},
    {"sysjobs", "originating_server_id", kInt, "0", false},
    {"sysjobs", "name", kName, "", false},
    {"sysjobs", "enabled", kTinyInt, "1", false},
    {"sysjobs", "description", kText},
    {"sysjobs", "start_step_id", kInt, "1", false},
    {"sysjobs", "category_id", kInt, "0", false},
    {"sysjobs", "owner_sid", Type{.id = TypeId::VarBinary, .length = 85}, "0x01", false},
    {"sysjobs", "notify_level_eventlog", kInt, "0", false},
    {"sysjobs", "notify_level_email", kInt, "0", false},
    {"sysjobs", "date_created", kDateTime, "getdate()", false},
    {"sysjobs", "date_modified", kDateTime, "getdate()", false},
    {"sysjobs", "version_number", kInt, "1", false},

    {"sysjobservers", "job_id", kGuid, "", false},
    {"sysjobservers", "server_id", kInt, "0", false},
    {"sysjobservers", "last_run_outcome", kTinyInt, "5", false},
    {"sysjobservers", "last_outcome_message", kText},
    {"sysjobservers", "last_run_date", kInt, "0", false},
    {"sysjobservers", "last_run_time", kInt, "0", false},
    {"sysjobservers", "last_run_duration", kInt, "0", false},

    {"sysjobsteps", "job_id", kGuid, "", false},
    {"sysjobsteps", "step_id", kInt, "", false},
    {"sysjobsteps", "step_name", kName, "", false},
    {"sysjobsteps", "subsystem", Type{.id = TypeId::NVarChar, .length = 40}, "'TSQL'", false},
    {"sysjobsteps", "command", kLong},
    {"sysjobsteps", "flags", kInt, "0", false},
    {"sysjobsteps", "database_name", kName},
    {"sysjobsteps", "last_run_outcome", kInt, "0", false},
    {"sysjobsteps", "last_run_duration", kInt, "0", false},
    {"sysjobsteps", "last_run_date", kInt, "0", false},
    {"sysjobsteps", "last_run_time", kInt, "0", false},

    {"sysjobhistory", "instance_id", kInt, "", false, true},
    {"sysjobhistory", "job_id", kGuid, "", false},
    {"sysjobhistory", "step_id", kInt, "", false},
    {"sysjobhistory", "step_name", kName, "", false},
    {"sysjobhistory", "sql_message_id", kInt, "0", false},
    {"sysjobhistory", "sql_severity", kInt, "0", false},
    {"sysjobhistory", "message", kText},
    {"sysjobhistory", "run_status", kInt, "", false},
    {"sysjobhistory", "run_date", kInt, "", false},
    {"sysjobhistory", "run_time", kInt, "", false},
    {"sysjobhistory", "run_duration", kInt, "0", false},
    {"sysjobhistory", "retries_attempted", kInt, "0", false},
    {"sysjobhistory", "server", kName, "@@SERVERNAME", false},

    {"backupset", "backup_set_id", kInt, "", false, true},
    {"backupset", "backup_set_uuid", kGuid, "newid()", false},
    {"backupset", "media_set_id", kInt, "0", false},
    {"backupset", "name", kName},
    {"backupset", "description", Type{.id = TypeId::NVarChar, .length = 255}},
    {"backupset", "user_name", kName},
    {"backupset", "backup_start_date", kDateTime},
    {"backupset", "backup_finish_date", kDateTime},
    {"backupset", "type", kKind},
    {"backupset", "backup_size", kSize},
    {"backupset", "database_name", kName},
    {"backupset", "server_name", kName},
    {"backupset", "machine_name", kName},
    {"backupset", "recovery_model", Type{.id = TypeId::NVarChar, .length = 60}},
    {"backupset", "is_copy_only", kBit},

    {"backupmediafamily", "media_set_id", kInt, "", false},
    {"backupmediafamily", "family_sequence_number", kTinyInt, "1", false},
    {"backupmediafamily", "media_family_id", kGuid},
    {"backupmediafamily", "media_count", kInt},
    {"backupmediafamily", "logical_device_name", kName},
    {"backupmediafamily", "physical_device_name", kPath},
    {"backupmediafamily", "device_type", kTinyInt},
};

}  // namespace

std::vector<ObjectDef> msdbTables() {
    std::vector<ObjectDef> tables;
    for (const Column& row : kColumns) {
        if (tables.empty() || tables.back().name != row.table) {
            tables.emplace_back();
            tables.back().name = row.table;
        }
        ObjectDef& table = tables.back();
        ColumnDef column;
        column.name = row.name;
        column.type = row.type;
        column.nullable = row.nullable;
        column.identity = row.identity;
        column.columnId = ++table.lastColumnId;
        if (*row.defaultText != '\0') {
            column.defaultText = "(" + std::string(row.defaultText) + ")";
            column.defaultName = "DF__" + table.name + "__" + column.name;
        }
        table.columns.push_back(std::move(column));
    }
    return tables;
}

}  // namespace sandbox

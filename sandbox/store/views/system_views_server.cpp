// The views about the server: its databases and its sessions. They show the same in every database.
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

using D = std::shared_ptr<Database>;

std::vector<D> databases(Connection& connection, Database&) {
    return connection.databases().all();
}

struct ProcessRow {
    Process process;
    int blocked = 0;
};

std::vector<ProcessRow> processes(Connection& connection, Database&) {
    std::vector<ProcessRow> rows;
    for (Process& process : connection.databases().processes().all()) {
        const int blocked = connection.databases().locks().blockedBy(process.spid);
        rows.push_back({std::move(process), blocked});
    }
    return rows;
}

std::string_view status(const ProcessRow& p) {
    return p.blocked != 0 ? "suspended" : p.process.running ? "runnable" : "sleeping";
}

using P = ProcessRow;

SystemView bareAndLive(SystemView view) {
    view.bare = true;
    view.live = true;
    return view;
}

SystemView live(SystemView view) {
    view.live = true;
    return view;
}

}  // namespace

std::vector<SystemView> serverViews() {
    return {
        live(makeView<D>(
            "sys", "databases", databases,
            {
                {"name", kName, [](const D& d) { return text(d->name()); }},
                {"database_id", kInt, [](const D& d) { return number(d->id()); }},
                {"source_database_id", kInt, [](const D&) { return Value{}; }},
                {"create_date", kDateTime, [](const D& d) { return number(d->facts().created); }},
                {"compatibility_level", kTinyInt, [](const D& d) { return number(d->facts().compatibilityLevel); }},
                {"collation_name", kName, [](const D& d) { return text(d->facts().collation); }},
                {"user_access", kTinyInt, [](const D&) { return number(0); }},
                {"user_access_desc", kDescription, [](const D&) { return text("MULTI_USER"); }},
                {"is_read_only", kBit, [](const D&) { return number(0); }},
                {"state", kTinyInt, [](const D&) { return number(0); }},
                {"state_desc", kDescription, [](const D&) { return text("ONLINE"); }},
                {"snapshot_isolation_state", kTinyInt, [](const D&) { return number(0); }},
                {"is_read_committed_snapshot_on", kBit, [](const D&) { return number(1); }},
                {"recovery_model", kTinyInt, [](const D&) { return number(3); }},
                {"recovery_model_desc", kDescription, [](const D&) { return text("SIMPLE"); }},
            })),
        bareAndLive(
            makeView<D>("sys", "sysdatabases", databases,
                        {
                            {"name", kName, [](const D& d) { return text(d->name()); }},
                            {"dbid", kSmallInt, [](const D& d) { return number(d->id()); }},
                            {"mode", kSmallInt, [](const D&) { return number(0); }},
                            {"status", kInt, [](const D&) { return number(65536); }},
                            {"status2", kInt, [](const D&) { return number(1627389952); }},
                            {"crdate", kDateTime, [](const D& d) { return number(d->facts().created); }},
                            {"reserved", kDateTime, [](const D&) { return number(0); }},
                            {"category", kInt, [](const D&) { return number(0); }},
                            {"cmptlevel", kTinyInt, [](const D& d) { return number(d->facts().compatibilityLevel); }},
                            {"filename", Type{.id = TypeId::NVarChar, .length = 260},
                             [](const D& d) { return text(d->facts().file.string()); }},
                            {"version", kSmallInt, [](const D&) { return number(852); }},
                        })),
        bareAndLive(
            makeView<P>("sys", "sysprocesses", processes,
                        {
                            {"spid", kSmallInt, [](const P& p) { return number(p.process.spid); }},
                            {"kpid", kSmallInt, [](const P&) { return number(0); }},
                            {"blocked", kSmallInt, [](const P& p) { return number(p.blocked); }},
                            {"waittime", kBigInt, [](const P&) { return number(0); }},
                            {"lastwaittype", ncharType(32),
                             [](const P& p) { return padded(p.blocked != 0 ? "LCK_M_X" : "MISCELLANEOUS", 32); }},
                            {"waitresource", ncharType(256), [](const P&) { return padded("", 256); }},
                            {"dbid", kSmallInt, [](const P& p) { return number(p.process.databaseId); }},
                            {"uid", kSmallInt, [](const P&) { return number(1); }},
                            {"cpu", kInt, [](const P&) { return number(0); }},
                            {"physical_io", kBigInt, [](const P&) { return number(0); }},
                            {"memusage", kInt, [](const P&) { return number(0); }},
                            {"login_time", kDateTime, [](const P& p) { return number(p.process.loginTime); }},
                            {"last_batch", kDateTime, [](const P& p) { return number(p.process.lastBatch); }},
                            {"ecid", kSmallInt, [](const P&) { return number(0); }},
                            {"open_tran", kSmallInt, [](const P& p) { return number(p.process.openTransactions); }},
                            {"status", ncharType(30), [](const P& p) { return padded(status(p), 30); }},
                            {"hostname", ncharType(128), [](const P& p) { return padded(p.process.host, 128); }},
                            {"program_name", ncharType(128), [](const P& p) { return padded(p.process.program, 128); }},
                            {"hostprocess", ncharType(10), [](const P&) { return padded("0", 10); }},
                            {"cmd", ncharType(26), [](const P& p) { return padded(p.process.command, 26); }},
                            {"nt_domain", ncharType(128), [](const P&) { return padded("", 128); }},
                            {"nt_username", ncharType(128), [](const P&) { return padded("", 128); }},
                            {"net_library", ncharType(12), [](const P&) { return padded("TCP/IP", 12); }},
                            {"loginame", ncharType(128), [](const P& p) { return padded(p.process.login, 128); }},
                        })),
        live(makeView<P>(
            "sys", "dm_exec_sessions", processes,
            {
                {"session_id", kSmallInt, [](const P& p) { return number(p.process.spid); }},
                {"login_time", kDateTime, [](const P& p) { return number(p.process.loginTime); }},
                {"host_name", kName, [](const P& p) { return textOrNull(p.process.host); }},
                {"program_name", kName, [](const P& p) { return textOrNull(p.process.program); }},
                {"login_name", kName, [](const P& p) { return text(p.process.login); }},
                {"status", Type{.id = TypeId::NVarChar, .length = 30},
                 [](const P& p) { return text(p.process.running ? "running" : "sleeping"); }},
                {"is_user_process", kBit, [](const P&) { return number(1); }},
                {"database_id", kSmallInt, [](const P& p) { return number(p.process.databaseId); }},
                {"open_transaction_count", kInt, [](const P& p) { return number(p.process.openTransactions); }},
                {"transaction_isolation_level", kSmallInt, [](const P& p) { return number(p.process.isolation); }},
                {"lock_timeout", kInt, [](const P& p) { return number(p.process.lockTimeout); }},
                {"language", kName, [](const P& p) { return text(p.process.language); }},
                {"original_login_name", kName, [](const P& p) { return text(p.process.login); }},
                {"last_request_start_time", kDateTime, [](const P& p) { return number(p.process.lastBatch); }},
            })),
        live(makeView<P>("sys", "dm_exec_connections", processes,
                         {
                             {"session_id", kInt, [](const P& p) { return number(p.process.spid); }},
                             {"connect_time", kDateTime, [](const P& p) { return number(p.process.loginTime); }},
                             {"net_transport", kDescription, [](const P&) { return text("TCP"); }},
                             {"protocol_type", kDescription, [](const P&) { return text("TSQL"); }},
                             {"auth_scheme", kDescription, [](const P&) { return text("SQL"); }},
                         })),
        live(makeView<P>("sys", "dm_exec_requests",
                         +[](Connection& c, Database& d) {
                             std::vector<P> rows = processes(c, d);
                             std::erase_if(rows, [](const P& p) { return !p.process.running; });
                             return rows;
                         },
                         {
                             {"session_id", kSmallInt, [](const P& p) { return number(p.process.spid); }},
                             {"request_id", kInt, [](const P&) { return number(0); }},
                             {"status", Type{.id = TypeId::NVarChar, .length = 30},
                              [](const P& p) { return text(p.blocked != 0 ? "suspended" : "running"); }},
                             {"command", Type{.id = TypeId::NVarChar, .length = 32},
                              [](const P& p) { return text(p.process.command); }},
                             {"database_id", kSmallInt, [](const P& p) { return number(p.process.databaseId); }},
                             {"blocking_session_id", kSmallInt, [](const P& p) { return number(p.blocked); }},
                         })),
    };
}

}  // namespace sandbox::views

// Single-row parameterised inserts over loopback: the ODBC driver FreeTDS, a prepared statement, each row a round trip,
// in transactions of a hundred rows. Client and server share one core.
#include <sql.h>
#include <sqlext.h>

#include <iostream>
#include <stdexcept>
#include <string>

#include "bench/figure.h"
#include "bench/one_core.h"
#include "sandbox/server/server.h"
#include "sandbox/tsql/run/reply.h"
#include "sandbox/tsql/run/session.h"

namespace {

constexpr int kRows = 20000;
constexpr int kInTransaction = 100;
constexpr double kWanted = 5000;

class Odbc {
public:
    explicit Odbc(const sandbox::Server& server) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        std::string text = "DRIVER=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(server.port()) +
                           ";UID=sa;PWD=secret;Database=shop";
        check(SQLDriverConnect(connection_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr, 0,
                               nullptr, SQL_DRIVER_NOPROMPT),
              SQL_HANDLE_DBC, connection_);
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_);
    }
    ~Odbc() {
        SQLFreeHandle(SQL_HANDLE_STMT, statement_);
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }
    Odbc(const Odbc&) = delete;
    Odbc& operator=(const Odbc&) = delete;

    void insertRows() {
        std::string text = "INSERT INTO goods (id, name, price, sold) VALUES (?, ?, ?, ?)";
        check(SQLPrepare(statement_, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), SQL_HANDLE_STMT, statement_);
        SQLINTEGER id = 0;
        std::string name = "en vare med navn";
        double price = 0;
        SQL_TIMESTAMP_STRUCT sold{2024, 2, 29, 12, 30, 0, 0};
        SQLLEN nameLength = SQL_NTS;
        SQLBindParameter(statement_, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, &id, 0, nullptr);
        SQLBindParameter(statement_, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 40, 0, name.data(), 0, &nameLength);
        SQLBindParameter(statement_, 3, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &price, 0, nullptr);
        SQLBindParameter(statement_, 4, SQL_PARAM_INPUT, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 23, 3, &sold, 0,
                         nullptr);
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
        for (id = 1; id <= kRows; ++id) {
            price = id / 4.0;
            check(SQLExecute(statement_), SQL_HANDLE_STMT, statement_);
            if (id % kInTransaction == 0) {
                check(SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_COMMIT), SQL_HANDLE_DBC, connection_);
            }
        }
    }

private:
    static void check(SQLRETURN result, SQLSMALLINT kind, SQLHANDLE handle) {
        if (SQL_SUCCEEDED(result)) return;
        SQLCHAR state[6] = {}, text[512] = {};
        SQLINTEGER number = 0;
        SQLSMALLINT length = 0;
        SQLGetDiagRec(kind, handle, 1, state, &number, text, sizeof text, &length);
        throw std::runtime_error(reinterpret_cast<const char*>(text));
    }

    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
    SQLHSTMT statement_ = nullptr;
};

}  // namespace

int main() {
    torvik::bench::holdToOneCore();
    sandbox::ServerOptions options;
    options.saPassword = "secret";
    sandbox::Server server(options);
    sandbox::SilentReply silent;
    sandbox::Session session(server.engine(), {"sa", "", "", "", ""});
    session.batch("CREATE DATABASE shop", silent);
    session.batch(
        "USE shop CREATE TABLE goods (id int NOT NULL PRIMARY KEY, name varchar(40) NULL, price float NULL, "
        "sold datetime NULL)",
        silent);
    try {
        Odbc odbc(server);
        const double processBefore = torvik::bench::processorSeconds(RUSAGE_SELF);
        const double clientBefore = torvik::bench::processorSeconds(RUSAGE_THREAD);
        const double passed = torvik::bench::seconds([&] { odbc.insertRows(); });
        const double process = torvik::bench::processorSeconds(RUSAGE_SELF) - processBefore;
        const double client = torvik::bench::processorSeconds(RUSAGE_THREAD) - clientBefore;
        torvik::bench::tell("single-row inserts through ODBC", kRows / passed, "rows/s", "5000 rows/s at least",
                            kWanted);
        torvik::bench::tell("single-row inserts through ODBC, by processor time", kRows / process, "rows/s",
                            "5000 rows/s at least", kWanted);
        torvik::bench::tell({"of it in the client's thread", 100 * client / process, "%", "", {}});
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
}

// The copy that anybody would write first, over the same ODBC driver: for each table a SELECT whose rows are fetched
// one by one and a prepared INSERT that is executed for each. What the transfer is compared with.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstring>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/db/odbc/api.h"
#include "inbound/transfer/maps/table_map.h"

namespace torvik::bench {

class PlainConnection {
public:
    explicit PlainConnection(const db::ConnectSettings& settings) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, db::odbc::number(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        const db::odbc::ServerAddress address = db::odbc::parseServer(settings.Server);
        const std::string text =
            ("DRIVER={" + db::odbc::api().driver.Name + "};SERVER=" + address.Host +
             ";PORT=" + QString::number(address.Port) + ";DATABASE=" + settings.Database + ";UID=" + settings.Username +
             ";PWD=" + settings.Password + ";TDS_VERSION=7.4;CLIENTCHARSET=UTF-8")
                .toStdString();
        auto* odbcText = reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
        check(SQLDriverConnect(connection_, nullptr, odbcText, SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
              SQL_HANDLE_DBC, connection_);
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, db::odbc::number(SQL_AUTOCOMMIT_OFF), 0);
    }
    ~PlainConnection() {
        SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_ROLLBACK);
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }
    PlainConnection(const PlainConnection&) = delete;
    PlainConnection& operator=(const PlainConnection&) = delete;

    void commit() { check(SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_COMMIT), SQL_HANDLE_DBC, connection_); }
    [[nodiscard]] SQLHSTMT statement() const {
        SQLHSTMT made = nullptr;
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &made);
        return made;
    }
    static void check(SQLRETURN result, SQLSMALLINT type, SQLHANDLE handle) {
        if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) return;
        SQLCHAR state[6] = {};
        SQLCHAR text[512] = {};
        SQLGetDiagRec(type, handle, 1, state, nullptr, text, sizeof text, nullptr);
        throw std::runtime_error("plain copy: " + std::string(reinterpret_cast<char*>(text)));
    }

private:
    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
};

// Copies the rows of one map. The values that are the run's own are bound as constants, and so are the two that the
// transfer works out.
class PlainCopy {
public:
    PlainCopy(const PlainConnection& from, const PlainConnection& to, const TableMap& map, int department,
              const std::string& till)
        : select_(from.statement()), insert_(to.statement()), till_(till) {
        std::string sql = map.source;
        replaceAll(sql, "%d", "1");
        replaceAll(sql, "%s", "'-1'");
        check(SQLExecDirect(select_, text(sql), SQL_NTS), select_);
        describe();
        std::string names;
        std::string marks;
        for (const ColumnRule& rule : map.columns)
            if (bind(rule, department)) {
                names += (names.empty() ? "" : ", ") + std::string(rule.target);
                marks += marks.empty() ? "?" : ", ?";
            }
        check(SQLPrepare(insert_,
                         text("INSERT INTO " + std::string(map.target) + " (" + names + ") VALUES (" + marks + ")"),
                         SQL_NTS),
              insert_);
    }
    ~PlainCopy() {
        SQLFreeHandle(SQL_HANDLE_STMT, select_);
        SQLFreeHandle(SQL_HANDLE_STMT, insert_);
    }
    PlainCopy(const PlainCopy&) = delete;
    PlainCopy& operator=(const PlainCopy&) = delete;

    // The number of rows copied.
    int run() {
        int rows = 0;
        for (;; ++rows) {
            const SQLRETURN fetched = SQLFetch(select_);
            if (fetched == SQL_NO_DATA) return rows;
            check(fetched, select_);
            check(SQLExecute(insert_), insert_);
        }
    }

private:
    struct Column {
        std::string name;
        SQLSMALLINT sqlType = 0;
        SQLULEN size = 0;
        SQLSMALLINT scale = 0;
        SQLSMALLINT cType = SQL_C_CHAR;
        SQLLEN length = 0;
        std::vector<char> data;
    };

    static void check(SQLRETURN result, SQLHSTMT statement) {
        PlainConnection::check(result, SQL_HANDLE_STMT, statement);
    }
    static SQLCHAR* text(const std::string& sql) { return reinterpret_cast<SQLCHAR*>(const_cast<char*>(sql.c_str())); }
    static void replaceAll(std::string& in, const std::string& what, const std::string& with) {
        for (std::size_t at = in.find(what); at != std::string::npos; at = in.find(what, at + with.size()))
            in.replace(at, what.size(), with);
    }
    static bool same(const std::string& a, const char* b) { return strcasecmp(a.c_str(), b) == 0; }

    // Binds every column of the result to a buffer of its own.
    void describe() {
        constexpr SQLULEN kMost = 8000;
        SQLSMALLINT count = 0;
        check(SQLNumResultCols(select_, &count), select_);
        for (SQLSMALLINT i = 1; i <= count; ++i) {
            Column column;
            SQLCHAR name[128] = {};
            check(SQLDescribeCol(select_, static_cast<SQLUSMALLINT>(i), name, sizeof name, nullptr, &column.sqlType,
                                 &column.size, &column.scale, nullptr),
                  select_);
            column.name = reinterpret_cast<char*>(name);
            if (column.size == 0 || column.size > kMost) column.size = kMost;
            switch (column.sqlType) {
                case SQL_INTEGER:
                case SQL_SMALLINT:
                case SQL_TINYINT:
                case SQL_BIT: column.cType = SQL_C_SLONG; break;
                case SQL_FLOAT:
                case SQL_DOUBLE:
                case SQL_REAL: column.cType = SQL_C_DOUBLE; break;
                case SQL_TYPE_TIMESTAMP: column.cType = SQL_C_TYPE_TIMESTAMP; break;
                case SQL_BINARY:
                case SQL_VARBINARY:
                case SQL_LONGVARBINARY: column.cType = SQL_C_BINARY; break;
                default: break;
            }
            column.data.resize(4 * column.size + 64);
            columns_.push_back(std::move(column));
            Column& kept = columns_.back();
            check(SQLBindCol(select_, static_cast<SQLUSMALLINT>(i), kept.cType, kept.data.data(),
                             static_cast<SQLLEN>(kept.data.size()), &kept.length),
                  select_);
        }
    }

    bool bind(const ColumnRule& rule, int department) {
        switch (rule.from.kind) {
            case From::Kind::Column:
                for (Column& column : columns_)
                    if (same(column.name, rule.from.text)) return bindParameter(column);
                return false;
            case From::Kind::IkKuId: return bindNumber(department);
            case From::Kind::Number: return bindNumber(rule.from.number);
            case From::Kind::StockCount:
            case From::Kind::DisplayItem: return bindNumber(0);
            case From::Kind::KasseNr: return bindText(till_);
            case From::Kind::UnId: return bindText("6F9619FF-8B86-D011-B42D-00C04FC964FF");
            case From::Kind::Now: return bindText("2026-03-20 21:30:00.000");
            case From::Kind::Text: return bindText(rule.from.text);
        }
        return false;
    }

    bool bindNumber(int value) {
        Column& column = constants_.emplace_back();
        column.sqlType = SQL_INTEGER;
        column.cType = SQL_C_SLONG;
        column.data.resize(sizeof(SQLINTEGER));
        const SQLINTEGER number = value;
        std::memcpy(column.data.data(), &number, sizeof number);
        return bindParameter(column);
    }
    bool bindText(const std::string& value) {
        Column& column = constants_.emplace_back();
        column.sqlType = SQL_VARCHAR;
        column.size = value.size();
        column.data.assign(value.begin(), value.end());
        column.length = static_cast<SQLLEN>(value.size());
        return bindParameter(column);
    }
    bool bindParameter(Column& column) {
        check(
            SQLBindParameter(insert_, ++parameters_, SQL_PARAM_INPUT, column.cType, column.sqlType, column.size,
                             column.scale, column.data.data(), static_cast<SQLLEN>(column.data.size()), &column.length),
            insert_);
        return true;
    }

    SQLHSTMT select_;
    SQLHSTMT insert_;
    std::string till_;
    std::deque<Column> columns_;
    std::deque<Column> constants_;
    SQLUSMALLINT parameters_ = 0;
};

}  // namespace torvik::bench

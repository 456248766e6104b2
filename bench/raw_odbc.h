// ODBC as a plain C program uses it, over the same driver as the session layer: what its measurements compare with.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <stdexcept>
#include <string>

namespace torvik::bench {

class RawOdbc {
public:
    RawOdbc(int port, const std::string& password, const std::string& database) {
        ::SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env_);
        ::SQLSetEnvAttr(env_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        ::SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_);
        std::string text =
            "Driver=/usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so;Server=127.0.0.1;Port=" + std::to_string(port) +
            ";TDS_Version=7.4;Database=" + database + ";UID=sa;PWD=" + password + ";";
        if (!SQL_SUCCEEDED(::SQLDriverConnect(dbc_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr,
                                              0, nullptr, SQL_DRIVER_NOPROMPT)))
            throw std::runtime_error("cannot connect");
        ::SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &statement_);
    }
    ~RawOdbc() {
        ::SQLFreeHandle(SQL_HANDLE_STMT, statement_);
        ::SQLDisconnect(dbc_);
        ::SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
        ::SQLFreeHandle(SQL_HANDLE_ENV, env_);
    }
    RawOdbc(const RawOdbc&) = delete;
    RawOdbc& operator=(const RawOdbc&) = delete;

    [[nodiscard]] SQLHSTMT statement() const { return statement_; }
    static void require(SQLRETURN code, const char* what) {
        if (!SQL_SUCCEEDED(code)) throw std::runtime_error(what);
    }

private:
    SQLHENV env_ = SQL_NULL_HENV;
    SQLHDBC dbc_ = SQL_NULL_HDBC;
    SQLHSTMT statement_ = SQL_NULL_HSTMT;
};

}  // namespace torvik::bench

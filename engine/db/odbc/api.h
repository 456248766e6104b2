// The one header through which this room sees ODBC: the calls of the driver, handles, and its messages. Used by the
// rest of odbc/ alone.
//
// FreeTDS' driver is loaded by path and called without a driver manager in between: unixODBC's answers SQLMoreResults
// itself with "no data" after a failed SQLExecDirect, so that the rest of a batch behind a failing first statement
// would be cancelled instead of read. Microsoft's drivers are called through the driver manager.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqltypes.h>
#include <sqlucode.h>

// Behind the standard headers, whose names it uses (NULL too); with the calls of bulk copy.
#include <cstddef>

#define TDSODBC_BCP
#include <odbcss.h>

#include <utility>

#include "engine/db/errors.h"
#include "engine/db/odbc/driver.h"

namespace torvik::db::odbc {

// The calls that this program makes, by the names of the standard.
#define TORVIK_ODBC_CALLS(CALL) \
    CALL(SQLAllocHandle)        \
    CALL(SQLFreeHandle)         \
    CALL(SQLFreeStmt)           \
    CALL(SQLSetEnvAttr)         \
    CALL(SQLSetConnectAttrW)    \
    CALL(SQLGetInfo)            \
    CALL(SQLGetConnectAttrW)    \
    CALL(SQLDriverConnectW)     \
    CALL(SQLDisconnect)         \
    CALL(SQLSetStmtAttrW)       \
    CALL(SQLBindParameter)      \
    CALL(SQLExecDirectW)        \
    CALL(SQLMoreResults)        \
    CALL(SQLNumResultCols)      \
    CALL(SQLColAttributeW)      \
    CALL(SQLDescribeColW)       \
    CALL(SQLBindCol)            \
    CALL(SQLFetch)              \
    CALL(SQLGetData)            \
    CALL(SQLRowCount)           \
    CALL(SQLGetDiagRecW)        \
    CALL(SQLGetDiagFieldW)      \
    CALL(SQLCancel)

struct Api {
#define TORVIK_ODBC_MEMBER(name) decltype(&::name) name = nullptr;
    TORVIK_ODBC_CALLS(TORVIK_ODBC_MEMBER)
#undef TORVIK_ODBC_MEMBER
    OdbcDriver driver;
};

// The calls of the driver to use, chosen once a process. Raises ConnectionError when none is installed.
const Api& api();

// An ODBC handle, freed with its owner.
class Handle {
public:
    Handle() = default;
    Handle(const Api& calls, SQLSMALLINT type, SQLHANDLE parent);  // raises ConnectionError
    Handle(Handle&& other) noexcept { swap(other); }
    Handle& operator=(Handle&& other) noexcept {
        swap(other);
        return *this;
    }
    ~Handle();

    [[nodiscard]] SQLHANDLE get() const { return handle_; }
    [[nodiscard]] SQLSMALLINT type() const { return type_; }

private:
    void swap(Handle& other) noexcept {
        std::swap(api_, other.api_);
        std::swap(type_, other.type_);
        std::swap(handle_, other.handle_);
    }

    const Api* api_ = nullptr;
    SQLSMALLINT type_ = 0;
    SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// The messages that the last call on the handle left, in the driver's order.
[[nodiscard]] QList<ServerMessage> diagnostics(const Api& calls, const Handle& handle);

// What ODBC's wide functions take; the length is in characters.
[[nodiscard]] inline SQLWCHAR* wide(const QString& text) {
    return const_cast<SQLWCHAR*>(reinterpret_cast<const SQLWCHAR*>(text.utf16()));
}

// An integer in the place of a pointer, as the attribute calls want it.
[[nodiscard]] inline SQLPOINTER number(SQLULEN value) {
    return reinterpret_cast<SQLPOINTER>(value);
}

}  // namespace torvik::db::odbc

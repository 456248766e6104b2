// See api.h. Finds and loads the driver.
#include "engine/db/odbc/api.h"

#include <QFileInfo>
#include <QLibrary>
#include <QRegularExpression>
#include <QVersionNumber>
#include <array>

namespace torvik::db::odbc {

namespace {

// Where Debian, other Linux systems and Homebrew put FreeTDS' driver.
constexpr std::array kFreeTdsPlaces = {
    "/usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so",
    "/usr/lib/aarch64-linux-gnu/odbc/libtdsodbc.so",
    "/usr/lib64/libtdsodbc.so.0",
    "/usr/lib/libtdsodbc.so.0",
    "/usr/local/lib/libtdsodbc.so",
    "/opt/homebrew/lib/libtdsodbc.so",
};

// SQL Server's own diagnostic fields, the same numbers in both drivers.
constexpr SQLSMALLINT kDiagState = -1150;
constexpr SQLSMALLINT kDiagSeverity = -1151;
constexpr SQLSMALLINT kDiagProcedure = -1153;
constexpr SQLSMALLINT kDiagLine = -1154;

struct Registered {
    QStringList names;
    QStringList freeTdsPaths;
};

Registered registeredDrivers() {
    Registered found;
    SQLHENV env = SQL_NULL_HENV;
    if (::SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env) != SQL_SUCCESS) return found;
    ::SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, number(SQL_OV_ODBC3), 0);
    std::array<SQLCHAR, 256> name{};
    std::array<SQLCHAR, 2048> attributes{};
    SQLSMALLINT nameLength = 0;
    SQLSMALLINT attributesLength = 0;
    while (SQL_SUCCEEDED(::SQLDrivers(env, SQL_FETCH_NEXT, name.data(), SQLSMALLINT(name.size()), &nameLength,
                                      attributes.data(), SQLSMALLINT(attributes.size()), &attributesLength))) {
        found.names += QString::fromUtf8(reinterpret_cast<const char*>(name.data()));
        const char* attribute = reinterpret_cast<const char*>(attributes.data());
        for (; *attribute != 0; attribute += qstrlen(attribute) + 1) {
            const QString text = QString::fromUtf8(attribute);
            if (text.startsWith(u"Driver=", Qt::CaseInsensitive) && text.contains(u"tdsodbc"))
                found.freeTdsPaths += text.mid(7);
        }
    }
    ::SQLFreeHandle(SQL_HANDLE_ENV, env);
    return found;
}

// The driver's own version, which it tells before there is a connection.
QVersionNumber version(const Api& calls) {
    const Handle env(calls, SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    calls.SQLSetEnvAttr(env.get(), SQL_ATTR_ODBC_VERSION, number(SQL_OV_ODBC3), 0);
    const Handle dbc(calls, SQL_HANDLE_DBC, env.get());
    std::array<char, 64> text{};
    SQLSMALLINT length = 0;
    calls.SQLGetInfo(dbc.get(), SQL_DRIVER_VER, text.data(), SQLSMALLINT(text.size()), &length);
    return QVersionNumber::fromString(QLatin1String(text.data()));
}

Api load() {
    const Registered registered = registeredDrivers();
    // A path that stands registered comes first; a bare file name, which only unixODBC's own search path finds, last.
    QStringList paths;
    for (const QString& path : registered.freeTdsPaths)
        if (QFileInfo(path).isAbsolute() && QFileInfo::exists(path)) paths += path;
    for (const char* place : kFreeTdsPlaces)
        if (QFileInfo::exists(QLatin1String(place))) paths += QLatin1String(place);
    paths += registered.freeTdsPaths;
    Api calls;
    calls.driver = chooseDriver(registered.names, paths);
    if (!calls.driver.FreeTds) {
#define TORVIK_ODBC_MANAGER(name) calls.name = &::name;
        TORVIK_ODBC_CALLS(TORVIK_ODBC_MANAGER)
#undef TORVIK_ODBC_MANAGER
        return calls;
    }
    QLibrary library(calls.driver.Name);
    const auto resolve = [&]<typename Function>(Function& function, const char* name) {
        function = reinterpret_cast<Function>(library.resolve(name));
        if (!function)
            throw ConnectionError(ConnectionError::Reason::NoDriver,
                                  QStringLiteral("The ODBC driver \"%1\" cannot be used: %2")
                                      .arg(calls.driver.Name, library.errorString()));
    };
#define TORVIK_ODBC_RESOLVE(name) resolve(calls.name, #name);
    TORVIK_ODBC_CALLS(TORVIK_ODBC_RESOLVE)
#undef TORVIK_ODBC_RESOLVE
    calls.driver.DoublesBraces = version(calls) >= QVersionNumber(1, 4);
    return calls;
}

// The text without the marks of who passed it on: "[FreeTDS][SQL Server]", "[unixODBC]" and the like.
QString withoutOrigin(const QString& text) {
    static const QRegularExpression origin(QStringLiteral(
        "^(\\[(FreeTDS|unixODBC|Driver Manager|SQL Server|Microsoft|ODBC Driver \\d+ for SQL Server)\\])+"));
    return QString(text).remove(origin);
}

}  // namespace

const Api& api() {
    static const Api calls = load();
    return calls;
}

Handle::Handle(const Api& calls, SQLSMALLINT type, SQLHANDLE parent) : api_(&calls), type_(type) {
    if (!SQL_SUCCEEDED(calls.SQLAllocHandle(type, parent, &handle_)))
        throw ConnectionError(ConnectionError::Reason::Lost,
                              QStringLiteral("The ODBC driver gave no handle of type %1").arg(type));
}

Handle::~Handle() {
    if (handle_ != SQL_NULL_HANDLE) api_->SQLFreeHandle(type_, handle_);
}

QList<ServerMessage> diagnostics(const Api& calls, const Handle& handle) {
    QList<ServerMessage> messages;
    for (SQLSMALLINT i = 1; i < 1000; ++i) {
        std::array<SQLWCHAR, 6> state{};
        std::array<SQLWCHAR, 4096> text{};
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        const SQLRETURN rc = calls.SQLGetDiagRecW(handle.type(), handle.get(), i, state.data(), &native, text.data(),
                                                  SQLSMALLINT(text.size()), &length);
        if (!SQL_SUCCEEDED(rc)) break;
        ServerMessage message;
        message.SqlState = QString::fromUtf16(reinterpret_cast<const char16_t*>(state.data()));
        message.Text = withoutOrigin(QString::fromUtf16(reinterpret_cast<const char16_t*>(text.data())));
        message.Number = native;
        const auto integer = [&](SQLSMALLINT field) {
            SQLINTEGER value = 0;
            SQLSMALLINT ignored = 0;
            calls.SQLGetDiagFieldW(handle.type(), handle.get(), i, field, &value, SQLSMALLINT(sizeof value), &ignored);
            return int(value);
        };
        // FreeTDS gives the severity where the state is asked for, has no procedure, and no line for its own messages.
        const int asked = integer(kDiagState) & 0xFFFF;
        message.State = calls.driver.FreeTds ? 0 : asked;
        message.Severity = calls.driver.FreeTds ? asked : integer(kDiagSeverity) & 0xFFFF;
        const int line = integer(kDiagLine) & 0xFFFF;
        message.Line = line == 0xFFFF ? 0 : line;
        std::array<SQLWCHAR, 256> procedure{};
        if (SQL_SUCCEEDED(calls.SQLGetDiagFieldW(handle.type(), handle.get(), i, kDiagProcedure, procedure.data(),
                                                 SQLSMALLINT(sizeof procedure), &length)))
            message.Procedure = QString::fromUtf16(reinterpret_cast<const char16_t*>(procedure.data()));
        messages += message;
    }
    return messages;
}

}  // namespace torvik::db::odbc

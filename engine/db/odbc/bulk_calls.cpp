// See bulk_calls.h.
#include "engine/db/odbc/bulk_calls.h"

#include <QLibrary>
#include <array>

namespace torvik::db::odbc {

namespace {

constexpr int kNoTerminator = 0;

// Microsoft's functions, as its documentation declares them.
struct MicrosoftBulk {
    SQLSMALLINT (*init)(SQLHDBC, const SQLWCHAR*, const SQLWCHAR*, const SQLWCHAR*, SQLINTEGER) = nullptr;
    SQLSMALLINT (*control)(SQLHDBC, SQLINTEGER, void*) = nullptr;
    SQLSMALLINT(*bind)
    (SQLHDBC, const unsigned char*, SQLINTEGER, SQLINTEGER, const unsigned char*, SQLINTEGER, SQLINTEGER,
     SQLINTEGER) = nullptr;
    SQLSMALLINT (*sendRow)(SQLHDBC) = nullptr;
    SQLINTEGER (*done)(SQLHDBC) = nullptr;

    [[nodiscard]] bool complete() const { return init && control && bind && sendRow && done; }
};

// The library is the one that the connection's driver says it is; it is loaded already.
const MicrosoftBulk& microsoft(const Api& calls, const Handle& dbc) {
    static const MicrosoftBulk found = [&] {
        MicrosoftBulk bulk;
        std::array<char, 512> name{};
        SQLSMALLINT length = 0;
        if (!SQL_SUCCEEDED(
                calls.SQLGetInfo(dbc.get(), SQL_DRIVER_NAME, name.data(), SQLSMALLINT(name.size()), &length)))
            return bulk;
        QLibrary library(QString::fromUtf8(name.data()));
        const auto resolve = [&]<typename Function>(Function& function, const char* symbol) {
            function = reinterpret_cast<Function>(library.resolve(symbol));
        };
        resolve(bulk.init, "bcp_initW");
        resolve(bulk.control, "bcp_control");
        resolve(bulk.bind, "bcp_bind");
        resolve(bulk.sendRow, "bcp_sendrow");
        resolve(bulk.done, "bcp_done");
        return bulk;
    }();
    return found;
}

// FreeTDS takes a call's arguments as a connection attribute's value.
bool call(const Api& calls, const Handle& dbc, SQLINTEGER attribute, void* arguments) {
    return SQL_SUCCEEDED(calls.SQLSetConnectAttrW(dbc.get(), attribute, arguments, SQL_IS_POINTER));
}

}  // namespace

void enableBulk(const Api& calls, const Handle& dbc) {
    calls.SQLSetConnectAttrW(dbc.get(), SQL_COPT_SS_BCP, number(SQL_BCP_ON), SQL_IS_INTEGER);
}

bool BulkCalls::available() const {
    return calls_.driver.FreeTds || microsoft(calls_, dbc_).complete();
}

// FreeTDS' ODBC driver has UTF-8 for its client's character set whatever the locale is.
BulkCell::TextForm BulkCalls::textForm() const {
    return calls_.driver.FreeTds ? BulkCell::TextForm::Utf8 : BulkCell::TextForm::Utf16;
}

bool BulkCalls::begin(const QString& table) const {
    if (!calls_.driver.FreeTds)
        return microsoft(calls_, dbc_).init(dbc_.get(), wide(table), nullptr, nullptr, BCP_DIRECTION_IN) == SUCCEED;
    tdsodbc_impl_bcp_init_params arguments{wide(table), nullptr, nullptr, BCP_DIRECTION_IN};
    return call(calls_, dbc_, SQL_COPT_TDSODBC_IMPL_BCP_INITW, &arguments);
}

bool BulkCalls::setHints(QByteArray& hints) const {
    if (!calls_.driver.FreeTds) return microsoft(calls_, dbc_).control(dbc_.get(), BCPHINTS, hints.data()) == SUCCEED;
    tdsodbc_impl_bcp_control_params arguments{BCPHINTS, hints.data()};
    return call(calls_, dbc_, SQL_COPT_TDSODBC_IMPL_BCP_CONTROL, &arguments);
}

bool BulkCalls::bind(const BulkCell* cell, int place) const {
    const unsigned char* address = cell ? cell->address() : nullptr;
    const int prefix = cell ? BulkCell::kPrefix : 0;
    const int length = cell ? SQL_VARLEN_DATA : SQL_NULL_DATA;
    const int type = cell ? cell->bindType() : 0;
    if (!calls_.driver.FreeTds)
        return microsoft(calls_, dbc_).bind(dbc_.get(), address, prefix, length, nullptr, kNoTerminator, type, place) ==
               SUCCEED;
    tdsodbc_impl_bcp_bind_params arguments{address, prefix, length, nullptr, kNoTerminator, type, place};
    return call(calls_, dbc_, SQL_COPT_TDSODBC_IMPL_BCP_BIND, &arguments);
}

bool BulkCalls::sendRow() const {
    if (!calls_.driver.FreeTds) return microsoft(calls_, dbc_).sendRow(dbc_.get()) == SUCCEED;
    return call(calls_, dbc_, SQL_COPT_TDSODBC_IMPL_BCP_SENDROW, nullptr);
}

int BulkCalls::done() const {
    if (!calls_.driver.FreeTds) return microsoft(calls_, dbc_).done(dbc_.get());
    tdsodbc_impl_bcp_done_params arguments{-1};
    return call(calls_, dbc_, SQL_COPT_TDSODBC_IMPL_BCP_DONE, &arguments) ? arguments.rows : -1;
}

}  // namespace torvik::db::odbc

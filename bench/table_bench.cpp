// The table object against a loop over a prepared INSERT of the same client library.
#include <QCoreApplication>
#include <array>
#include <vector>

#include "bench/figure.h"
#include "bench/raw_odbc.h"
#include "bench/server_process.h"
#include "engine/db/table.h"

namespace {

using namespace torvik;

constexpr int kRounds = 2;

// Every third column is a number, a text, a float.
QString createTable(const QString& name, int columns) {
    QStringList parts;
    for (int i = 0; i < columns; ++i)
        parts += QStringLiteral("c%1 %2").arg(i).arg(
            QLatin1String(std::array{"int NULL", "varchar(40) NULL", "float NULL"}[size_t(i % 3)]));
    return QStringLiteral("CREATE TABLE %1 (%2)").arg(name, parts.join(QStringLiteral(", ")));
}

void byTable(db::Session& session, const QString& name, int columns, int rows) {
    db::Table table(&session);
    table.SetTableName(name);
    table.Open();
    std::vector<db::Field*> fields;
    for (int i = 0; i < columns; ++i) fields.push_back(&table.FieldByName(QStringLiteral("c%1").arg(i)));
    const QString text = QStringLiteral("Vare med et navn");
    for (int row = 0; row < rows; ++row) {
        table.Append();
        for (int i = 0; i < columns; ++i) {
            if (i % 3 == 0) *fields[size_t(i)] = row;
            if (i % 3 == 1) *fields[size_t(i)] = text;
            if (i % 3 == 2) *fields[size_t(i)] = row * 0.5;
        }
        table.Post();
    }
    table.Close();
}

void byPreparedLoop(bench::RawOdbc& odbc, const QString& name, int columns, int rows) {
    const std::string marks = (QStringLiteral("INSERT INTO %1 VALUES (").arg(name) +
                               QStringList(columns, QStringLiteral("?")).join(u',') + u')')
                                  .toStdString();
    SQLINTEGER number = 0;
    std::array<char, 41> text{};
    qstrcpy(text.data(), "Vare med et navn");
    double real = 0;
    SQLLEN textLength = SQL_NTS;
    SQLLEN fixed = 0;
    const SQLHSTMT s = odbc.statement();
    std::string statement = marks;
    bench::RawOdbc::require(::SQLPrepare(s, reinterpret_cast<SQLCHAR*>(statement.data()), SQL_NTS), "prepare");
    for (int i = 0; i < columns; ++i) {
        const auto place = SQLUSMALLINT(i + 1);
        if (i % 3 == 0)
            ::SQLBindParameter(s, place, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0, &number, 0, &fixed);
        if (i % 3 == 1)
            ::SQLBindParameter(s, place, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 40, 0, text.data(), 41, &textLength);
        if (i % 3 == 2)
            ::SQLBindParameter(s, place, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 53, 0, &real, 0, &fixed);
    }
    for (int row = 0; row < rows; ++row) {
        number = row;
        real = row * 0.5;
        bench::RawOdbc::require(::SQLExecute(s), "insert");
    }
    ::SQLFreeStmt(s, SQL_RESET_PARAMS);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::ServerProcess server;
    const QCoreApplication app(argc, argv);
    bench::execute(*server.connect(QStringLiteral("master")), QStringLiteral("CREATE DATABASE Kasse"));
    const auto session = server.connect(QStringLiteral("Kasse"));
    bench::RawOdbc odbc(server.port(), bench::ServerProcess::kPassword, "Kasse");
    for (const int columns : {5, 20, 50}) {
        const int tableRows = 300'000 / columns;
        const int loopRows = 60'000 / columns;
        double table = 0;
        double loop = 0;
        for (int round = 0; round < kRounds; ++round) {
            const QString name = QStringLiteral("T%1_%2").arg(columns).arg(round);
            bench::execute(*session, createTable(name, columns));
            table = std::max(table, tableRows / bench::seconds([&] { byTable(*session, name, columns, tableRows); }));
            loop = std::max(loop, loopRows / bench::seconds([&] { byPreparedLoop(odbc, name, columns, loopRows); }));
            const QString count = bench::scalar(*session, QStringLiteral("SELECT COUNT(*) FROM ") + name);
            if (count.toInt() != tableRows + loopRows) throw std::runtime_error("rows are missing");
        }
        bench::tell("table object, " + std::to_string(columns) + " columns", table, "rows/s", "a prepared INSERT a row",
                    loop);
    }
}

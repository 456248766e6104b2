// Opening a query of 100,000 rows and reading every cell by name, against the same in plain C over ODBC; and Locate.
#include <strings.h>

#include <QCoreApplication>
#include <array>
#include <vector>

#include "bench/figure.h"
#include "bench/raw_odbc.h"
#include "bench/server_process.h"
#include "engine/db/table.h"

namespace {

using namespace torvik;

constexpr int kRows = 100'000;
constexpr int kRounds = 3;
constexpr std::array kColumns = {"Va_Id",     "Va_Navn",  "Va_Pris",   "Va_Antall",
                                 "Va_Endret", "Va_Lager", "Va_Gruppe", "Va_Merke"};
constexpr const char* kSelect = "SELECT * FROM Vare";

void fill(db::Session& session) {
    bench::execute(session,
                   QStringLiteral("CREATE TABLE Vare (Va_Id char(20), Va_Navn varchar(50), Va_Pris float, Va_Antall "
                                  "int, Va_Endret datetime, Va_Lager float, Va_Gruppe int, Va_Merke "
                                  "varchar(20) NULL)"));
    db::Table table(&session);
    table.SetTableName(QStringLiteral("Vare"));
    table.Open();
    for (int row = 0; row < kRows; ++row) {
        table.Append();
        table.Fields(0) = QString::number(7'000'000'000LL + row);
        table.Fields(1) = QStringLiteral("Vare nummer %1").arg(row);
        table.Fields(2) = row * 0.5;
        table.Fields(3) = row;
        table.Fields(4) = db::DateTime(QDate(2024, 1, 1), QTime(12, 0).addSecs(row % 3600));
        table.Fields(5) = row / 3.0;
        table.Fields(6) = row % 40;
        table.Fields(7) = row % 3 == 0 ? db::Value() : db::Value("Merke");
        table.Post();
    }
    table.Close();
}

// What both loops make of the cells, so that neither can leave one out.
struct Sum {
    double numbers = 0;
    qint64 letters = 0;
    friend bool operator==(const Sum&, const Sum&) = default;
};

Sum byQuery(db::Session& session) {
    db::Query query(&session);
    query.SQL = {QLatin1String(kSelect)};
    query.Open();
    Sum sum;
    for (; !query.Eof(); query.Next()) {
        sum.letters += query.FieldByName(QStringLiteral("Va_Id")).AsString().size();
        sum.letters += query.FieldByName(QStringLiteral("Va_Navn")).AsString().size();
        sum.numbers += query.FieldByName(QStringLiteral("Va_Pris")).AsFloat();
        sum.numbers += double(query.FieldByName(QStringLiteral("Va_Antall")).AsInteger());
        sum.letters += query.FieldByName(QStringLiteral("Va_Endret")).AsDateTime().date().year();
        sum.numbers += query.FieldByName(QStringLiteral("Va_Lager")).AsFloat();
        sum.numbers += double(query.FieldByName(QStringLiteral("Va_Gruppe")).AsInteger());
        sum.letters += query.FieldByName(QStringLiteral("Va_Merke")).AsString().size();
    }
    return sum;
}

// Bound columns, one row a fetch, the column looked up by its name for each cell.
Sum byPlainC(const bench::RawOdbc& odbc) {
    struct Cell {
        char name[64];
        SQLLEN length;
        union {
            char text[64];
            double real;
            SQLINTEGER number;
            SQL_TIMESTAMP_STRUCT time;
        };
    };
    static std::array<Cell, kColumns.size()> cells;
    const SQLHSTMT s = odbc.statement();
    std::string text = kSelect;
    bench::RawOdbc::require(::SQLExecDirect(s, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), "select");
    constexpr std::array<SQLSMALLINT, kColumns.size()> types = {
        SQL_C_CHAR, SQL_C_CHAR, SQL_C_DOUBLE, SQL_C_SLONG, SQL_C_TYPE_TIMESTAMP, SQL_C_DOUBLE, SQL_C_SLONG, SQL_C_CHAR};
    for (size_t i = 0; i < cells.size(); ++i) {
        SQLSMALLINT ignored = 0;
        ::SQLDescribeCol(s, SQLUSMALLINT(i + 1), reinterpret_cast<SQLCHAR*>(cells[i].name), sizeof cells[i].name,
                         &ignored, &ignored, nullptr, &ignored, &ignored);
        ::SQLBindCol(s, SQLUSMALLINT(i + 1), types[i], cells[i].text, sizeof cells[i].text, &cells[i].length);
    }
    const auto cell = [&](const char* name) -> const Cell& {
        for (const Cell& each : cells)
            if (::strcasecmp(each.name, name) == 0) return each;
        throw std::runtime_error(name);
    };
    const auto letters = [&](const char* name) {
        const Cell& c = cell(name);
        return c.length == SQL_NULL_DATA ? 0 : qint64(std::string(c.text, size_t(c.length)).size());
    };
    Sum sum;
    while (SQL_SUCCEEDED(::SQLFetch(s))) {
        sum.letters += letters("Va_Id");
        sum.letters += letters("Va_Navn");
        sum.numbers += cell("Va_Pris").real;
        sum.numbers += cell("Va_Antall").number;
        sum.letters += cell("Va_Endret").time.year;
        sum.numbers += cell("Va_Lager").real;
        sum.numbers += cell("Va_Gruppe").number;
        sum.letters += letters("Va_Merke");
    }
    ::SQLFreeStmt(s, SQL_CLOSE);
    ::SQLFreeStmt(s, SQL_UNBIND);
    return sum;
}

void locate(db::Session& session) {
    db::Query query(&session);
    query.SQL = {QLatin1String(kSelect)};
    query.Open();
    constexpr int kSearches = 200'000;
    const auto search = [&](const char* what, const QString& names, auto valuesOf) {
        std::vector<QList<db::Value>> keys;
        for (int i = 0; i < kSearches; ++i) keys.push_back(valuesOf(int(qint64{i} * 7919 % kRows)));
        const double first = bench::seconds([&] { static_cast<void>(query.Locate(names, keys.front())); });
        int found = 0;
        const double all = bench::seconds([&] {
            for (const auto& key : keys) found += query.Locate(names, key);
        });
        if (found != kSearches) throw std::runtime_error("Locate missed a row");
        bench::tell(std::string("Locate in 100,000 rows by ") + what, all / kSearches * 1e6, "us", "1 us at most", 1);
        bench::tell(std::string("Locate in 100,000 rows by ") + what + ", the first", first * 1e3, "ms", "", 1);
    };
    search("a number", QStringLiteral("Va_Antall"), [](int n) { return QList<db::Value>{n}; });
    search("a text", QStringLiteral("Va_Id"),
           [](int n) { return QList<db::Value>{QString::number(7'000'000'000LL + n)}; });
    search("a text and a number", QStringLiteral("Va_Navn;Va_Gruppe"), [](int n) {
        return QList<db::Value>{QStringLiteral("Vare nummer %1").arg(n), n % 40};
    });
}

}  // namespace

int main(int argc, char** argv) {
    const bench::ServerProcess server;
    const QCoreApplication app(argc, argv);
    bench::execute(*server.connect(QStringLiteral("master")), QStringLiteral("CREATE DATABASE Kasse"));
    const auto session = server.connect(QStringLiteral("Kasse"));
    fill(*session);
    const bench::RawOdbc odbc(server.port(), bench::ServerProcess::kPassword, "Kasse");
    double query = 1e9;
    double plain = 1e9;
    Sum ours;
    Sum theirs;
    for (int round = 0; round < kRounds; ++round) {
        query = std::min(query, bench::seconds([&] { ours = byQuery(*session); }));
        plain = std::min(plain, bench::seconds([&] { theirs = byPlainC(odbc); }));
    }
    if (!(ours == theirs)) throw std::runtime_error("the two loops read different cells");
    bench::tell("query of 100,000 rows, 8 columns, every cell by name", query * 1e3, "ms",
                "the same in plain C over ODBC", plain * 1e3);
    locate(*session);
}

// One run over a chain in which every kind of sale has been made: each table of the back office and of the tills is
// held against what the model says that the run must leave; those that it does not name must be as they were, and so
// must the columns that it does not name.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>

#include "engine/roster/avdeling.h"
#include "sandbox/chain/posted_rows.h"
#include "sandbox/chain/scripts.h"
#include "sandbox/chain/settled_rows.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using sandbox::chain::SettledOptions;
using sandbox::chain::TableData;

// Database and table to their rows, each with the columns in front, of ChainRun::everything.
std::map<std::string, std::string> tablesOf(const std::string& everything) {
    std::map<std::string, std::string> tables;
    std::istringstream text(everything);
    std::string database;
    std::string table;
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("  ", 0) == 0) {
            tables[table] += line + "\n";
        } else if (const std::size_t columns = line.find(" ("); columns != std::string::npos) {
            table = database + "." + line.substr(0, columns);
            tables[table] = line + "\n";
        } else {
            database = line;
        }
    }
    return tables;
}

// The rows of a table of ChainRun::everything, reduced to those columns that no expectation has named.
struct Unnamed {
    Unnamed(const std::string& table, const std::set<std::string>& named) {
        std::istringstream text(table);
        std::string head;
        std::getline(text, head);
        const std::vector<std::string> all =
            split(head.substr(head.find(" (") + 2, head.size() - head.find(" (") - 3), ", ");
        std::vector<std::size_t> kept;
        for (std::size_t i = 0; i < all.size(); ++i)
            if (!named.contains(lowerCase(all[i]))) kept.push_back(i);
        for (const std::size_t i : kept) columns.push_back(all[i]);
        for (std::string line; std::getline(text, line);) {
            const std::vector<std::string> cells = split(line.substr(2), " | ");
            std::vector<std::string>& row = rows.emplace_back();
            for (const std::size_t i : kept) row.push_back(cells.at(i));
        }
        std::sort(rows.begin(), rows.end());
    }

    static std::string lowerCase(std::string text) {
        for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    }
    static std::vector<std::string> split(const std::string& text, const std::string& separator) {
        std::vector<std::string> pieces;
        std::size_t from = 0;
        for (std::size_t at; (at = text.find(separator, from)) != std::string::npos; from = at + separator.size())
            pieces.push_back(text.substr(from, at - from));
        pieces.push_back(text.substr(from));
        return pieces;
    }
    // The names in a piece of SQL.
    static std::set<std::string> words(const std::string& sql) {
        std::set<std::string> found;
        std::string word;
        for (const char c : lowerCase(sql) + " ") {
            if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
                word += c;
            } else {
                found.insert(word);
                word.clear();
            }
        }
        return found;
    }

    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
};

// Numbers that the back office gives its own rows, and the moment of a mark.
const std::set<std::string> kOfTheRunItself{"OL_ID", "dl_id", "dl_tidspunkt"};

// A chain with a till of each version given, and what the run does.
struct WholeRunCase {
    const char* name;
    SettledOptions options;
    std::vector<int> versions;
    int days;
};

// From the oldest whose sales can be fetched.
std::vector<int> everyVersion() {
    std::vector<int> versions = sandbox::chain::tillVersions();
    std::erase_if(versions, [](int version) { return version < 137; });
    return versions;
}

class WholeRun : public testing::TestWithParam<WholeRunCase> {
protected:
    WholeRun()
        : run({.departments = 2,
               .tills = static_cast<int>(GetParam().versions.size()),
               .days = GetParam().days,
               .versions = GetParam().versions,
               .everyKind = true}) {
        run.engine.IsEnterprise = options.chainInstallation;
        run.engine.IncludeGiftVoucherOnOppgjor = options.vouchers;
        run.engine.IncludeCreditCouponOnOppgjor = options.vouchers;
        const bool departmentsInvoice = options.creditOrders != options.chainInstallation;
        run.chain.runInBackOffice(std::string("UPDATE Internkunde SET Ik_Fakturaregel = ") +
                                  (departmentsInvoice ? "2" : "1"));
    }

    // The tills in the order in which the run fetched them, as its log tells.
    [[nodiscard]] std::vector<std::size_t> walk() const {
        std::vector<std::size_t> order;
        const auto& model = run.chain.model();
        for (const QString& line : run.log())
            for (std::size_t i = 0; i < model.tills.size(); ++i)
                if (line == QStringLiteral("START OPPGJØR FOR AVDELING %1, KASSENUMMER %2")
                                .arg(QString::fromStdString(model.departmentOf(model.tills[i]).number),
                                     QString::fromStdString(model.tills[i].number)))
                    order.push_back(i);
        return order;
    }

    // Holds a table against the model and takes it off those that must be as they were.
    void expect(const std::string& database, const testing::AssertionResult& held, const TableData& table) {
        EXPECT_TRUE(held) << database;
        changed.insert(database + "." + table.table.substr(0, table.table.find(' ')));
        std::set<std::string>& known = named[database];
        for (const std::string& column : table.columns) known.merge(Unnamed::words(column));
        known.merge(Unnamed::words(table.table));
    }
    void expectBackOffice(const TableData& table) { expect("back office", run.backOfficeHolds(table), table); }

    // A column that no expectation names is as it was, and in a table that was empty it is null.
    void expectTheRestAsItWas(const std::string& table, const std::string& before, const std::string& after) {
        const std::set<std::string>& known = named[table.substr(0, table.find('.'))];
        const Unnamed old(before, known);
        const Unnamed now(after, known);
        if (!old.rows.empty()) {
            EXPECT_EQ(now.rows, old.rows) << table << ": " << testing::PrintToString(now.columns);
            return;
        }
        for (const auto& row : now.rows)
            for (std::size_t i = 0; i < row.size(); ++i) {
                if (!kOfTheRunItself.contains(now.columns[i])) {
                    ASSERT_EQ(row[i], "NULL") << table << "." << now.columns[i];
                }
            }
    }

    const SettledOptions options = GetParam().options;
    ChainRun run;
    std::set<std::string> changed;
    std::map<std::string, std::set<std::string>> named;  // by database: what the expectations tell
};

TEST_P(WholeRun, LeavesWhatTheModelSaysAndASecondOneNothingNew) {
    const auto before = tablesOf(run.everything());

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    const auto& model = run.chain.model();
    const auto order = walk();
    ASSERT_EQ(order.size(), model.tills.size());
    for (TableData table : sandbox::chain::postedTables(model)) {
        // A single back office begins to count a till at a settlement 0 of its own.
        if (!options.chainInstallation && table.table == "PosOppgjor") table.table += " WHERE Pos_Op_Id > 0";
        expectBackOffice(table);
    }
    for (const TableData& table : sandbox::chain::settledTables(model, order, options)) expectBackOffice(table);
    const std::size_t made = options.creditOrders ? sandbox::chain::creditOrderCount(model, order) : 0;
    expectBackOffice(
        {"ORDRE",
         {"COUNT(*)", "MIN(Or_ID)", "MAX(Or_ID)"},
         {{static_cast<std::int64_t>(made), made ? sandbox::chain::Cell(std::int64_t{500001}) : std::monostate{},
           made ? sandbox::chain::Cell(static_cast<std::int64_t>(500000 + made)) : std::monostate{}}}});
    expectBackOffice(
        {"Ledignummer WHERE Ln_Navn = 'OR_ID'", {"Ln_Neste"}, {{static_cast<std::int64_t>(500001 + made)}}});
    if (!options.chainInstallation) {
        TableData begun{"PosOppgjor WHERE Pos_Op_Id = 0", {"Pos_Op_Ik_Ku_Id", "Pos_Op_Kassenr", "Pos_Op_Type"}, {}};
        // No settlement was marked yet, so the till's number is not known to it: one row a department.
        for (const sandbox::chain::Department& department : model.departments)
            begun.rows.push_back({std::int64_t{department.id}, std::string(), std::string("NORMAL")});
        expectBackOffice(begun);
    }
    for (const std::size_t i : order)
        for (const TableData& table : sandbox::chain::markedTables(model.tills[i], options))
            expect(model.tills[i].database, run.tillHolds(i, table), table);

    for (const auto& [table, rows] : tablesOf(run.everything())) {
        const auto old = before.find(table);
        if (changed.contains(table)) {
            if (old != before.end()) expectTheRestAsItWas(table, old->second, rows);
            continue;
        }
        if (old != before.end())
            EXPECT_EQ(rows, old->second);
        else
            EXPECT_EQ(rows.find("\n  "), std::string::npos) << "made by the run, and not empty: " << rows;
    }

    const auto after = tablesOf(run.everything());
    run.fetch();
    EXPECT_EQ(run.errors(), QStringList());
    for (const auto& [table, rows] : tablesOf(run.everything())) {
        // The log of the runs, and on the tills the pay-outs of the settlements just fetched.
        if (table == "back office.dts_logg" || table.find(".UTBETALINGIMPORT") != std::string::npos) continue;
        EXPECT_EQ(rows, after.at(table));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, WholeRun,
    testing::Values(WholeRunCase{"Chain", {true, true, true}, everyVersion(), 1},
                    WholeRunCase{"ChainWithoutVouchers", {true, true, false}, {137, 149, 198, 229}, 2},
                    WholeRunCase{"SingleBackOffice", {false, true, true}, everyVersion(), 1},
                    WholeRunCase{"SingleBackOfficeWithoutCreditOrders", {false, false, true}, {137, 149, 198, 229}, 2}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace torvik::test

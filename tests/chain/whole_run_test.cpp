// One run over a chain in which every kind of sale has been made: each table of the back office and of the tills is
// held against what the model says that the run must leave; those that it does not name must be as they were.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "engine/avdeling.h"
#include "sandbox/chain/posted_rows.h"
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

class WholeRun : public testing::TestWithParam<SettledOptions> {
protected:
    WholeRun() : run({.departments = 2, .tills = 4, .days = 2, .versions = {137, 149, 198, 229}, .everyKind = true}) {
        run.engine.IsEnterprise = GetParam().chainInstallation;
        run.engine.IncludeGiftVoucherOnOppgjor = GetParam().vouchers;
        run.engine.IncludeCreditCouponOnOppgjor = GetParam().vouchers;
        const bool departmentsInvoice = GetParam().creditOrders != GetParam().chainInstallation;
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
    }
    void expectBackOffice(const TableData& table) { expect("back office", run.backOfficeHolds(table), table); }

    ChainRun run;
    std::set<std::string> changed;
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
        if (!GetParam().chainInstallation && table.table == "PosOppgjor") table.table += " WHERE Pos_Op_Id > 0";
        expectBackOffice(table);
    }
    for (const TableData& table : sandbox::chain::settledTables(model, order, GetParam())) expectBackOffice(table);
    const std::size_t made = GetParam().creditOrders ? sandbox::chain::creditOrderCount(model, order) : 0;
    expectBackOffice(
        {"ORDRE",
         {"COUNT(*)", "MIN(Or_ID)", "MAX(Or_ID)"},
         {{static_cast<std::int64_t>(made), made ? sandbox::chain::Cell(std::int64_t{500001}) : std::monostate{},
           made ? sandbox::chain::Cell(static_cast<std::int64_t>(500000 + made)) : std::monostate{}}}});
    expectBackOffice(
        {"Ledignummer WHERE Ln_Navn = 'OR_ID'", {"Ln_Neste"}, {{static_cast<std::int64_t>(500001 + made)}}});
    if (!GetParam().chainInstallation) {
        TableData begun{"PosOppgjor WHERE Pos_Op_Id = 0", {"Pos_Op_Ik_Ku_Id", "Pos_Op_Kassenr", "Pos_Op_Type"}, {}};
        // No settlement was marked yet, so the till's number is not known to it: one row a department.
        for (const sandbox::chain::Department& department : model.departments)
            begun.rows.push_back({std::int64_t{department.id}, std::string(), std::string("NORMAL")});
        expectBackOffice(begun);
    }
    for (const std::size_t i : order)
        for (const TableData& table : sandbox::chain::markedTables(model.tills[i], GetParam()))
            expect(model.tills[i].database, run.tillHolds(i, table), table);

    for (const auto& [table, rows] : tablesOf(run.everything())) {
        if (changed.contains(table)) continue;
        const auto old = before.find(table);
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

std::string nameOf(const testing::TestParamInfo<SettledOptions>& test) {
    return std::string(test.param.chainInstallation ? "Chain" : "SingleBackOffice") +
           (test.param.creditOrders ? "" : "WithoutCreditOrders") + (test.param.vouchers ? "" : "WithoutVouchers");
}

INSTANTIATE_TEST_SUITE_P(Each, WholeRun,
                         testing::Values(SettledOptions{true, true, true}, SettledOptions{true, true, false},
                                         SettledOptions{false, true, true}, SettledOptions{false, false, true}),
                         nameOf);

}  // namespace
}  // namespace torvik::test

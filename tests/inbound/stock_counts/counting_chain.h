// A chain whose tills hold a stock count each, with the run that brings them; what the back office's count must be is
// told by the chain's model.
#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <map>
#include <set>

#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/stock_counts/stock_count_run.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"

namespace torvik::test {

using Rows = std::vector<std::string>;

class CountingChain : public testing::Test {
protected:
    explicit CountingChain(int departments = 2, int tills = 3)
        : run({.departments = departments, .tills = tills, .days = 1, .versions = {213}}) {
        joinStockCounts(run.engine, run.joinPoints.NoteFolder);
        run.engine.VaretellingPeriode = QStringLiteral("202603");
    }

    // As the command in the window does it, over all tills.
    void count() {
        run.target.Close();
        run.target.Open();
        run.engine.Avdeling->ClearFilter();
        run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
        run.engine.ExecuteVaretelling();
    }

    // The back office's count, against the model's counts of these tills.
    [[nodiscard]] testing::AssertionResult counted(const std::set<std::size_t>& tills, int period = 202603) const {
        using namespace sandbox::chain;
        const Chain& chain = run.chain.model();
        std::map<std::pair<int, std::string>, double> sums;
        for (const std::size_t index : tills) {
            const Till& till = chain.tills[index];
            for (const Order& order : till.orders) {
                if (!order.settlement || typeOf(till, *order.settlement) != "VARETELLING") continue;
                for (const OrderLine& line : order.lines)
                    sums[{chain.departmentOf(till).id, line.item}] += line.quantity;
            }
        }
        TableData expected{
            "Varetelling", {"Vt_Ik_Ku_Id", "Vt_Periode", "RTRIM(Vt_Va_Id)", "Vt_Antall", "Vt_Soner", "Vt_Bruker"}, {}};
        for (const auto& [key, quantity] : sums)
            expected.rows.push_back(
                {integer(key.first), integer(period), text(key.second), quantity, std::monostate{}, text("sa")});
        return run.backOfficeHolds(expected);
    }
    [[nodiscard]] static std::string typeOf(const sandbox::chain::Till& till, int settlement) {
        for (const auto& s : till.settlements)
            if (s.id == settlement) return s.type;
        return {};
    }
    // Each of the till's settlements with its type, and whether it is marked as fetched.
    [[nodiscard]] Rows marks(std::size_t till) const {
        return run.tillRows(
            till,
            "SELECT OP_ID, RTRIM(OP_TYPE), CASE WHEN OP_OPPDATERTTIDSPUNKT IS NULL THEN 'nei' ELSE 'ja' "
            "END, OP_STATUS FROM OPPGJOR ORDER BY OP_ID");
    }
    // Nothing of a pair of transactions is left anywhere.
    void expectNoPair() const {
        EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM dts_logg WHERE dl_info LIKE 'Par {%'"), "0");
        EXPECT_TRUE(QDir(run.joinPoints.NoteFolder).entryList({QStringLiteral("par-*")}).isEmpty());
    }
    void onTill(std::size_t till, const std::string& batch) { run.chain.runInTill(till, batch); }
    void inBackOffice(const std::string& batch) { run.chain.runInBackOffice(batch); }
    static sandbox::FaultRule refusal(const std::string& text) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.action = sandbox::FaultAction::Fail;
        rule.message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"};
        return rule;
    }
    static sandbox::FaultRule cut(const std::string& text, sandbox::FaultAction when) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.action = when;
        return rule;
    }

    ChainRun run;
};

}  // namespace torvik::test

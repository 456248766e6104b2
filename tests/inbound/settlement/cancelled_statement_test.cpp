// A cancel that ends a statement on its server, at every request of a fetch: whatever the statement was, nothing is
// lost by it, and nothing is taken twice.
#include <gtest/gtest.h>

#include "engine/db/meanwhile.h"
#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

constexpr int kCards = 16;  // a full batch
constexpr double kPrice = 50;

class CancelOfAStatement : public OneTill, public testing::WithParamInterface<bool> {
protected:
    CancelOfAStatement() : OneTill(213, 0) { run.engine.IncludeGiftVoucherOnOppgjor = true; }

    [[nodiscard]] sandbox::Server& server() { return GetParam() ? run.chain.till(0) : run.chain.backOffice(); }

    // What the last fetch has taken is sold anew: a full batch of cards, a settlement with a sale.
    void sell() {
        if (till("SELECT COUNT(*) FROM GAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL") == Rows({"0"})) {
            std::string batch;
            for (int i = 0; i < kCards; ++i)
                batch += "INSERT GAVEKORT VALUES ('" + std::to_string(++cards) +
                         "', '101', '1', '100', 17, 250, NULL, NULL, NULL, NULL, NULL, NULL)\n";
            onTill(batch);
        }
        if (till("SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL") ==
            Rows({"0"})) {
            const int id = 1000 + ++sales;
            settlement(id, "20260302 21:00");
            order(id, id, "20260302 10:15");
            line(id, id, "100000", "1, 50, 0");
            payment(id, 1, kPrice);
        }
    }
    // Fetches, and cancels while the server is at its request of that number. False: the fetch made fewer.
    bool fetchCancelledAt(int number) {
        const int rule = server().faults().add({.match = {.textContains = ""},
                                                .action = sandbox::FaultAction::Delay,
                                                .skip = static_cast<std::uint64_t>(number - 1),
                                                .delay = std::chrono::milliseconds(80)});
        Requests requests(server());
        {
            const db::Meanwhile window([&] {
                if (requests.count({}) >= number && !run.engine.CancelRequest()) run.engine.SetCancelRequest(true);
            });
            run.fetch();
        }
        server().faults().remove(rule);
        return requests.count({}) >= number;
    }

    int cards = 0;
    int sales = 0;
};

TEST_P(CancelOfAStatement, LosesNothingAndTakesNothingTwice) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    int number = 1;
    do sell();
    while (fetchCancelledAt(number++));
    ASSERT_GT(number, 15);
    run.fetch();

    EXPECT_EQ(till("SELECT COUNT(*) FROM GAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL"), Rows({"0"}));
    EXPECT_EQ(till("SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL"),
              Rows({"0"}));
    const std::string all = std::to_string(sales);
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM POSGAVEKORT"), Rows({std::to_string(cards)}));
    EXPECT_EQ(backOffice("SELECT COUNT(*), COUNT(Pos_Or_OppdatertBeholdning) FROM PosOrdre WHERE Pos_Or_Id > 1000"),
              Rows({all + " | " + all}));
    EXPECT_EQ(backOffice("SELECT SUM(Ts_Omsetning) FROM timesalg"), Rows({std::to_string(sales * int(kPrice))}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM dts_logg WHERE dl_info LIKE 'Par {%'"), Rows({"0"}));
}

INSTANTIATE_TEST_SUITE_P(Ends, CancelOfAStatement, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "AtTheTill" : "AtTheBackOffice"; });

}  // namespace
}  // namespace torvik::test

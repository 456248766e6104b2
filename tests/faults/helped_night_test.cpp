// Real copies of the program share a night: every settlement is posted once, the tables hold what one copy alone
// leaves, and whoever of them is killed, nothing is lost or taken twice when the next night is over.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>
#include <condition_variable>
#include <optional>

#include "engine/office/application_lock.h"
#include "tests/faults/fault_case.h"
#include "tests/faults/several_copies.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr int kTills = 6;
constexpr std::chrono::minutes kLongest{3};

// Holds whoever comes to a till, until it is opened.
class Gate {
public:
    explicit Gate(sandbox::Server& till)
        : till_(till), observer_(till.faults().observe([this](const sandbox::RequestInfo&) {
              std::unique_lock lock(mutex_);
              met_ = true;
              changed_.notify_all();
              changed_.wait_for(lock, kLongest, [this] { return open_; });
          })) {}
    ~Gate() {
        open();
        till_.faults().forget(observer_);
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    [[nodiscard]] bool isMet() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLongest, [this] { return met_; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

private:
    sandbox::Server& till_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool met_ = false;
    bool open_ = false;
    int observer_;
};

// One request of those with the text that a server receives and does not execute, so that its program can be killed
// then.
class Standstill {
public:
    Standstill(sandbox::Server& server, std::string text, int skip)
        : server_(server), observer_(server.faults().observe([this, text, left = skip](const auto& request) mutable {
              if (request.text.find(text) == std::string::npos || left-- != 0) return;
              const std::lock_guard lock(mutex_);
              met_ = true;
              changed_.notify_all();
          })) {
        sandbox::FaultRule hang;
        hang.match.textContains = text;
        hang.skip = static_cast<std::uint64_t>(skip);
        hang.action = sandbox::FaultAction::Hang;
        server.faults().add(hang);
    }
    ~Standstill() { server_.faults().forget(observer_); }
    Standstill(const Standstill&) = delete;
    Standstill& operator=(const Standstill&) = delete;

    [[nodiscard]] bool isMet() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLongest, [this] { return met_; });
    }

private:
    sandbox::Server& server_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool met_ = false;
    int observer_;
};

class HelpedNight : public testing::Test {
protected:
    static sandbox::chain::ChainOptions options() {
        return {.departments = kTills / 2, .tills = kTills, .days = 2, .items = 20, .ordersADay = 10};
    }
    // What one copy alone leaves.
    static const Fetched& byOne() {
        static const Fetched fetched = [] {
            sandbox::chain::DemoChain alone({.chain = options()});
            Machine one(alone.dataLink(), QStringLiteral(TORVIK_NIGHT_PROGRAM), {QStringLiteral("leads")});
            one.start();
            EXPECT_TRUE(one.endsWell());
            return Fetched::Of(alone);
        }();
        return fetched;
    }
    [[nodiscard]] std::unique_ptr<Machine> machine(const char* role) const {
        return std::make_unique<Machine>(chain.dataLink(), QStringLiteral(TORVIK_NIGHT_PROGRAM),
                                         QStringList{QString::fromUtf8(role)});
    }
    void expectWhatOneLeaves() {
        expectTheSame(byOne(), Fetched::Of(chain));
        EXPECT_EQ(countStandingPairs(chain), 0U);
    }
    // Both copies at work: the leading one is held at the first till until so many others are fetched.
    void startBothUntilFetched(int others) {
        Gate first(chain.till(0));
        leading->start();
        ASSERT_TRUE(first.isMet());
        helping->start();
        waitForRows("Slutt {%hentet, maskin", others);
    }
    // A night of the leading copy, which the helping one joins.
    void nextNightMakesGood() {
        startBothUntilFetched(kTills - 1);
        EXPECT_TRUE(leading->endsWell());
        EXPECT_TRUE(helping->endsWell());
        expectWhatOneLeaves();
    }
    [[nodiscard]] qint64 rowsLike(const char* text) const {
        const auto session = backOfficeSession(chain);
        db::Query query(session.get());
        query.ParamCheck = false;
        query.SQL = QStringList{QStringLiteral("SELECT COUNT(*) FROM dts_logg (NOLOCK) WHERE dl_info LIKE '%1%'")
                                    .arg(QString::fromUtf8(text))};
        query.Open();
        return query.Fields(0).AsInteger();
    }
    void waitForRows(const char* text, qint64 count) const {
        QElapsedTimer since;
        since.start();
        while (rowsLike(text) < count && since.elapsed() < std::chrono::milliseconds(kLongest).count())
            QThread::msleep(50);
        EXPECT_EQ(rowsLike(text), count) << text;
    }

    sandbox::chain::DemoChain chain{{.chain = options()}};
    std::unique_ptr<Machine> leading = machine("leads");
    std::unique_ptr<Machine> helping = machine("helps");
    std::unique_ptr<Machine> helpingToo = machine("helps");
};

TEST_F(HelpedNight, TwoHelpingCopiesServeWhatTheLeadingOneDoesNotAndTheTablesAreAsOneCopyLeavesThem) {
    TillVisits visits(chain);
    {
        Gate first(chain.till(0));
        leading->start();
        ASSERT_TRUE(first.isMet());
        helping->start();
        helpingToo->start();
        waitForRows("Slutt {", kTills - 1);  // the leading copy has done none of them
    }
    EXPECT_TRUE(leading->endsWell());
    EXPECT_TRUE(helping->endsWell());
    EXPECT_TRUE(helpingToo->endsWell());

    expectWhatOneLeaves();
    EXPECT_EQ(visits.counts(), std::vector<std::size_t>(kTills, 1)) << "each till was visited once";
    EXPECT_EQ(rowsLike("Slutt {%hentet, maskin"), kTills);
    EXPECT_EQ(rowsLike("Hjelp {"), 2);
    EXPECT_EQ(rowsLike("Natt {"), 0) << "the night has been ended";
}

// Where the helping copy stands still when it is killed, and how many pairs that leaves for it to resolve.
struct Kill {
    const char* name;
    bool atTheBackOffice;
    const char* text;
    int skip;
    int pairsLeft;
};

class HelpingCopyIsKilled : public HelpedNight, public testing::WithParamInterface<Kill> {};

TEST_P(HelpingCopyIsKilled, AndTheOthersTakeItsTillsAndTheNextNightMakesGoodWhatItLeft) {
    {
        Gate first(chain.till(0));
        leading->start();
        ASSERT_TRUE(first.isMet());
        {
            sandbox::Server& server = GetParam().atTheBackOffice ? chain.backOffice() : chain.till(1);
            Standstill standstill(server, GetParam().text, GetParam().skip);
            helping->start();
            ASSERT_TRUE(standstill.isMet());
            helping->kill();
            server.faults().clear();
        }
        helpingToo->start();
        waitForRows("Slutt {%hentet, maskin", kTills - 1 - GetParam().pairsLeft);
    }
    EXPECT_TRUE(leading->ends());
    EXPECT_TRUE(helpingToo->ends());
    EXPECT_EQ(rowsLike("Slutt {%hentet, maskin"), kTills - GetParam().pairsLeft)
        << "all but one that only the killed copy can resolve";
    EXPECT_EQ(countStandingPairs(chain), static_cast<std::size_t>(GetParam().pairsLeft));

    nextNightMakesGood();
}

INSTANTIATE_TEST_SUITE_P(At, HelpingCopyIsKilled,
                         testing::Values(Kill{"TheTillsQuestions", false, "sysprocesses", 0, 0},
                                         Kill{"ASettlement", false, "BEGIN TRANSACTION", 1, 1},
                                         Kill{"TheBackOfficesCommit", true, "COMMIT TRANSACTION", 0, 1}),
                         [](const auto& test) { return test.param.name; });

TEST_F(HelpedNight, LeadingCopyIsKilledAndHelpersGoOnAndTheNextNightMakesGoodWhatItLeft) {
    {
        Standstill standstill(chain.backOffice(), "COMMIT TRANSACTION", 0);
        leading->start();
        ASSERT_TRUE(standstill.isMet());
        leading->kill();
        chain.backOffice().faults().clear();
    }
    helping->start();
    helpingToo->start();
    waitForRows("Slutt {%hentet, maskin", kTills - 1);
    EXPECT_EQ(countStandingPairs(chain), 1U);
    EXPECT_EQ(rowsLike("Natt {"), 1);

    leading->start();  // the next night, which the helping copies join
    EXPECT_TRUE(leading->endsWell());
    EXPECT_TRUE(helping->ends());
    EXPECT_TRUE(helpingToo->ends());
    expectWhatOneLeaves();
}

TEST_F(HelpedNight, HelpingCopyAndThenTheLeadingOneAreKilledAndTheNextNightLosesNothing) {
    {
        Standstill ofTheHelpers(chain.till(1), "BEGIN TRANSACTION", 1);
        std::optional<Gate> first(chain.till(0));
        leading->start();
        ASSERT_TRUE(first->isMet());
        helping->start();
        ASSERT_TRUE(ofTheHelpers.isMet());
        helping->kill();
        chain.till(1).faults().clear();

        Standstill ofTheLeaders(chain.backOffice(), "COMMIT TRANSACTION", 0);
        first.reset();
        ASSERT_TRUE(ofTheLeaders.isMet());
        leading->kill();
        chain.backOffice().faults().clear();
    }
    EXPECT_EQ(rowsLike("Slutt {%hentet, maskin"), 1) << "the helping copy's, at the other till of the first department";
    EXPECT_EQ(countStandingPairs(chain), 2U);

    nextNightMakesGood();
}

TEST_F(HelpedNight, TillThatAnotherSessionHoldsIsTheOnlyOneThatIsNotFetched) {
    const auto session = backOfficeSession(chain);
    const sandbox::chain::Till& held = chain.model().tills[1];
    const ApplicationLock lock(
        *session, ApplicationLock::OfTill(chain.model().departmentOf(held).id, QString::fromStdString(held.number)));
    ASSERT_TRUE(lock.Held());
    TillVisits visits(chain);
    startBothUntilFetched(kTills - 2);
    EXPECT_TRUE(leading->ends());
    EXPECT_FALSE(leading->endsWell()) << "it tells an error";
    EXPECT_TRUE(helping->endsWell());
    std::vector<std::size_t> expected(kTills, 1);
    expected[1] = 0;
    EXPECT_EQ(visits.counts(), expected);
    EXPECT_EQ(rowsLike("Slutt {%hentet, maskin"), kTills - 1);
}

}  // namespace
}  // namespace torvik::test

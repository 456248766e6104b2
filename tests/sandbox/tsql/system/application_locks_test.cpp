// sp_getapplock and sp_releaseapplock between sessions of one server: return codes, errors, and what ends a lock.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "sandbox/tsql/run/engine_shared.h"
#include "tests/sandbox/support/session_runner.h"

namespace sandbox::test {
namespace {

class ApplicationLockTest : public testing::Test, public SessionRunner {
protected:
    ApplicationLockTest() { run("SELECT 1"); }

    // The errors that calling the procedure gives, then the row of its return code.
    static std::string call(Session& session, const std::string& procedure) {
        ReplyLines reply;
        session.batch("SET NOCOUNT ON DECLARE @code int EXEC @code = " + procedure + " SELECT code = @code", reply);
        std::erase_if(reply.lines,
                      [](const std::string& line) { return line.starts_with("return ") || line.starts_with("cols "); });
        return reply.text();
    }
    // The code alone, where no error comes with it.
    static std::string codeOf(Session& session, const std::string& procedure) {
        const std::string lines = call(session, procedure);
        return lines.starts_with("row ") ? lines.substr(4, lines.size() - 5) : lines;
    }

    // Blocks until the session stands in a queue; gives up where it never does.
    void untilBlocked(const Session& waiting) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (engine.shared().databases.locks().blockedBy(waiting.spid()) == 0) {
            if (std::chrono::steady_clock::now() > end) throw std::runtime_error("the session does not wait");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::unique_ptr<Session> other = std::make_unique<Session>(engine, login("d"));
};

const std::string kTake = "sp_getapplock 'till 1', 'Exclusive', 'Session', 0";
const std::string kTakeAndWait = "sp_getapplock 'till 1', 'Exclusive', 'Session'";
const std::string kRelease = "sp_releaseapplock 'till 1', 'Session'";

TEST_F(ApplicationLockTest, IsHadByOneSessionAtATime) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    EXPECT_EQ(codeOf(session, kTake), "0") << "taken again by its owner";
    EXPECT_EQ(codeOf(*other, kTake), "-1");
    EXPECT_EQ(codeOf(session, kRelease), "0");
    EXPECT_EQ(codeOf(*other, kTake), "-1") << "taken twice, released once";
    EXPECT_EQ(codeOf(session, kRelease), "0");
    EXPECT_EQ(codeOf(*other, kTake), "0");
}

TEST_F(ApplicationLockTest, EndsWithItsSession) {
    EXPECT_EQ(codeOf(*other, kTake), "0");
    other.reset();
    EXPECT_EQ(codeOf(session, kTake), "0");
}

TEST_F(ApplicationLockTest, EndsWhenAPooledConnectionIsReset) {
    EXPECT_EQ(codeOf(*other, kTake), "0");
    other->reset(false);
    EXPECT_EQ(codeOf(session, kTake), "0");
}

TEST_F(ApplicationLockTest, OfASessionOutlivesItsTransactions) {
    run("BEGIN TRANSACTION");
    EXPECT_EQ(codeOf(session, kTake), "0");
    run("ROLLBACK");
    EXPECT_EQ(codeOf(*other, kTake), "-1");
}

TEST_F(ApplicationLockTest, OfATransactionEndsWithIt) {
    for (const std::string end : {"COMMIT", "ROLLBACK"}) {
        run("BEGIN TRANSACTION SAVE TRANSACTION s");
        EXPECT_EQ(codeOf(session, "sp_getapplock @Resource = 'till 1', @LockMode = 'exclusive'"), "0");
        run("ROLLBACK TRANSACTION s");
        EXPECT_EQ(codeOf(*other, kTake), "-1") << "a save point's roll-back leaves it";
        run(end);
        EXPECT_EQ(codeOf(*other, kTake), "0");
        EXPECT_EQ(codeOf(*other, kRelease), "0");
    }
}

TEST_F(ApplicationLockTest, OfATransactionNeedsOne) {
    EXPECT_EQ(call(session, "sp_getapplock 'till 1', 'Exclusive'"),
              "error 3918 16 2 xp_userlock 1 The statement or function must be executed in the context of a user "
              "transaction.\nrow -999\n");
}

TEST_F(ApplicationLockTest, WaitsAndSaysThatItDid) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    auto waiting = std::async(std::launch::async, [&] { return codeOf(*other, kTakeAndWait); });
    untilBlocked(*other);
    EXPECT_EQ(codeOf(session, kRelease), "0");
    EXPECT_EQ(waiting.get(), "1");
}

TEST_F(ApplicationLockTest, WaitsNoLongerThanTheSessionsLockTimeout) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    answer(*other, "SET LOCK_TIMEOUT 0");
    EXPECT_EQ(codeOf(*other, kTakeAndWait), "-1");
}

TEST_F(ApplicationLockTest, VictimOfADeadlockGetsACodeAndKeepsItsOtherLocks) {
    const auto take = [](Session& who, const std::string& name, int timeout) {
        return codeOf(who, "sp_getapplock '" + name + "', 'Exclusive', 'Session', " + std::to_string(timeout));
    };
    EXPECT_EQ(take(session, "a", 0), "0");
    EXPECT_EQ(take(*other, "b", 0), "0");
    auto waiting = std::async(std::launch::async, [&] { return take(*other, "a", -1); });
    untilBlocked(*other);
    EXPECT_EQ(take(session, "b", -1), "-3");
    EXPECT_EQ(codeOf(session, "sp_releaseapplock 'a', 'Session'"), "0");
    EXPECT_EQ(waiting.get(), "1");
}

TEST_F(ApplicationLockTest, AttentionEndsTheWait) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    auto waiting = std::async(std::launch::async, [&] { return call(*other, kTakeAndWait); });
    untilBlocked(*other);
    other->cancel();
    EXPECT_EQ(waiting.get(), "");
    EXPECT_TRUE(other->cancelled());
}

TEST_F(ApplicationLockTest, BelongsToTheCurrentDatabase) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    EXPECT_EQ(codeOf(*other, "master..sp_getapplock 'till 1', 'Exclusive', 'Session', 0"), "0");
    EXPECT_EQ(codeOf(*other, "d..sp_getapplock 'till 1', 'Exclusive', 'Session', 0"), "-1");
}

TEST_F(ApplicationLockTest, NamesAreComparedByteByByte) {
    EXPECT_EQ(codeOf(session, kTake), "0");
    EXPECT_EQ(codeOf(*other, "sp_getapplock 'TILL 1', 'Exclusive', 'Session', 0"), "0");
    EXPECT_EQ(codeOf(*other, "sp_getapplock 'till 1', 'Exclusive', 'Session', 0, 'dbo'"), "0");
}

TEST_F(ApplicationLockTest, FunctionsTellWhatIsHeldAndWhatCouldBeHad) {
    const auto tell = [](Session& who, const std::string& mode) {
        return answer(who,
                      "SELECT m = APPLOCK_MODE('public', 'till 1', 'Session'), t = APPLOCK_TEST('public', 'till 1', '" +
                          mode + "', 'Session')");
    };
    EXPECT_EQ(tell(session, "Exclusive"), "cols m nvarchar(32), t smallint\nrow 'NoLock'|1\ncount 1\n");
    EXPECT_EQ(codeOf(session, "sp_getapplock 'till 1', 'Shared', 'Session', 0"), "0");
    EXPECT_EQ(tell(session, "Exclusive"), "cols m nvarchar(32), t smallint\nrow 'Shared'|1\n");
    EXPECT_EQ(tell(*other, "Shared"), "cols m nvarchar(32), t smallint\nrow 'NoLock'|1\ncount 1\n");
    EXPECT_EQ(tell(*other, "Exclusive"), "cols m nvarchar(32), t smallint\nrow 'NoLock'|0\ncount 1\n");
    EXPECT_EQ(codeOf(session, "sp_getapplock 'till 1', 'IntentExclusive', 'Session', 0"), "0");
    EXPECT_EQ(tell(session, "Exclusive"), "cols m nvarchar(32), t smallint\nrow 'SharedIntentExclusive'|1\n");
}

TEST_F(ApplicationLockTest, FunctionsRefuseWhatTheyDoNotKnow) {
    const auto numberOf = [&](const std::string& expression) {
        const std::string lines = answer(session, "SELECT a = " + expression);
        const auto at = lines.find("error ");
        return at == std::string::npos ? lines : lines.substr(at + 6, lines.find(' ', at + 6) - at - 6);
    };
    EXPECT_EQ(numberOf("APPLOCK_MODE('nobody', 'r', 'Session')"), "1202");
    EXPECT_EQ(numberOf("APPLOCK_MODE('public', 'r', 'Nobody')"), "1226");
    EXPECT_EQ(numberOf("APPLOCK_MODE('public', 'r', 'Transaction')"), "3918");
    EXPECT_EQ(numberOf("APPLOCK_TEST('public', 'r', 'Big', 'Session')"), "1225");
}

TEST_F(ApplicationLockTest, WrongCallsAreRefused) {
    const struct {
        std::string call;
        std::string lines;
    } cases[] = {
        {"sp_getapplock 'r', 'Big', 'Session', 0", "row -999\n"},
        {"sp_getapplock 'r', 'Shared', 'Nobody', 0", "row -999\n"},
        {"sp_getapplock NULL, 'Shared', 'Session', 0",
         "error 1224 16 5 xp_userlock 1 An invalid application lock resource was passed to xp_userlock.\n"
         "row -999\n"},
        {"sp_getapplock 'r', 'Shared', 'Session', -2",
         "error 1227 16 2 xp_userlock 1 An invalid application lock time-out was passed to xp_userlock.\n"
         "row -999\n"},
        {"sp_getapplock 'r', 'Shared', 'Session', 0, 'nobody'",
         "error 1202 16 1 xp_userlock 1 The database-principal 'nobody' does not exist or user is not a member.\n"
         "row -999\n"},
        {"sp_releaseapplock 'r', 'Session'",
         "error 1223 16 1 xp_userlock 1 Cannot release the application lock (Database Principal: 'public', Resource: "
         "'r') because it is not currently held.\nrow -999\n"},
        {"sp_getapplock 'r'",
         "error 201 16 4 sp_getapplock 0 Procedure or function 'sp_getapplock' expects parameter '@LockMode', which "
         "was not supplied.\nrow NULL\n"},
    };
    for (const auto& one : cases) EXPECT_EQ(call(session, one.call), one.lines) << one.call;
}

}  // namespace
}  // namespace sandbox::test

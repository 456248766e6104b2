#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/base/failure_kind.h"
#include "engine/db/query.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

const QString kWait = QStringLiteral("Venter i 20 sekunder på neste forsøk");
const QString kVersion = QStringLiteral("Database versjon 213");

class Connecting : public testing::Test {
protected:
    void openRoster() {
        chain.target.Open();
        chain.engine.Avdeling->Open();
    }
    void setTill(const QString& assignments) {
        chain.run(chain.kBackOffice, QStringLiteral("UPDATE Internkundekasse SET ") + assignments);
    }
    void applySettings(const QString& assignments) {
        setTill(assignments);
        chain.engine.Avdeling->Close();
        chain.engine.Avdeling->Open();
        chain.engine.ApplySourceConnectionSettings();
    }

    test::SmallChain chain;
};

TEST_F(Connecting, OpensTheTillAndReadsItsVersion) {
    chain.tills(QStringLiteral("1/1"));
    openRoster();
    EXPECT_TRUE(chain.engine.ConnectSource());
    EXPECT_TRUE(chain.source.Connected());
    EXPECT_EQ(chain.source.Database(), QStringLiteral("Kasse_1_1"));
    EXPECT_EQ(chain.engine.DbVersion(), QStringLiteral("213"));
    EXPECT_EQ(chain.messages(), QStringList{kVersion});
    EXPECT_EQ(chain.requestsWith("SET NOCOUNT OFF"), 1);
}

TEST_F(Connecting, FirstAttemptFailsAndTheSecondSucceeds) {
    chain.tills(QStringLiteral("1/1"));
    openRoster();
    chain.server.faults().refuseLogins(1, {});
    EXPECT_TRUE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.messages(), (QStringList{kWait, kVersion}));
}

TEST_F(Connecting, LastFailureSaysWhyUntilATillIsReached) {
    chain.tills(QStringLiteral("1/1"));
    chain.engine.RetryCount = 1;
    openRoster();
    chain.server.faults().refuseLogins(1, {});
    EXPECT_FALSE(chain.engine.ConnectSource());
    EXPECT_EQ(classify(chain.engine.Parts().Till.LastFailure()), FailureKind::ConnectionLost);
    chain.engine.RetryCount = 2;
    chain.server.faults().refuseLogins(1, {});
    EXPECT_TRUE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.engine.Parts().Till.LastFailure(), nullptr);
}

class UnreachableTill : public Connecting {
protected:
    void SetUp() override {
        chain.department({});
        chain.till({});
        openRoster();
    }
};

TEST_F(UnreachableTill, TwoAttemptsHaveOneWaitBetweenThem) {
    EXPECT_FALSE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.messages(), QStringList{kWait});
    EXPECT_FALSE(chain.source.Connected());
}

TEST_F(UnreachableTill, RetryCountOneIsOneAttemptWithoutAWait) {
    chain.engine.RetryCount = 1;
    EXPECT_FALSE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.messages(), QStringList());
    EXPECT_EQ(chain.source.Database(), QStringLiteral("Borte"));
}

TEST_F(UnreachableTill, RetryCountZeroIsNoAttemptAtAll) {
    chain.engine.RetryCount = 0;
    EXPECT_FALSE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.source.Database(), QString()) << "the session has not been touched";
}

TEST_F(UnreachableTill, CancelDuringTheWaitLeavesTheRoutine) {
    chain.around.onPump = [&] { chain.engine.SetCancelRequest(true); };
    EXPECT_THROW((void)chain.engine.ConnectSource(), EAbort);
}

TEST_F(Connecting, TillWithoutSettingsCountsAsConnectedWithTheOldVersion) {
    chain.tills(QStringLiteral("1/1 2/1"));
    chain.run(QStringLiteral("Kasse_2_1"), QStringLiteral("DROP TABLE innstillinger"));
    openRoster();
    ASSERT_TRUE(chain.engine.ConnectSource());
    chain.engine.Avdeling->Qry().Next();
    EXPECT_TRUE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.source.Database(), QStringLiteral("Kasse_2_1"));
    EXPECT_EQ(chain.messages(), (QStringList{kVersion, kVersion}));
}

TEST_F(Connecting, ReadDbVersionConnectsByItself) {
    chain.tills(QStringLiteral("1/1"));
    openRoster();
    chain.engine.ReadDbVersion();
    EXPECT_EQ(chain.engine.DbVersion(), QStringLiteral("213"));
}

TEST_F(UnreachableTill, LoginByServerUserAndByWindows) {
    applySettings(QStringLiteral("Ikk_AutentiseringType = 0"));
    EXPECT_EQ(chain.engine.SourceAuthMethod, amSQL);
    EXPECT_EQ(chain.source.Authentication(), db::Auth::Server);
    EXPECT_EQ(chain.source.Server(), QStringLiteral("127.0.0.1,1"));
    EXPECT_EQ(chain.source.Username(), QStringLiteral("sa"));
    EXPECT_EQ(chain.source.Password(), QStringLiteral("hemmelig"));
    applySettings(QStringLiteral("Ikk_AutentiseringType = 1"));
    EXPECT_EQ(chain.engine.SourceAuthMethod, amTrusted);
    EXPECT_EQ(chain.source.Authentication(), db::Auth::Windows);
    EXPECT_EQ(chain.source.Username(), QString());
    EXPECT_EQ(chain.source.Password(), QString());
    applySettings(QStringLiteral("Ikk_AutentiseringType = NULL"));
    EXPECT_EQ(chain.engine.SourceAuthMethod, amSQL);
}

TEST_F(UnreachableTill, ProviderOfEachNumber) {
    using db::ProviderKind;
    const std::pair<const char16_t*, ProviderKind> cases[] = {
        {u"NULL", ProviderKind::OleDb},     {u"0", ProviderKind::Auto},  {u"1", ProviderKind::Compact},
        {u"2", ProviderKind::NativeClient}, {u"3", ProviderKind::OleDb}, {u"0", ProviderKind::Auto},
        {u"9", ProviderKind::Auto},  // any other value leaves that of the till before
    };
    for (const auto& [number, provider] : cases) {
        applySettings(QStringLiteral("Ikk_Provider = ") + QString::fromUtf16(number));
        EXPECT_EQ(chain.source.Provider(), provider) << QString::fromUtf16(number).toStdString();
    }
}

TEST_F(Connecting, CancelConnectAttemptClosesAnOpenSession) {
    chain.target.Open();
    chain.engine.CancelConnectAttempt(&chain.target);
    EXPECT_FALSE(chain.target.Connected());
    EXPECT_NO_THROW(chain.engine.CancelConnectAttempt(&chain.target));
}

TEST_F(Connecting, OpenTransactionOfAnotherConnectionIsSeen) {
    chain.tills(QStringLiteral("1/1 2/1"));
    openRoster();
    ASSERT_TRUE(chain.engine.ConnectSource());
    EXPECT_FALSE(chain.engine.SourceHasOpenTransactions());
    db::Session other;
    other.SetConnectString(chain.source.ConnectString());
    other.Open();
    other.StartTransaction();
    db::Query work(&other);
    work.SQL = QStringList{QStringLiteral("INSERT INTO OPPGJOR VALUES (1, 'NORMAL')")};
    work.ExecSQL();
    EXPECT_TRUE(chain.engine.SourceHasOpenTransactions());
    other.Rollback();
    EXPECT_FALSE(chain.engine.SourceHasOpenTransactions());
}

TEST_F(Connecting, TemporarySettlementIsSeen) {
    chain.tills(QStringLiteral("1/1"));
    openRoster();
    ASSERT_TRUE(chain.engine.ConnectSource());
    EXPECT_FALSE(chain.engine.SourceHasTemporarySettlements());
    chain.run(QStringLiteral("Kasse_1_1"), QStringLiteral("INSERT INTO OPPGJOR VALUES (1, 'MIDLERTIDIG')"));
    EXPECT_TRUE(chain.engine.SourceHasTemporarySettlements());
}

}  // namespace
}  // namespace torvik

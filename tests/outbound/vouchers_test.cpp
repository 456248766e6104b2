// Gift cards and credit notes on a till after a send, and what the back office notes of them. Both go the same way, so
// each test runs for both but where they differ.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

struct Kind {
    const char* name;
    std::string prefix;  // of the columns
    std::string office;  // table of the back office
    std::string till;
    std::string work;
    std::string origin;  // the line that sold the card, the order that gave the note
    std::string type;    // in the notes
    std::string procedure;
    std::string step;
};

const Kind kGiftCards{"GiftCards", "GA_", "POSGAVEKORT",       "GAVEKORT", "GKORTEKSPORT",
                      "GA_OL_ID",  "G",   "InsertPOSGavekort", "Gavekort"};
const Kind kCreditNotes{"CreditNotes", "TG_", "POSTilgodelapp",       "TILGODELAPP", "TGLAPPEKSPORT",
                        "TG_OR_ID",    "T",   "InsertPOSTilgodelapp", "Tilgodelapp"};

struct Slip {
    std::string id = "'7001'";
    std::string madeAt = "'101'";
    std::string madeBy = "'1'";
    std::string origin = "5";
    std::string amount = "500";
    std::string end = "'20990101'";
    std::string redeemed = "NULL, NULL, NULL, NULL";
    std::string handedIn = "'20260301'";
};

class Vouchers : public testing::TestWithParam<Kind> {
protected:
    [[nodiscard]] std::string insertOf(const std::string& table, const Slip& slip) const {
        return "INSERT " + table + " VALUES (" + slip.id + ", " + slip.madeAt + ", " + slip.madeBy + ", '100', " +
               slip.origin + ", " + slip.amount + ", " + slip.end + ", " + slip.redeemed + ", " + slip.handedIn + ")";
    }
    void inBackOffice(const Slip& slip) { send.inBackOffice(insertOf(kind.office, slip)); }
    void onTill(const Slip& slip) { send.onTill(insertOf(kind.till, slip)); }

    [[nodiscard]] std::string column(const char* name) const { return kind.prefix + name; }
    [[nodiscard]] Rows till() const {
        return send.till("SELECT " + column("ID") + ", RTRIM(" + column("AVDNR") + "), RTRIM(" + column("KASSENR") +
                         "), RTRIM(" + column("AN_ID") + "), " + kind.origin + ", " + column("BELOP") + ", " +
                         column("GYLDIGTIL") + ", RTRIM(" + column("BET_AVDNR") + "), RTRIM(" + column("BET_KASSENR") +
                         "), RTRIM(" + column("BET_AN_ID") + "), " + column("BT_ID") + ", " + column("SYNKTIDSPUNKT") +
                         " FROM " + kind.till + " ORDER BY 1, 2, 3");
    }
    [[nodiscard]] Rows notes() const {
        return send.backOffice(
            "SELECT Ikko_Ikk_Ik_Ku_ID, RTRIM(Ikko_Ikk_Kassenummer), Ikko_Type, Ikko_Id, "
            "RTRIM(Ikko_AvdNr), RTRIM(Ikko_Kassenr) FROM InternKundeKasseOverfort ORDER BY 3, 4, 5");
    }

    const Kind& kind = GetParam();
    TillSend send;
};

INSTANTIATE_TEST_SUITE_P(Each, Vouchers, testing::Values(kGiftCards, kCreditNotes),
                         [](const auto& test) { return test.param.name; });

const char* const kTheCard =
    "7001 | 101 | 1 | 100 | 5 | 500 | 2099-01-01 00:00:00.000 | NULL | NULL | NULL | NULL | 2026-03-01 00:00:00.000";

TEST_P(Vouchers, NewOnesStandOnTheTillAndAreNoted) {
    inBackOffice({});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), Rows{kTheCard});
    EXPECT_EQ(notes(), Rows{"1001 | 1 | " + kind.type + " | 7001 | 101 | 1"});
    EXPECT_EQ(send.backOffice("SELECT CASE WHEN ABS(DATEDIFF(minute, Ikko_Tidspunkt, GETDATE())) < 10 THEN 1 ELSE 0 "
                              "END FROM InternKundeKasseOverfort"),
              Rows{"1"});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM sysobjects WHERE name IN ('GKORTEKSPORT', 'TGLAPPEKSPORT')"), Rows{"0"});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM sysobjects WHERE type = 'P' AND name = '" + kind.procedure + "'"),
              Rows{"1"});
}

TEST_P(Vouchers, SecondSendWithNothingNewChangesNothing) {
    inBackOffice({});
    ASSERT_EQ(send.send(), QString());
    const Rows noted = send.backOffice("SELECT * FROM InternKundeKasseOverfort");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), Rows{kTheCard});
    EXPECT_EQ(send.backOffice("SELECT * FROM InternKundeKasseOverfort"), noted);
}

TEST_P(Vouchers, OneRedeemedElsewhereIsRedeemedHere) {
    inBackOffice({});
    ASSERT_EQ(send.send(), QString());
    const std::string p = kind.prefix;
    send.inBackOffice("UPDATE " + kind.office + " SET " + p + "AN_ID = '101', " + kind.origin + " = 6, " + p +
                      "BELOP = 400, " + p + "GYLDIGTIL = '20980101', " + p + "BET_AVDNR = '102', " + p +
                      "BET_KASSENR = '2', " + p + "BET_AN_ID = '200', " + p + "BT_ID = 9, " + p +
                      "SYNKTIDSPUNKT = '20260302'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), Rows{"7001 | 101 | 1 | 101 | 6 | 400 | 2098-01-01 00:00:00.000 | 102 | 2 | 200 | 9 | 2026-03-02 "
                           "00:00:00.000"});
}

TEST_P(Vouchers, AreToldApartByNumberDepartmentAndTill) {
    inBackOffice({});
    onTill({.madeAt = "'102'", .amount = "1"});
    onTill({.madeBy = "'2'", .amount = "2"});
    onTill({.id = "'7002'", .amount = "3"});
    ASSERT_EQ(send.send(), QString());
    const auto other = [](const char* card, const char* amount) {
        return std::string(card) + " | 100 | 5 | " + amount +
               " | 2099-01-01 00:00:00.000 | NULL | NULL | NULL | NULL | 2026-03-01 00:00:00.000";
    };
    EXPECT_EQ(till(), (Rows{kTheCard, other("7001 | 101 | 2", "2"), other("7001 | 102 | 1", "1"),
                            other("7002 | 101 | 1", "3")}));
}

TEST_P(Vouchers, WhatTheTillHasNotHandedInIsNotOverwritten) {
    inBackOffice({});
    inBackOffice({.id = "'7002'"});
    const std::string redeemed = "'101', '1', '100', 88";
    onTill({.redeemed = redeemed, .handedIn = "NULL"});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), (Rows{"7001 | 101 | 1 | 100 | 5 | 500 | 2099-01-01 00:00:00.000 | 101 | 1 | 100 | 88 | NULL",
                            "7002" + std::string(kTheCard).substr(4)}));
    EXPECT_EQ(notes().size(), 2u);
}

// The till's program redeems the card when the back office's copy is already in the work table.
TEST_P(Vouchers, OneRedeemedDuringTheSendStaysRedeemed) {
    inBackOffice({});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("DELETE FROM InternKundeKasseOverfort");
    const std::string p = kind.prefix;
    send.dm.OnLog = [&](const QString& line) {
        if (line.contains(QLatin1String("i tabellen Tilgodelapp")))
            send.onTill("UPDATE " + kind.till + " SET " + p + "BT_ID = 88, " + p + "SYNKTIDSPUNKT = NULL");
    };
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT " + p + "BT_ID, " + p + "SYNKTIDSPUNKT FROM " + kind.till), Rows{"88 | NULL"});
}

// The back office's session holds the till for this visit. Where it is lost, another copy of the program may fetch the
// till before the cards are merged.
TEST_P(Vouchers, OneFetchedByAnotherCopyBehindALostBackOfficeStaysRedeemed) {
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    inBackOffice({});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("DELETE FROM InternKundeKasseOverfort");
    const std::string p = kind.prefix;
    int begun = 0;  // the step is told as it loads them, and as it merges them
    send.dm.OnProgress = [&](QObject*, int, const QString& text) {
        const QString begins = QStringLiteral("Forbereder overføring av %1... ").arg(QString::fromStdString(kind.step));
        if (text != begins || ++begun < 2) return;
        send.run.chain.backOffice().dropConnections();
        send.onTill("UPDATE " + kind.till + " SET " + p + "BT_ID = 88, " + p + "SYNKTIDSPUNKT = '20260302'");
    };
    const std::string failure = send.send().toStdString();
    EXPECT_TRUE(failure.starts_with("TorvikToPOS failed: " + kind.step + " SessionID: ")) << failure;
    EXPECT_EQ(send.till("SELECT " + p + "BT_ID FROM " + kind.till), Rows{"88"});
}

TEST_P(Vouchers, FailedMergeIsMadeGoodByTheNextSend) {
    inBackOffice({});
    send.onTill("ALTER TABLE " + kind.till + " ADD CONSTRAINT CK_Small CHECK (" + kind.prefix + "BELOP < 100)");
    const QString failure = send.send();
    EXPECT_TRUE(failure.contains(QLatin1String("CK_Small"))) << failure.toStdString();
    EXPECT_EQ(failure.section(QLatin1Char(' '), 2, 2), send.dm.CurrentTransformation());
    EXPECT_FALSE(send.run.source.InTransaction());
    EXPECT_EQ(till(), Rows{});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM " + kind.work), Rows{"1"}) << "the work table stays until the next send";
    EXPECT_EQ(notes(), Rows{});
    send.onTill("ALTER TABLE " + kind.till + " DROP CONSTRAINT CK_Small");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), Rows{kTheCard});
}

// A statement whose table is not there ends its batch and leaves the transaction that the batch began.
TEST_P(Vouchers, TillWithoutTheTableIsLeftWithoutATransaction) {
    inBackOffice({});
    send.onTill("EXEC sp_rename '" + kind.till + "', 'MOVED'");
    const QString failure = send.send();
    EXPECT_TRUE(failure.contains(QLatin1String("Invalid object name"))) << failure.toStdString();
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM master..sysprocesses WHERE open_tran > 0"), Rows{"0"});
    EXPECT_FALSE(send.run.source.InTransaction());
}

TEST_P(Vouchers, OneThatTheProcedureDidNotGiveIsNotedAllTheSame) {
    inBackOffice({});
    send.inBackOffice(kind.type == "G" ? "ALTER PROCEDURE GetPosGavekort @Ik_Ku_Id int, @Kassenr varchar(10) AS\n"
                                         "SELECT * FROM POSGAVEKORT WHERE 1 = 0"
                                       : "ALTER PROCEDURE GetPosTilgodelapp @Ik_Ku_Id int, @Kassenr varchar(10) AS\n"
                                         "SELECT * FROM POSTilgodelapp WHERE 1 = 0");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(till(), Rows{});
    EXPECT_EQ(notes().size(), 1u);
}

TEST_P(Vouchers, NotesAreOfThisTillAndKindAlone) {
    inBackOffice({});
    send.inBackOffice(
        "INSERT Internkundekasse (Ikk_Ik_Ku_Id, Ikk_Kassenummer, Ikk_Kt_Id, Ikk_Server, Ikk_Database, "
        "Ikk_Aktiv) VALUES (1001, '9', 1, 'x', 'x', 0), (1000, '1', 1, 'x', 'x', 0)\n"
        "INSERT InternKundeKasseOverfort (Ikko_Ikk_Ik_Ku_ID, Ikko_Ikk_Kassenummer, Ikko_Id, Ikko_Type, "
        "Ikko_AvdNr, Ikko_Kassenr, Ikko_Tidspunkt) VALUES "
        "(1001, '9', '7001', '" +
        kind.type +
        "', '101', '1', GETDATE()), "
        "(1000, '1', '7001', '" +
        kind.type +
        "', '101', '1', GETDATE()), "
        "(1001, '1', '7001', 'x', '101', '1', GETDATE()), "
        "(1001, '1', '7009', '" +
        kind.type + "', '101', '1', GETDATE())");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(notes().size(), 5u);
    EXPECT_EQ(till(), Rows{kTheCard});
}

class GiftCards : public Vouchers {};
INSTANTIATE_TEST_SUITE_P(Each, GiftCards, testing::Values(kGiftCards),
                         [](const auto& test) { return test.param.name; });
class CreditNotes : public Vouchers {};
INSTANTIATE_TEST_SUITE_P(Each, CreditNotes, testing::Values(kCreditNotes),
                         [](const auto& test) { return test.param.name; });

TEST_P(GiftCards, WithoutAnEndIsValidForAYearFromWhenItCameIn) {
    inBackOffice({.id = "'1'", .end = "NULL", .handedIn = "DATEADD(month, -11, GETDATE())"});
    inBackOffice({.id = "'2'", .end = "NULL", .handedIn = "DATEADD(month, -13, GETDATE())"});
    inBackOffice({.id = "'3'", .end = "'19791231'", .handedIn = "DATEADD(month, -11, GETDATE())"});
    inBackOffice({.id = "'4'", .end = "'19791231'", .handedIn = "DATEADD(month, -13, GETDATE())"});
    inBackOffice({.id = "'5'", .end = "DATEADD(day, -1, GETDATE())"});
    inBackOffice({.id = "'6'", .end = "DATEADD(day, 1, GETDATE())"});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.backOffice("SELECT Ikko_Id FROM InternKundeKasseOverfort ORDER BY Ikko_Id"), (Rows{"1", "3", "6"}));
}

TEST_P(GiftCards, WhoseSaleIsNotToldFailAtTheLoadWhenTheProcedureGivesNull) {
    inBackOffice({.origin = "NULL"});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT GA_OL_ID FROM GAVEKORT"), Rows{"-1"}) << "the procedure tells -1";

    send.inBackOffice(
        "ALTER PROCEDURE GetPosGavekort @Ik_Ku_Id int, @Kassenr varchar(10) AS\n"
        "SELECT GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP FROM POSGAVEKORT");
    const QString failure = send.send();
    EXPECT_TRUE(failure.startsWith(QLatin1String("TorvikToPOS failed: Gavekort SessionID: "))) << failure.toStdString();
    EXPECT_TRUE(failure.contains(QLatin1String("GA_OL_ID"))) << failure.toStdString();
}

TEST_P(CreditNotes, AreValidWhileTheirEndIsInTheFuture) {
    inBackOffice({.id = "'1'", .end = "NULL"});
    inBackOffice({.id = "'2'", .end = "DATEADD(day, -1, GETDATE())"});
    inBackOffice({.id = "'3'", .end = "DATEADD(day, 1, GETDATE())"});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.backOffice("SELECT Ikko_Id FROM InternKundeKasseOverfort ORDER BY Ikko_Id"), Rows{"3"});
}

}  // namespace
}  // namespace torvik::test

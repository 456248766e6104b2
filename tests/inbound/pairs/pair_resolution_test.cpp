// What a visit makes of pairs that were broken off, seen from a till's fetch: by this copy of the program and by
// others.
#include "inbound/pairs/pair_resolution.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSysInfo>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kIntents = "SELECT COUNT(*) FROM dts_logg WHERE dl_info LIKE 'Par {%'";

class PairResolution : public OneTill {
protected:
    PairResolution() : OneTill(213, 2) { run.engine.IncludeGiftVoucherOnOppgjor = true; }

    [[nodiscard]] PairNotes notes() const { return PairNotes(run.joinPoints.NoteFolder); }

    // An intent that stands, as a copy of the program leaves it that is killed in the pair.
    PairIntent intent(const QString& subject, const QUuid& store, const QString& machine = QStringLiteral("ANNEN")) {
        const PairIntent left{QUuid::createUuid(), subject, store, machine, {}};
        PairIntents(run.target, kDepartment, QStringLiteral("1")).write(left);
        return left;
    }
    PairIntent ownIntent(const QString& subject) {
        return intent(subject, notes().storeId(), QSysInfo::machineHostName());
    }

    // A till that has committed settlement 1 while the back office has not: whole, but for what phase two posts.
    PairNote settlementAhead() {
        onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260302 22:00:00.123' WHERE OP_ID = 1");
        PairNote note{ownIntent(QStringLiteral("oppgjør 1")), kDepartment, QStringLiteral("1"), {}, {}};
        note.settlement = NotedSettlement{1, QString::fromStdString(settledAt())};
        note.marks = {
            {TillMark::Kind::Settlement, {QStringLiteral("1")}, QStringLiteral("2026-03-02 22:00:00.123"), {}}};
        notes().write(note);
        return note;
    }
    [[nodiscard]] std::string settledAt() const {
        return run.tillValue(0, "SELECT CONVERT(varchar(23), OP_TIDSPUNKT, 121) FROM OPPGJOR WHERE OP_ID = 1");
    }
    [[nodiscard]] QStringList resolved() const { return run.log().filter(QStringLiteral(" er avklart. ")); }
    void expectResolved() {
        EXPECT_EQ(backOffice(kIntents), Rows({"0"}));
        EXPECT_TRUE(QDir(run.joinPoints.NoteFolder).entryList({QStringLiteral("par-*")}).isEmpty());
    }

    static constexpr int kDepartment = 1001;
};

TEST_F(PairResolution, TillThatIsAheadIsTakenBackAndFetchedAgain) {
    settlementAhead();
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
    expectResolved();
    ASSERT_EQ(resolved().size(), 1);
    EXPECT_TRUE(resolved().first().contains(QStringLiteral("1 av 1 merker er tatt tilbake")))
        << resolved().join(u'\n').toStdString();
    EXPECT_EQ(run.structured.lines().filter(QStringLiteral("WRN Avbrutt {Hva}")).size(), 1);
}

TEST_F(PairResolution, IntentWithoutANoteNeverReachedTheTill) {
    ownIntent(QStringLiteral("overføring"));
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
    expectResolved();
    EXPECT_EQ(resolved().size(), 1);
}

TEST_F(PairResolution, MarkThatIsNotTheNotesIsLeftAlone) {
    settlementAhead();
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260302 22:00:00.127' WHERE OP_ID = 1");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(till("SELECT OP_OPPDATERTTIDSPUNKT FROM OPPGJOR WHERE OP_ID = 1"), Rows({"2026-03-02 22:00:00.127"}));
    expectResolved();
}

TEST_F(PairResolution, TillThatWasResetSinceIsToldAndNotTouched) {
    settlementAhead();
    onTill("UPDATE OPPGJOR SET OP_TIDSPUNKT = '20260302 21:30' WHERE OP_ID = 1");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(till("SELECT OP_OPPDATERTTIDSPUNKT FROM OPPGJOR WHERE OP_ID = 1"), Rows({"2026-03-02 22:00:00.123"}));
    ASSERT_EQ(resolved().size(), 1);
    EXPECT_TRUE(resolved().first().contains(QStringLiteral("nullstilt eller gjenopprettet")))
        << resolved().join(u'\n').toStdString();
    expectResolved();
}

TEST_F(PairResolution, CardsAndTimeEntriesGoBackWithTheTimeOfRelease) {
    onTill(
        "INSERT GAVEKORT VALUES ('G1', '101', '1', '100', 17, 100, NULL, NULL, NULL, NULL, NULL, '20260302 22:00:00.123')\n"
        "INSERT GAVEKORT VALUES ('G2', '101', '1', '100', 17, 100, NULL, NULL, NULL, NULL, NULL, '20260301')\n"
        "INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS) VALUES\n"
        "(91, '100', '20260302 08:00', '20260302 16:00', 1, 18), (92, '100', '20260302 08:00', NULL, 1, 18)\n"
        "UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = NULL");
    const QString mark = QStringLiteral("2026-03-02 22:00:00.123");
    const QString began = QStringLiteral("2026-03-02 08:00:00.000");
    PairNote note{ownIntent(QStringLiteral("overføring")), kDepartment, QStringLiteral("1"), {}, {}};
    const auto card = [](const char* id) {
        return QStringList{QString::fromUtf8(id), QStringLiteral("101"), QStringLiteral("1")};
    };
    note.marks = {{TillMark::Kind::GiftCard, card("G1"), mark, {}},
                  {TillMark::Kind::GiftCard, card("G2"), mark, {}},
                  {TillMark::Kind::TimeEntry, {QStringLiteral("91"), began}, QStringLiteral("18"), QStringLiteral("2")},
                  {TillMark::Kind::ReleaseTime, {}, {}, QStringLiteral("2026-03-04 00:00:00.000")}};
    notes().write(note);
    PairSides sides{
        run.source, run.target, kDepartment, QStringLiteral("1"), true, notes(), [](const QString&, bool) {}};

    resolveStandingPairs(sides, QStringLiteral("101"), {});

    EXPECT_EQ(till("SELECT GA_ID FROM GAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL AND GA_ID LIKE 'G_'"), Rows({"G1"}));
    EXPECT_EQ(till("SELECT TI_ID, TI_STATUS FROM TIMER WHERE TI_ID > 90 ORDER BY TI_ID"), Rows({"91 | 2", "92 | 18"}));
    EXPECT_EQ(till("SELECT IN_KLAR_HENT_TIMER FROM INNSTILLINGER"), Rows({"2026-03-04 00:00:00.000"}));
    expectResolved();
}

TEST_F(PairResolution, NoteWhosePairStandsOnBothSidesIsForgotten) {
    const PairNote note = settlementAhead();
    inBackOffice("DELETE dts_logg");  // as the back office's commit leaves it
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(till("SELECT OP_OPPDATERTTIDSPUNKT FROM OPPGJOR WHERE OP_ID = 1"), Rows({"2026-03-02 22:00:00.123"}));
    EXPECT_EQ(resolved(), QStringList());
    expectResolved();
}

TEST_F(PairResolution, PairOfAnotherMachineHoldsTheTillBackAndNamesIt) {
    intent(QStringLiteral("oppgjør 1"), QUuid::createUuid());
    const QString failure = execute();
    EXPECT_TRUE(failure.contains(QStringLiteral("maskin ANNEN ikke har fullført oppgjør 1"))) << failure.toStdString();
    EXPECT_EQ(backOffice(kIntents), Rows({"1"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM PosOppgjor"), Rows({"0"}));
}

TEST_F(PairResolution, OperatorSeesBothEndsAndTakesTheMarkBack) {
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260302 22:00:00.123' WHERE OP_ID = 1");
    intent(QStringLiteral("oppgjør 1"), QUuid::createUuid());
    PairQuestion asked;
    run.joinPoints.DecidePair = [&asked](const PairQuestion& question) {
        asked = question;
        return PairDecision::TakeBack;
    };

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(asked.Machine, QStringLiteral("ANNEN"));
    EXPECT_EQ(asked.What, QStringLiteral("oppgjør 1"));
    EXPECT_TRUE(asked.CanTakeBack);
    EXPECT_TRUE(asked.Till.join(u'\n').contains(QStringLiteral("Merket som hentet: 2026-03-02 22:00:00.123")));
    EXPECT_TRUE(asked.BackOffice.join(u'\n').contains(QStringLiteral("Oppgjør 1 er ikke overført")));
    EXPECT_TRUE(run.log().join(u'\n').contains(QStringLiteral("Operatøren har valgt å ta merkene tilbake")));
    EXPECT_TRUE(run.postedWhole());
    expectResolved();
}

TEST_F(PairResolution, OperatorLetsTheTillStand) {
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260302 22:00:00.123' WHERE OP_ID = 1");
    intent(QStringLiteral("oppgjør 1"), QUuid::createUuid());
    run.joinPoints.DecidePair = [](const PairQuestion&) { return PairDecision::LetStand; };
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(till("SELECT OP_OPPDATERTTIDSPUNKT FROM OPPGJOR WHERE OP_ID = 1"), Rows({"2026-03-02 22:00:00.123"}));
    EXPECT_TRUE(run.log().join(u'\n').contains(QStringLiteral("Operatøren har valgt å la kassen stå som den er")));
    expectResolved();
}

TEST_F(PairResolution, TransferOfAnotherMachineCannotBeTakenBackWithoutItsNote) {
    intent(QStringLiteral("overføring"), QUuid::createUuid());
    run.joinPoints.DecidePair = [](const PairQuestion& question) {
        EXPECT_FALSE(question.CanTakeBack);
        return PairDecision::TakeBack;
    };
    EXPECT_TRUE(execute().contains(QStringLiteral("maskin ANNEN")));
    EXPECT_EQ(backOffice(kIntents), Rows({"1"}));
}

TEST_F(PairResolution, StockCountOfAnotherMachineIsShownAsTheTillHoldsIt) {
    const std::string count = run.tillValue(0, "SELECT MAX(OP_ID) FROM OPPGJOR WHERE OP_TYPE = 'VARETELLING'");
    onTill(
        "UPDATE OPPGJOR SET OP_TIDSPUNKT = '20260302 21:00', OP_OPPDATERTTIDSPUNKT = '20260302 22:00:00.123' WHERE OP_ID = " +
        count);
    intent(QStringLiteral("varetelling"), QUuid::createUuid());
    PairQuestion asked;
    run.joinPoints.DecidePair = [&asked](const PairQuestion& question) {
        asked = question;
        return PairDecision::TakeBack;
    };
    EXPECT_TRUE(execute().contains(QStringLiteral("maskin ANNEN ikke har fullført varetelling")));
    EXPECT_FALSE(asked.CanTakeBack) << "which count it was stands in the note alone";
    EXPECT_EQ(asked.Till,
              QStringList{QStringLiteral("Varetelling %1, tidspunkt 2026-03-02 21:00:00.000, merket som hentet: "
                                         "2026-03-02 22:00:00.123, status 0")
                              .arg(QString::fromStdString(count))});
    EXPECT_EQ(asked.BackOffice.last(), QStringLiteral("Kontroller om tellingen er med i varetellingen for perioden"));
}

TEST_F(PairResolution, IntentThatSomebodyHoldsIsUndecidedAndNothingIsStruckOut) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    settlementAhead();
    const db::Session& target = run.target;
    db::Session other;
    other.SetConnectString(target.ConnectString());
    other.Open();
    other.StartTransaction();
    db::Query holds(&other);
    holds.SQL = QStringList{QStringLiteral("UPDATE dts_logg SET dl_dp_id = 1")};
    holds.ExecSQL();

    EXPECT_NE(execute(), QString());

    other.Rollback();
    EXPECT_EQ(backOffice(kIntents), Rows({"1"}));
    EXPECT_EQ(till("SELECT OP_OPPDATERTTIDSPUNKT FROM OPPGJOR WHERE OP_ID = 1"), Rows({"2026-03-02 22:00:00.123"}));
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
    expectResolved();
}

TEST_F(PairResolution, AGoodFetchLeavesNeitherIntentsNorNotes) {
    EXPECT_EQ(execute(), QString());
    expectResolved();
    EXPECT_EQ(resolved(), QStringList());
}

}  // namespace
}  // namespace torvik::test

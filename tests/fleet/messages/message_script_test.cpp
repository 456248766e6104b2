// A message as a script, and what becomes of it at tills of every age.
#include "fleet/messages/message_script.h"

#include <gmock/gmock.h>

#include "fleet/scripts/sql_script_run.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

InstantMessage opening() {
    return {.Tittel = "Åpent", .Til = "Alle", .Fra = "Kontoret", .Melding = "Vi åpner kl. 10:00"};
}

InstantMessage onFront() {
    InstantMessage message = opening();
    message.DisplayOnPosFront = true;
    message.Prioritet = 2;
    message.Expiry = QDateTime(QDate(2026, 3, 7), QTime(9, 5, 4));
    return message;
}

TEST(MessageScript, AsksTheTillWhatItCanTake) {
    EXPECT_EQ(
        messageScript(onFront()),
        (QStringList{
            "if exists (select * from dbo.sysobjects where id = object_id(N'[dbo].[CreateInstantMessage]') and "
            "OBJECTPROPERTY(id, N'IsProcedure') = 1)",
            "if exists ( select 1 from innstillinger where in_dbversion >= 149)",
            "EXEC CreateInstantMessage 'Åpent','Alle','Kontoret','Vi åpner kl. 10:00', 2, '2026-03-07 09:05:04',1",
            "else", "EXEC CreateInstantMessage 'Åpent','Alle','Kontoret','Vi åpner kl. 10:00'"}));
}

TEST(MessageScript, IsTheShortFormEverywhereWithoutTheStartScreen) {
    const QStringList script = messageScript(opening());
    ASSERT_EQ(script.size(), 5);
    EXPECT_EQ(script[2], "EXEC CreateInstantMessage 'Åpent','Alle','Kontoret','Vi åpner kl. 10:00'");
    EXPECT_EQ(script[4], script[2]);
}

TEST(MessageScript, DoublesQuotesInTheMessageAlone) {
    InstantMessage message = opening();
    message.Tittel = "Kari's";
    message.Melding = "Det er 'slutt'";
    EXPECT_EQ(messageScript(message)[4], "EXEC CreateInstantMessage 'Kari's','Alle','Kontoret','Det er ''slutt'''");
}

TEST(MessageScript, TakesPercentAndDigitsAsTheyStand) {
    InstantMessage message = onFront();
    message.Tittel = "%4 %1";
    message.Melding = "50%2 %7";
    EXPECT_EQ(messageScript(message)[2],
              "EXEC CreateInstantMessage '%4 %1','Alle','Kontoret','50%2 %7', 2, '2026-03-07 09:05:04',1");
}

class Messages : public testing::Test {
protected:
    explicit Messages(std::vector<int> versions) : run(FleetRun::tills(std::move(versions))) {}

    void send(const InstantMessage& message) { ExecuteSQLScript(run.parts(), messageScript(message), false, true); }
    [[nodiscard]] std::vector<std::string> texts(std::size_t till) const {
        return run.tillRows(till, "SELECT ME_TITTEL, ME_TIL, ME_FRA, ME_TEKST FROM MELDING ORDER BY ME_ID");
    }
    [[nodiscard]] std::vector<std::string> front(std::size_t till) const {
        return run.tillRows(till, "SELECT ME_PRIORITET, ME_UTLOPER, ME_STARTSKJERM FROM MELDING ORDER BY ME_ID");
    }

    FleetRun run;
};

class MessagesToEveryAge : public Messages {
protected:
    MessagesToEveryAge() : Messages({71, 110, 138, 149, 229}) {}
};

TEST_F(MessagesToEveryAge, ReachThoseThatHaveTheProcedureInTheFormTheyTake) {
    send(onFront());
    EXPECT_THAT(run.errors(), IsEmpty());
    for (std::size_t till : {1, 2, 3, 4})
        EXPECT_THAT(texts(till), ElementsAre("Åpent | Alle | Kontoret | Vi åpner kl. 10:00")) << till;
    for (std::size_t till : {3, 4}) EXPECT_THAT(front(till), ElementsAre("2 | 2026-03-07 09:05:04.000 | 1")) << till;
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 5) << "the one without the procedure too";
}

TEST_F(MessagesToEveryAge, StayOffTheStartScreenUnlessAskedFor) {
    send(opening());
    EXPECT_THAT(front(4), ElementsAre("NULL | NULL | 0"));
}

class MessagesToOneTill : public Messages {
protected:
    MessagesToOneTill() : Messages({213}) {}
};

TEST_F(MessagesToOneTill, TillAtVersion148GetsTheShortForm) {
    run.chain.runInTill(0, "UPDATE INNSTILLINGER SET IN_DBVERSION = '148'");
    send(onFront());
    EXPECT_THAT(front(0), ElementsAre("NULL | NULL | 0"));
    run.chain.runInTill(0, "UPDATE INNSTILLINGER SET IN_DBVERSION = '149'");
    send(onFront());
    EXPECT_THAT(front(0), ElementsAre("NULL | NULL | 0", "2 | 2026-03-07 09:05:04.000 | 1"));
}

TEST_F(MessagesToOneTill, ArriveWholeWhateverTheySay) {
    for (const char* text : {"Det er 'slutt' nå", "Kl. 10:30 :navn ::", "to\nlinjer", "før\nGO\netter", "a\n\n  b\t\n",
                             "-- ikke en kommentar /*", "100 % \\ \"sitat\" [x]", "''"}) {
        run.chain.runInTill(0, "DELETE FROM MELDING");
        InstantMessage message = opening();
        message.Melding = QString::fromUtf8(text);
        send(message);
        EXPECT_THAT(run.errors(), IsEmpty()) << text;
        const QString arrived = QString(message.Melding).replace("\n", "\r\n");
        EXPECT_THAT(texts(0), ElementsAre("Åpent | Alle | Kontoret | " + arrived.toStdString()));
    }
}

TEST_F(MessagesToOneTill, QuoteInTheTitleBreaksItAndTheTillSaysSo) {
    InstantMessage message = opening();
    message.Tittel = "Kari's";
    send(message);
    EXPECT_THAT(texts(0), IsEmpty());
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 1);
}

class MessagesToFiveTills : public Messages {
protected:
    MessagesToFiveTills() : Messages({213, 213, 213, 213, 213}) {}
};

TEST_F(MessagesToFiveTills, ReachTheOthersWhateverBefallsOne) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("CreateInstantMessage");
    run.chain.runInTill(4, "DROP TABLE MELDINGVEDLEGG");
    run.chain.runInTill(4, "DROP TABLE MELDING");
    send(onFront());
    run.allowLogins();
    EXPECT_THAT(texts(0), ElementsAre("Åpent | Alle | Kontoret | Vi åpner kl. 10:00"));
    for (std::size_t till : {2, 3}) EXPECT_THAT(texts(till), IsEmpty()) << till;
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    EXPECT_EQ(errors[0], "Klarte ikke å koble til (avd. 101, kasse 2)");
    EXPECT_EQ(errors[1], "Klarte ikke å koble til (avd. 101, kasse 3)");
    EXPECT_THAT(errors[2].toStdString(), HasSubstr("connection"));
    EXPECT_THAT(errors[3].toStdString(), HasSubstr("MELDING"));
}

}  // namespace
}  // namespace torvik::test

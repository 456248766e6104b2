// The till's own row of settings after a send.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

constexpr const char* kSettings =
    "SELECT IN_NAVN, IN_ADR1, IN_ADR2, IN_ADR3, IN_TELEFON, IN_TELEFAX, IN_ORGNR, RTRIM(IN_AVDNR), RTRIM(IN_KASSENR)";

void describeDepartment(TillSend& send) {
    send.inBackOffice(
        "UPDATE Internkunde SET Ik_Kassebong1 = 'Butikken', Ik_Kassebong2 = 'Storgata 1', Ik_Kassebong3 = '0181 OSLO', "
        "Ik_Kassebong4 = 'Velkommen', Ik_Foretaksnummer = '987654321', Ik_Avdelingsnummer = '77' WHERE Ik_Ku_Id = "
        "1001\nUPDATE Kunde SET Ku_Telefon = '22334455', Ku_Telefax = '22334456' WHERE Ku_Id = 1001");
    send.onTill("UPDATE INNSTILLINGER SET IN_AVDNR = 'x', IN_KASSENR = 'x'");
}

TEST(TillSettings, TellTheDepartmentAndTheTill) {
    TillSend send;
    describeDepartment(send);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(std::string(kSettings) + ", IN_APIPASSORD, IN_DBVERSION FROM INNSTILLINGER"),
              Rows{"Butikken | Storgata 1 | 0181 OSLO | Velkommen | 22334455 | 22334456 | 987654321 | 77 | 1 | " +
                   send.run.chain.addressOf(0).password + " | 229"});
    const auto reports = send.progress.filter(QStringLiteral("nnstillinger"));
    EXPECT_EQ(reports, (QStringList{QStringLiteral("0 Forbereder overføring av Innstillinger... "),
                                    QStringLiteral("0 Overfører innstillinger: 0 av 1"),
                                    QStringLiteral("100 Overfører innstillinger: 1 av 1")}));
}

TEST(TillSettings, TillWithoutAPasswordColumnGetsTheOthers) {
    TillSend send(211);
    describeDepartment(send);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(std::string(kSettings) + " FROM INNSTILLINGER"),
              Rows{"Butikken | Storgata 1 | 0181 OSLO | Velkommen | 22334455 | 22334456 | 987654321 | 77 | 1"});
}

TEST(TillSettings, ReceiptLinesThatAreNullBecomeEmptyAndOtherColumnsNull) {
    TillSend send;
    send.inBackOffice(
        "UPDATE Internkunde SET Ik_Kassebong1 = NULL, Ik_Kassebong2 = NULL, Ik_Foretaksnummer = NULL\n"
        "UPDATE Kunde SET Ku_Telefon = NULL WHERE Ku_Id = 1001");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(std::string(kSettings) + " FROM INNSTILLINGER"),
              Rows{" |  |  |  | NULL | NULL | NULL | 101 | 1"});
}

TEST(TillSettings, MissingRowAtTheBackOfficeIsNoError) {
    TillSend send;
    const Rows before = send.till("SELECT * FROM INNSTILLINGER");
    send.inBackOffice("UPDATE Internkunde SET Ik_Kassebong1 = 'Butikken'");
    send.dm.OnLog = [&](const QString& line) {
        if (line.contains(QLatin1String("Kunder"))) send.inBackOffice("DELETE FROM Internkundekasse");
    };
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT * FROM INNSTILLINGER"), before);
    EXPECT_TRUE(send.progress.contains(QStringLiteral("100 Overfører innstillinger: 1 av 1")));
}

TEST(TillSettings, MissingRowAtTheTillIsNoError) {
    TillSend send;
    send.dm.OnLog = [&](const QString& line) {
        if (line.contains(QLatin1String("ANSATT"))) send.onTill("DELETE FROM INNSTILLINGER");
    };
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM INNSTILLINGER"), Rows{"0"});
}

}  // namespace
}  // namespace torvik::test

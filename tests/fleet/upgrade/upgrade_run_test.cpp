// The walk that gives the tills a new version of their software: by database or by share, whatever befalls one till.
#include "fleet/upgrade/upgrade_run.h"

#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/samba_server.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const QString kFolder = QStringLiteral("\\TorvikPOS\\");

CopyTools toolsOf(const SambaServer& samba) {
    CopyTools tools;
    tools.Share = [&samba] { return samba.share(); };
    return tools;
}

// Tells that it was asked for: a walk that needs no share has none.
CopyTools noShare() {
    class NoShare : public FileShare {
        void connect(const std::string&, const ShareLogin&) override { ADD_FAILURE() << "no share is expected"; }
        void copy(const std::string&, const std::string&, const ShareProgress&, const int&) override {}
        void remove(const std::string&) override {}
        void disconnect(const std::string&) override {}
    };
    CopyTools tools;
    tools.Share = [] { return std::make_unique<NoShare>(); };
    return tools;
}

TEST(UpgradeRun, GivesTheArchiveToATillThroughItsDatabaseAndTellsNothing) {
    FleetRun run(FleetRun::tills({72, 213}));
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK-ny"), kFolder, true, noShare());
    for (std::size_t till : {0, 1})
        EXPECT_THAT(run.objects(till), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK-ny"))) << till;
    EXPECT_THAT(run.lines(), IsEmpty());
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_EQ(run.log().filter("Venter i").size(), 1) << "between the tills, not behind the last";
}

TEST(UpgradeRun, LeavesOneRowOfTheKindHoweverOften) {
    FleetRun run(FleetRun::oneTill(213));
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK-gammel"), kFolder, true, noShare());
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK-ny"), kFolder, true, noShare());
    EXPECT_THAT(run.objects(0), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK-ny")));
}

TEST(UpgradeRun, DeletesTheKindOfBothDirectionsAndRowsWithoutATypeAndNoOthers) {
    FleetRun run(FleetRun::oneTill(213));
    run.chain.runInTill(0,
                        "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS, BO_OBJECT) VALUES "
                        "(1, 'TORVIKPOS', 0, 0, 0x01), (2, 'TORVIKPOS', 1, 0, 0x02), (3, NULL, 0, 0, 0x03), "
                        "(4, 'TORVIKPOS.INI', 1, 0, 0x04), (5, 'TORVIKPOS_CHANGE.INI', 0, 0, 0x05)");
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "x"), kFolder, true, noShare());
    EXPECT_THAT(run.objects(0), ElementsAre(FleetRun::object(4, "TORVIKPOS.INI", 1, QByteArray("\x04")),
                                            FleetRun::object(5, "TORVIKPOS_CHANGE.INI", 0, QByteArray("\x05")),
                                            FleetRun::object(6, "TORVIKPOS", 0, "x")));
}

TEST(UpgradeRun, GivesTheArchiveToAnOlderTillOverItsShare) {
    const SambaServer samba;
    QDir(samba.folder("C$")).mkdir("TorvikPOS");
    FleetRun run(FleetRun::oneTill(71));
    TORVIK_NEEDS_SANDBOX(run.chain);
    const QByteArray archive = FleetRun::bytes(100000);
    const QString file = run.file("TorvikPOS.zip", archive);
    UpgradeTorvikPOS(run.parts(), file, kFolder, true, toolsOf(samba));
    EXPECT_TRUE(samba.content("C$", "TorvikPOS/TorvikPOS.zip") == archive);
    EXPECT_THAT(run.tillRows(0, "SELECT * FROM BINARYOBJECT"), IsEmpty());
    const QString server = QString::fromStdString(run.chain.addressOf(0).server);
    EXPECT_THAT(
        run.lines(),
        ElementsAre(
            QStringLiteral("Starter kopiering fra %1 til \\\\%2\\C$\\TorvikPOS\\TorvikPOS.zip").arg(file, server),
            QStringLiteral("Fullført kopiering")));
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST(UpgradeRun, TakesTheShareWhateverTheVersionUnlessTheDatabaseMayBeUsed) {
    const SambaServer samba;
    QDir(samba.folder("C$")).mkdir("TorvikPOS");
    FleetRun run(FleetRun::oneTill(213));
    TORVIK_NEEDS_SANDBOX(run.chain);
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK"), kFolder, false, toolsOf(samba));
    EXPECT_EQ(samba.content("C$", "TorvikPOS/TorvikPOS.zip"), "PK");
    EXPECT_THAT(run.objects(0), IsEmpty());
}

TEST(UpgradeRun, PassesByATillWhoseVersionIsNoNumber) {
    FleetRun run(FleetRun::tills({213, 213}));
    run.chain.runInTill(0, "UPDATE INNSTILLINGER SET IN_DBVERSION = '7x'");
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK"), kFolder, true, noShare());
    EXPECT_THAT(run.errors(), ElementsAre("'7x' is not a valid integer value"));
    EXPECT_THAT(run.objects(0), IsEmpty());
    EXPECT_THAT(run.objects(1), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK")));
}

TEST(UpgradeRun, StopsAtNoTillThatFails) {
    FleetRun run(FleetRun::tills({213, 213, 213, 213, 213, 213}));
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("INSERT INTO BINARYOBJECT");
    run.chain.runInTill(3, "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION) VALUES (1, 'TORVIKPOS', 0)");
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK"), kFolder, true, noShare());
    run.allowLogins();
    for (std::size_t served : {0, 5})
        EXPECT_THAT(run.objects(served), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK"))) << served;
    EXPECT_THAT(run.objects(2), IsEmpty());
    EXPECT_THAT(run.objects(3), IsEmpty()) << "the row of before is gone, and no part of the new one is there";
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    for (int away : {0, 1}) {
        EXPECT_THAT(errors[away].toStdString(), StartsWith("Klarte ikke kople til "));
        EXPECT_THAT(errors[away].toStdString(), HasSubstr(" ID 1001 AvdID 101, Oppdateringen feilet."));
    }
    EXPECT_THAT(errors[2].toStdString(), HasSubstr("connection"));
    EXPECT_THAT(errors[3].toStdString(), HasSubstr("BINARYOBJECT"));
}

TEST(UpgradeRun, PassesByATillWhoseTableLacksTheBytesColumn) {
    FleetRun run(FleetRun::tills({213, 213}));
    run.chain.runInTill(0, "ALTER TABLE BINARYOBJECT DROP COLUMN BO_OBJECT");
    run.chain.runInTill(0, "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION) VALUES (1, 'TORVIKPOS', 0)");
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK"), kFolder, true, noShare());
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_THAT(run.errors().first().toStdString(), HasSubstr("Invalid column name 'BO_OBJECT'"));
    EXPECT_THAT(run.tillRows(0, "SELECT * FROM BINARYOBJECT"), IsEmpty()) << "the row of before is gone all the same";
    EXPECT_THAT(run.objects(1), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK")));
}

TEST(UpgradeRun, TellsAShareThatRefusesAndGoesOn) {
    const SambaServer samba;
    FleetRun run(FleetRun::tills({71, 213}));
    run.engine.OverrideSourceUserNameAndPassword = true;
    run.engine.OverrideSourceUserName = QStringLiteral("pos");
    run.engine.OverrideSourcePassword = QStringLiteral("Galt-Passord-1");
    UpgradeTorvikPOS(run.parts(), run.file("TorvikPOS.zip", "PK"), kFolder, true, toolsOf(samba));
    EXPECT_THAT(run.errors(),
                ElementsAre(QString::fromStdString(systemErrorText(EACCES)),
                            QStringLiteral("Klarte ikke å oppgradere, fordi kobling til \\\\%1\\C$ ikke kunne lages")
                                .arg(QString::fromStdString(run.chain.addressOf(0).server)),
                            QString::fromUtf8(EAbort().what())));
    EXPECT_THAT(samba.files("C$"), IsEmpty());
    EXPECT_THAT(run.objects(1), ElementsAre(FleetRun::object(1, "TORVIKPOS", 0, "PK")));
}

}  // namespace
}  // namespace torvik::test

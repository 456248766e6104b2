// The tills' ini files: fetched from all of them, changed on them up to the first that is too old, and one till's
// identity.
#include "fleet/ini/ini_runs.h"

#include <gmock/gmock.h>

#include <QFile>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/roster/kasse_collection.h"
#include "sandbox/chain/ini_files.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kIni[] =
    "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS, BO_OBJECT) VALUES (9, 'TORVIKPOS.INI', 1, 0, "
    "0x5B4B617373655D0D0A4E61766E3D426CE50D0A)";  // [Kasse], Navn=Blå in code page 1252

struct Received {
    QString avdNr, kassenr, navn;
    QStringList lines;
    bool operator==(const Received&) const = default;
};

void PrintTo(const Received& r, std::ostream* out) {
    *out << QStringLiteral("%1/%2 '%3' %4").arg(r.avdNr, r.kassenr, r.navn, r.lines.join(u'|')).toStdString();
}

class GetIni : public testing::Test {
protected:
    explicit GetIni(int tills = 2) : run(FleetRun::tills(std::vector<int>(static_cast<std::size_t>(tills), 213))) {
        for (int till = 0; till < tills; ++till)
            run.chain.runInTill(static_cast<std::size_t>(till),
                                "UPDATE INNSTILLINGER SET IN_NAVN = 'Kjeden AS  ', IN_ADR1 = 'Storgata 1  '");
        run.engine.OnTorvikPosIniReceivedEvent = [this](const QString& avdNr, const QString& kassenr,
                                                        const QStringList& lines, const QString& navn) {
            received.push_back({avdNr, kassenr, navn, lines});
        };
        run.engine.OnProgress = [this](QObject*, int percent, const QString& text) {
            progress << QStringLiteral("%1 %2").arg(percent).arg(text);
        };
    }

    FleetRun run;
    std::vector<Received> received;
    QStringList progress;
};

class GetIniOfSixTills : public GetIni {
protected:
    GetIniOfSixTills() : GetIni(6) {}
};

TEST_F(GetIni, GivesEachTillsLinesAndNameAndTellsWhatItDoes) {
    run.chain.runInTill(0, kIni);
    run.chain.runInTill(1, kIni);
    GetTorvikPOSIni(run.parts());
    const QStringList lines{"[Kasse]", "Navn=Blå"};
    EXPECT_THAT(received, ElementsAre(Received{"101", "1", "Kjeden AS Storgata 1", lines},
                                      Received{"101", "2", "Kjeden AS Storgata 1", lines}));
    EXPECT_THAT(run.lines(),
                ElementsAre("STARTER HENTING AV TORVIKPOS.INI", "Antall kasser som skal behandles: 2",
                            "Hentet TorvikPOS.ini (avd. 101, kasse 1)", "Hentet TorvikPOS.ini (avd. 101, kasse 2)",
                            "fullføRT HENTING AV TORVIKPOS.INI"));
    EXPECT_THAT(progress, ElementsAre("50 Utført henting av TorvikPOS.ini: 1 av 2 kasser",
                                      "100 Utført henting av TorvikPOS.ini: 2 av 2 kasser"));
    EXPECT_EQ(run.log().filter("Venter i").size(), 1);
    EXPECT_TRUE(QFile::exists(run.folder.filePath("ZoppgjorLog.txt")));
}

TEST_F(GetIni, GivesAnEmptyFileForATillWithoutOne) {
    run.chain.runInTill(1, kIni);
    run.chain.runInTill(1, "UPDATE BINARYOBJECT SET BO_DIRECTION = 0");
    GetTorvikPOSIni(run.parts());
    EXPECT_THAT(received, ElementsAre(Received{"101", "1", " ", {}}, Received{"101", "2", " ", {}}));
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(GetIni, CountsOnlyTheFirstOfSeveralRows) {
    run.chain.runInTill(0, kIni);
    run.chain.runInTill(0, kIni);
    GetTorvikPOSIni(run.parts());
    ASSERT_EQ(received.size(), 2U);
    EXPECT_THAT(received[0].lines, ElementsAre("[Kasse]", "Navn=Blå"));
}

TEST_F(GetIni, WithoutAReceiverOnlyTellsItsLines) {
    run.chain.runInTill(0, kIni);
    run.engine.OnTorvikPosIniReceivedEvent = nullptr;
    GetTorvikPOSIni(run.parts());
    EXPECT_EQ(run.lines().filter("Hentet TorvikPOS.ini").size(), 2);
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(GetIni, WhatTheReceiverRaisesIsTheTillsFailure) {
    run.engine.OnTorvikPosIniReceivedEvent = [](const QString&, const QString& kassenr, const QStringList&,
                                                const QString&) {
        if (kassenr == u"1") throw EngineError(QStringLiteral("vinduet er borte"));
    };
    GetTorvikPOSIni(run.parts());
    EXPECT_THAT(run.errors(), ElementsAre("En feil oppstod ved henting av TorvikPOS.ini: vinduet er borte"));
    EXPECT_THAT(run.lines().filter("Hentet"), ElementsAre("Hentet TorvikPOS.ini (avd. 101, kasse 2)"));
}

TEST_F(GetIni, CancelEndsTheWalkBehindTheTill) {
    run.engine.OnTorvikPosIniReceivedEvent = [this](const QString&, const QString& kassenr, const QStringList&,
                                                    const QString&) {
        received.push_back({{}, kassenr, {}, {}});
        run.engine.SetCancelRequest(true);
    };
    EXPECT_THROW(GetTorvikPOSIni(run.parts()), EAbort);
    EXPECT_EQ(received.size(), 1U);
    EXPECT_THAT(progress, ElementsAre("50 Utført henting av TorvikPOS.ini: 1 av 2 kasser"));
    EXPECT_THAT(run.lines().filter("fullføRT"), IsEmpty());
}

// A till at version 71 has no column for the kind of a row.
TEST(IniFilesOfTheDemoChain, AreOfEveryTillThatMarksItsRows) {
    FleetRun run(FleetRun::tills({213, 72, 213, 229}));
    giveIniFiles(run.chain);
    giveIniFiles(run.chain);
    QStringList printers;
    run.engine.OnTorvikPosIniReceivedEvent = [&](const QString&, const QString& kassenr, const QStringList& lines,
                                                 const QString&) {
        printers << QStringList{kassenr, lines.filter("PrinterName").join(u'|'),
                                lines.filter("TerminalType").join(u'|')}
                        .join(u' ');
    };
    GetTorvikPOSIni(run.parts());
    EXPECT_THAT(printers, ElementsAre("1 PrinterName=Zebra GK420d TerminalType=8", "2 PrinterName= TerminalType=6",
                                      "3 PrinterName=TSC TDP-225 TerminalType=9", "4 PrinterName= TerminalType=0"));
    for (std::size_t till = 0; till < 4; ++till)
        EXPECT_THAT(run.tillRows(till, "SELECT COUNT(*) FROM BINARYOBJECT"), ElementsAre("1")) << till;
    FleetRun oldest(FleetRun::oneTill(71));
    giveIniFiles(oldest.chain);
    EXPECT_THAT(oldest.tillRows(0, "SELECT * FROM BINARYOBJECT"), IsEmpty());
}

TEST_F(GetIniOfSixTills, StopsAtNoTillThatFailsAndCountsIt) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (std::size_t till = 0; till < 6; ++till) run.chain.runInTill(till, kIni);
    run.spoilTills("TORVIKPOS.INI");
    GetTorvikPOSIni(run.parts());
    QStringList served;
    for (const Received& each : received) served << each.kassenr;
    EXPECT_THAT(served, ElementsAre("1", "6"));
    EXPECT_EQ(received[0].lines, received[1].lines);
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    EXPECT_EQ(errors[0], "Klarte ikke å koble til (avd. 101, kasse 2)");
    EXPECT_EQ(errors[1], "Klarte ikke å koble til (avd. 101, kasse 3)");
    EXPECT_THAT(errors[2].toStdString(), testing::StartsWith("En feil oppstod ved henting av TorvikPOS.ini: "));
    EXPECT_EQ(errors[3], "En feil oppstod ved henting av TorvikPOS.ini: Invalid object name 'BINARYOBJECT'.");
    EXPECT_EQ(progress.size(), 6);
    EXPECT_EQ(progress.last(), "100 Utført henting av TorvikPOS.ini: 6 av 6 kasser");
}

const QByteArray kChange = QByteArrayLiteral("[Kasse]\r\nNavn=Bl\xE5\r\n\0 til slutt");

TEST(SendIniChanges, GivesEachTillTheFileByteForByteAndTellsIt) {
    FleetRun run(FleetRun::tills({72, 213}));
    const QString file = run.file("TorvikPOS_Change.ini", kChange);
    UpgradeTorvikPOSini(run.parts(), file);
    for (std::size_t till : {0, 1})
        EXPECT_THAT(run.objects(till), ElementsAre(FleetRun::object(1, "TORVIKPOS_CHANGE.INI", 0, kChange))) << till;
    const QString where =
        QString::fromStdString(run.backOfficeValue("SELECT RTRIM(Ku_Adresse1) FROM Kunde WHERE Ku_Id = 1001"));
    const QString line = QStringLiteral("Endringer i %1 sendt til 101 - %2").arg(file, where);
    EXPECT_THAT(run.lines(), ElementsAre(line, line));
}

TEST(SendIniChanges, ReplacesOlderChangesAndRowsWithoutAType) {
    FleetRun run(FleetRun::oneTill(213));
    run.chain.runInTill(0,
                        "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS, BO_OBJECT) VALUES "
                        "(1, 'TORVIKPOS_CHANGE.INI', 0, 0, 0x01), (2, 'TORVIKPOS_CHANGE.INI', 1, 0, 0x02), "
                        "(3, NULL, 0, 0, 0x03), (4, 'TORVIKPOS', 0, 0, 0x04)");
    UpgradeTorvikPOSini(run.parts(), run.file("TorvikPOS_Change.ini", "ny"));
    EXPECT_THAT(run.objects(0), ElementsAre(FleetRun::object(4, "TORVIKPOS", 0, QByteArray("\x04")),
                                            FleetRun::object(5, "TORVIKPOS_CHANGE.INI", 0, "ny")));
}

TEST(SendIniChanges, EndsInSilenceAtTheFirstTillThatIsTooOld) {
    FleetRun run(FleetRun::tills({213, 71, 213}));
    UpgradeTorvikPOSini(run.parts(), run.file("TorvikPOS_Change.ini", "ny"));
    EXPECT_EQ(run.objects(0).size(), 1U);
    EXPECT_THAT(run.tillRows(1, "SELECT * FROM BINARYOBJECT"), IsEmpty());
    EXPECT_THAT(run.objects(2), IsEmpty());
    EXPECT_EQ(run.lines().size(), 1) << "the first till's line alone";
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST(SendIniChanges, StopsAtNoTillThatFails) {
    FleetRun run(FleetRun::tills({213, 213, 213, 213, 213, 213}));
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("INSERT INTO BINARYOBJECT");
    UpgradeTorvikPOSini(run.parts(), run.file("TorvikPOS_Change.ini", "ny"));
    run.allowLogins();
    for (std::size_t served : {0, 5})
        EXPECT_THAT(run.objects(served), ElementsAre(FleetRun::object(1, "TORVIKPOS_CHANGE.INI", 0, "ny"))) << served;
    EXPECT_THAT(run.objects(2), IsEmpty());
    EXPECT_THAT(run.objects(3), IsEmpty());
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    for (int away : {0, 1})
        EXPECT_THAT(errors[away].toStdString(), HasSubstr(" ID 1001 AvdID 101, Oppdateringen feilet."));
    EXPECT_THAT(errors[3].toStdString(), HasSubstr("BINARYOBJECT"));
}

TEST(SendIniChanges, PassesByATillWhoseVersionIsNoNumber) {
    FleetRun run(FleetRun::tills({213, 213}));
    run.chain.runInTill(0, "UPDATE INNSTILLINGER SET IN_DBVERSION = 'ny'");
    UpgradeTorvikPOSini(run.parts(), run.file("TorvikPOS_Change.ini", "ny"));
    EXPECT_THAT(run.errors(), ElementsAre("'ny' is not a valid integer value"));
    EXPECT_EQ(run.objects(1).size(), 1U);
}

class Configuration : public testing::Test {
protected:
    Configuration() : run(FleetRun::tills({213, 213})) {
        run.chain.runInTill(
            1,
            "UPDATE INNSTILLINGER SET IN_NAVN = 'Kjeden AS ', IN_ADR1 = ' Storgata 1', IN_ADR2 = "
            "'Bakgården', IN_ADR3 = '0001 OSLO', IN_TELEFON = '22 00 00 00', IN_TELEFAX = '22 00 00 01', "
            "IN_AVDNR = '101', IN_KASSENR = '2', IN_ORGNR = '999888777'");
    }
    FleetRun run;
    TTorvikPOSConfig config;
};

TEST_F(Configuration, IsThatOfTheOneTill) {
    ListConfiguration(run.parts(), 1001, QStringLiteral("2"), config);
    EXPECT_THAT((QStringList{config.In_Navn, config.In_Adr1, config.In_Adr2, config.In_Adr3, config.In_Telefon,
                             config.In_Telefax, config.In_Avdnr, config.In_Kassenr, config.In_Orgnr}),
                ElementsAre("Kjeden AS", "Storgata 1", "Bakgården", "0001 OSLO", "22 00 00 00", "22 00 00 01", "101",
                            "2", "999888777"));
    EXPECT_THAT(run.lines(), ElementsAre("HENTER KONFIGURASJON...", "fullføRT HENTING AV KONFIGURASJON"));
}

TEST_F(Configuration, OfATillWithoutSettingsIsAnError) {
    run.chain.runInTill(1, "UPDATE INNSTILLINGER SET IN_ID = 2");
    try {
        ListConfiguration(run.parts(), 1001, QStringLiteral("2"), config);
        ADD_FAILURE() << "nothing raised";
    } catch (const EngineError& e) {
        EXPECT_EQ(ErrorText(e), "Tabellen INNSTILLINGER er tom, eller har ingen post med ID=1");
    }
}

TEST_F(Configuration, OfATillThatDoesNotAnswerIsTheSessionsError) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.till(1).stopListening();
    EXPECT_THROW(ListConfiguration(run.parts(), 1001, QStringLiteral("2"), config), db::Error);
}

}  // namespace
}  // namespace torvik::test

// What a transfer reports while it runs: its steps in their order, and its rows by the thousand.
#include <gtest/gtest.h>

#include "tests/inbound/till_transfer.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

class Progress : public testing::Test {
protected:
    explicit Progress(int version = 229) : transfer(version) {
        transfer.dm.OnProgress = [this](QObject*, int percent, const QString& text) {
            reports << QStringLiteral("%1 %2").arg(percent).arg(text);
        };
    }
    TillTransfer transfer;
    QStringList reports;
};

TEST_F(Progress, TellsEachStepInItsOrder) {
    transfer.run.chain.runInBackOffice("DELETE InternKundeAnsatt WHERE Ika_Ik_Ku_Id = 1001");
    EXPECT_EQ(transfer.execute(), QString());
    const std::string database = transfer.run.backOfficeValue("SELECT RTRIM(Ikk_Database) FROM Internkundekasse");
    QStringList steps;
    for (const char* step : {"Loggtype",
                             "Oppgjør",
                             "Oppgjørlinje",
                             "OppgjørBetaling",
                             "GrunnType",
                             "Grunn",
                             "Pengeenhet",
                             "Betalingform",
                             "Kortutsteder",
                             "Ordre",
                             "Ordrelinje",
                             "Ordregrunn",
                             "Ordrelinjegrunn",
                             "Ordrelinjetekst",
                             "Kupong",
                             "KupongOrdrelinje",
                             "Betaling",
                             "BetalingBankinfo",
                             "Ansatt",
                             "EkstraAnsattOppgjør",
                             "Logg",
                             "Varemottak",
                             "Varemottaklinje",
                             "Varebestilling",
                             "Varebestillinglinje",
                             "opprett sp_UtbetalingImport",
                             "Utbetaling"})
        steps << QStringLiteral("0 Start %1: ").arg(QString::fromUtf8(step));
    QStringList last;
    for (const char* step : {"UtbetalingImport", "Timer", "Signatur", "BetalingSignatur", "OrdreSignatur",
                             "OppgjorSignatur", "Vedlegg", "Ordreretur", "VippsBetaling", "TimerPrKode", "Insert Data"})
        last << QStringLiteral("0 Start %1: ").arg(QString::fromUtf8(step));
    EXPECT_EQ(reports, QStringList({"0 Start Initialize: ", "0 Initialize: 0 av 0", "100 Initialize: 1 av 1",
                                    "0 Start CreateTempTables: ", "0 Creating temporary tables: 0 av 0",
                                    "100 Temporary tables created: 1 av 1", "0 Start Startup: ",
                                    QStringLiteral("0 Starter overføring fra avd 1001, kassenr 1 (%1): 0 av 1")
                                        .arg(QString::fromStdString(database)),
                                    "100 Startup: 1 av 1"}) +
                           steps + QStringList("0 Overfører Utbetalinger: 0 av 0") + last +
                           QStringList({"0 Overfører data til Torvik: 0 av 0", "100 Data overført til Torvik: 1 av 1",
                                        "0 Start Oppdater Timer: ", "0 Oppdaterer Timer: 0 av 0",
                                        "0 Start Sletter temporære tabeller: ", "0 Start Avslutter overføring: "}));
}

TEST_F(Progress, TellsItsRowsAtEveryThousandth) {
    transfer.onTill(R"(DELETE LOGG
DECLARE @Nr int
SET @Nr = 0
WHILE @Nr < 2500
BEGIN
  INSERT LOGG (LO_ID, LO_AN_ID, LO_LT_ID, LO_OP_ID, LO_TIDSPUNKT)
  SELECT @Nr, MIN(AN_ID), (SELECT MIN(LT_ID) FROM LOGGTYPE), 1, '20260302' FROM ANSATT
  SET @Nr = @Nr + 1
END)");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(reports.filter(QStringLiteral("Overfører Logg")),
              QStringList({"40 Overfører Logg: 1000 av 2500", "80 Overfører Logg: 2000 av 2500"}));
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Logg_Import"), "2500");
}

}  // namespace
}  // namespace torvik::test

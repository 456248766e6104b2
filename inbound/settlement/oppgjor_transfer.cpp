// Phase one of a till's fetch: what the till says of itself, then the raw transfer in its pair of transactions.
#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/oppgjor.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr char kLastSettlement[] = "SELECT MAX(Op_Tidspunkt) Op_Tidspunkt FROM Oppgjor (NOLOCK) WHERE Op_Type='NORMAL'";

constexpr char kUnsettledSales[] =
    "SELECT SUM(1) AS AntOrdre, ( SELECT MAX(Op_Tidspunkt) FROM Oppgjor WHERE Op_Type='NORMAL') AS SisteOppgjor FROM Ordre (NOLOCK) WHERE Or_Op_Id IS NULL AND Or_Status=0";

constexpr char kStoreUnsettledSales[] =
    "update InternKundeKasse SET Ikk_AntIkkeOppgjorteSalg = %1, Ikk_SistHentetOppgjor = %2 WHERE Ikk_Ik_Ku_ID = %3 AND Ikk_Kassenummer = '%4'";

}  // namespace

void TOppgjor::readLastSettlement() {
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL = QStringList{QString::fromUtf8(kLastSettlement)};
    FqryGeneralSource.Open();
    const db::Field& last = FqryGeneralSource.FieldByName(QStringLiteral("Op_Tidspunkt"));
    if (!last.IsNull()) torvikPos_.ffraOppgjorStatus->UpdateSisteOppgjor(avd(), till(), last.AsDateTime());
    FqryGeneralSource.Close();
}

void TOppgjor::reportUnsettledSales() {
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL = QStringList{QString::fromUtf8(kUnsettledSales)};
    FqryGeneralSource.Open();
    const int count = static_cast<int>(FqryGeneralSource.FieldByName(QStringLiteral("AntOrdre")).AsInteger());
    const db::DateTime last = FqryGeneralSource.FieldByName(QStringLiteral("SisteOppgjor")).AsDateTime();
    FqryGeneralSource.Close();
    if (count >= 1) torvikPos_.ffraOppgjorStatus->UpdateNonReconsiledSales(avd(), till(), count);

    FqryGeneralTarget.Close();
    FqryGeneralTarget.SQL = QStringList{QString::fromUtf8(kStoreUnsettledSales)
                                            .arg(QString::number(count >= 1 ? count : 0),
                                                 last.isValid() ? last.literal() : QStringLiteral("null"),
                                                 QString::number(ikKuId()), till())};
    FqryGeneralTarget.ExecSQL();
}

void TOppgjor::openList() {
    FqryOppgjor.Close();
    FqryOppgjor.Open();
    GlobalLogger().LogInformation(
        QStringLiteral(
            "Starter innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {FqryOppgjor.RecordCount(), avd(), till()});
    if (FqryOppgjor.IsEmpty()) setStatus(oksNull, ostHentet, {}, QTime(0, 0));
}

void TOppgjor::transfer() {
    startTransactions();
    try {
        if (torvikPos_.IsEnterprise) {
            ImportGavekort();
            ImportTilgodelapp();
        }
        if (!dmPOStoTorvik) dmPOStoTorvik = std::make_unique<TdmPOStoTorvik>();
        try {
            runDataModule();
        } catch (const TCancelException&) {
            torvikPos_.AddLog(QStringLiteral("Avbrutt av bruker"), true, kls_OK);
        }
        commitTransfer();
    } catch (const std::exception& e) {
        rollbackTransactions(e);
        GlobalLogger().LogError(
            QStringLiteral(
                "En feil oppstod ved innhenting av transaksjoner for avdeling {Avdeling} kassenummer {Kassenummer}: {Feilmelding}"),
            {avd(), till(), ErrorText(e)});
        throw;
    }
}

void TOppgjor::runDataModule() {
    TdmPOStoTorvik& dm = *dmPOStoTorvik;
    QString stage;
    try {
        stage = QStringLiteral("Setter Source Connection");
        dm.SetSourceConnection(torvikPos_.SourceConnection);
        stage = QStringLiteral("Setter Destination Connection");
        dm.SetDestinationConnection(torvikPos_.TargetConnection());
        stage = QStringLiteral("Setter Internkunde % d")
                    .replace(QStringLiteral("% d"), QStringLiteral(" %1").arg(ikKuId()));
        dm.Ik_Ku_ID = ikKuId();
        stage = QStringLiteral("Setter kassenr %1").arg(till());
        dm.SetKasseNr(till());
        stage = QStringLiteral("Setter Progressevent");
        dm.OnProgress = torvikPos_.OnProgress;
        dm.Now = torvikPos_.Seam.now;
        stage = QStringLiteral("kjører dmPosToTorvik.Excecute");
        GlobalLogger().LogInformation(
            QStringLiteral("Starter innhenting av transaksjoner  for avdeling {Avdeling} kassenummer {Kassenummer}"),
            {avd(), till()});
        dm.Execute();
        GlobalLogger().LogInformation(
            QStringLiteral("Fullført innhenting av transaksjoner for avdeling {Avdeling} kassenummer {Kassenummer}"),
            {avd(), till()});
    } catch (const TCancelException&) {
        throw;
    } catch (const std::exception& e) {
        setStatus(oksFalse, ostHentet, QStringLiteral("DTS feilet: %1").arg(ErrorText(e)));
        const QString text = QStringLiteral("Feil ved Execute prosedyren ved henting \"%1\" (Avd %2, kasse %3): %4")
                                 .arg(stage, avd(), till(), ErrorText(e));
        torvikPos_.AddLog(text, true);
        torvikPos_.SaveOppgjorLog();
        dm.SaveLog();
        throw EngineError(text);
    }
}

void TOppgjor::commitTransfer() {
    dmPOStoTorvik->SaveLog();
    commitTransactions();
    if (IncludeLastBackupStatus) readLastBackup();
}

// A till whose backups cannot be read has been fetched all the same.
void TOppgjor::readLastBackup() {
    try {
        daysSinceBackup_ = NumDaysSinceLastBackup();
        setStatus(oksTrue, ostDoNotSet);
    } catch (const std::exception&) {
        daysSinceBackup_ = -1;
    }
}

}  // namespace torvik

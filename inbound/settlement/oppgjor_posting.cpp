// Phase two of a till's fetch: the open settlements one at a time, each in a pair of transactions of its own.
#include <QDir>

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/log/log_pane.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/butikksalg.h"
#include "inbound/settlement/oppgjor.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr const char* kClearBeholdningstransaksjoner[] = {
    "if exists ( select 1 from sysobjects where name = 'Posbeholdningstransaksjoner' )",
    "delete from posbeholdningstransaksjoner",
};

constexpr char kMarkInChain[] =
    "update Oppgjor set OP_OPPDATERTTIDSPUNKT=GETDATE() where OP_OPPDATERTTIDSPUNKT is null and Op_Id=%1";

constexpr char kMarkInSingleBackOffice[] = "update Oppgjor set OP_STATUS=1 where OP_STATUS=0 and Op_Id=%1";

constexpr char kMarkedRows[] = "SELECT @@ROWCOUNT AntallRaderOppdatert";

}  // namespace

void TOppgjor::postOpenSettlements() {
    FqryOppgjor.First();
    while (!FqryOppgjor.Eof()) {
        const qint64 id = FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsInteger();
        GlobalLogger().LogInformation(
            QStringLiteral("Henter oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
            {id, avd(), till()});
        startTransactions();
        try {
            postSettlement();
            FqryOppgjor.Next();
            commitTransactions();
        } catch (const std::exception& e) {
            rollbackTransactions(e);
            GlobalLogger().LogError(
                QStringLiteral(
                    "En feil oppstod ved innhenting av oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}: {Feilmelding}"),
                {id, avd(), till(), ErrorText(e)});
            throw;
        }
        ++fetched_;
        setStatus(oksTrue, ostHentet);
        torvikPos_.TestCancel();
    }
}

void TOppgjor::postSettlement() {
    const qint64 id = FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsInteger();
    if (torvikPos_.Log)
        torvikPos_.Log->AddLine(QStringLiteral("oppgjør %1 (%2) for avd %3")
                                    .arg(QString::number(id),
                                         FqryOppgjor.FieldByName(QStringLiteral("OP_TIDSPUNKT"))
                                             .AsDateTime()
                                             .toString(QStringLiteral("dd.MM.yyyy")),
                                         avd()));
    invoiceCreditSales();
    torvikPos_.Seam.pumpMessages();
    postStoreSales();
    ClearBeholdningstransaksjoner();
    MarkOppgjorDone();
    torvikPos_.Seam.pumpMessages();
    GlobalLogger().LogInformation(
        QStringLiteral("Hentet oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {id, avd(), till()});
}

void TOppgjor::invoiceCreditSales() {
    if (torvikPos_.IsFakturaVedBackOffice(FqryOppgjor.FieldByName(QStringLiteral("In_Avdnr")).AsString().trimmed())) {
        CreateCreditOrders();
    } else if (torvikPos_.IsEnterprise) {
        // The list has no such column, so this raises the field error and the till stops at its first open settlement.
        const qint64 number = FqryOppgjor.FieldByName(QStringLiteral("Or_Op_Id")).AsInteger();
        GlobalLogger().LogWarning(
            QStringLiteral(
                "Kredittordre i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet. Må faktureres i Torvik BackOffice."),
            {number, avd(), till()});
        torvikPos_.AddLog(
            QStringLiteral("Kredittordre for avdeling %1 blir ikke opprettet. Må faktureres i BackOffice ved avdeling")
                .arg(avd()),
            false, kls_Warning);
    } else {
        GlobalLogger().LogWarning(
            QStringLiteral(
                "Kredittordre i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet. Må faktureres i Torvik Enterprise."),
            {FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsInteger(), avd(), till()});
        torvikPos_.AddLog(
            QStringLiteral("Kredittordre for avdeling %1 blir ikke opprettet. Må faktureres i Enterprise ved HK.")
                .arg(avd()),
            false, kls_Warning);
    }
}

void TOppgjor::postStoreSales() {
    Butikksalg->SetOp_Id(static_cast<int>(FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsInteger()));
    Butikksalg->SetAvdelingsnummer(FqryOppgjor.FieldByName(QStringLiteral("In_Avdnr")).AsString().trimmed());
    Butikksalg->KasseNr = till();
    Butikksalg->Dato = FqryOppgjor.FieldByName(QStringLiteral("OP_TIDSPUNKT")).AsDateTime();
    Butikksalg->Execute();
}

// The lines go behind whatever the general query still holds, which runs with them; they pile up from settlement to
// settlement.
void TOppgjor::ClearBeholdningstransaksjoner() {
    FqryGeneralTarget.Close();
    for (const char* line : kClearBeholdningstransaksjoner) FqryGeneralTarget.SQL << QString::fromUtf8(line);
    FqryGeneralTarget.ExecSQL();
}

void TOppgjor::MarkOppgjorDone() {
    const qint64 id = FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsInteger();
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL =
        QStringList{QString::fromUtf8(torvikPos_.IsEnterprise ? kMarkInChain : kMarkInSingleBackOffice).arg(id),
                    QString::fromUtf8(kMarkedRows)};
    FqryGeneralSource.Open();
    const qint64 rows = FqryGeneralSource.FieldByName(QStringLiteral("AntallRaderOppdatert")).AsInteger();
    FqryGeneralSource.Close();
    if (rows != 1) throw EngineError(QStringLiteral("Det ble oppdatert %1 rader. Forventet 1").arg(rows));
    ++FileNameID;
    SaveTextLines(QDir(torvikPos_.Seam.tempFolder()).filePath(QStringLiteral("Oppgjor.%1.txt").arg(FileNameID)),
                  FqryGeneralSource.SQL);
}

}  // namespace torvik

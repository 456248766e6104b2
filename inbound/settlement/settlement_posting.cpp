#include "inbound/settlement/settlement_posting.h"

#include <QDir>

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/base/step_error.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"
#include "engine/run/run_control.h"
#include "inbound/credit_orders/settlement_credit_orders.h"
#include "inbound/settlement/debug_file.h"
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

SettlementPosting::SettlementPosting(const TillVisit& visit, const TillPairs& pairs, const TillStatus& status,
                                     db::Query& general)
    : visit_(visit), pairs_(pairs), status_(status), FqryGeneralTarget(general), Butikksalg(visit) {
    FqryGeneralSource.CommandTimeout = kQueryTimeout;
    FqryGeneralSource.ParamCheck = false;
    FqryGeneralSource.SetConnection(&visit_.TillSession);
}

qint64 SettlementPosting::id() const {
    return settlements_->FieldByName(QStringLiteral("Op_Id")).AsInteger();
}

int SettlementPosting::run(db::DataSet& settlements) {
    const TillIdentity& till = visit_.Till;
    settlements_ = &settlements;
    int posted = 0;
    settlements_->First();
    while (!settlements_->Eof()) {
        const qint64 settlement = id();
        GlobalLogger().LogInformation(
            QStringLiteral("Henter oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
            {settlement, till.Avdelingsnummer, till.Kassenummer});
        TransactionPair pair(pairs_.sides(), QStringLiteral("oppgjør %1").arg(settlement));
        pair.begin();
        try {
            post(pair);
            settlements_->Next();
            pair.commit();
        } catch (const std::exception& e) {
            pairs_.fail(
                pair, e,
                QStringLiteral(
                    "En feil oppstod ved innhenting av oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}: {Feilmelding}"),
                {settlement, till.Avdelingsnummer, till.Kassenummer, ErrorText(e)});
            std::throw_with_nested(StepError(QStringLiteral("oppgjør %1").arg(settlement), ErrorText(e)));
        }
        ++posted;
        status_.set(oksTrue, ostHentet);
        visit_.Control.TestCancel();
    }
    return posted;
}

void SettlementPosting::post(TransactionPair& pair) {
    const TillIdentity& till = visit_.Till;
    if (visit_.Log.Log)
        visit_.Log.Log->AddLine(QStringLiteral("oppgjør %1 (%2) for avd %3")
                                    .arg(QString::number(id()),
                                         settlements_->FieldByName(QStringLiteral("OP_TIDSPUNKT"))
                                             .AsDateTime()
                                             .toString(QStringLiteral("dd.MM.yyyy")),
                                         till.Avdelingsnummer));
    invoiceCreditSales();
    visit_.Context.Seam.pumpMessages();
    postStoreSales();
    ClearBeholdningstransaksjoner();
    MarkOppgjorDone(pair);
    visit_.Context.Seam.pumpMessages();
    GlobalLogger().LogInformation(
        QStringLiteral("Hentet oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {id(), till.Avdelingsnummer, till.Kassenummer});
}

void SettlementPosting::invoiceCreditSales() {
    const TillIdentity& till = visit_.Till;
    if (visit_.Office.IsFakturaVedBackOffice(settlements_->text("In_Avdnr"))) {
        SettlementCreditOrders(visit_, FqryGeneralTarget, id()).create();
    } else if (visit_.Context.Options.IsEnterprise) {
        // Required: the list has no such column, so this raises the field error and the till stops at its first open
        // settlement.
        const qint64 number = settlements_->FieldByName(QStringLiteral("Or_Op_Id")).AsInteger();
        GlobalLogger().LogWarning(
            QStringLiteral(
                "Kredittordre i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet. Må faktureres i Torvik BackOffice."),
            {number, till.Avdelingsnummer, till.Kassenummer});
        visit_.Log.AddLog(
            QStringLiteral("Kredittordre for avdeling %1 blir ikke opprettet. Må faktureres i BackOffice ved avdeling")
                .arg(till.Avdelingsnummer),
            false, kls_Warning);
    } else {
        GlobalLogger().LogWarning(
            QStringLiteral(
                "Kredittordre i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet. Må faktureres i Torvik Enterprise."),
            {id(), till.Avdelingsnummer, till.Kassenummer});
        visit_.Log.AddLog(
            QStringLiteral("Kredittordre for avdeling %1 blir ikke opprettet. Må faktureres i Enterprise ved HK.")
                .arg(till.Avdelingsnummer),
            false, kls_Warning);
    }
}

void SettlementPosting::postStoreSales() {
    Butikksalg.SetOp_Id(static_cast<int>(id()));
    Butikksalg.SetAvdelingsnummer(settlements_->text("In_Avdnr"));
    Butikksalg.KasseNr = visit_.Till.Kassenummer;
    Butikksalg.Dato = settlements_->FieldByName(QStringLiteral("OP_TIDSPUNKT")).AsDateTime();
    Butikksalg.Execute();
}

// Required: the lines go behind whatever the general query still holds, which runs with them; they pile up from
// settlement to settlement.
void SettlementPosting::ClearBeholdningstransaksjoner() {
    FqryGeneralTarget.Close();
    for (const char* line : kClearBeholdningstransaksjoner) FqryGeneralTarget.SQL << QString::fromUtf8(line);
    FqryGeneralTarget.ExecSQL();
}

void SettlementPosting::MarkOppgjorDone(TransactionPair& pair) {
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL = QStringList{
        QString::fromUtf8(visit_.Context.Options.IsEnterprise ? kMarkInChain : kMarkInSingleBackOffice).arg(id()),
        QString::fromUtf8(kMarkedRows)};
    FqryGeneralSource.Open();
    const qint64 rows = FqryGeneralSource.FieldByName(QStringLiteral("AntallRaderOppdatert")).AsInteger();
    FqryGeneralSource.Close();
    if (rows != 1) throw EngineError(QStringLiteral("Det ble oppdatert %1 rader. Forventet 1").arg(rows));
    pairs_.noteSettlement(pair, id());
    ++FileNameID;
    saveDebugFile(visit_.Log, [this] {
        const QDir folder(visit_.Context.Seam.tempFolder());
        SaveTextLines(folder.filePath(QStringLiteral("Oppgjor.%1.txt").arg(FileNameID)), FqryGeneralSource.SQL);
    });
}

}  // namespace torvik

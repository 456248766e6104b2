#include "inbound/settlement/settlement_transfer.h"

#include "engine/base/abort.h"
#include "engine/base/engine_events.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"
#include "engine/run/run_control.h"
#include "inbound/settlement/debug_file.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "inbound/vouchers/voucher_import.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr char kLastSettlement[] = "SELECT MAX(Op_Tidspunkt) Op_Tidspunkt FROM Oppgjor (NOLOCK) WHERE Op_Type='NORMAL'";

constexpr char kUnsettledSales[] =
    "SELECT SUM(1) AS AntOrdre, ( SELECT MAX(Op_Tidspunkt) FROM Oppgjor WHERE Op_Type='NORMAL') AS SisteOppgjor FROM Ordre (NOLOCK) WHERE Or_Op_Id IS NULL AND Or_Status=0";

constexpr char kStoreUnsettledSales[] =
    "update InternKundeKasse SET Ikk_AntIkkeOppgjorteSalg = %1, Ikk_SistHentetOppgjor = %2 WHERE Ikk_Ik_Ku_ID = %3 AND Ikk_Kassenummer = '%4'";

void setUp(db::Query& query, const char* sql) {
    query.ParamCheck = false;
    query.CommandTimeout = kQueryTimeout;
    query.SQL = QStringList{QString::fromUtf8(sql)};
}

}  // namespace

SettlementTransfer::SettlementTransfer(const TillVisit& visit, const TillPairs& pairs, const TillStatus& status,
                                       db::Query& general)
    : visit_(visit), pairs_(pairs), status_(status), general_(general) {}

void SettlementTransfer::planReport(db::PlannedReads& reads) const {
    for (const char* sql : {kLastSettlement, kUnsettledSales}) reads.Plan({QString::fromUtf8(sql)});
}

void SettlementTransfer::reportTill(db::PlannedReads& reads) {
    reportLastSettlement(reads);
    reportUnsettledSales(reads);
}

void SettlementTransfer::reportLastSettlement(db::PlannedReads& reads) {
    db::Query query(&visit_.TillSession);
    setUp(query, kLastSettlement);
    const db::Field& last = reads.Open(query).FieldByName(QStringLiteral("Op_Tidspunkt"));
    if (!last.IsNull() && visit_.Status)
        visit_.Status->UpdateSisteOppgjor(visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer, last.AsDateTime());
}

void SettlementTransfer::reportUnsettledSales(db::PlannedReads& reads) {
    const TillIdentity& till = visit_.Till;
    db::Query query(&visit_.TillSession);
    setUp(query, kUnsettledSales);
    const db::DataSet& unsettled = reads.Open(query);
    const int count = unsettled.integer("AntOrdre");
    const db::DateTime last = unsettled.FieldByName(QStringLiteral("SisteOppgjor")).AsDateTime();
    if (count >= 1 && visit_.Status)
        visit_.Status->UpdateNonReconsiledSales(till.Avdelingsnummer, till.Kassenummer, count);

    general_.Close();
    general_.SQL = QStringList{QString::fromUtf8(kStoreUnsettledSales)
                                   .arg(QString::number(count >= 1 ? count : 0),
                                        last.isValid() ? last.literal() : QStringLiteral("null"),
                                        QString::number(till.Ik_Ku_Id), quotesDoubled(till.Kassenummer))};
    general_.ExecSQL();
}

void SettlementTransfer::run() {
    const TillIdentity& till = visit_.Till;
    TransactionPair pair(pairs_.sides(), QStringLiteral("overføring"));
    beginPair(pair);
    try {
        if (importsVouchers()) importVouchers();
        TdmPOStoTorvik dm;
        const CancelListener cancel(visit_.Control, [&dm](bool requested) { dm.CheckForCancel = requested; });
        try {
            runDataModule(dm);
        } catch (const TCancelException&) {
            visit_.Log.AddLog(QStringLiteral("Avbrutt av bruker"), true, kls_OK);
        }
        commit(pair, dm);
    } catch (const std::exception& e) {
        visit_.Office.StagingShapes.Forget();  // tables that were made in this transaction go with it
        pairs_.fail(
            pair, e,
            QStringLiteral(
                "En feil oppstod ved innhenting av transaksjoner for avdeling {Avdeling} kassenummer {Kassenummer}: {Feilmelding}"),
            {till.Avdelingsnummer, till.Kassenummer, ErrorText(e)});
        throw;
    }
}

// The first question of the steps rides with the till's BEGIN TRANSACTION, unless cards are marked in between.
void SettlementTransfer::beginPair(TransactionPair& pair) {
    if (!visit_.Context.Options.ReadsTogether || importsVouchers()) return pair.begin();
    pair.begin([this] { schema_ = TillSchema::BeginAndAsk(visit_.TillSession); });
}

bool SettlementTransfer::importsVouchers() const {
    const RunOptions& options = visit_.Context.Options;
    return options.IsEnterprise && (options.IncludeGiftVoucherOnOppgjor || options.IncludeCreditCouponOnOppgjor);
}

void SettlementTransfer::importVouchers() {
    if (visit_.Context.Options.IncludeGiftVoucherOnOppgjor) importVouchers(kGavekort);
    if (visit_.Context.Options.IncludeCreditCouponOnOppgjor) importVouchers(kTilgodelapp);
}

void SettlementTransfer::importVouchers(const VoucherKind& kind) {
    for (TillMark& mark : VoucherImport(kind, visit_, kQueryTimeout).run()) marks_.push_back(std::move(mark));
}

void SettlementTransfer::runDataModule(TdmPOStoTorvik& dm) {
    QString stage;
    try {
        execute(dm, stage);
    } catch (const TCancelException&) {
        throw;
    } catch (const std::exception& e) {
        status_.set(oksFalse, ostHentet, QStringLiteral("DTS feilet: %1").arg(ErrorText(e)));
        const QString text = QStringLiteral("Feil ved Execute prosedyren ved henting \"%1\" (Avd %2, kasse %3): %4")
                                 .arg(stage, visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer, ErrorText(e));
        visit_.Log.AddLog(text, true);
        saveDebugFile(visit_.Log, [this] { visit_.Log.SaveOppgjorLog(); });
        saveDebugFile(visit_.Log, [&dm] { dm.SaveLog(); });
        std::throw_with_nested(EngineError(text));
    }
}

// The stages are named in the failure's text, with the blank and the misspelling that are required.
void SettlementTransfer::execute(TdmPOStoTorvik& dm, QString& stage) {
    const TillIdentity& till = visit_.Till;
    stage = QStringLiteral("Setter Source Connection");
    dm.SetSourceConnection(&visit_.TillSession);
    stage = QStringLiteral("Setter Destination Connection");
    dm.SetDestinationConnection(&visit_.OfficeSession);
    stage = QStringLiteral("Setter Internkunde  %1").arg(till.Ik_Ku_Id);
    dm.Ik_Ku_ID = till.Ik_Ku_Id;
    stage = QStringLiteral("Setter kassenr %1").arg(till.Kassenummer);
    dm.SetKasseNr(till.Kassenummer);
    stage = QStringLiteral("Setter Progressevent");
    dm.OnProgress = visit_.Context.Events.OnProgress;
    dm.Now = visit_.Context.Seam.now;
    dm.ReadsTogether = visit_.Context.Options.ReadsTogether;
    dm.Schema = schema_;
    if (dm.ReadsTogether) dm.StagingShapes = &visit_.Office.StagingShapes;
    stage = QStringLiteral("kjører dmPosToTorvik.Excecute");
    GlobalLogger().LogInformation(
        QStringLiteral("Starter innhenting av transaksjoner  for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {till.Avdelingsnummer, till.Kassenummer});
    dm.Execute();
    GlobalLogger().LogInformation(
        QStringLiteral("Fullført innhenting av transaksjoner for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {till.Avdelingsnummer, till.Kassenummer});
}

void SettlementTransfer::commit(TransactionPair& pair, const TdmPOStoTorvik& dm) {
    saveDebugFile(visit_.Log, [&dm] { dm.SaveLog(); });
    pair.setSettlement(dm.LastSettlement());
    for (const TillMark& mark : marks_) pair.add(mark);
    for (const TillMark& mark : dm.Marks()) pair.add(mark);
    pair.commit();
}

}  // namespace torvik

#include "outbound/run/send_run.h"

#include <QScopeGuard>
#include <memory>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/office/standing_pair.h"
#include "engine/office/undecided_pair.h"
#include "engine/run/failure_event.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "outbound/driver/dm_torvik_to_pos.h"
#include "outbound/run/gift_card_item.h"

namespace torvik {

namespace {

QString selectionText(TItemUpdateSelection selection) {
    switch (selection) {
        case iusNone: return QStringLiteral("ingen varer");
        case iusChanged: return QStringLiteral("kun endringer");
        case iusAll: return QStringLiteral("alle varer");
    }
    return QStringLiteral("ikke satt");
}

void tellEvent(const TillIdentity& till, const std::exception& failure) {
    LogTillFailure(
        QStringLiteral("Feil ved sending til avdelingsnummer {Avdeling} kassenummer {Kassenummer}: {Feilmelding}"),
        till, failure);
}

// One run over the tills: what it keeps from one till to the next.
class SendRun {
public:
    explicit SendRun(RunParts& parts) : parts_(parts), started_(parts.Context.Seam.now()) {}

    void run();

private:
    void prepare();
    [[nodiscard]] TillWalkPlan plan();
    void serve(TillVisit& visit);
    void setUpExport(const TillVisit& visit);
    [[nodiscard]] bool hasStandingPair(const TillVisit& visit) const;
    void sendTo(const TillVisit& visit);
    void refreshGiftCardItem(const TillVisit& visit);
    void refuseBusyTill(const TillVisit& visit) const;
    void failed(const TillIdentity& till, const std::exception& failure);
    [[nodiscard]] bool servesAgain();
    [[nodiscard]] QString progressText(int done, int count) const;
    void setStatus(const TillIdentity& till, TOppgjorStatusType column, TOKStatus ok, const QString& text,
                   QTime used) const;
    [[nodiscard]] QTime timeSinceStart() const;

    RunParts& parts_;
    QDateTime started_;
    std::unique_ptr<TdmTorvikToPOS> export_;  // made for the first till that is not busy
    int attempts_ = 0;
    bool succeeded_ = false;
};

void SendRun::run() {
    parts_.Log.AddToLogItems = false;
    parts_.Log.AddLog(QStringLiteral("STARTER VAREOPPDATERING"));
    const auto ended = qScopeGuard([this] { parts_.Log.AddToLogItems = false; });
    prepare();
    TillWalk(parts_, plan()).Run();
}

void SendRun::prepare() {
    parts_.Office.Begin();
    parts_.Roster.Close();
    parts_.Roster.Open();
    parts_.Control.Begin();
    parts_.Log.AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(parts_.Roster.Qry().RecordCount()));
    parts_.Log.AddToLogItems = true;
}

TillWalkPlan SendRun::plan() {
    return {
        .Connect = TillWalkPlan::Connecting::Once,
        .Wait = TillWalkPlan::Waiting::BetweenTills,
        .TestCancel = TillWalkPlan::CancelTest::BeforeCounting,
        .ReopensBackOffice = true,
        .ShowsLogs = true,
        .LogsInAhead = true,
        .Work = [this](TillVisit& visit) { serve(visit); },
        .Failed = [this](const TillIdentity& till, const std::exception& failure) { failed(till, failure); },
        .ServesAgain = [this] { return servesAgain(); },
        .ProgressText = [this](const TillIdentity&, int done, int count) { return progressText(done, count); },
    };
}

void SendRun::serve(TillVisit& visit) {
    succeeded_ = false;
    refuseBusyTill(visit);
    if (!export_) {
        export_ = std::make_unique<TdmTorvikToPOS>();
        export_->SetSourceConnection(&visit.OfficeSession);
    }
    ++attempts_;
    setUpExport(visit);
    try {
        sendTo(visit);
    } catch (const TCancelException&) {
        visit.Log.AddLog(QStringLiteral("Avbrutt av bruker"), true);
    } catch (const std::exception& e) {
        // The failure goes to the column of what was fetched: required.
        setStatus(visit.Till, ostHentet, oksFalse, QStringLiteral("DTS feilet: %1").arg(ErrorText(e)),
                  timeSinceStart());
        tellEvent(visit.Till, e);
        parts_.KeepFailure(visit.Till, e);
        visit.Log.AddLog(QStringLiteral("Feil ved Execute prosedyren ved utsending til (Avd %1, kasse %2)(%3): %4")
                             .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer, export_->CurrentTransformation(),
                                  ErrorText(e)),
                         true);
        attempts_ = parts_.Context.Options.RetryCount;
    }
    visit.Control.TestCancel();
    export_->SaveLog();
    refreshGiftCardItem(visit);
}

void SendRun::refuseBusyTill(const TillVisit& visit) const {
    if (!visit.Connection.SourceHasOpenTransactions()) return;
    throw EngineError(QStringLiteral("Sender ikke oppdatering til (avd. %1, kasse %2), fordi den er i en transaksjon. "
                                     "Kanskje kasseoppgjøret ikke er avsluttet")
                          .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer));
}

void SendRun::setUpExport(const TillVisit& visit) {
    const RunOptions& options = parts_.Context.Options;
    TdmTorvikToPOS& dm = *export_;
    dm.DagerSidenEndring = options.DagerSidenEndring;
    dm.SendPriceAndCustomer = options.SendCustomerAndPrice;
    dm.SetDestinationConnection(&visit.TillSession);
    dm.Ik_Ku_ID = visit.Till.Ik_Ku_Id;
    dm.KasseNr = visit.Till.Ikk_Kassenummer;
    dm.ItemUpdateSelection = static_cast<TItemUpdateSelection>(options.VareOppdateringUtvalg);
    dm.DeleteItem = options.DeleteItemsOnSend(parts_.Context.Seam.now().date());
    dm.SendVouchers = !hasStandingPair(visit);
    dm.ReadsTogether = options.ReadsTogether;
    dm.OnProgress = parts_.Context.Events.OnProgress;
    dm.OnLog = [this](const QString& line) { parts_.Log.AddLog(line); };
    dm.OnIdle = parts_.Context.Seam.pumpMessages;
    dm.Now = parts_.Context.Seam.now;
    parts_.Log.AddLog(QStringLiteral("Overfører data til POS. Dager siden endring = %1,%2 %3")
                          .arg(QString::number(dm.DagerSidenEndring),
                               dm.SendPriceAndCustomer ? QStringLiteral(" send varer og priser,") : QString(),
                               selectionText(dm.ItemUpdateSelection)));
}

// The visit has resolved what stands, but in a program that is put together without the fetch: what the till has marked
// as handed in may then not have reached the back office, whose older word would wipe it.
bool SendRun::hasStandingPair(const TillVisit& visit) const {
    if (!HasStandingPair(visit.Office, visit.Till.Ik_Ku_Id, visit.Till.Kassenummer)) return false;
    visit.Log.AddLog(QStringLiteral("Gavekort og tilgodelapper sendes ikke til (avd. %1, kasse %2), fordi en avbrutt "
                                    "innhenting ikke er avklart. Hent oppgjør først")
                         .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer),
                     false, kls_Warning);
    return true;
}

void SendRun::sendTo(const TillVisit& visit) {
    export_->Execute();
    succeeded_ = true;
    setStatus(visit.Till, ostSendt, oksTrue, QStringLiteral("Overføring OK"), timeSinceStart());
    visit.Log.AddLog(QStringLiteral("Overføring til Internkunde Id %1 kasse %2 ble utført uten problem")
                         .arg(QString::number(export_->Ik_Ku_ID), export_->KasseNr));
    visit.Log.SaveOppgjorLog();
}

// Its failure is told by nobody.
void SendRun::refreshGiftCardItem(const TillVisit& visit) {
    try {
        RefreshGiftCardItem(visit.Office, visit.TillSession);
    } catch (const std::exception&) {
        attempts_ = parts_.Context.Options.RetryCount;
    }
}

// A till that could not be reached or is busy, and a cancel while it was served: nothing goes to the operator's log.
// One whose fetch another machine has left half done waits for somebody, who has to hear of it.
void SendRun::failed(const TillIdentity& till, const std::exception& failure) {
    attempts_ = parts_.Context.Options.RetryCount;
    succeeded_ = false;
    if (dynamic_cast<const UndecidedPair*>(&failure)) parts_.Log.AddLog(ErrorText(failure), true);
    // A cancel is no failure of the till: it is heard when that has been served.
    if (!dynamic_cast<const EAbort*>(&failure)) tellEvent(till, failure);
    setStatus(till, ostSendt, oksFalse, ErrorText(failure), QTime(0, 0));
}

// Every failure uses up the attempts, so that only a cancel by exception, which nothing raises, keeps a till.
bool SendRun::servesAgain() {
    const bool again = !succeeded_ && attempts_ < parts_.Context.Options.RetryCount;
    if (!again) attempts_ = 0;
    return again;
}

QString SendRun::progressText(int done, int count) const {
    if (!export_) return {};
    return QStringLiteral("AvdID %1, KasseNr %2 fullført. Oppdatert %3 av %4 kasser")
        .arg(QString::number(export_->Ik_Ku_ID), export_->KasseNr, QString::number(done), QString::number(count));
}

// A row that cannot be made (a department whose number is none) is told in the log and ends nothing.
void SendRun::setStatus(const TillIdentity& till, TOppgjorStatusType column, TOKStatus ok, const QString& text,
                        QTime used) const {
    if (!parts_.Status) return;
    try {
        parts_.Status->SetStatus(till.Ik_Ku_Id, till.Avdelingsnummer, till.Ku_Adresse1, till.Kassenummer, column, ok,
                                 text, used, -1);
    } catch (const std::exception& e) {
        parts_.Log.AddLog(ErrorText(e), true);
    }
}

QTime SendRun::timeSinceStart() const {
    return QTime(0, 0).addMSecs(static_cast<int>(started_.msecsTo(parts_.Context.Seam.now())));
}

}  // namespace

void ExecuteDTSToPos(RunParts& parts) {
    SendRun(parts).run();
}

void joinSending(TTorvikPos& torvikPos) {
    torvikPos.OnExecuteDTSToPos = ExecuteDTSToPos;
}

}  // namespace torvik

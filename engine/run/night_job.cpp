// The automatic run: at the chosen minute fetch from all tills, wait for the back office's daily job if the two are
// synchronised, send to all tills, and fetch stock counts. TimerBusy keeps a tick that comes while messages are pumped
// from starting it again.
#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

namespace torvik {

namespace {

// The values of In_DagligJobbFlagg.
enum Step { kFetching = 0, kFetched = 1, kBackOfficeDone = 2, kSent = 3 };

constexpr int kFetchAttempts = 3;
constexpr int kSecondsBetweenFetches = 180;
constexpr int kPauseAroundReceived = 1000;
constexpr int kPauseBeforeNextLook = 3000;
constexpr int kNearEnoughSeconds = 5;

}  // namespace

void TTorvikPos::DoOnTimer() {
    if (FTimerBusy) return;
    FTimerBusy = true;
    const auto idle = qScopeGuard([this] { FTimerBusy = false; });

    listAllTills();
    // A minute that was missed is not made up for.
    const QTime now = Seam.now().time();
    if (now.hour() != StartTime.hour() || now.minute() != StartTime.minute()) return;

    const auto done = qScopeGuard([this] { endNight(); });
    runNight();
}

// The work list becomes all tills that the roster's filters let through.
void TTorvikPos::listAllTills() {
    target().Close();
    target().Open();
    if (!Avdeling->KasseCollection())
        Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>([this] { return Seam.now(); }));
    TKasseCollection& workList = *Avdeling->KasseCollection();
    workList.Clear();
    Avdeling->Close();
    Avdeling->Open();
    db::Query& tills = Avdeling->Qry();
    const auto field = [&](const char16_t* column) -> const db::Field& {
        return tills.FieldByName(QString::fromUtf16(column));
    };
    for (; !tills.Eof(); tills.Next()) {
        TKasseItem& till = workList.Add();
        till.Ik_Ku_ID = static_cast<int>(field(u"ik_ku_id").AsInteger());
        till.Kassenr = field(u"ikk_kassenummer").AsString();
        till.Avdnr = field(u"ik_avdelingsnummer").AsString();
        till.AvdNavn = field(u"ku_adresse1").AsString();
        till.SyncVersion = field(u"Ikk_SynkVersjon").AsInteger() == 1 ? svDotNetV1 : svTorvikPosSync;
        till.Taken = false;
    }
    tills.First();
}

void TTorvikPos::runNight() {
    if (OnAutoStart) OnAutoStart(this);
    AddLog(QStringLiteral("Starter automatisk innhenting"));
    if (SynchonizedRun) SetNextStep(kFetching);
    Tasks = ReceiveDataOnly ? TTasks{taHent} : TTasks{taHent, taSend};
    target().Close();
    fetchWithRetries();

    Seam.sleep(kPauseAroundReceived);
    try {
        if (OnAutoReceiveDataDone) OnAutoReceiveDataDone(this);
    } catch (const std::exception&) {
        // What the window does with the data received is no reason not to send.
    }
    Seam.sleep(kPauseAroundReceived);

    try {
        if (SynchonizedRun) SetNextStep(kFetched);
    } catch (const std::exception&) {
        AddLog(QStringLiteral("Klarte ikke sette NextStep: "), true);
    }
    try {
        if (!ReceiveDataOnly) sendAfterBackOffice();
    } catch (const std::exception&) {
        AddLog(QStringLiteral("Feil i ExecuteVareoppdatering prosedyren"), true);
    }
    if (SynchonizedRun) SetNextStep(kSent);
    try {
        if (IncludeVaretellingOnOppgjor) ExecuteVaretelling();
    } catch (const std::exception& error) {
        // The text names another routine.
        AddLog(QStringLiteral("Feil i ExecuteVareoppdatering prosedyren (%1)").arg(ErrorText(error)), true);
    }
    AddLog(QStringLiteral("Synkronisering fullført"));
}

// ExecuteOppgjor lets nothing out, so the retries are for a failure of its own error handling.
void TTorvikPos::fetchWithRetries() {
    for (int failures = 0; failures < kFetchAttempts;) {
        try {
            ExecuteOppgjor();
            return;
        } catch (const std::exception& error) {
            AddLog(QStringLiteral("Prøver ExecuteOppgjor igjen (melding %1)").arg(ErrorText(error)));
            if (++failures == kFetchAttempts) {
                AddLog(QStringLiteral("Feil i ExecuteOppgjor prosedyren"), true);
                throw;
            }
        }
        TestCancel();
        WaitSeconds(kSecondsBetweenFetches);
    }
}

void TTorvikPos::sendAfterBackOffice() {
    if (SynchonizedRun) waitForSendingTime();
    ExecuteDTSToPos();
}

void TTorvikPos::waitForSendingTime() {
    AddLog(QStringLiteral("Venter på det som kommer først av neste steg i synkronisert kjøring og kl. %1")
               .arg(StartSendingTime.toString(u"HH:mm")));
    int seconds = 0;
    do {
        TestCancel();
        Seam.pumpMessages();
        Seam.sleep(kPauseBeforeNextLook);
        // On the time of day alone: a time that has passed comes round again tomorrow.
        seconds = qAbs(Seam.now().time().msecsTo(StartSendingTime)) / 1000;
        AddLog(QString::number(seconds));
    } while (seconds > kNearEnoughSeconds && !ReadNextStep());
}

void TTorvikPos::endNight() {
    if (!OnAutoStartDone) {
        AddLog(QStringLiteral("OnAutoStartDone was not assigned in DoOnTimer"));
        return;
    }
    try {
        OnAutoStartDone(this);
    } catch (...) {
    }
}

bool TTorvikPos::ReadNextStep() {
    db::Query& query = generalQuery({QStringLiteral("SELECT In_DagligJobbFlagg FROM Innstillinger (NOLOCK)")});
    query.Open();
    const qint64 step = query.Fields(0).AsInteger();
    query.Close();
    if (step != kBackOfficeDone) return false;
    AddLog(QStringLiteral("Neste steg i synkron kjøring er: %1").arg(step));
    return true;
}

void TTorvikPos::SetNextStep(int step) {
    db::Query& query = generalQuery({QStringLiteral("SELECT In_DagligJobbFlagg FROM Innstillinger (NOLOCK)")});
    query.Open();
    const qint64 before = query.Fields(0).AsInteger();
    query.Close();
    query.SQL = {QStringLiteral("UPDATE Innstillinger SET In_DagligJobbFlagg = %1").arg(step)};
    query.ExecSQL();
    AddLog(QStringLiteral("Oppdaterer neste steg i synkron kjøring fra %1 til %2")
               .arg(QString::number(before), QString::number(step)));
}

}  // namespace torvik

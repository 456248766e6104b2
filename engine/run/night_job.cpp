#include "engine/run/night_job.h"

#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/run/helping.h"
#include "engine/run/night_share.h"
#include "engine/run/run_parts.h"
#include "engine/run/settlement_run.h"

namespace torvik {

namespace {

constexpr int kFetchAttempts = 3;
constexpr int kSecondsBetweenFetches = 180;
constexpr int kPauseAroundReceived = 1000;
constexpr int kPauseBeforeNextLook = 3000;
constexpr int kNearEnoughSeconds = 5;

}  // namespace

NightJob::NightJob(RunParts& parts)
    : parts_(parts),
      seam_(parts.Context.Seam),
      options_(parts.Context.Options),
      events_(parts.Context.Events),
      sender_(parts.Context.Sender),
      log_(parts.Log) {}

void NightJob::DoOnTimer() {
    if (FTimerBusy) return;
    FTimerBusy = true;
    const auto idle = qScopeGuard([this] { FTimerBusy = false; });
    const db::StatementCancel endsWithTheProgram = parts_.Control.EndsWithTheProgram();

    listAllTills();
    // A minute that was missed is not made up for.
    const QTime now = seam_.now().time();
    if (now.hour() != options_.StartTime.hour() || now.minute() != options_.StartTime.minute()) return;

    const auto done = qScopeGuard([this] { endNight(); });
    options_.HelpFetching ? helpNight() : runNight();
}

void NightJob::Tick() noexcept {
    try {
        DoOnTimer();
    } catch (...) {
        failed(std::current_exception());
    }
}

void NightJob::failed(const std::exception_ptr& failure) {
    try {
        if (events_.OnTimerException) {
            events_.OnTimerException(failure);
            return;
        }
        std::rethrow_exception(failure);
    } catch (const EAbort&) {
        // nothing is shown for a silent abort
    } catch (const std::exception& error) {
        log_.AddLog(ErrorText(error), true);
    } catch (...) {
    }
}

// The work list becomes all tills that the roster's filters let through.
void NightJob::listAllTills() {
    parts_.Office.Session().Close();
    parts_.Office.Session().Open();
    if (!parts_.Roster.KasseCollection())
        parts_.Roster.SetKasseCollection(std::make_shared<TKasseCollection>([seam = &seam_] { return seam->now(); }));
    TKasseCollection& workList = *parts_.Roster.KasseCollection();
    workList.Clear();
    parts_.Roster.Close();
    parts_.Roster.Open();
    db::Query& tills = parts_.Roster.Qry();
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

void NightJob::runNight() {
    if (events_.OnAutoStart) events_.OnAutoStart(sender_);
    log_.AddLog(QStringLiteral("Starter automatisk innhenting"));
    if (options_.SynchonizedRun) parts_.Step.SetNextStep(DailyJobStep::kFetching);
    options_.Tasks = options_.ReceiveDataOnly ? TTasks{taHent} : TTasks{taHent, taSend};
    fetchWithHelpers();

    seam_.sleep(kPauseAroundReceived);
    try {
        if (events_.OnAutoReceiveDataDone) events_.OnAutoReceiveDataDone(sender_);
    } catch (const std::exception&) {
        // What the window does with the data received is no reason not to send.
    }
    seam_.sleep(kPauseAroundReceived);

    try {
        if (options_.SynchonizedRun) parts_.Step.SetNextStep(DailyJobStep::kFetched);
    } catch (const std::exception&) {
        log_.AddLog(QStringLiteral("Klarte ikke sette NextStep: "), true);
    }
    try {
        if (!options_.ReceiveDataOnly) sendAfterBackOffice();
    } catch (const std::exception&) {
        log_.AddLog(QStringLiteral("Feil i ExecuteVareoppdatering prosedyren"), true);
    }
    if (options_.SynchonizedRun) parts_.Step.SetNextStep(DailyJobStep::kSent);
    try {
        if (options_.IncludeVaretellingOnOppgjor) parts_.Execute(events_.OnExecuteVaretelling, u"ExecuteVaretelling");
    } catch (const std::exception& error) {
        // The text names another routine.
        log_.AddLog(QStringLiteral("Feil i ExecuteVareoppdatering prosedyren (%1)").arg(ErrorText(error)), true);
    }
    log_.AddLog(QStringLiteral("Synkronisering fullført"));
}

// Nothing of the night but the fetching: no flags, no accumulation, no sending, no counts.
void NightJob::helpNight() {
    if (events_.OnAutoStart) events_.OnAutoStart(sender_);
    options_.Tasks = {taHent};
    HelpToFetch(parts_);
}

// Whichever way the fetching ends, helping copies go to no till behind its end.
void NightJob::fetchWithHelpers() {
    const std::unique_ptr<NightShare> share = beginSharing();
    parts_.Office.Session().Close();
    const auto over = qScopeGuard([&share] {
        if (share) share->End();
    });
    fetchWithRetries(share.get());
}

// A night that cannot be shared is run alone.
std::unique_ptr<NightShare> NightJob::beginSharing() {
    if (parts_.Roster.Qry().IsEmpty()) return nullptr;
    try {
        const TillIdentity first = TillIdentity::Of(parts_.Roster.Qry());
        return std::make_unique<NightShare>(
            parts_, SharedNights(parts_.Office).Begin(first.Ik_Ku_Id, first.Kassenummer), NightShare::Role::Leads);
    } catch (const EAbort&) {
        throw;
    } catch (const std::exception& error) {
        log_.AddLog(QStringLiteral("Andre maskiner kan ikke hjelpe til med innhentingen (%1)").arg(ErrorText(error)),
                    false, kls_Warning);
        return nullptr;
    }
}

// ExecuteOppgjor lets nothing out, so the retries are for a failure of its own error handling.
void NightJob::fetchWithRetries(NightShare* share) {
    for (int failures = 0; failures < kFetchAttempts;) {
        try {
            ExecuteOppgjor(parts_, share);
            return;
        } catch (const std::exception& error) {
            log_.AddLog(QStringLiteral("Prøver ExecuteOppgjor igjen (melding %1)").arg(ErrorText(error)));
            if (++failures == kFetchAttempts) {
                log_.AddLog(QStringLiteral("Feil i ExecuteOppgjor prosedyren"), true);
                throw;
            }
        }
        parts_.Control.TestCancel();
        parts_.Control.WaitSeconds(kSecondsBetweenFetches);
    }
}

void NightJob::sendAfterBackOffice() {
    if (options_.SynchonizedRun) waitForSendingTime();
    parts_.Execute(events_.OnExecuteDTSToPos, u"ExecuteDTSToPos");
}

void NightJob::waitForSendingTime() {
    log_.AddLog(QStringLiteral("Venter på det som kommer først av neste steg i synkronisert kjøring og kl. %1")
                    .arg(options_.StartSendingTime.toString(u"HH:mm")));
    int seconds = 0;
    do {
        parts_.Control.TestCancel();
        seam_.pumpMessages();
        seam_.sleep(kPauseBeforeNextLook);
        // On the time of day alone: a time that has passed comes round again tomorrow.
        seconds = qAbs(seam_.now().time().msecsTo(options_.StartSendingTime)) / 1000;
        log_.AddLog(QString::number(seconds));
    } while (seconds > kNearEnoughSeconds && !parts_.Step.ReadNextStep());
}

void NightJob::endNight() {
    if (!events_.OnAutoStartDone) {
        log_.AddLog(QStringLiteral("OnAutoStartDone was not assigned in DoOnTimer"));
        return;
    }
    try {
        events_.OnAutoStartDone(sender_);
    } catch (...) {
    }
}

}  // namespace torvik

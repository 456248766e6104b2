#include "engine/run/settlement_run.h"

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/run/failure_event.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "logging/logger.h"

namespace torvik {

namespace {

// Bit of Ik_Properties: settlements of the department are not fetched.
constexpr qint64 kNotFetched = 4;

bool hasNumber(const TillIdentity& till) {
    bool isNumber = false;
    (void)till.Avdelingsnummer.toInt(&isNumber);
    return isNumber;
}

// The status sorts by department number, so a department without one has no row there.
void giveStatusRow(RunParts& parts, const TillIdentity& till) {
    if (hasNumber(till)) {
        if (parts.Status)
            parts.Status->SetStatus(till.Ik_Ku_Id, till.Avdelingsnummer, till.Ku_Adresse1, till.Kassenummer,
                                    ostDoNotSet, oksNull, {}, QTime(), -1);
        return;
    }
    GlobalLogger().LogWarning(
        QStringLiteral("Kasse {Kassenummer} vises ikke i statusen, fordi avdelingsnummer {Avdeling} ikke er et tall"),
        {till.Kassenummer, till.Avdelingsnummer});
    parts.Log.AddLog(QStringLiteral("Kasse %1 vises ikke i statusen, fordi avdelingsnummer %2 ikke er et tall")
                         .arg(till.Kassenummer, till.Avdelingsnummer),
                     false, kls_Warning);
}

// Opens what the walk needs and gives every till its status row.
void prepare(RunParts& parts) {
    parts.Office.Begin();
    parts.Items.Load();

    parts.Roster.Close();
    parts.Roster.Open();
    db::Query& tills = parts.Roster.Qry();
    parts.Log.AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(tills.RecordCount()));
    GlobalLogger().LogDebug(QStringLiteral("Oppgjør skal hentes for {Kasse_antall} kasser"), {tills.RecordCount()});

    if (parts.Status) parts.Status->Clear();
    for (; !tills.Eof(); tills.Next()) {
        const TillIdentity till = TillIdentity::Of(tills);
        giveStatusRow(parts, till);
    }
    tills.First();
    if (parts.Status) parts.Status->Refresh();
    parts.Context.Seam.pumpMessages();
    parts.Log.AddToLogItems = true;
}

bool isNotFetched(const TillIdentity& till) {
    return (till.Ik_Properties & kNotFetched) != 0;
}

bool isLeftOut(RunParts& parts, const TillIdentity& till) {
    if (!isNotFetched(till)) return false;
    GlobalLogger().LogWarning(
        QStringLiteral("Henter ikke oppgjør for avdeling {Avdeling} kasse {Kassenummer}, fordi den er satt opp slik at "
                       "den ikke hentes (ik_properties)"),
        {till.Avdelingsnummer, till.Kassenummer});
    parts.Log.AddLog(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den er satt opp slik at den ikke "
                                    "hentes (ik_properties)")
                         .arg(till.Avdelingsnummer, till.Kassenummer));
    return true;
}

// Before anything is moved, since what is moved is told in the status.
void requireNumber(const TillIdentity& till) {
    if (!hasNumber(till))
        throw EngineError(QStringLiteral("Avdelingsnummer %1 er ikke et tall").arg(till.Avdelingsnummer));
}

void fetch(TillVisit& visit) {
    const TillIdentity& till = visit.Till;
    const TillConnection::Busy busy = visit.Connection.SourceBusy();
    if (busy == TillConnection::Busy::OpenTransactions) {
        throw EngineError(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den er i en transaksjon. "
                                         "Kanskje kasseoppgjøret ikke er avsluttet")
                              .arg(till.Avdelingsnummer, till.Kassenummer));
    }
    if (busy == TillConnection::Busy::TemporarySettlements) {
        throw EngineError(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den har midlertidige oppgjør "
                                         "(OP_TYPE=MIDLERTIDIG)")
                              .arg(till.Avdelingsnummer, till.Kassenummer));
    }
    if (!visit.Context.Events.OnFetchTill)
        throw EngineError(QStringLiteral("OnFetchTill finnes ikke i dette programmet"));
    visit.Context.Events.OnFetchTill(visit);
}

void reportFailure(RunParts& parts, const TillIdentity& till, const std::exception& failure) {
    LogTillFailure(QStringLiteral("Feil ved innhenting av oppgjør for avdelingsnummer {Avdeling} kassenummer "
                                  "{Kassenummer}: {Feilmelding}"),
                   till, failure);
    parts.Log.AddLog(QStringLiteral("Feil i ExecuteOppgjor for avd. %1, kasse %2. Se feil nedenfor")
                         .arg(till.Avdelingsnummer, till.Kassenummer),
                     true);
    parts.Log.AddLog(ErrorText(failure), true);
}

TillWalkPlan planOf(RunParts& parts, NightShare* share) {
    return {
        .Wait = TillWalkPlan::Waiting::BetweenDepartments,
        .ReopensBackOffice = true,
        .CancelEndsStatements = true,
        .ResolvesFirst = false,  // the fetch does, behind its first line
        .ShowsLogs = true,
        .Share = share,
        .LogsInAhead = true,
        .LeavesOut =
            [&](const TillIdentity& till) {
                if (isLeftOut(parts, till)) return true;
                requireNumber(till);
                return false;
            },
        .NotAhead = [](const TillIdentity& till) { return isNotFetched(till) || !hasNumber(till); },
        .Unreachable =
            [](const TillIdentity& till) {
                // The lone bracket is required.
                std::throw_with_nested(
                    EngineError(QStringLiteral("Klarte ikke å koble til avdelingsnummer %1 kassenummer %2)")
                                    .arg(till.Avdelingsnummer, till.Kassenummer)));
            },
        .Work = fetch,
        .Failed = [&](const TillIdentity& till, const std::exception& failure) { reportFailure(parts, till, failure); },
        .ProgressText =
            [](const TillIdentity& till, int done, int count) {
                // "fullført" also stands for a till that failed.
                return QStringLiteral("AvdID %1, KasseNr %2 fullført. Hentet oppgjør fra %3 av %4 kasser")
                    .arg(QString::number(till.Ik_Ku_Id), till.Ikk_Kassenummer, QString::number(done),
                         QString::number(count));
            },
        .MovedOn =
            [&] {
                // The row has moved on: this names the next till, and the last one twice.
                parts.Log.AddLog(QStringLiteral("Hentet oppgjør fra avd. %1, kasse %2. ")
                                     .arg(parts.Roster.Avdelingsnummer(), parts.Roster.Ikk_Kassenummer()));
            },
    };
}

}  // namespace

void ExecuteOppgjor(RunParts& parts, NightShare* share) {
    parts.Log.AddToLogItems = false;
    parts.Log.AddLog(QStringLiteral("STARTER oppgjør"));
    GlobalLogger().LogInformation(QStringLiteral("Starter innhenting av oppgjør "));
    parts.Control.Begin();
    try {
        prepare(parts);
        TillWalk(parts, planOf(parts, share)).Run();
        parts.Log.AddToLogItems = false;
        parts.Log.AddLog(QStringLiteral("Fullført oppgjør"));
        GlobalLogger().LogInformation(QStringLiteral("Fullført innhenting av oppgjør for {Kasse_antall} kasser"),
                                      {parts.Roster.Qry().RecordCount()});
        parts.Log.SaveOppgjorLog();
    } catch (const std::exception& failure) {
        GlobalLogger().LogError(QStringLiteral("En feil oppstod ved innhenting av oppgjør: {Feilmelding}"),
                                {ErrorText(failure)});
        parts.Log.AddLog(QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: %1").arg(ErrorText(failure)), true);
    }
}

}  // namespace torvik

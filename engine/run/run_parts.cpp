#include "engine/run/run_parts.h"

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/status/show_kasse_logs.h"

namespace torvik {

RunParts::RunParts(const EngineContext& context, TTorvikPos& engine)
    : Context(context),
      Roster(context, engine, nullptr),
      Log(context, Roster),
      Office(context),
      Till(context, Roster, Log),
      Control(context, Log),
      Items(context, Office, Log),
      Step(Office, Log),
      Reconnect(context, Office, Roster),
      Status(std::make_unique<TfraOppgjorStatus>()) {}

RunParts::~RunParts() = default;

void RunParts::SetTargetConnection(db::Session* value) {
    Office.SetConnection(value);
    Roster.SetTargetSession(value);
}

bool RunParts::ConnectSource() {
    return Till.ConnectSource([this](qint64 left) { Control.WaitRetryTime(left); });
}

TillVisit RunParts::Visit() {
    return {.Till = TillIdentity::Of(Roster.Qry()),
            .TillSession = Till.Session(),
            .OfficeSession = Office.Session(),
            .DbVersion = Till.VersionIsCurrent() ? Till.DbVersion() : QString(),
            .Connection = Till,
            .Office = Office,
            .Items = Items,
            .Log = Log,
            .Control = Control,
            .Status = Status.get(),
            .Roster = Roster,
            .Context = Context};
}

void RunParts::ShowKasseLogs() {
    if (!Roster.KasseCollection()) return;
    torvik::ShowKasseLogs(false, *Roster.KasseCollection(), true, Status.get(), Context.Options.Tasks);
}

// A session that is gone tells which end a lost connection was to.
void RunParts::KeepFailure(const TillIdentity& till, const std::exception& failure) {
    if (!Status) return;
    TillFailure kept{.At = Context.Seam.now(), .Facts = FactsOf(failure)};
    kept.OfficeLost = kept.Facts.Kind == FailureKind::ConnectionLost && Office.Connection() != nullptr &&
                      !Office.Connection()->Connected();
    Status->AddFailure(till.Avdelingsnummer, till.Kassenummer, kept);
}

void RunParts::Execute(const RunOperation& operation, const char16_t* name) {
    if (!operation) throw EngineError(QString::fromUtf16(name) + QStringLiteral(" finnes ikke i dette programmet"));
    operation(*this);
}

}  // namespace torvik

#include "engine/run/night_share.h"

#include <QTime>

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/session.h"
#include "engine/office/undecided_pair.h"
#include "engine/run/run_parts.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kRoundMs = 1000;
constexpr qint64 kBetweenLooksMs = 5000;
// So long another copy may be at one till when nothing else is left to do.
constexpr qint64 kLongestWaitMs = 15 * 60 * 1000;

std::pair<int, QString> keyOf(const TillIdentity& till) {
    return {till.Ik_Ku_Id, till.Kassenummer};
}

}  // namespace

NightShare::NightShare(RunParts& parts, SharedNight night, Role role)
    : parts_(parts), rows_(parts.Office), night_(std::move(night)), role_(role), othersServe_(role == Role::Helps) {}

QString NightShare::QuestionOf(const TillIdentity& till) const {
    return SharedNights::QuestionOf(night_, till.Ik_Ku_Id, till.Kassenummer);
}

void NightShare::LookWhoIsFetched() noexcept {
    try {
        const qint64 now = parts_.Context.Seam.tickCount();
        if (!othersServe_ || (looked_ >= 0 && now - looked_ < kBetweenLooksMs)) return;
        looked_ = now;
        fetched_ = rows_.Fetched(night_);
    } catch (const std::exception&) {
        // A till may be logged in to for nothing.
    }
}

bool NightShare::KnowsAsFetched(const TillIdentity& till) const {
    return fetched_.contains(keyOf(till));
}

NightShare::Turn NightShare::TurnAt(const TillIdentity& till, bool held, const QStringList& answer) {
    const TillMarks marks = SharedNights::MarksIn(night_, answer);
    othersAreAtTills_ = othersAreAtTills_ || !held;
    othersServe_ = othersServe_ || !held || marks.End;
    return role_ == Role::Leads ? leadingTurn(till, held, marks) : helpingTurn(till, held, marks);
}

// A till that another copy has failed at is served here: the leading copy's log tells what it is about.
NightShare::Turn NightShare::leadingTurn(const TillIdentity& till, bool held, const TillMarks& marks) {
    if (marks.End && marks.End->kind != VisitEnd::Kind::Failed && !visited_.contains(keyOf(till))) {
        tellFetched(till, *marks.End);
        return Turn::Passed;
    }
    if (!held) return Turn::Taken;
    if (putOff_.contains(keyOf(till)) && marks.PairStands && !last_) return Turn::Taken;
    if (marks.End && !visited_.contains(keyOf(till))) tellFailed(till, *marks.End);
    return Turn::Visit;
}

// A pair that stands can be resolved only by the copy that began it, and a helping copy does not know which pairs are
// its own: so it looks at such a till once, whoever failed there.
NightShare::Turn NightShare::helpingTurn(const TillIdentity& till, bool held, const TillMarks& marks) {
    over_ = !marks.NightStands;
    if (over_ || visited_.contains(keyOf(till))) return Turn::Passed;
    if (marks.End && marks.End->kind != VisitEnd::Kind::Failed) {
        tellFetched(till, *marks.End);
        return Turn::Passed;
    }
    if (marks.End && !marks.PairStands) return Turn::Passed;
    return held ? Turn::Visit : Turn::Taken;
}

void NightShare::tellFetched(const TillIdentity& till, const VisitEnd& end) {
    const bool withErrors = end.kind == VisitEnd::Kind::FetchedWithErrors;
    GlobalLogger().LogInformation(
        withErrors
            ? QStringLiteral("Avdeling {Avdeling} kassenummer {Kassenummer} er hentet av maskin {Maskin}, med feil")
            : QStringLiteral("Avdeling {Avdeling} kassenummer {Kassenummer} er hentet av maskin {Maskin}"),
        {till.Avdelingsnummer, till.Kassenummer, end.machine});
    const QString line = QStringLiteral("Kassen (avd. %1, kasse %2) er hentet av maskin %3")
                             .arg(till.Avdelingsnummer, till.Kassenummer, end.machine);
    if (withErrors)
        parts_.Log.AddLog(line + QStringLiteral(", med feil. Se loggen på den maskinen"), role_ == Role::Leads,
                          kls_Warning);
    else
        parts_.Log.AddLog(line);
    if (parts_.Status)
        parts_.Status->SetStatus(till.Ik_Ku_Id, till.Avdelingsnummer, till.Ku_Adresse1, till.Kassenummer, ostHentet,
                                 oksTrue, QStringLiteral("Hentet av maskin %1").arg(end.machine), QTime(), -1);
}

void NightShare::tellFailed(const TillIdentity& till, const VisitEnd& end) {
    parts_.Log.AddLog(QStringLiteral("Maskin %1 klarte ikke å hente kassen (avd. %2, kasse %3). Prøver herfra")
                          .arg(end.machine, till.Avdelingsnummer, till.Kassenummer),
                      false, kls_Warning);
}

bool NightShare::PutsOff(const TillIdentity& till, const UndecidedPair& failure) {
    if (role_ != Role::Leads || last_ || putOff_.contains(keyOf(till))) return false;
    try {
        if (!rows_.HasHelpers(night_)) return false;
    } catch (const std::exception&) {
        return false;  // the back office is lost: the till's own failure is told
    }
    parts_.Log.AddLog(QStringLiteral("%1 Prøver igjen til slutt").arg(ErrorText(failure)), false, kls_Warning);
    putOff_.insert(keyOf(till));
    return true;
}

void NightShare::VisitEnded(const TillIdentity& till, VisitEnd::Kind kind) noexcept {
    try {
        visited_.insert(keyOf(till));
        if (parts_.Office.Session().Connected()) rows_.EndVisit(night_, till.Ik_Ku_Id, till.Kassenummer, kind);
    } catch (const std::exception&) {
        // The till may be visited once more for nothing.
    }
}

bool NightShare::WaitForOthers(bool changed) {
    if (!std::exchange(othersAreAtTills_, false)) return false;
    const qint64 now = parts_.Context.Seam.tickCount();
    if (changed_ < 0) {
        if (role_ == Role::Leads && !rows_.HasHelpers(night_)) return false;
        parts_.Log.AddLog(QStringLiteral("Venter på kasser som andre maskiner betjener"));
    }
    if (changed || changed_ < 0) changed_ = now;
    if (now - changed_ > kLongestWaitMs) return false;
    parts_.Control.Pause(kRoundMs);
    return true;
}

void NightShare::End() noexcept {
    try {
        if (!parts_.Office.Session().Connected()) parts_.Office.Session().Open();
        rows_.End(night_);
    } catch (const std::exception&) {
    }
}

}  // namespace torvik

// A copy's part in a night that several copies share: which tills it leaves to the others, what it tells of theirs, and
// how long it waits for them. The walk over the tills asks it; the leading copy's night and the helping copy's make
// one. See docs/engine.md.
#pragma once

#include <set>
#include <utility>

#include "engine/office/shared_night.h"

namespace torvik {

class RunParts;
class UndecidedPair;
struct TillIdentity;

class NightShare {
public:
    enum class Role {
        Leads,  // serves every till that no other copy has fetched, and fails those that it cannot have
        Helps   // serves each till at most once, and none that a visit has ended at
    };

    // The parts outlive it.
    NightShare(RunParts& parts, SharedNight night, Role role);
    NightShare(const NightShare&) = delete;
    NightShare& operator=(const NightShare&) = delete;

    enum class Turn {
        Visit,   // it is this copy's
        Passed,  // it is left as it is
        Taken    // it may be this copy's later
    };
    // What is asked along with the till's lock, and what follows from its answer. Tells of a till that another copy has
    // fetched, or failed at.
    [[nodiscard]] QString QuestionOf(const TillIdentity& till) const;
    [[nodiscard]] Turn TurnAt(const TillIdentity& till, bool held, const QStringList& answer);
    // Tills to come that a copy is known to have fetched already, so that nothing is prepared for them: looks once
    // another copy has been met, and again when the last look is some seconds old. Advice only: TurnAt decides. Raises
    // nothing.
    void LookWhoIsFetched() noexcept;
    [[nodiscard]] bool KnowsAsFetched(const TillIdentity& till) const;
    // The night has been ended: a helping copy goes to no till any more.
    [[nodiscard]] bool IsOver() const { return over_; }

    // Whether the till is left for the end of the walk, which is told, since the copy that has left a pair there may
    // resolve it before that. From then on it counts as taken as long as the pair stands.
    [[nodiscard]] bool PutsOff(const TillIdentity& till, const UndecidedPair& failure);
    // A visit of this copy's has ended; called while its lock is still held. Raises nothing: the row is advice.
    void VisitEnded(const TillIdentity& till, VisitEnd::Kind kind) noexcept;

    // Waits a moment for the tills that others are at. False when others are at none, when nobody helps, or when it has
    // waited long enough since anything changed: then what is taken stays so. Raises a cancel.
    [[nodiscard]] bool WaitForOthers(bool changed);
    // The last round: nothing is put off any more.
    void TakesWhatIsLeft() { last_ = true; }
    // Whether a till that stays taken is a failure of this copy's.
    [[nodiscard]] bool FailsWhatIsTaken() const { return role_ == Role::Leads; }

    // The leading copy's fetching is over. Raises nothing; what cannot be removed is removed by the next night.
    void End() noexcept;

private:
    using Till = std::pair<int, QString>;

    [[nodiscard]] Turn leadingTurn(const TillIdentity& till, bool held, const TillMarks& marks);
    [[nodiscard]] Turn helpingTurn(const TillIdentity& till, bool held, const TillMarks& marks);
    void tellFetched(const TillIdentity& till, const VisitEnd& end);
    void tellFailed(const TillIdentity& till, const VisitEnd& end);

    RunParts& parts_;
    SharedNights rows_;
    SharedNight night_;
    Role role_;
    bool othersServe_;  // other copies' visits have been met, or are expected
    std::set<Till> visited_;
    std::set<Till> putOff_;
    std::set<Till> fetched_;         // as of the last look,
    qint64 looked_ = -1;             // at this tick; -1: none yet
    qint64 changed_ = -1;            // tick of the last change that a wait has seen; -1: none has begun
    bool othersAreAtTills_ = false;  // as the tills since the last wait have told
    bool over_ = false;
    bool last_ = false;
};

}  // namespace torvik

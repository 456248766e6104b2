// A transaction at the till and one at the back office that stand or fall together as far as two servers let them: the
// till commits first, then the back office. An intent at the back office and a note on the program's disk prove how it
// ended, so that what a crash leaves half done is taken back when the till is next served (pair_resolution.h).
// TOppgjor makes one for the transfer and one for each settlement. docs/failures.md tells every moment.
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "inbound/pairs/pair_intent.h"
#include "inbound/pairs/pair_notes.h"
#include "inbound/pairs/till_mark.h"

namespace torvik {

// What a pair works with. The sessions are open; all outlive it.
struct PairSides {
    db::Session& till;
    db::Session& backOffice;
    int Ik_Ku_Id = 0;
    QString KasseNr;
    bool IsEnterprise = false;  // which mark tells that a settlement is done
    const PairNotes& notes;
    std::function<void(const QString& text, bool isError)> log;  // the operator's
};

class TransactionPair {
public:
    enum class State {
        NotBegun,
        Open,       // both transactions are
        Neither,    // nothing stands on either side
        Both,       // all stands on both
        TillAhead,  // the till has committed and the back office has not
        Undecided   // a commit got no answer, and none could be had
    };

    // `subject` is what the pair takes, in the operator's words.
    TransactionPair(PairSides sides, const QString& subject);
    ~TransactionPair();  // rolls back what is open
    TransactionPair(const TransactionPair&) = delete;
    TransactionPair& operator=(const TransactionPair&) = delete;

    [[nodiscard]] State state() const { return state_; }

    // Commits the intent, then begins both transactions, the till's by `onTill` where one is given. What fails leaves
    // neither, nor the intent.
    void begin(const std::function<void()>& onTill = {});

    // What is about to be committed on the till; told before commit.
    void add(const TillMark& mark) { note_.marks.push_back(mark); }
    void setSettlement(const std::optional<NotedSettlement>& settlement) { note_.settlement = settlement; }

    // Commits both; the log lines come after both. Raises what failed: state() tells what stands.
    void commit();

    enum class RollbackLines {
        WithFailure,  // each side's line repeats the failure
        Bare          // it does not; a side that could not be rolled back says why instead
    };
    // Both sides, the back office first, and the lines about it. A side without a transaction counts as one that could
    // not be rolled back. Raises nothing.
    void rollBack(const QString& failure, RollbackLines lines = RollbackLines::WithFailure);

private:
    enum class Found { Committed, NotCommitted, Nothing };

    void requireBoth();
    void commitTill();
    [[nodiscard]] Found lookAtTill() const;
    void rollBackSide(db::Session& side, const QString& done, const QString& failure, RollbackLines lines);
    void rollBackQuietly() noexcept;
    void forget() noexcept;

    PairSides sides_;
    PairIntents intents_;
    PairNote note_;
    State state_ = State::NotBegun;
};

}  // namespace torvik

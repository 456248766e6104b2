#include "inbound/pairs/transaction_pair.h"

#include <QSysInfo>
#include <algorithm>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/db/session.h"
#include "inbound/pairs/lock_wait.h"

namespace torvik {

namespace {

const QString kTillStarted = QStringLiteral("Transaksjon startet for kildedatabase");
const QString kBackOfficeStarted = QStringLiteral("Transaksjon startet for måldatabase");
const QString kTillCommitted = QStringLiteral("Transaksjon commit for kildedatabase");
const QString kBackOfficeCommitted = QStringLiteral("Transaksjon commit for måldatabase");
const QString kTillRolledBack = QStringLiteral("Transaksjon rollback for kildedatabase");
const QString kBackOfficeRolledBack = QStringLiteral("Transaksjon rollback for måldatabase");
const QString kMarked = QStringLiteral("<<<  %1 >>>");

}  // namespace

TransactionPair::TransactionPair(PairSides sides, const QString& subject)
    : sides_(std::move(sides)), intents_(sides_.backOffice, sides_.Ik_Ku_Id, sides_.KasseNr) {
    note_.intent = {QUuid::createUuid(), subject, sides_.notes.storeId(), QSysInfo::machineHostName(), {}};
    note_.Ik_Ku_Id = sides_.Ik_Ku_Id;
    note_.KasseNr = sides_.KasseNr;
}

TransactionPair::~TransactionPair() {
    if (state_ != State::Open) return;
    rollBackQuietly();
    forget();
}

void TransactionPair::begin(const std::function<void()>& onTill) {
    intents_.write(note_.intent);
    try {
        onTill ? onTill() : sides_.till.StartTransaction();
        sides_.log(kTillStarted, false);
        sides_.backOffice.StartTransaction();
    } catch (...) {
        rollBackQuietly();
        state_ = State::Neither;
        forget();
        throw;
    }
    state_ = State::Open;
    sides_.log(kBackOfficeStarted, false);
}

// The till first: what the back office then fails to commit is taken back on the till, and fetched again. From the
// till's commit to the back office's answer nothing else is done, so that as little as possible can come between.
void TransactionPair::commit() {
    if (!intents_.strike(note_.intent))
        throw EngineError(QStringLiteral("Raden i dts_logg for paret er borte (%1)").arg(note_.intent.subject));
    // Writing durably costs more than all else of a till that has nothing to fetch.
    if (!note_.marks.empty()) sides_.notes.write(note_);
    requireBoth();

    commitTill();
    state_ = State::TillAhead;
    try {
        sides_.backOffice.Commit();
    } catch (const db::CommitInDoubt&) {
        state_ = State::Undecided;
        sides_.log(kTillCommitted, false);
        throw;
    } catch (...) {
        sides_.log(kTillCommitted, false);
        throw;
    }
    state_ = State::Both;
    sides_.notes.remove(note_.intent.id);
    sides_.log(kTillCommitted, false);
    sides_.log(kBackOfficeCommitted, false);
}

// A session that was lost, or a transaction that its server has ended, is found while neither side is committed.
void TransactionPair::requireBoth() {
    const auto require = [](db::Session& side, const QString& name) {
        if (!side.StillInTransaction()) throw EngineError(QStringLiteral("Transaksjonen for %1 er brutt").arg(name));
    };
    require(sides_.till, QStringLiteral("kildedatabase"));
    require(sides_.backOffice, QStringLiteral("måldatabase"));
}

// A commit whose answer was lost is looked up at once, while the back office can still do either.
void TransactionPair::commitTill() {
    try {
        sides_.till.Commit();
    } catch (const db::CommitInDoubt&) {
        const Found found = lookAtTill();
        if (found == Found::Committed) return;
        if (found == Found::Nothing) state_ = State::Undecided;
        throw;
    }
}

// On a session of its own, since the till's is lost. What the lost one may still hold makes this wait; held longer, it
// is not known. A pair without marks changes nothing on the till, so either answer is right.
TransactionPair::Found TransactionPair::lookAtTill() const {
    if (note_.marks.empty()) return Found::Committed;
    try {
        db::Session session;
        session.SetConnectString(sides_.till.ConnectString());
        session.Open();
        const LockWait shortWait(session);
        session.StartTransaction();
        const bool committed = std::any_of(note_.marks.begin(), note_.marks.end(),
                                           [&session](const TillMark& mark) { return stands(mark, session); });
        session.Rollback();
        return committed ? Found::Committed : Found::NotCommitted;
    } catch (const std::exception&) {
        return Found::Nothing;
    }
}

void TransactionPair::rollBack(const QString& failure, RollbackLines lines) {
    sides_.log(kMarked.arg(failure), true);
    rollBackSide(sides_.backOffice, kBackOfficeRolledBack, failure, lines);
    rollBackSide(sides_.till, kTillRolledBack, failure, lines);
    if (state_ != State::Open) return;
    state_ = State::Neither;
    forget();
}

void TransactionPair::rollBackSide(db::Session& side, const QString& done, const QString& failure,
                                   RollbackLines lines) {
    const bool bare = lines == RollbackLines::Bare;
    try {
        if (!side.InTransaction()) throw EngineError(QStringLiteral("Ingen transaksjon"));
        side.Rollback();
        sides_.log(bare ? done : QStringLiteral("%1. %2").arg(done, failure), true);
    } catch (const std::exception& e) {
        sides_.log(kMarked.arg(bare ? ErrorText(e) : failure), bare);
    }
}

void TransactionPair::rollBackQuietly() noexcept {
    for (db::Session* side : {&sides_.backOffice, &sides_.till}) {
        try {
            side->Rollback();
        } catch (const std::exception&) {
        }
    }
}

// Neither side stands. The note goes first: an intent without one says that the till's commit was never reached. What
// cannot be struck out now is struck out when the till is next served.
void TransactionPair::forget() noexcept {
    sides_.notes.remove(note_.intent.id);
    try {
        if (sides_.backOffice.Connected()) intents_.strike(note_.intent);
    } catch (const std::exception&) {
    }
}

}  // namespace torvik

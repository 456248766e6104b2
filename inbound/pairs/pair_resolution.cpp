#include "inbound/pairs/pair_resolution.h"

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/office/undecided_pair.h"
#include "inbound/pairs/lock_wait.h"
#include "inbound/pairs/pair_evidence.h"
#include "logging/logger.h"

namespace torvik {

namespace {

// A transaction that is rolled back unless it was committed.
class Transaction {
public:
    explicit Transaction(db::Session& session) : session_(session) { session_.StartTransaction(); }
    ~Transaction() {
        if (committed_) return;
        try {
            session_.Rollback();
        } catch (const std::exception&) {
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit() {
        session_.Commit();
        committed_ = true;
    }

private:
    db::Session& session_;
    bool committed_ = false;
};

class Resolution {
public:
    Resolution(const PairSides& sides, const QString& avdeling, const PairDecisionHandler& decide)
        : sides_(sides),
          avdeling_(avdeling),
          decide_(decide),
          intents_(sides.backOffice, sides.Ik_Ku_Id, sides.KasseNr) {}

    void run() {
        const QUuid store = sides_.notes.storeId();
        for (const PairIntent& intent : intents_.standing()) {
            if (intent.store != store)
                decideAbout(intent);
            else if (const auto note = sides_.notes.read(intent.id))
                takeBack(*note);
            else
                strike(intent, QStringLiteral("Kassen var ikke merket, så ingenting er tatt tilbake."));
        }
        forgetCommitted();
    }

private:
    // The till's commit was never reached or had marked nothing, or the operator lets it stand.
    void strike(const PairIntent& intent, const QString& outcome) {
        Transaction atBackOffice(sides_.backOffice);
        if (!intents_.standsForCertain(intent)) return;
        intents_.strike(intent);
        atBackOffice.commit();
        tell(intent, outcome, false);
    }

    // The intent is locked meanwhile, so that nobody else does the same. It is struck out last: done twice, the second
    // time finds no mark that stands.
    void takeBack(const PairNote& note) {
        Transaction atBackOffice(sides_.backOffice);
        if (!intents_.standsForCertain(note.intent)) return;
        const auto [outcome, isWarning] = takeBackOnTill(note);
        intents_.strike(note.intent);
        atBackOffice.commit();
        sides_.notes.remove(note.intent.id);
        tell(note.intent, outcome, isWarning);
    }

    [[nodiscard]] std::pair<QString, bool> takeBackOnTill(const PairNote& note) {
        const LockWait shortWait(sides_.till);
        Transaction onTill(sides_.till);
        if (note.settlement && !has(*note.settlement, sides_.till))
            return {QStringLiteral("Kassen er nullstilt eller gjenopprettet siden: oppgjør %1 (%2) finnes ikke. "
                                   "Ingenting er tatt tilbake på kassen.")
                        .arg(QString::number(note.settlement->id), note.settlement->time),
                    true};
        qsizetype taken = 0;
        for (const TillMark& mark : note.marks) {
            // The time of release goes back with the entries that it released.
            if (mark.kind == TillMark::Kind::ReleaseTime && taken == 0) continue;
            taken += torvik::takeBack(mark, sides_.till);
        }
        onTill.commit();
        if (taken == 0) return {QStringLiteral("Kassen var ikke merket, så ingenting er tatt tilbake."), false};
        return {QStringLiteral("Kassen var alene om det: %1 av %2 merker er tatt tilbake, og det hentes på nytt.")
                    .arg(QString::number(taken), QString::number(note.marks.size())),
                true};
    }

    void decideAbout(const PairIntent& intent) {
        const PairEvidence evidence = gatherEvidence(intent, sides_);
        const PairQuestion question{avdeling_,    sides_.KasseNr, intent.subject,      intent.machine,
                                    intent.began, evidence.till,  evidence.backOffice, evidence.canTakeBack};
        switch (decide_ ? decide_(question) : PairDecision::Refuse) {
            case PairDecision::TakeBack:
                if (!evidence.canTakeBack) break;
                tell(intent, QStringLiteral("Operatøren har valgt å ta merkene tilbake."), true);
                return takeBack(evidence.note);
            case PairDecision::LetStand:
                return strike(intent, QStringLiteral("Operatøren har valgt å la kassen stå som den er."));
            case PairDecision::Refuse: break;
        }
        throw UndecidedPair(
            QStringLiteral("Kassen (avd. %1, kasse %2) betjenes ikke, fordi maskin %3 ikke har fullført %4 som "
                           "ble begynt %5. Kjør programmet på den maskinen først")
                .arg(avdeling_, sides_.KasseNr, intent.machine, intent.subject, intent.began));
    }

    // A note whose intent is gone is one whose pair stands on both sides: the program ended before it removed the note.
    void forgetCommitted() {
        for (const PairNote& note : sides_.notes.ofTill(sides_.Ik_Ku_Id, sides_.KasseNr)) {
            const Transaction asked(sides_.backOffice);
            if (!intents_.standsForCertain(note.intent)) sides_.notes.remove(note.intent.id);
        }
    }

    void tell(const PairIntent& intent, const QString& outcome, bool isWarning) {
        sides_.log(QStringLiteral("Avbrutt %1 fra %2 er avklart. %3").arg(intent.subject, intent.began, outcome),
                   false);
        const QString event =
            QStringLiteral("Avbrutt {Hva} for avdeling {Avdeling} kassenummer {Kassenummer} er avklart: {Utfall}");
        if (isWarning)
            GlobalLogger().LogWarning(event, {intent.subject, avdeling_, sides_.KasseNr, outcome});
        else
            GlobalLogger().LogInformation(event, {intent.subject, avdeling_, sides_.KasseNr, outcome});
    }

    const PairSides& sides_;
    const QString& avdeling_;
    const PairDecisionHandler& decide_;
    PairIntents intents_;
};

}  // namespace

void resolveStandingPairs(const PairSides& sides, const QString& avdeling, const PairDecisionHandler& decide) {
    Resolution(sides, avdeling, decide).run();
}

}  // namespace torvik

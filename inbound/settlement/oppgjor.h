// Fetches one till's settlements: the raw transfer once, in a pair of transactions (SettlementTransfer), and then the
// till's open settlements one at a time, each posted and marked done in a pair of its own (SettlementPosting). The
// settlement run makes one for the till of its walk and runs it once. docs/settlements.md tells the whole.
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>

#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/run/till_visit.h"
#include "inbound/pairs/pair_resolution.h"
#include "inbound/pairs/till_pairs.h"
#include "inbound/settlement/settlement_posting.h"
#include "inbound/settlement/settlement_transfer.h"
#include "inbound/settlement/till_status.h"

namespace torvik {

class TOppgjor;

// What other boxes do within the walk, and where the program keeps what its pairs of transactions note.
struct OppgjorJoinPoints {
    std::function<int(TOppgjor&)> DaysSinceLastBackup;  // -1, as when it is not set: not known
    QString NoteFolder;                                 // beside the program unless set
    PairDecisionHandler DecidePair;                     // an operator's word on a pair of another machine
};

class TOppgjor : public QObject {
    Q_OBJECT

public:
    // Owned by the roster; the till is connected to.
    explicit TOppgjor(const TillVisit& visit, OppgjorJoinPoints joinPoints = {});

    bool IncludeLastBackupStatus = false;
    [[nodiscard]] int NumDaysSinceLastBackup();

    // The ids of the till's open settlements, as text.
    void GetList(QStringList& List);

    // Raises what failed, after both transactions have been rolled back.
    void Execute();

    [[nodiscard]] const TillVisit& Visit() const { return visit_; }

private:
    [[nodiscard]] db::DataSet& openList(db::PlannedReads& reads);
    void readLastBackup();
    void reportEnd(int fetched);

    TillVisit visit_;
    OppgjorJoinPoints joinPoints_;
    db::Query FqryGeneralTarget;    // of both phases: what the first leaves in it runs with the second's clearing
    db::Query FqryOppgjor;          // the open settlements
    db::Query FqryOppgjorBetaling;  // built, and opened by nothing
    TillStatus status_;
    TillPairs pairs_;
    SettlementTransfer transfer_;
    SettlementPosting posting_;
};

}  // namespace torvik

// Fetches one till's settlements: the raw transfer once, in a pair of transactions, and then the till's open
// settlements one at a time, each posted and marked done in a pair of its own. The settlement run makes one for the
// roster's current till and runs it once. docs/settlements.md tells the whole.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <functional>

#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"

namespace torvik {

class TAvdeling;
class TButikksalg;
class TTorvikPos;
class TOppgjor;

// What other boxes do within the walk.
struct OppgjorJoinPoints {
    std::function<int(TOppgjor&)> DaysSinceLastBackup;  // -1, as when it is not set: not known
};

class TOppgjor : public QObject {
    Q_OBJECT

public:
    // Owned by the roster, whose current row is the till; the till is connected to.
    TOppgjor(TAvdeling& avdeling, OppgjorJoinPoints joinPoints = {});

    bool IncludeLastBackupStatus = false;
    [[nodiscard]] int NumDaysSinceLastBackup();

    // The ids of the till's open settlements, as text.
    void GetList(QStringList& List);

    // Raises what failed, after both transactions have been rolled back.
    void Execute();

    // The steps of Execute that go with other pages: credit orders for the list's current settlement, and what has
    // changed of gift cards and credit notes where the run's options include them. They need Execute's transactions.
    void CreateCreditOrders();
    void ImportGavekort();
    void ImportTilgodelapp();

    [[nodiscard]] TAvdeling& Roster() const { return Avdeling; }
    [[nodiscard]] TTorvikPos& TorvikPos() const { return torvikPos_; }
    // The list of settlements, on the row being posted.
    [[nodiscard]] db::Query& qryOppgjor() { return FqryOppgjor; }
    [[nodiscard]] db::Query& qryGeneralTarget() { return FqryGeneralTarget; }
    [[nodiscard]] db::Query& qryGeneralSource() { return FqryGeneralSource; }

private:
    // Phase one: oppgjor_transfer.cpp.
    void readLastSettlement();
    void reportUnsettledSales();
    void openList();
    void transfer();
    void runDataModule();
    void commitTransfer();
    void readLastBackup();
    // Phase two: oppgjor_posting.cpp.
    void postOpenSettlements();
    void postSettlement();
    void invoiceCreditSales();
    void postStoreSales();
    void ClearBeholdningstransaksjoner();
    void MarkOppgjorDone();
    void reportEnd();
    // A single back office's own registers: oppgjor_single.cpp.
    void UpdateAnsatte();
    void SeedPosOppgjor();

    // Transactions on the pair of sessions, and their log lines. A pair that cannot be started leaves none open, and
    // is told by its error alone.
    void startTransactions();
    void commitTransactions();
    void rollbackTransactions(const std::exception& failure);

    // elapsed: the time since Execute began, unless given.
    void setStatus(TOKStatus value, TOppgjorStatusType kind, const QString& melding = {}, QTime elapsed = {});
    [[nodiscard]] QString avd() const;
    [[nodiscard]] QString till() const;
    [[nodiscard]] QString address() const;
    [[nodiscard]] int ikKuId() const;

    TAvdeling& Avdeling;
    TTorvikPos& torvikPos_;
    OppgjorJoinPoints joinPoints_;
    db::Query FqryGeneralTarget;
    db::Query FqryGeneralSource;
    db::Query FqryOppgjor;
    db::Query FqryOppgjorBetaling;
    TButikksalg* Butikksalg;  // owned
    int FileNameID = 0;
    int daysSinceBackup_ = -1;
    int fetched_ = 0;
    QElapsedTimer elapsed_;
};

}  // namespace torvik

// The data module that brings one till up to date from the back office: the steps of exports/send_steps.h, one after
// the other, on two sessions that it is given open. It begins no transaction: what has been merged when a step fails
// stays, and the next send goes on from there. One object serves all tills of a walk, one after the other.
// docs/sending.md.
#pragma once

#include <QDateTime>
#include <QObject>
#include <functional>
#include <memory>

#include "engine/db/bulk_loader.h"
#include "engine/db/query.h"
#include "engine/db/stored_proc.h"
#include "outbound/driver/office_reads.h"
#include "outbound/driver/send_progress.h"
#include "outbound/driver/session_id.h"
#include "outbound/driver/till_batches.h"
#include "outbound/driver/till_tables.h"
#include "outbound/shape/action.h"

namespace torvik {

class TdmTorvikToPOS : public QObject {
    Q_OBJECT

public:
    explicit TdmTorvikToPOS(QObject* owner = nullptr);

    // The back office's session and the till's. (The engine names its two the other way round.)
    [[nodiscard]] db::Session* SourceConnection() const { return sourceConnection_; }
    void SetSourceConnection(db::Session* value);
    [[nodiscard]] db::Session* DestinationConnection() const { return destinationConnection_; }
    void SetDestinationConnection(db::Session* value);

    int Ik_Ku_ID = 0;  // the department's customer id
    QString KasseNr;
    bool SendPriceAndCustomer = false;
    bool DeleteItem = false;   // Execute turns it off where the back office names no replacement item
    bool SendVouchers = true;  // false: gift cards and credit notes stay as the till has them
    TItemUpdateSelection ItemUpdateSelection = iusChanged;
    int DagerSidenEndring = 30;  // days back for the filters of what has changed
    // From the back office's settings, read by the first Execute of the object.
    [[nodiscard]] bool SendCurrency() const { return sendCurrency_; }
    [[nodiscard]] const QString& ReplaceItemNumber() const { return replaceItemNumber_; }

    bool CheckForCancel = false;  // the next progress report raises the cancel error
    TProgressEvent OnProgress;
    std::function<void(const QString&)> OnLog;  // a line of the operator's log; none: nothing is logged
    std::function<QDateTime()> Now = [] { return QDateTime::currentDateTime(); };
    std::function<int()> RandomSessionID;  // 0 to 4999
    // Called again and again during a bulk load, so that a window stays alive. It must leave both sessions alone.
    std::function<void()> OnIdle;
    // What need not go by itself goes in one round trip (docs/sending.md).
    bool ReadsTogether = true;

    // The name of the running step, and behind a failure of the failed one.
    [[nodiscard]] const QString& CurrentTransformation() const { return progress_.CurrentTransformation(); }
    [[nodiscard]] const QString& SessionID() const { return sessionId_; }

    // Sends to the till that the properties tell. A failure of a step is raised as EngineError "TorvikToPOS failed:
    // ...", with the first failure nested; the back office's settings and the session id stand outside that.
    void Execute();
    // Writes "TorvikToPosLog.txt" in the working directory, always empty: nothing adds to it.
    void SaveLog() const;

private:
    void runStep(int number, const Actions& what);
    void leaveStep() noexcept;  // behind a failure, whose text stays the one that is told
    [[nodiscard]] SendFacts facts() const;

    // One for each action.
    void run(const SetTransformation& action);
    void run(const StartClock& action);
    void run(const Report& action);
    void run(const CreateTables& action);
    void run(const DropTable& action);
    void run(const LoadTable& action);
    void run(const CopyRows& action);
    void run(const EditOneRow& action);
    void run(const TillBatch& action);
    void run(const BuiltTillBatch& action);
    void run(const BackOfficeBatch& action);
    void run(const Install& action);
    void run(const Run& action);
    void run(const AskForTable& action);
    void run(DriverTask task);

    void GetGlobalVariables();
    void drawSessionID();
    void beginTill();
    void callKasseVareAlle();
    void askBackOffice();

    void openSource(const QString& sql);
    [[nodiscard]] db::DataSet& openRegister(const QString& sql, ReadWith group);
    void LogTransferDone(const QString& name, int count);
    void logTransfer(const QString& name, int count, const QDateTime& started);

    db::Session* sourceConnection_ = nullptr;
    db::Session* destinationConnection_ = nullptr;
    bool sendCurrency_ = false;
    QString replaceItemNumber_;
    QString sessionId_;
    std::unique_ptr<SendSessionID> heldSessionId_;  // while a send lasts
    int torvikPosVersion_ = 0;
    std::set<std::string> tillTables_;
    TillTables tables_;
    OfficeReads registers_;
    QDateTime transferStartTime_;
    SendProgress progress_{*this, OnProgress, CheckForCancel};

    db::Query qrySource;
    db::StoredProc spKasseVareAlle;
    db::Query qryGetGlobalVariables;
    TillBatches qryTarget;
    db::Query qryTarget1;
    db::BulkLoader ldrGeneral;
};

}  // namespace torvik

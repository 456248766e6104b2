// The engine: the roster, the two sessions, the run options that the window sets, the timer of the automatic run, the
// wait and cancel policy and the visible logs. Every run is a method of it or is handed it. "Target" is the back
// office's database and "source" that of the till being served, whichever way the data goes. Main thread only; what it
// needs of the boxes above comes in through the On... callbacks.
//
// Implemented by concern: torvik_pos.cpp (life), connecting.cpp, waiting_and_cancel.cpp, add_log.cpp,
// reference_tables.cpp, target_helpers.cpp, settlement_run.cpp, target_reconnect.cpp, night_job.cpp,
// show_kasse_logs.cpp.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QTimer>
#include <exception>
#include <memory>
#include <optional>

#include "engine/base/seams.h"
#include "engine/base/torvik_pos_types.h"
#include "engine/log/log_pane.h"
#include "engine/roster/avdeling.h"
#include "engine/roster/kasse_collection.h"

namespace torvik {

namespace db {
class MemTable;
class Session;
}  // namespace db
class TThreadCollection;
class TfraOppgjorStatus;

class TTorvikPos : public QObject {
    Q_OBJECT

public:
    explicit TTorvikPos(QObject* owner = nullptr, Seams seams = {});
    ~TTorvikPos() override;

    // --- Surroundings -------------------------------------------------------------------------------------------

    Seams Seam;
    db::Session* SourceConnection = nullptr;  // the current till's, re-pointed for each till; not owned
    // The back office's; not owned. The general query follows it.
    [[nodiscard]] db::Session* TargetConnection() const { return FTargeTMSConnection; }
    void SetTargetConnection(db::Session* value);

    ILogPane* Log = nullptr;  // a pane of the engine's own until the window gives its own
    ILogPane* ErrorLog = nullptr;
    QStringList* NonVisualLog = nullptr;
    QStringList* NonVisualErrorLog = nullptr;
    QStringList Logbuffer;                    // log lines held back while AllowMultiThreading is set
    QObject* StatusParent = nullptr;          // the window part that shows the status frame
    TThreadCollection* ThreadList = nullptr;  // the window's list of workers; not owned

    std::unique_ptr<TAvdeling> Avdeling;
    std::unique_ptr<TfraOppgjorStatus> ffraOppgjorStatus;

    // --- Run options --------------------------------------------------------------------------------------------

    // Armed, the timer ticks every 30 seconds.
    [[nodiscard]] bool AutoCommunicate() const { return FAutoCommunicate; }
    void SetAutoCommunicate(bool value);
    QTime StartTime{0, 0};         // of the automatic run; only hour and minute count
    QTime StartSendingTime{0, 0};  // latest start of sending in a synchronised run
    bool SynchonizedRun = false;   // in step with the back office's daily job
    bool ReceiveDataOnly = false;
    TTasks Tasks;            // what the current run does
    int RetryCount = 2;      // attempts to connect to a till
    int RetryWaitTime = 20;  // seconds between attempts and between departments

    bool IncludeVaretellingOnOppgjor = false;
    bool IncludeGiftVoucherOnOppgjor = false;
    bool IncludeCreditCouponOnOppgjor = false;
    bool IncludeDTS_TorvikPOS = false;
    QString VaretellingPeriode;  // YYYYMM
    TVareOppdateringUtvalg VareOppdateringUtvalg = vopIngen;
    // A second name for the same value.
    [[nodiscard]] TVareOppdateringUtvalg SQLVareOppdateringUtvalg() const { return VareOppdateringUtvalg; }
    void SetSQLVareOppdateringUtvalg(TVareOppdateringUtvalg value) { VareOppdateringUtvalg = value; }
    bool IncludeNummertype = false;
    bool FlagAsSentAfterUpdate = false;
    QString ReplacementVa_Id;  // item number used when a sold item is unknown
    QString ReplacementForNonExistingItemNumber;
    bool AllowMultiThreading = false;  // diverts log lines to Logbuffer
    TInitializeItems InitializeItems{nutvOppgjor};
    bool IncludeExtraSaleProducts = true;
    bool IsEnterprise = false;  // chain installation; false is a single back office
    bool OnlyOppgjor = false;
    bool ReverseProcessingOrder = false;
    bool UsePlukkPrioritet = false;
    bool SendCustomerAndPrice = false;
    int DagerSidenEndring = 0;  // days that count as "changed"

    // Reads true only on a day when items are deleted; the stored value is told by SetDeleteItemsOnSend.
    [[nodiscard]] bool DeleteItemsOnSend() const;
    void SetDeleteItemsOnSend(bool value) { fDeleteItemsOnSend = value; }
    QStringList DeleteItemsWeekDays;  // "1" Monday to "7" Sunday
    [[nodiscard]] bool DeleteItemsThisDay() const;

    // Lets AddLog call OnAddLog and keeps operations from asking the user.
    [[nodiscard]] bool RunAsService() const { return FRunAsService; }
    void SetRunAsService(bool value);
    // What was last set on any engine of the process.
    [[nodiscard]] static bool LastRunAsService();

    TAuthMethod SourceAuthMethod = amSQL;  // how the current till session logs in
    bool OverrideSourceUserNameAndPassword = false;
    QString OverrideSourceUserName;  // for the till's file share
    QString OverrideSourcePassword;

    // --- Cancelling ---------------------------------------------------------------------------------------------

    bool Cancelled = false;
    [[nodiscard]] bool CancelRequest() const { return fCancelRequest; }
    void SetCancelRequest(bool value);
    // Raises the silent abort if the run has been or shall be cancelled.
    void TestCancel();
    // Cancels the run now: logs it and raises the silent abort.
    [[noreturn]] void Cancel();
    // Closes the given session if it is open; nothing for none.
    void CancelConnectAttempt(db::Session* AConnection);

    // --- Events -------------------------------------------------------------------------------------------------

    TNotifyEvent OnAutoStart;
    TNotifyEvent OnAutoReceiveDataDone;
    TNotifyEvent OnAutoStartDone;
    TNotifyEvent OnThreadDone;
    TProgressEvent OnProgress;
    TPackageEventsOnProgressEvent OnDtsProgress;
    TPackageEventsOnStartEvent OnDtsStart;
    TSqlScriptReturnDataEvent OnSqlScriptReturnDataEvent;
    TTorvikPosIniReceivedEvent OnTorvikPosIniReceivedEvent;
    TVareOppdatert OnVareOppdatert;
    TNewLogMessageEvent OnAddLog;
    // Puts a warning to the operator that is answered with yes or no. Unset, the answer is no.
    std::function<bool(const QString& Text)> OnAskOperator;

    // What higher boxes do for the engine's runs. An operation that is missing when it is needed is an error.
    TEngineOperation OnFetchTill;                      // fetch the settlements of the roster's current till
    TEngineOperation OnExecuteDTSToPos;                // the sending run
    TEngineOperation OnExecuteVaretelling;             // fetch the stock counts
    std::function<void(bool)> OnCancelRequestChanged;  // so that a transfer under way hears of a cancel
    std::function<void(const std::exception_ptr&)> OnTimerException;  // what left DoOnTimer; unset, it is logged

    // --- Log ----------------------------------------------------------------------------------------------------

    // One log line to all outlets; pumps messages and never raises.
    void AddLog(const QString& Msg, bool IsError = false, TKasseLogSeverity AKasseLogSeverity = kls_OK);
    bool AddToLogItems = true;  // copy log lines to the per-till log of the current roster row
    // Saves the logs in the temporary folder, over those of the run before.
    void SaveOppgjorLog();
    // Copies the work list's log items to the frame and works out each till's icon. The frame may be null.
    void ShowKasseLogs(bool ClearFirst, TKasseCollection& KasseCollection, bool OnlyNew, TfraOppgjorStatus* Frame);

    // --- Runs ---------------------------------------------------------------------------------------------------

    // Fetches the settlements of all tills of the roster; lets no exception out.
    void ExecuteOppgjor();
    // One tick of the automatic run's clock.
    void DoOnTimer();
    [[nodiscard]] bool TimerBusy() const { return FTimerBusy; }
    // Both raise EngineError if the program was put together without the operation.
    void ExecuteDTSToPos();
    void ExecuteVaretelling();

    // --- At a till ----------------------------------------------------------------------------------------------

    // Connects to the till of the roster's current row, with RetryCount attempts. False when none succeeded.
    [[nodiscard]] bool ConnectSource();
    // Closes the source session and points it at the till of the current row.
    void ApplySourceConnectionSettings();
    void ReadDbVersion();
    [[nodiscard]] QString DbVersion() const { return fDbVersion; }  // in_dbversion of the current till
    void SetNoCount(bool on);
    [[nodiscard]] bool SourceHasOpenTransactions();
    [[nodiscard]] bool SourceHasTemporarySettlements();

    // Both pump messages, raise on cancel, and return true.
    bool WaitRetryTime();
    bool WaitSeconds(int seconds);

    // --- At the back office -------------------------------------------------------------------------------------

    // The general query on the target session; whoever uses it closes it.
    [[nodiscard]] db::Query& qryGeneralTarget() const { return *FqryGeneralTarget; }
    void LoadVareTable();
    void LoadVareAliasTable();
    // The item number to use for one found on a till; raises EngineError when neither it nor the replacement exists.
    [[nodiscard]] QString ResolveVaId(const QString& Va_Id);
    // The loaded reference tables.
    [[nodiscard]] db::MemTable& VareTable() const { return *Vare; }
    [[nodiscard]] db::MemTable& VareAliasTable() const { return *VareAlias; }

    [[nodiscard]] QString TargetServerName() const;  // "Data Source=..." and so on: connection string fragments
    [[nodiscard]] QString TargetCatalog() const;
    [[nodiscard]] QString TargetUserName() const;
    [[nodiscard]] QString TargetPassword() const;
    [[nodiscard]] double TargetDBVersion();  // in_dbversjon, read once
    [[nodiscard]] QString GetTargetServerAndDatabaseName();
    [[nodiscard]] int GetTargetId(const QString& AName);
    [[nodiscard]] bool IsFakturaVedBackOffice(const QString& department);

    // The step of the synchronised run, shared with the back office's daily job: true when sending may begin.
    [[nodiscard]] bool ReadNextStep();
    void SetNextStep(int step);
    // Re-opens a back-office session that broke and finds the till's row again; raises when the row is gone.
    void CheckTargetConnection(int Ik_Ku_Id, const QString& Kassenr);

private:
    void waitMs(qint64 milliseconds);
    [[nodiscard]] bool rosterHasRow() const;
    void callOnAddLog(const QString& Msg, TKasseLogSeverity severity);
    void addTillLogItem(const QString& Msg, TKasseLogSeverity severity);
    void addLogLine(const QString& line, bool IsError);

    [[nodiscard]] db::Session& source() const;
    [[nodiscard]] db::Session& target() const;
    // The general query, closed, with this text.
    [[nodiscard]] db::Query& generalQuery(const QStringList& sql);
    void loadReferenceTable(db::MemTable& table, const QString& sql);
    // Binds the query to the source session, opened if it is closed.
    void openSourceFor(db::Query& query);
    [[nodiscard]] bool sourceCountIsPositive(const QString& sql);

    void prepareSettlementRun();
    void fetchAllTills();
    void fetchTill();
    void reportTillFailure(const QString& message);
    void relocateTill(int Ik_Ku_Id, const QString& Kassenr, bool& located);

    void timerFailed(const std::exception_ptr& failure);
    void listAllTills();
    void runNight();
    void fetchWithRetries();
    void sendAfterBackOffice();
    void waitForSendingTime();
    void endNight();

    db::Session* FTargeTMSConnection = nullptr;
    std::unique_ptr<db::Query> FqryGeneralTarget;
    std::unique_ptr<db::Query> FqryIdTarget;
    std::unique_ptr<db::MemTable> Vare;
    std::unique_ptr<db::MemTable> VareAlias;
    std::unique_ptr<ILogPane> _ownPane;
    QTimer FTimer{this};
    bool FAutoCommunicate = false;
    bool FTimerBusy = false;
    bool fCancelRequest = false;
    bool fDeleteItemsOnSend = false;
    bool FRunAsService = false;
    QString fDbVersion;
    double fTargetDBVersion = -1.0;  // -1.0: not read yet
};

}  // namespace torvik

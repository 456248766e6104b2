// The engine object under the domain's names: a facade that holds the run options, the events and the parts of a run by
// value and forwards to them. "Target" is the back office's database and "source" that of the till being served,
// whichever way the data goes. The window makes one and sets it; what works for a run takes the parts (RunParts), what
// works at a till a TillVisit, never this. Main thread only. See docs/engine.md.
#pragma once

#include <QObject>
#include <QTimer>

#include "engine/base/engine_events.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/run/night_job.h"
#include "engine/run/run_parts.h"

namespace torvik {

class TThreadCollection;

class TTorvikPos : public QObject, public RunOptions, public EngineEvents {
    Q_OBJECT

public:
    explicit TTorvikPos(QObject* owner = nullptr, Seams seams = {});
    ~TTorvikPos() override;

    Seams Seam;

private:
    RunParts parts_;
    NightJob night_;

public:
    [[nodiscard]] RunParts& Parts() { return parts_; }

    // --- Surroundings: views of the parts' own ------------------------------------------------------------------

    db::Session*& SourceConnection = parts_.Till.SourceConnection;  // the current till's; not owned
    [[nodiscard]] db::Session* TargetConnection() const { return parts_.Office.Connection(); }
    void SetTargetConnection(db::Session* value) { parts_.SetTargetConnection(value); }  // not owned
    TAuthMethod& SourceAuthMethod = parts_.Till.SourceAuthMethod;

    ILogPane*& Log = parts_.Log.Log;  // a pane of the engine's own until the window gives its own
    ILogPane*& ErrorLog = parts_.Log.ErrorLog;
    QStringList*& NonVisualLog = parts_.Log.NonVisualLog;
    QStringList*& NonVisualErrorLog = parts_.Log.NonVisualErrorLog;
    QStringList& Logbuffer = parts_.Log.Logbuffer;
    bool& AddToLogItems = parts_.Log.AddToLogItems;
    TAvdeling* const Avdeling = &parts_.Roster;
    std::unique_ptr<TfraOppgjorStatus>& ffraOppgjorStatus = parts_.Status;

    QObject* StatusParent = nullptr;          // the window part that shows the status frame
    TThreadCollection* ThreadList = nullptr;  // the window's list of workers; not owned

    // --- Options that depend on the day -------------------------------------------------------------------------

    [[nodiscard]] bool DeleteItemsOnSend() const { return RunOptions::DeleteItemsOnSend(Seam.now().date()); }
    [[nodiscard]] bool DeleteItemsThisDay() const { return RunOptions::DeleteItemsThisDay(Seam.now().date()); }

    // --- Cancelling and waiting ---------------------------------------------------------------------------------

    bool& Cancelled = parts_.Control.Cancelled;
    [[nodiscard]] bool CancelRequest() const { return parts_.Control.CancelRequest(); }
    void SetCancelRequest(bool value) { parts_.Control.SetCancelRequest(value); }
    void Abandon() { parts_.Control.Abandon(); }
    void TestCancel() { parts_.Control.TestCancel(); }
    [[noreturn]] void Cancel() { parts_.Control.Cancel(); }
    // Closes the given session if it is open; nothing for none.
    void CancelConnectAttempt(db::Session* AConnection);
    bool WaitRetryTime() { return parts_.Control.WaitRetryTime(); }
    bool WaitSeconds(int seconds) { return parts_.Control.WaitSeconds(seconds); }

    // --- Log ----------------------------------------------------------------------------------------------------

    void AddLog(const QString& Msg, bool IsError = false, TKasseLogSeverity AKasseLogSeverity = kls_OK) {
        parts_.Log.AddLog(Msg, IsError, AKasseLogSeverity);
    }
    void SaveOppgjorLog() { parts_.Log.SaveOppgjorLog(); }
    // Copies the work list's log items to the frame and works out each till's icon. The frame may be null.
    void ShowKasseLogs(bool ClearFirst, TKasseCollection& KasseCollection, bool OnlyNew, TfraOppgjorStatus* Frame);

    // --- Runs ---------------------------------------------------------------------------------------------------

    // Fetches the settlements of all tills of the roster; lets no exception out.
    void ExecuteOppgjor();
    // These raise EngineError if the program was put together without the operation.
    void ExecuteDTSToPos() { parts_.Execute(OnExecuteDTSToPos, u"ExecuteDTSToPos"); }
    void ExecuteVaretelling() { parts_.Execute(OnExecuteVaretelling, u"ExecuteVaretelling"); }
    void UpdateLedigID() { parts_.Execute(OnUpdateLedigID, u"UpdateLedigID"); }
    // Ku_Id -1: all tills that the roster holds; else the one till.
    void InitializeTorvikPOS(int Ku_Id, const QString& Kassenummer);

    // Armed, the automatic run's clock ticks every 30 seconds.
    [[nodiscard]] bool AutoCommunicate() const { return FAutoCommunicate; }
    void SetAutoCommunicate(bool value);
    void DoOnTimer() { night_.DoOnTimer(); }
    [[nodiscard]] bool TimerBusy() const { return night_.TimerBusy(); }

    // --- At the till of the roster's current row ----------------------------------------------------------------

    [[nodiscard]] bool ConnectSource() { return parts_.ConnectSource(); }
    void ApplySourceConnectionSettings() { parts_.Till.ApplySourceConnectionSettings(); }
    void ReadDbVersion() { parts_.Till.ReadDbVersion(); }
    [[nodiscard]] const QString& DbVersion() const { return parts_.Till.DbVersion(); }
    void SetNoCount(bool on) { parts_.Till.SetNoCount(on); }
    [[nodiscard]] bool SourceHasOpenTransactions() { return parts_.Till.SourceHasOpenTransactions(); }
    [[nodiscard]] bool SourceHasTemporarySettlements() { return parts_.Till.SourceHasTemporarySettlements(); }

    // --- At the back office -------------------------------------------------------------------------------------

    [[nodiscard]] db::Query& qryGeneralTarget() const { return parts_.Office.GeneralQuery(); }
    void LoadVareTable() { parts_.Items.LoadVareTable(); }
    void LoadVareAliasTable() { parts_.Items.LoadVareAliasTable(); }
    [[nodiscard]] QString ResolveVaId(const QString& Va_Id) { return parts_.Items.ResolveVaId(Va_Id); }
    [[nodiscard]] db::MemTable& VareTable() const { return parts_.Items.VareTable(); }
    [[nodiscard]] db::MemTable& VareAliasTable() const { return parts_.Items.VareAliasTable(); }

    [[nodiscard]] QString TargetServerName() const { return parts_.Office.ServerFragment(); }
    [[nodiscard]] QString TargetCatalog() const { return parts_.Office.CatalogFragment(); }
    [[nodiscard]] QString TargetUserName() const { return parts_.Office.UserFragment(); }
    [[nodiscard]] QString TargetPassword() const { return parts_.Office.PasswordFragment(); }
    [[nodiscard]] double TargetDBVersion() { return parts_.Office.DBVersion(); }
    [[nodiscard]] QString GetTargetServerAndDatabaseName() { return parts_.Office.ServerAndDatabaseName(); }
    [[nodiscard]] int GetTargetId(const QString& AName) { return parts_.Office.GetTargetId(AName); }
    [[nodiscard]] bool IsFakturaVedBackOffice(const QString& department) {
        return parts_.Office.IsFakturaVedBackOffice(department);
    }
    [[nodiscard]] bool ReadNextStep() { return parts_.Step.ReadNextStep(); }
    void SetNextStep(int step) { parts_.Step.SetNextStep(step); }
    void CheckTargetConnection(int Ik_Ku_Id, const QString& Kassenr) {
        parts_.Reconnect.CheckTargetConnection(Ik_Ku_Id, Kassenr);
    }

    // So that a transfer under way hears of a cancel. Work at a till uses a CancelListener instead.
    std::function<void(bool)> OnCancelRequestChanged;

private:
    CancelListener heard_;
    QTimer FTimer{this};
    bool FAutoCommunicate = false;
};

}  // namespace torvik

// The data module that copies one till's raw data into staging tables on the back office and has the back office's own
// procedures take it from there. It is given two open sessions with a transaction on each, starts and ends none itself,
// and lives for one till. TOppgjor makes it, runs it once and frees it.
#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "engine/base/torvik_pos_types.h"
#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/stored_proc.h"
#include "engine/db/table.h"
#include "inbound/pairs/till_mark.h"
#include "inbound/transfer/table_transfer.h"
#include "inbound/transfer/till_schema.h"
#include "inbound/transfer/time_entries.h"
#include "inbound/transfer/transfer_steps.h"

namespace torvik {

class TdmPOStoTorvik : public QObject {
    Q_OBJECT

public:
    explicit TdmPOStoTorvik(QObject* owner = nullptr);

    // The till's session: the source queries follow it.
    [[nodiscard]] db::Session* SourceConnection() const { return sourceConnection_; }
    void SetSourceConnection(db::Session* value);
    // The back office's: the staging tables, the log and the procedures follow it.
    [[nodiscard]] db::Session* DestinationConnection() const { return destinationConnection_; }
    void SetDestinationConnection(db::Session* value);

    int Ik_Ku_ID = 0;  // the department's customer id
    [[nodiscard]] const QString& KasseNr() const { return kasseNr_; }
    void SetKasseNr(const QString& value) { kasseNr_ = value.trimmed(); }
    [[nodiscard]] const QString& UnID() const { return unId_; }  // of this run; empty before its Startup
    bool CheckForCancel = false;                                 // the next progress report raises the cancel error
    TProgressEvent OnProgress;
    std::function<QDateTime()> Now = [] { return QDateTime::currentDateTime(); };
    // Reads that follow each other go in one round trip, and a staging table is opened for rows alone. Off: each
    // statement by itself.
    bool ReadsTogether = true;
    std::optional<TillSchema> Schema;          // of the till, where this transaction has asked: good for one Execute
    db::TableShapes* StagingShapes = nullptr;  // what is known of the staging tables; not owned

    // Runs the whole transfer. Raises EngineError "Feil ved overføring til avd ...", or, when even the mark of the
    // failure could not be written, what that raised.
    void Execute();
    // The lines of dts_logg of this run, over "PosToTorvikLog.txt" in the working directory.
    void SaveLog() const;

    // What it has marked on the till, once it has run.
    [[nodiscard]] const std::vector<TillMark>& Marks() const { return marks_; }
    // The till's last settlement: as it stood behind the marks where it was asked for with them, else asked for now.
    [[nodiscard]] std::optional<NotedSettlement> LastSettlement() const;

    // Whether no run of this till had started in the ten minutes before this one.
    [[nodiscard]] bool NoRecentStart() const { return noRecentStart_; }

    // The steps that are no table transfers; transfer_steps.cpp tells when each runs.
    void initialize();
    void createTempTables();
    void startup();
    void createUtbetalingImport();
    void insertUtbetaling();
    void insertData();
    void updateTimer();
    void deleteTemp();
    void finish();

private:
    // How the till is logged in to, where it has not been.
    struct TillLogin {
        QString database, user, password, server;
        bool trusted = false;
    };
    [[nodiscard]] TillLogin askBackOffice();
    [[nodiscard]] int askTillVersion();
    void runStep(const TransferStep& step);
    void runTransfer(const TransferStep& step);
    [[nodiscard]] bool isRead(const TableMap& map);
    [[nodiscard]] bool tillHasTable(const char* name);
    [[nodiscard]] db::DataSet& openSource(const TransferStep& step);
    void planReads(const TransferStep& first);
    [[nodiscard]] QString sourceSql(const TableMap& map);
    void askForSources();
    [[nodiscard]] QString knownStaff();
    [[nodiscard]] int timeImportType();
    void logOpened(const TableMap& map, const db::DataSet& source);

    void setStep(const QString& name);
    void Progress(const QString& text, int position, bool forced, int maximum);
    void markTimerTogether();
    void writeLog(DtsLogg type, const QString& info = {});
    void runProcedure(db::StoredProc& procedure);
    // A closed temporary query on the back office with this text.
    [[nodiscard]] std::unique_ptr<db::Query> destinationQuery(const QString& sql) const;

    db::Session* sourceConnection_ = nullptr;
    db::Session* destinationConnection_ = nullptr;
    QString kasseNr_;
    QString unId_;
    QString ikAvdelingsnummer_;
    int tillVersion_ = 0;
    qint64 firstId_ = 1;  // the first settlement id to fetch
    QString step_;
    bool noRecentStart_ = true;
    QStringList logLines_;
    TimeEntries timeEntries_;
    std::vector<TillMark> marks_;
    std::optional<std::optional<NotedSettlement>> lastSettlement_;  // asked for or not; there or not
    std::unique_ptr<db::PlannedReads> reads_;                       // of the present steps that read together
    QHash<const TableMap*, QStringList> plannedSql_;                // their texts
    std::optional<TillSchema> schema_;                              // of this run; none: asked for when needed
    int plannedTo_ = 0;                                             // the number of the last of them
    std::optional<QString> knownStaff_;                             // by which they were planned, where it was asked
    std::optional<int> timeImportType_;                             // likewise, and by which the entries are marked

    db::Query qrySource;  // the one cursor of all table transfers
    db::Query qryCreateUtbetalingImport;
    db::Query qryInsertUtbetaling;
    db::Query qryUpdateTimer;
    db::Query qryGeneral;
    db::Query qryCreateTempTables;
    db::Query qryLog;
    db::StoredProc spInsert;
    db::StoredProc spDeleteTemp;
    std::map<QString, std::unique_ptr<db::Table>> stagingTables_;  // by component name
};

}  // namespace torvik

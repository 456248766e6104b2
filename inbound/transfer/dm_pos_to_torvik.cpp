// The data module's life, its walk over the steps, and its one failure handler.
#include "inbound/transfer/dm_pos_to_torvik.h"

#include <QDir>
#include <utility>

#include "engine/base/abort.h"
#include "engine/base/step_error.h"
#include "engine/db/errors.h"
#include "engine/db/statement_text.h"
#include "engine/log/log_pane.h"
#include "inbound/transfer/maps/table_map.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kLongTimeout = 10000;  // seconds
constexpr int kProgressEvery = 1000;
constexpr int kInfoLength = 255;

constexpr char kInsertLog[] = R"(insert into dts_logg (dl_dlt_id,dl_ik_ku_id,dl_kassenr,dl_tidspunkt,dl_dp_id, dl_info)
values (:LogType,:Ik_Ku_ID,:KasseNr,getdate(),1,:Info))";

}  // namespace

TdmPOStoTorvik::TdmPOStoTorvik(QObject* owner) : QObject(owner) {
    for (const TableMap* map : allTableMaps()) {
        auto& table = stagingTables_[QString::fromUtf8(map->component)];
        if (table) continue;
        table = std::make_unique<db::Table>();
        table->setObjectName(QString::fromUtf8(map->component));
        table->CommandTimeout = kLongTimeout;
    }
    for (db::Query* query :
         {&qrySource, &qryCreateUtbetalingImport, &qryInsertUtbetaling, &qryUpdateTimer, &qryCreateTempTables})
        query->CommandTimeout = kLongTimeout;
    // Source texts hold no parameters, and may hold colons.
    for (db::Query* query :
         {&qrySource, &qryCreateUtbetalingImport, &qryUpdateTimer, &qryCreateTempTables, &qryGeneral})
        query->ParamCheck = false;
    qryLog.SQL = statementLines(kInsertLog);
    spInsert.StoredProcName = QStringLiteral("ExecuteDtsFromPos;1");
    spDeleteTemp.StoredProcName = QStringLiteral("DeleteFromTemp;1");
    for (db::StoredProc* procedure : {&spInsert, &spDeleteTemp}) procedure->CommandTimeout = kLongTimeout;
}

void TdmPOStoTorvik::SetSourceConnection(db::Session* value) {
    sourceConnection_ = value;
    for (db::Query* query : {&qryCreateUtbetalingImport, &qryInsertUtbetaling, &qrySource, &qryUpdateTimer})
        query->SetConnection(value);
}

void TdmPOStoTorvik::SetDestinationConnection(db::Session* value) {
    destinationConnection_ = value;
    for (const auto& [name, table] : stagingTables_) table->SetConnection(value);
    for (db::Query* query : {&qryCreateTempTables, &qryLog, &qryGeneral}) query->SetConnection(value);
    spInsert.SetConnection(value);
    spDeleteTemp.SetConnection(value);
}

void TdmPOStoTorvik::Execute() {
    int p = 0;
    plannedTo_ = 0;
    schema_ = std::exchange(Schema, std::nullopt);
    lastSettlement_.reset();
    knownStaff_.reset();
    timeImportType_.reset();
    for (const auto& [name, table] : stagingTables_) table->SetShapes(StagingShapes);
    try {
        for (const TransferStep& step : transferSteps()) {
            p = step.p;
            runStep(step);
        }
    } catch (const std::exception& e) {
        if (p < kInsertDataStep) writeLog(DtsLogg::CopyFailed);
        if (p == kInsertDataStep) writeLog(DtsLogg::PostingFailed);
        std::throw_with_nested(
            StepError(step_, QStringLiteral("Feil ved overføring til avd %1 kassenr %2. %3 feilet (p=%4): %5")
                                 .arg(QString::number(Ik_Ku_ID), kasseNr_, step_, QString::number(p), ErrorText(e))));
    }
}

void TdmPOStoTorvik::runStep(const TransferStep& step) {
    if (step.before != DtsLogg::None) writeLog(step.before);
    if (step.map) runTransfer(step);
    if (step.run) {
        setStep(QString::fromUtf8(step.name));
        (this->*step.run)();
    }
    if (step.after != DtsLogg::None) writeLog(step.after);
}

void TdmPOStoTorvik::runTransfer(const TransferStep& step) {
    const TableMap& map = *step.map;
    if (!isRead(map)) return;
    setStep(QString::fromUtf8(map.step));

    db::DataSet& source = openSource(step);
    if (map.openedEvent) logOpened(map, source);

    const TransferRun run{Ik_Ku_ID, kasseNr_, QUuid(unId_), tillVersion_, Now};
    const QString word = QString::fromUtf8(map.rowProgress ? map.rowProgress : "");
    transferTable(map, run, source, *stagingTables_.at(QString::fromUtf8(map.component)),
                  ReadsTogether ? StagingOpens::ForRows : StagingOpens::Always,
                  [this, &word](int row, int rows) { Progress(word, row, false, rows); });
    if (&map == &kTimerMap) timeEntries_.copied(source);
    if (map.closesSource) qrySource.Close();
}

// The rows of the step's table: of the batch in which the tables that follow each other are read, or qrySource's own.
db::DataSet& TdmPOStoTorvik::openSource(const TransferStep& step) {
    if (ReadsTogether && step.p > plannedTo_) planReads(step);
    const TableMap& map = *step.map;
    qrySource.Close();
    qrySource.SQL = plannedSql_.contains(&map) ? plannedSql_.take(&map) : statementLines(sourceSql(map));
    qrySource.UniDirectional = map.streams;
    if (reads_) return reads_->Open(qrySource);
    qrySource.Open();
    return qrySource;
}

// All questions to the back office come before the batch is sent. One that fails is asked again, and told, by the step
// that needs the answer.
void TdmPOStoTorvik::planReads(const TransferStep& first) {
    const auto steps = tablesFrom(first);
    plannedTo_ = steps.back().p;
    plannedSql_.clear();
    reads_ = std::make_unique<db::PlannedReads>(*sourceConnection_, db::PlannedReads::Within::Transaction);
    reads_->CommandTimeout = qrySource.CommandTimeout;
    try {
        if (!knownStaff_) askForSources();
        for (const TransferStep& step : steps) {
            if (!isRead(*step.map)) continue;
            const QStringList sql = statementLines(sourceSql(*step.map));
            plannedSql_[step.map] = sql;
            reads_->Plan(sql);
        }
    } catch (const db::Error&) {
        reads_.reset();
        plannedSql_.clear();
    }
}

bool TdmPOStoTorvik::isRead(const TableMap& map) {
    return tillVersion_ >= map.fromVersion && (!map.requiredTable || tillHasTable(map.requiredTable));
}

void TdmPOStoTorvik::logOpened(const TableMap& map, const db::DataSet& source) {
    GlobalLogger().LogDebug(QString::fromUtf8(map.openedEvent), {source.RecordCount(), ikAvdelingsnummer_, kasseNr_});
}

void TdmPOStoTorvik::setStep(const QString& name) {
    step_ = name;
    if (OnProgress) OnProgress(this, 0, QStringLiteral("Start %1: ").arg(name));
}

void TdmPOStoTorvik::Progress(const QString& text, int position, bool forced, int maximum) {
    if (CheckForCancel)
        throw EngineError(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: (%1: %2 av %3)")
                              .arg(text, QString::number(position), QString::number(maximum)));
    if (!forced && position % kProgressEvery != 0) return;
    if (!OnProgress) return;
    const int percent = maximum == 0 ? 0 : static_cast<int>(qint64{position} * 100 / maximum);
    OnProgress(this, percent,
               QStringLiteral("%1: %2 av %3").arg(text, QString::number(position), QString::number(maximum)));
}

void TdmPOStoTorvik::writeLog(DtsLogg type, const QString& info) {
    const int logType = static_cast<int>(type);
    qryLog.ParamByName(QStringLiteral("LogType")) = logType;
    qryLog.ParamByName(QStringLiteral("Ik_Ku_ID")) = Ik_Ku_ID;
    qryLog.ParamByName(QStringLiteral("KasseNr")) = kasseNr_;
    if (info.isEmpty())
        qryLog.ParamByName(QStringLiteral("Info")) = 1;
    else
        qryLog.ParamByName(QStringLiteral("Info")) = info.left(kInfoLength);
    qryLog.ExecSQL();
    logLines_ << QStringLiteral("Logtype: %1, Ik_ku_ID: %2, Kassenr: %3, Info: %4")
                     .arg(QString::number(logType), QString::number(Ik_Ku_ID), kasseNr_, info);
}

void TdmPOStoTorvik::SaveLog() const {
    SaveTextLines(QDir::current().filePath(QStringLiteral("PosToTorvikLog.txt")), logLines_);
}

}  // namespace torvik

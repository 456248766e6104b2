#include "outbound/driver/dm_torvik_to_pos.h"

#include <QDir>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <exception>

#include "engine/base/abort.h"
#include "engine/base/step_error.h"
#include "engine/log/log_pane.h"
#include "outbound/driver/row_copy.h"
#include "outbound/exports/send_steps.h"

namespace torvik {

namespace {

// The choice of a whole register, and its first rows, may take minutes on a busy back office.
constexpr int kBackOfficeTimeout = 600;
constexpr int kTillQuestionTimeout = 30;

constexpr char kGlobalVariables[] = "select In_Id, In_SendValutaTilkasse,In_Slett_Va_ID from innstillinger";
constexpr char kAnything[] = "select 1 as Svar";

QStringList linesOf(const QString& sql) {
    return sql.split(QLatin1Char('\n'));
}

// Whether statements for the till that wait may go on waiting while this is done. Only what installs, drops and runs on
// the till is told so, and the question that has to come right before a merge.
bool mayWait(const Action& action) {
    const auto* task = std::get_if<DriverTask>(&action);
    return std::holds_alternative<DropTable>(action) || std::holds_alternative<Install>(action) ||
           std::holds_alternative<Run>(action) || (task && *task == DriverTask::AskBackOffice);
}

}  // namespace

TdmTorvikToPOS::TdmTorvikToPOS(QObject* owner) : QObject(owner) {
    RandomSessionID = [] { return QRandomGenerator::global()->bounded(SendSessionID::kNumbers); };
    qrySource.CommandTimeout = kBackOfficeTimeout;
    spKasseVareAlle.CommandTimeout = kBackOfficeTimeout;
    spKasseVareAlle.StoredProcName = QStringLiteral("KasseVareAlle");
    qryGetGlobalVariables.SQL = QStringList{QString::fromUtf8(kGlobalVariables)};
    qryTarget1.CommandTimeout = kTillQuestionTimeout;
    for (db::Query* query : {&qrySource, &qryGetGlobalVariables, &qryTarget1}) query->ParamCheck = false;
    ldrGeneral.OnProgress = [this](db::BulkLoader&, int percent) {
        progress_.ldrGeneralProgress(percent);
        if (OnIdle) OnIdle();
    };
}

void TdmTorvikToPOS::SetSourceConnection(db::Session* value) {
    sourceConnection_ = value;
    for (db::Query* query : {&qrySource, &qryGetGlobalVariables}) query->SetConnection(value);
    spKasseVareAlle.SetConnection(value);
}

void TdmTorvikToPOS::SetDestinationConnection(db::Session* value) {
    destinationConnection_ = value;
    qryTarget.SetConnection(value);
    qryTarget1.SetConnection(value);
    ldrGeneral.SetConnection(value);
}

void TdmTorvikToPOS::Execute() {
    const auto ended = qScopeGuard([this] { heldSessionId_.reset(); });
    for (const SendStep& step : sendSteps())
        if (step.when.holds(facts())) runStep(step.number, *step.what);
}

void TdmTorvikToPOS::runStep(int number, const Actions& what) {
    const auto runActions = [&] {
        for (const Action& action : what) {
            if (!mayWait(action)) qryTarget.SendWaiting();
            std::visit([this](const auto& one) { run(one); }, action);
        }
        qryTarget.SendWaiting();
    };
    if (number < kFirstGuardedStep) {
        runActions();
        return;
    }
    try {
        runActions();
    } catch (const std::exception& e) {
        leaveStep();
        std::throw_with_nested(
            StepError(CurrentTransformation(), QStringLiteral("TorvikToPOS failed: %1 SessionID: %2 %3")
                                                   .arg(CurrentTransformation(), sessionId_, ErrorText(e))));
    }
}

// A merge that locks what it merges into leaves its transaction open. One that the till does not take back goes with
// the session, or it would hold the till up until the next one is served.
void TdmTorvikToPOS::leaveStep() noexcept {
    qryTarget.Forget();
    try {
        qrySource.Close();
    } catch (const std::exception&) {
    }
    try {
        if (destinationConnection_) destinationConnection_->Rollback();
    } catch (const std::exception&) {
        try {
            destinationConnection_->Close();
        } catch (const std::exception&) {
        }
    }
}

SendFacts TdmTorvikToPOS::facts() const {
    return {.Ik_Ku_ID = Ik_Ku_ID,
            .KasseNr = KasseNr,
            .SessionID = sessionId_,
            .TorvikPOSversion = torvikPosVersion_,
            .ItemUpdateSelection = ItemUpdateSelection,
            .DagerSidenEndring = DagerSidenEndring,
            .SendPriceAndCustomer = SendPriceAndCustomer,
            .DeleteItem = DeleteItem,
            .SendCurrency = sendCurrency_,
            .SendVouchers = SendVouchers,
            .ReplaceItemNumber = replaceItemNumber_,
            .tillTables = tillTables_};
}

void TdmTorvikToPOS::SaveLog() const {
    SaveTextLines(QDir::current().filePath(QStringLiteral("TorvikToPosLog.txt")), {});
}

void TdmTorvikToPOS::run(const SetTransformation& action) {
    progress_.SetCurrentTransformation(QString::fromUtf8(action.name));
}

void TdmTorvikToPOS::run(const StartClock&) {
    transferStartTime_ = Now();
}

void TdmTorvikToPOS::run(const Report& action) {
    progress_.DoProgress(QString::fromUtf8(action.text), action.value, action.forced, action.total);
}

void TdmTorvikToPOS::run(const CreateTables& action) {
    if (ReadsTogether && tables_.MakeAll(*destinationConnection_, facts())) return;
    qryTarget.Send(createTablesSql(action.tables));
}

void TdmTorvikToPOS::run(const DropTable& action) {
    qryTarget.Drop(action.name);
}

// The source streams, so that a register of any size takes no more memory than a block of its rows.
void TdmTorvikToPOS::run(const LoadTable& action) {
    const QDateTime started = Now();
    const QString caption = QString::fromUtf8(action.caption);
    progress_.SetCurrentTransformation(caption);
    progress_.loadBegins();
    qrySource.UniDirectional = true;
    qrySource.CountRows = action.counted;
    db::DataSet& source = openRegister(sqlOf(action.query, facts()), action.readWith);
    ldrGeneral.TableName = QString::fromUtf8(action.table);
    ldrGeneral.Shapes = ReadsTogether ? &tables_.Shapes : nullptr;
    ldrGeneral.Options.FewRoundTrips = ReadsTogether;
    ldrGeneral.LoadFromDataSet(source);
    const int rows = source.RecordCount();
    progress_.DoProgress(QStringLiteral("Overfører ") + caption, source.RecNo(), true, rows);
    logTransfer(caption, rows, started);
    qrySource.Close();
}

void TdmTorvikToPOS::run(const CopyRows& action) {
    qrySource.UniDirectional = false;
    db::DataSet& source = openRegister(QString::fromUtf8(action.query), action.readWith);
    const int rows = source.RecordCount();
    const QString text = QString::fromUtf8(action.progress);
    copyRows(action, source, *destinationConnection_, ReadsTogether ? &tables_.Shapes : nullptr,
             [&](int row) { progress_.DoProgress(text, row, false, rows); });
    progress_.DoProgress(text, source.RecNo(), true, rows);
    LogTransferDone(QString::fromUtf8(action.name), rows);
    qrySource.Close();
}

void TdmTorvikToPOS::run(const EditOneRow& action) {
    qrySource.UniDirectional = false;
    db::DataSet& source = openRegister(sqlOf(action.query, facts()), action.readWith);
    editOneRow(action, source, *destinationConnection_);
    qrySource.Close();
}

void TdmTorvikToPOS::run(const TillBatch& action) {
    qryTarget.Send(sqlOf(action.sql, facts()));
}

void TdmTorvikToPOS::run(const BuiltTillBatch& action) {
    qryTarget.Send(action.sql());
}

void TdmTorvikToPOS::run(const BackOfficeBatch& action) {
    qrySource.Close();
    qrySource.SQL = linesOf(sqlOf(action.sql, facts()));
    qrySource.ExecSQL();
}

void TdmTorvikToPOS::run(const Install& action) {
    qryTarget.Install(*action.procedure, facts());
}

void TdmTorvikToPOS::run(const Run& action) {
    qryTarget.Run(*action.procedure, facts());
}

void TdmTorvikToPOS::run(const AskForTable& action) {
    if (tables_.TableExists(*destinationConnection_, action.table)) tillTables_.insert(action.table);
}

void TdmTorvikToPOS::run(DriverTask task) {
    switch (task) {
        case DriverTask::GetGlobalVariables: GetGlobalVariables(); return;
        case DriverTask::DrawSessionID: drawSessionID(); return;
        case DriverTask::ReadTillVersion: beginTill(); return;
        case DriverTask::KasseVareAlle: callKasseVareAlle(); return;
        case DriverTask::AskBackOffice: askBackOffice(); return;
    }
}

// The query stays open: the settings are read once in the life of the object.
void TdmTorvikToPOS::GetGlobalVariables() {
    qryGetGlobalVariables.Open();
    const db::Field* currency = qryGetGlobalVariables.FindField(QStringLiteral("In_SendValutaTilkasse"));
    sendCurrency_ = currency && currency->AsBoolean();
    const db::Field& replacement = qryGetGlobalVariables.FieldByName(QStringLiteral("In_Slett_Va_ID"));
    DeleteItem = DeleteItem && !replacement.IsNull();
    replaceItemNumber_ = replacement.AsString();
}

void TdmTorvikToPOS::drawSessionID() {
    heldSessionId_ = std::make_unique<SendSessionID>(*sourceConnection_, RandomSessionID);
    sessionId_ = heldSessionId_->text();
}

void TdmTorvikToPOS::beginTill() {
    tillTables_.clear();
    tables_.Forget();
    registers_.Forget();
    qryTarget.Together = ReadsTogether;
    torvikPosVersion_ = tables_.ReadVersion(qryTarget1, ReadsTogether);
}

void TdmTorvikToPOS::callKasseVareAlle() {
    const auto parameter = [this](const char* name) -> db::Parameter& {
        return spKasseVareAlle.ParamByName(QString::fromUtf8(name));
    };
    parameter("Ik_Ku_Id") = Ik_Ku_ID;
    parameter("Kassenummer") = KasseNr;
    parameter("Nummertype") = true;
    parameter("SesjonID") = sessionId_;
    parameter("Utvalg") = ItemUpdateSelection == iusAll ? 2 : ItemUpdateSelection == iusChanged ? 1 : 0;
    spKasseVareAlle.ExecProc();
}

// The till is this visit's as long as the back office's session lives. Lost, another copy of the program may have
// fetched the till since, and what it has handed in would be overwritten with what was read before.
void TdmTorvikToPOS::askBackOffice() {
    qrySource.CountRows = false;
    openSource(QString::fromUtf8(kAnything));
    qrySource.Close();
}

void TdmTorvikToPOS::openSource(const QString& sql) {
    qrySource.Close();
    qrySource.SQL = linesOf(sql);
    qrySource.Open();
}

// The rows that have been read ahead, or those of qrySource.
db::DataSet& TdmTorvikToPOS::openRegister(const QString& sql, ReadWith group) {
    if (ReadsTogether)
        if (db::DataSet* rows = registers_.Open(*sourceConnection_, group, sql, facts(), kBackOfficeTimeout))
            return *rows;
    openSource(sql);
    return qrySource;
}

void TdmTorvikToPOS::LogTransferDone(const QString& name, int count) {
    if (!OnLog) return;
    logTransfer(name, count, transferStartTime_);
    transferStartTime_ = Now();
}

void TdmTorvikToPOS::logTransfer(const QString& name, int count, const QDateTime& started) {
    if (!OnLog) return;
    const QTime taken = QTime(0, 0).addSecs(static_cast<int>(started.secsTo(Now())));
    OnLog(QStringLiteral("Fullført overføring av %1 poster i tabellen %2. Tid brukt: %3")
              .arg(QString::number(count), name, taken.toString(QStringLiteral("hh:mm:ss"))));
}

}  // namespace torvik

// See till_batches.h.
#include "outbound/driver/till_batches.h"

#include "outbound/shape/procedure.h"
#include "outbound/shape/work_table.h"

namespace torvik {

namespace {

// A merge takes as long as the till needs.
constexpr int kNoTimeout = 0;

constexpr char kStopAtAnError[] = "\nif @@error <> 0 return\n";

// CREATE PROCEDURE is the only statement of its batch.
QString asItsOwnBatch(QString text) {
    return QStringLiteral("exec (N'%1')").arg(text.replace(QLatin1Char('\''), QStringLiteral("''")));
}

}  // namespace

TillBatches::TillBatches() {
    script_.CommandTimeout = kNoTimeout;
}

void TillBatches::request(const QString& batch) {
    script_.SQL = batch.split(QLatin1Char('\n'));
    script_.Execute();
}

void TillBatches::Send(const QString& batch) {
    SendWaiting();
    request(batch);
}

void TillBatches::Drop(const char* table) {
    if (!Together) return request(dropTableSql(table));
    waiting_ << dropTableSql(table);
}

void TillBatches::Install(const Procedure& procedure, const SendFacts& facts) {
    if (!Together) {
        request(dropProcedureSql(procedure));
        request(createProcedureSql(procedure, facts));
        return;
    }
    waiting_ << dropProcedureSql(procedure) << asItsOwnBatch(createProcedureSql(procedure, facts));
}

// A merge never rides behind another procedure's making: where that failed, the merge must not run.
void TillBatches::Run(const Procedure& procedure, const SendFacts& facts) {
    const bool behindItsOwn = waiting_.size() == 2 && waiting_.first() == dropProcedureSql(procedure);
    if (!behindItsOwn) return Send(callSql(procedure, facts));
    waiting_ << callSql(procedure, facts);
    SendWaiting();
}

void TillBatches::SendWaiting() {
    if (waiting_.isEmpty()) return;
    const QString batch = waiting_.join(QString::fromUtf8(kStopAtAnError));
    waiting_.clear();
    request(batch);
}

}  // namespace torvik

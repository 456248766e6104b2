#include "inbound/pairs/till_pairs.h"

#include <QCoreApplication>
#include <QDir>

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr char kMarkOfSettlement[] =
    R"(SELECT CONVERT(varchar(23), OP_TIDSPUNKT, 121) Tidspunkt, CONVERT(varchar(23), OP_OPPDATERTTIDSPUNKT, 121) Merke
FROM Oppgjor WHERE Op_Id=%1)";

QString besideTheProgram() {
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("Notater"));
}

}  // namespace

TillPairs::TillPairs(const TillVisit& visit, const QString& noteFolder)
    : visit_(visit), notes_(noteFolder.isEmpty() ? besideTheProgram() : noteFolder) {}

PairSides TillPairs::sides() const {
    return {visit_.TillSession,
            visit_.OfficeSession,
            visit_.Till.Ik_Ku_Id,
            visit_.Till.Kassenummer,
            visit_.Context.Options.IsEnterprise,
            notes_,
            [this](const QString& text, bool isError) { visit_.Log.AddLog(text, isError); }};
}

void TillPairs::noteSettlement(TransactionPair& pair, qint64 id) const {
    db::Query mark(&visit_.TillSession);
    mark.ParamCheck = false;
    mark.CommandTimeout = kQueryTimeout;
    mark.SQL = statementLines(QString::fromUtf8(kMarkOfSettlement).arg(id));
    mark.Open();
    const QStringList key{QString::number(id)};
    pair.setSettlement(NotedSettlement{id, mark.Fields(0).AsString()});
    if (visit_.Context.Options.IsEnterprise)
        pair.add({TillMark::Kind::Settlement, key, mark.Fields(1).AsString(), {}});
    else
        pair.add({TillMark::Kind::SettlementStatus, key, QStringLiteral("1"), QStringLiteral("0")});
}

void TillPairs::fail(TransactionPair& pair, const std::exception& failure, const QString& event,
                     std::initializer_list<LogArg> values, TransactionPair::RollbackLines lines) const {
    pair.rollBack(ErrorText(failure), lines);
    const auto entry = std::make_shared<TLogEntry>(TLogLevel::llError, event, values);
    if (pair.state() == TransactionPair::State::TillAhead)
        entry->WithArgument(QStringLiteral("Kasse_foran"), QVariant(true));
    if (pair.state() == TransactionPair::State::Undecided)
        entry->WithArgument(QStringLiteral("Uavklart"), QVariant(true));
    GlobalLogger().Log(entry);
}

}  // namespace torvik

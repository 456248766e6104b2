#include "inbound/settlement/till_pairs.h"

#include <QCoreApplication>
#include <QDir>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/log/operator_log.h"
#include "logging/logger.h"

namespace torvik {

namespace {

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

void TillPairs::fail(TransactionPair& pair, const std::exception& failure, const QString& event,
                     std::initializer_list<LogArg> values) const {
    pair.rollBack(ErrorText(failure));
    const auto entry = std::make_shared<TLogEntry>(TLogLevel::llError, event, values);
    if (pair.state() == TransactionPair::State::TillAhead)
        entry->WithArgument(QStringLiteral("Kasse_foran"), QVariant(true));
    if (pair.state() == TransactionPair::State::Undecided)
        entry->WithArgument(QStringLiteral("Uavklart"), QVariant(true));
    GlobalLogger().Log(entry);
}

}  // namespace torvik

// The file of the day, changed at the first event after midnight.
#include "logging/rolling_file_sink.h"

#include <QDir>
#include <QFileInfo>

#include "logging/file_sink.h"

namespace torvik {

namespace {

QString fileOfDay(const QString& baseName, QDate day) {
    const QFileInfo base(baseName);
    const QString name = base.fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString stem = dot < 0 ? name : name.left(dot);
    const QString extension = dot < 0 ? QString() : name.mid(dot);
    return base.dir().filePath(stem + QLatin1Char('_') + day.toString(QStringLiteral("yyyyMMdd")) + extension);
}

}  // namespace

TRollingFileSink::TRollingFileSink(const QString& FileName, Clock now)
    : FFileName(FileName), FNextRollOver(now()), now_(std::move(now)) {}

void TRollingFileSink::Write(const std::shared_ptr<ILogEntry>& entry) {
    const QDateTime now = now_();
    if (!FSink || now >= FNextRollOver) rollOver(now);
    FSink->Write(entry);
}

void TRollingFileSink::rollOver(const QDateTime& now) {
    FNextRollOver = now.date().addDays(1).startOfDay();
    FSink = std::make_shared<TFileSink>(fileOfDay(FFileName, now.date()));
}

void TRollingFileSink::SyncAndClose() {
    if (FSink) FSink->SyncAndClose();
}

}  // namespace torvik

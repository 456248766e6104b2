// A log file for each day: base name "TorvikPosSync.log" gives "TorvikPosSync_20260301.log" in the same folder. No file
// is ever deleted, and none is limited in size.
#pragma once

#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>

#include "logging/log_sink.h"

namespace torvik {

class TRollingFileSink final : public ILogSink {
public:
    using Clock = std::function<QDateTime()>;  // local time

    explicit TRollingFileSink(
        const QString& FileName, Clock now = [] { return QDateTime::currentDateTime(); });

    // To the day's file, which the first event and the first one after each midnight open. A folder that could not be
    // made leaves the day without lines, until the next roll-over tries again.
    void Write(const std::shared_ptr<ILogEntry>& entry) override;
    void SyncAndClose() override;

private:
    void rollOver(const QDateTime& now);

    QString FFileName;  // the base name
    std::shared_ptr<ILogSink> FSink;
    QDateTime FNextRollOver;
    Clock now_;
};

}  // namespace torvik

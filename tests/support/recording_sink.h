// A log sink that keeps what it is given, and a guard that hangs one on the process's logger for a test's length.
#pragma once

#include <QStringList>
#include <memory>
#include <vector>

#include "logging/logger.h"

namespace torvik::test {

class RecordingSink final : public ILogSink {
public:
    void Write(const std::shared_ptr<ILogEntry>& entry) override { entries.push_back(entry); }
    void SyncAndClose() override { ++syncs; }

    // Each event as "LEVEL template name=value ...", without its time.
    [[nodiscard]] QStringList lines() const;

    std::vector<std::shared_ptr<ILogEntry>> entries;
    int syncs = 0;
};

// GlobalLogger() writes to `sink` alone while this stands.
class RecordedLog {
public:
    RecordedLog() {
        GlobalLogger().ClearSinks();
        GlobalLogger().AddSink(sink);
    }
    ~RecordedLog() { GlobalLogger().ClearSinks(); }
    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;

    [[nodiscard]] QStringList lines() const { return sink->lines(); }

    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
};

}  // namespace torvik::test

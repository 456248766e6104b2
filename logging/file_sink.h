// Appends each event as one line to a file, which it opens, writes and closes for each: no file stays open between
// events, and another program may move or read it. Not to be entered by two threads at once.
#pragma once

#include <QString>

#include "logging/log_sink.h"

namespace torvik {

class TFileSink final : public ILogSink {
public:
    // Makes the file's folder where it is missing. When that fails the sink is mute.
    explicit TFileSink(const QString& FileName);

    // The line in UTF-8 with carriage return and line feed. What cannot be written is lost; the next event tries again.
    void Write(const std::shared_ptr<ILogEntry>& entry) override;
    void SyncAndClose() override {}

private:
    QString FFileName;  // empty: mute
};

}  // namespace torvik

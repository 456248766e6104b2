// Posts each event to a structured-log server, one compact JSON event a request. An event that the server does not take
// (away, refused, too slow, error status) is lost for the server without a word: the log file has it all the same.
#pragma once

#include <QString>

#include "logging/http_client.h"
#include "logging/log_sink.h"

namespace torvik {

class TSeqSink final : public ILogSink {
public:
    // ApiKey may be empty; it goes into the address as it stands.
    TSeqSink(const QString& ServerUrl, const QString& ApiKey, const HttpTimeouts& timeouts = {});

    void Write(const std::shared_ptr<ILogEntry>& entry) override;
    void SyncAndClose() override {}

private:
    QString FUrl;
    HttpTimeouts timeouts_;
};

}  // namespace torvik

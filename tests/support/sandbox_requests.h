// What a stand-in server has been asked, for tests that count or look at requests, and requests that it keeps waiting.
#pragma once

#include <QStringList>
#include <chrono>
#include <mutex>

#include "sandbox/server/server.h"

namespace torvik::test {

// The texts of the requests that a server has been sent while this stands.
class Requests {
public:
    explicit Requests(sandbox::Server& server)
        : server_(server), observer_(server.faults().observe([this](const sandbox::RequestInfo& request) {
              const std::lock_guard lock(mutex_);
              texts_ << QString::fromStdString(request.text);
          })) {}
    ~Requests() { server_.faults().forget(observer_); }
    Requests(const Requests&) = delete;
    Requests& operator=(const Requests&) = delete;

    [[nodiscard]] QStringList with(const QString& part) {
        const std::lock_guard lock(mutex_);
        return texts_.filter(part);
    }
    [[nodiscard]] int count(const QString& part) { return static_cast<int>(with(part).size()); }
    void forget() {
        const std::lock_guard lock(mutex_);
        texts_.clear();
    }

private:
    sandbox::Server& server_;
    std::mutex mutex_;
    QStringList texts_;
    int observer_;
};

// The next request with this text waits for a second more than the half a minute that a statement has where nothing is
// said of it.
inline void delayBeyondTheUsualTimeout(sandbox::Server& server, const char* text) {
    sandbox::FaultRule slow;
    slow.match.textContains = text;
    slow.action = sandbox::FaultAction::Delay;
    slow.delay = std::chrono::seconds(31);
    server.faults().add(slow);
}

}  // namespace torvik::test

// What a stand-in server has been asked, for tests that count or look at requests.
#pragma once

#include <QStringList>
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

}  // namespace torvik::test

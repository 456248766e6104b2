// See kill_at_request.h.
#include "tests/faults/kill_at_request.h"

#include <QProcess>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace torvik::test {

std::string runAndKill(ChainCopy& copy, const QString& program, std::size_t server, std::uint64_t place,
                       const std::function<std::string(const std::string&)>& same) {
    sandbox::FaultRule hang;
    hang.skip = place - 1;
    hang.action = sandbox::FaultAction::Hang;
    serverOf(copy.chain, server).faults().add(hang);

    std::mutex mutex;
    std::condition_variable changed;
    std::string met;
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    {
        const RequestWatch watch(copy.chain, [&](std::size_t at, std::uint64_t number, const sandbox::RequestInfo& r) {
            if (at != server || number != place) return;
            const std::lock_guard lock(mutex);
            met = same(r.text);
            changed.notify_all();
        });
        process.start(program, {QString::fromStdString(copy.chain.dataLink()), copy.noteFolder.path()});
        if (!process.waitForStarted()) return "the program did not start";
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::minutes(1), [&] { return !met.empty(); });
    }
    process.kill();
    process.waitForFinished();
    forgetRun(copy.chain);
    return met;
}

}  // namespace torvik::test

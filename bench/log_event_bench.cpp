// What one log event costs the run that logs it, with the file and the log server each behind its queue: the time in
// the caller's Log call. Events of a run come in bursts, which the queues take, and singly between statements, when the
// processor's caches have lost what logging needs. A log server that answers stands on this machine.
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "bench/figure.h"
#include "logging/setup_logging.h"
#include "tests/support/http_server.h"

namespace {

using torvik::TLogger;

constexpr double kMostMicroseconds = 5;

double microseconds(TLogger& logger, int number) {
    return 1e6 * torvik::bench::seconds([&] {
               logger.LogInformation(QStringLiteral("Starter overføring av oppgjørnummer {Oppgjorsnummer} i avdeling "
                                                    "{Avdeling} kasse {Kassenummer}"),
                                     {number, QStringLiteral("101"), 3});
           });
}

// The times of `bursts` times `size` events; the queues are empty before each burst.
std::vector<double> measured(TLogger& logger, int bursts, int size) {
    std::vector<double> times;
    for (int burst = 0; burst < bursts; ++burst) {
        logger.SyncAndClose();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // the threads write the last event and fall asleep
        for (int i = 0; i < size; ++i) times.push_back(microseconds(logger, i));
    }
    std::sort(times.begin(), times.end());
    return times;
}

void tell(const std::string& what, const std::vector<double>& times) {
    torvik::bench::tell(what + ", median", times[times.size() / 2], "us", "5 us at most", kMostMicroseconds);
    torvik::bench::tell({what + ", p99", times[times.size() * 99 / 100], "us", "", {}});
}

}  // namespace

int main() {
    const QTemporaryDir folder;
    torvik::test::HttpServer server;
    TLogger logger;
    AddSeqSink(logger, QString::fromStdString(server.url()), QStringLiteral("key"));
    AddRollingFileSink(logger, folder.filePath(QStringLiteral("bench.log")));
    logger.WithProperty(QStringLiteral("Application"), torvik::JsonValue("TorvikPosSync"))
        .WithProperty(QStringLiteral("TorvikPosSyncName"), torvik::JsonValue("TorvikPosSync"));
    (void)measured(logger, 5, 50);  // warm

    tell("log event at its caller, bursts of 50", measured(logger, 100, 50));
    tell("log event at its caller, one at a time", measured(logger, 500, 1));
}

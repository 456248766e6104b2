// How soon the window answers while a server works, or does not answer at all: at a login, a statement and a commit
// that hang, a bulk load of a million rows, and a statement over them. A thread beside asks the main thread every few
// milliseconds, and the time until it answers is taken.
#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "bench/figure.h"
#include "bench/server_process.h"
#include "engine/db/bulk_loader.h"
#include "engine/db/errors.h"
#include "shell/server_wait.h"
#include "tests/support/sandbox_server.h"

namespace {

using namespace torvik;
using Clock = std::chrono::steady_clock;

constexpr int kRows = 1'000'000;
constexpr int kRowsAtOnce = 1000;
constexpr auto kAskEvery = std::chrono::milliseconds(5);
constexpr auto kHang = std::chrono::seconds(3);
constexpr double kMostMilliseconds = 100;

// Asks the main thread for as long as it lives, one question at a time.
class Asker {
public:
    Asker()
        : thread_([this] {
              while (!ended_) {
                  std::this_thread::sleep_for(kAskEvery);
                  if (asked_.exchange(true)) continue;
                  const Clock::time_point then = Clock::now();
                  QMetaObject::invokeMethod(
                      &receiver_,
                      [this, then] {
                          answers_.push_back(std::chrono::duration<double, std::milli>(Clock::now() - then).count());
                          asked_ = false;
                      },
                      Qt::QueuedConnection);
              }
          }) {}
    // The milliseconds of all answers, shortest first; the last question is answered before it returns.
    std::vector<double> end() {
        ended_ = true;
        thread_.join();
        QCoreApplication::processEvents();
        std::sort(answers_.begin(), answers_.end());
        return answers_;
    }

private:
    QObject receiver_;
    std::vector<double> answers_;
    std::atomic<bool> asked_ = false;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

template <typename Work>
void measure(const std::string& what, const Work& work) {
    Asker asker;
    const double took = bench::seconds(work);
    const std::vector<double> answers = asker.end();
    bench::tell("window answers during " + what + ", p99", answers[answers.size() * 99 / 100], "ms", "50 ms at most",
                kMostMilliseconds / 2);
    bench::tell("window answers during " + what + ", longest", answers.back(), "ms", "100 ms at most",
                kMostMilliseconds);
    bench::tell({"the same, took", took, "s", {}, {}});
}

void hangingServer() {
    test::SandboxServer server;
    db::Session other;
    other.SetConnectString(server.connectString());
    other.SetConnectionTimeout(int(kHang.count()));
    server.faults().hangLogins(1);
    measure("a login that hangs", [&] {
        try {
            other.Open();
        } catch (const db::ConnectionError&) {
            return;
        }
        throw std::runtime_error("the login did not hang");
    });

    measure("a statement that hangs", [&] { server.run(QStringLiteral("WAITFOR DELAY '00:00:03'")); });

    server.session().StartTransaction();
    server.run(QStringLiteral("CREATE TABLE T (a int)"));
    sandbox::FaultRule rule;
    rule.match.textContains = "COMMIT";
    rule.action = sandbox::FaultAction::Delay;
    rule.delay = kHang;
    server.faults().add(rule);
    measure("a commit that hangs", [&] { server.session().Commit(); });
}

void millionRows(const bench::ServerProcess& server) {
    const auto master = server.connect(QStringLiteral("master"));
    bench::execute(*master, QStringLiteral("CREATE DATABASE Kilde CREATE DATABASE Mal"));
    const auto from = server.connect(QStringLiteral("Kilde"));
    const auto to = server.connect(QStringLiteral("Mal"));
    for (db::Session* session : {from.get(), to.get()})
        bench::execute(*session, QStringLiteral("CREATE TABLE Pris (Vare int NOT NULL, Nr int NOT NULL, Pris float, "
                                                "PRIMARY KEY (Vare, Nr))"));
    QStringList rows;
    for (int i = 0; i < kRowsAtOnce; ++i) rows.append(QStringLiteral("(0,%1,%1.5)").arg(i));
    bench::execute(*from, QStringLiteral("INSERT Pris VALUES ") + rows.join(QLatin1Char(',')));
    bench::execute(*from,
                   QStringLiteral("DECLARE @n int SET @n = 1 WHILE @n < %1 BEGIN INSERT Pris SELECT @n, Nr, Pris "
                                  "FROM Pris WHERE Vare = 0 SET @n = @n + 1 END")
                       .arg(kRows / kRowsAtOnce));
    db::Query source(from.get());
    source.UniDirectional = true;
    source.SQL = {QStringLiteral("SELECT Vare, Nr, Pris FROM Pris")};
    db::BulkLoader loader(to.get());
    loader.TableName = QStringLiteral("Pris");
    loader.OnProgress = [](db::BulkLoader&, int) { QCoreApplication::processEvents(); };
    measure("a bulk load of 1,000,000 rows", [&] {
        source.Open();
        if (loader.LoadFromDataSet(source) != kRows) throw std::runtime_error("not all rows were loaded");
    });
    measure("a statement over 1,000,000 rows",
            [&] { bench::execute(*to, QStringLiteral("UPDATE Pris SET Pris = Pris * 1.25")); });
}

}  // namespace

int main(int argc, char** argv) {
    const bench::ServerProcess server;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QAction cancel;
    QPushButton cancelButton;
    cancelButton.show();
    const ServerWait wait(cancel, cancelButton, [] {});
    hangingServer();
    millionRows(server);
}

// A night over 60 tills with a day's sales, each behind a line of 30 ms there and back: by one copy of the program, and
// by one that leads and two that help, as processes of their own. The chain is a process of its own too. The stand-in
// has one writer for each database, and a pair of transactions holds it while the till is read: what three copies could
// do without that is shown by three that have a third of the tills and a back office each.
#include <QCoreApplication>
#include <QProcess>
#include <array>
#include <atomic>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "bench/chain_process.h"
#include "bench/figure.h"
#include "bench/slow_lines.h"
#include "engine/db/errors.h"
#include "tests/support/chain_program.h"

namespace {

using namespace torvik;

constexpr int kTills = 60;
constexpr int kCopies = 3;
constexpr std::chrono::milliseconds kThere{15};  // and as long back
constexpr double kTimesAsFast = 2;
constexpr int kLongestNightMs = 30 * 60 * 1000;

// The copy of the program that this process is when it is given a data link and a role: one armed tick.
int copyOfTheProgram(const std::string& dataLink, const QByteArray& role) {
    test::ChainProgram program(dataLink);
    TTorvikPos& engine = program.engine;
    engine.HelpFetching = role == "helps";
    engine.ReceiveDataOnly = true;
    engine.IncludeGiftVoucherOnOppgjor = true;
    engine.IncludeCreditCouponOnOppgjor = true;
    engine.StartTime = engine.Seam.now().time();
    engine.Seam.now = [now = engine.Seam.now()] { return now; };
    engine.DoOnTimer();
    for (const QString& error : program.errors()) std::cerr << error.toStdString() << std::endl;
    return program.errors().isEmpty() ? 0 : 1;
}

class Copy {
public:
    Copy(const std::string& dataLink, const char* role) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.setStandardOutputFile(QProcess::nullDevice());
        process_.start(QCoreApplication::applicationFilePath(),
                       {QString::fromStdString(dataLink), QString::fromUtf8(role)});
    }
    void expectEndsWell() {
        if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(kLongestNightMs))
            throw std::runtime_error("a copy does not end");
        if (process_.exitStatus() != QProcess::NormalExit || process_.exitCode() != 0)
            throw std::runtime_error("a copy told errors");
    }

private:
    QProcess process_;
};

qint64 count(db::Session& office, const QString& from) {
    db::Query query(&office);
    query.ParamCheck = false;
    query.SQL = {QStringLiteral("SELECT COUNT(*) FROM ") + from};
    query.Open();
    return query.Fields(0).AsInteger();
}

sandbox::chain::ChainOptions chainOf(int tills) {
    return {.departments = tills / 4, .tills = tills, .days = 1, .items = 50, .ordersADay = 50};
}

// Asks on a thread of its own, now and then, whether somebody else is writing to the back office.
class WriterProbe {
public:
    explicit WriterProbe(const std::string& dataLink)
        : thread_([this, office = QString::fromStdString(dataLink)] {
              db::Session session;
              session.SetConnectString(office);
              session.Open();
              run(session, "SET LOCK_TIMEOUT 0");
              while (!ended_) {
                  std::this_thread::sleep_for(kEvery);
                  ++asked_;
                  try {
                      run(session, "UPDATE dts_logg SET dl_info = dl_info WHERE 1 = 0");
                  } catch (const db::StatementError&) {  // held by another: error 1222
                      ++held_;
                  }
              }
          }) {}
    ~WriterProbe() { end(); }
    WriterProbe(const WriterProbe&) = delete;
    WriterProbe& operator=(const WriterProbe&) = delete;

    void end() {
        ended_ = true;
        if (thread_.joinable()) thread_.join();
    }
    [[nodiscard]] double share() const { return static_cast<double>(held_) / asked_; }
    [[nodiscard]] int requests() const { return asked_ + 1; }

private:
    static constexpr std::chrono::milliseconds kEvery{20};

    static void run(db::Session& session, const char* sql) {
        db::Query query(&session);
        query.SQL = {QString::fromUtf8(sql)};
        query.ExecSQL();
    }

    int asked_ = 0;
    int held_ = 0;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

struct Night {
    double seconds = 0;
    double written = 0;  // the share of it in which somebody wrote to the back office
    qint64 settlements = 0;
    double officeRequests = 0;  // a till
    double tillRequests = 0;
};

Night nightOf(const bench::ChainProcess& chain, int helpers) {
    db::Session office;
    office.SetConnectString(QString::fromStdString(chain.dataLink()));
    office.Open();
    const auto requests = [&chain] {
        const std::vector<std::uint64_t> all = chain.requests();
        return std::pair{all.front(), std::accumulate(all.begin() + 1, all.end(), std::uint64_t{0})};
    };
    const auto before = requests();
    Night night;
    std::vector<std::unique_ptr<Copy>> helping;
    WriterProbe probe(chain.dataLink());
    // When the leading copy is done, all tills have been fetched.
    night.seconds = bench::seconds([&] {
        Copy leading(chain.dataLink(), "leads");
        for (int i = 0; i < helpers; ++i) helping.push_back(std::make_unique<Copy>(chain.dataLink(), "helps"));
        leading.expectEndsWell();
    });
    probe.end();
    for (const auto& copy : helping) copy->expectEndsWell();
    night.written = probe.share();
    const auto after = requests();
    night.officeRequests = static_cast<double>(after.first - before.first - probe.requests()) / kTills;
    night.tillRequests = static_cast<double>(after.second - before.second) / kTills;
    night.settlements = count(office, QStringLiteral("PosOppgjor"));
    if (count(office, QStringLiteral("dts_logg WHERE dl_info LIKE 'Slutt {%hentet, maskin%'")) != kTills)
        throw std::runtime_error("a till was visited twice, or not at all");
    return night;
}

// A chain of a third of the tills, led by a copy of its own.
struct Third {
    bench::ChainProcess chain{chainOf(kTills / kCopies)};
    std::unique_ptr<Copy> leading;
};

double apart(std::array<Third, kCopies>& thirds) {
    return bench::seconds([&] {
        for (Third& third : thirds) third.leading = std::make_unique<Copy>(third.chain.dataLink(), "leads");
        for (Third& third : thirds) third.leading->expectEndsWell();
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3) {
        const QCoreApplication application(argc, argv);
        return copyOfTheProgram(argv[1], argv[2]);
    }
    const bench::ChainProcess forOne(chainOf(kTills));
    const bench::ChainProcess forThree(chainOf(kTills));
    std::array<Third, kCopies> thirds;
    const QCoreApplication application(argc, argv);

    std::vector<std::unique_ptr<test::LineRelay>> lines;
    const auto behindLines = [&lines](const bench::ChainProcess& chain) {
        for (auto& line : bench::linesTo(chain.dataLink(), kThere)) lines.push_back(std::move(line));
    };
    behindLines(forOne);
    behindLines(forThree);
    for (const Third& third : thirds) behindLines(third.chain);

    const Night one = nightOf(forOne, 0);
    const Night three = nightOf(forThree, kCopies - 1);
    if (one.settlements != three.settlements || one.settlements < kTills)
        throw std::runtime_error("a settlement was lost, or posted twice");
    const double threeApart = apart(thirds);

    bench::tell({"night over 60 tills behind lines of 30 ms, one copy", one.seconds, "s", {}, {}});
    bench::tell("the same, one copy that leads and two that help", three.seconds, "s", "one copy (0.5 wanted)",
                one.seconds);
    bench::tell({"that many times as fast (2 wanted)", one.seconds / three.seconds, "times", "wanted",
                 one.seconds / three.seconds / kTimesAsFast});
    const char* const written = "of the night";
    bench::tell({"the back office's one writer is taken, one copy", one.written, written, {}, {}});
    bench::tell({"the same, three copies", three.written, written, {}, {}});
    bench::tell("three copies with a back office each", threeApart, "s", "one copy", one.seconds);
    bench::tell({"that many times as fast", one.seconds / threeApart, "times", {}, {}});
    const char* const perTill = "requests a till";
    bench::tell({"to the back office, one copy", one.officeRequests, perTill, {}, {}});
    bench::tell({"the same, three copies", three.officeRequests, perTill, {}, {}});
    bench::tell({"to the tills, one copy", one.tillRequests, perTill, {}, {}});
    return 0;
}

// A night over 60 tills with a day's sales, each behind a line of 30 ms there and back: by one copy of the program, and
// by one that leads and two that help, as processes of their own. The chain is a process of its own too. The stand-in
// has one writer for each database, and a pair of transactions holds it while the till is read: what three copies could
// do without that is shown by three that have a third of the tills and a back office each.
#include <QCoreApplication>
#include <QProcess>
#include <array>
#include <memory>
#include <vector>

#include "bench/chain_process.h"
#include "bench/figure.h"
#include "bench/slow_lines.h"
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

struct Night {
    double seconds = 0;
    qint64 settlements = 0;
    std::uint64_t officeRequests = 0;
};

Night nightOf(const bench::ChainProcess& chain, int helpers) {
    db::Session office;
    office.SetConnectString(QString::fromStdString(chain.dataLink()));
    office.Open();
    const std::uint64_t before = chain.requests().front();
    Night night;
    std::vector<std::unique_ptr<Copy>> helping;
    // When the leading copy is done, all tills have been fetched.
    night.seconds = bench::seconds([&] {
        Copy leading(chain.dataLink(), "leads");
        for (int i = 0; i < helpers; ++i) helping.push_back(std::make_unique<Copy>(chain.dataLink(), "helps"));
        leading.expectEndsWell();
    });
    for (const auto& copy : helping) copy->expectEndsWell();
    night.officeRequests = chain.requests().front() - before;
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
    bench::tell("three copies with a back office each", threeApart, "s", "one copy", one.seconds);
    bench::tell({"that many times as fast", one.seconds / threeApart, "times", {}, {}});
    bench::tell({"round trips to the back office, one copy",
                 static_cast<double>(one.officeRequests) / kTills,
                 "requests a till",
                 {},
                 {}});
    bench::tell(
        {"the same, three copies", static_cast<double>(three.officeRequests) / kTills, "requests a till", {}, {}});
    return 0;
}

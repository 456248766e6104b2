// How long the window goes without handling events during a night over 50 tills: the time from one turn of the event
// loop to the next, from the night's first line to its last. Of a gap above 100 ms it tells what stood in the way: the
// program's own functions that were under way then, and the log's last line. The back office and the tills are a
// process of their own.
#include <cxxabi.h>
#include <execinfo.h>
#include <pthread.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QWidget>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <thread>
#include <vector>

#include "bench/chain_process.h"
#include "bench/figure.h"
#include "shell/main_window.h"
#include "shell/settings/settings_store.h"
#include "tests/support/data_link.h"

namespace {

using torvik::MainWindow;
using Clock = std::chrono::steady_clock;

constexpr double kMostP99 = 50;       // ms
constexpr double kMostLongest = 100;  // ms
constexpr int kHeartbeatMs = 1;
constexpr std::size_t kFrames = 64;

double millisecondsSince(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

// What the main thread is at, taken by a signal in the middle of a long gap.
struct Sample {
    std::array<void*, kFrames> frames{};
    int count = 0;
};
Sample gSample;
std::atomic<bool> gSampled = false;

void takeSample(int) {
    gSample.count = backtrace(gSample.frames.data(), kFrames);
    gSampled = true;
}

// The innermost three of the program's own functions, the outermost of them first.
std::string ownFunctions(const Sample& sample) {
    char** symbols = backtrace_symbols(sample.frames.data(), sample.count);
    std::vector<std::string> own;
    for (int i = 0; i < sample.count && own.size() < 3; ++i) {
        const std::string symbol = symbols[i];
        const auto begin = symbol.find("(_Z");
        if (begin == std::string::npos) continue;
        const std::string mangled = symbol.substr(begin + 1, symbol.find('+', begin) - begin - 1);
        int status = 0;
        char* name = abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status);
        if (!name) continue;
        const std::string function = std::string(name).substr(0, std::string(name).find('('));
        std::free(name);
        if (function.starts_with("torvik::")) own.insert(own.begin(), function.substr(8));
    }
    std::free(symbols);
    std::string all;
    for (const std::string& function : own) all += (all.empty() ? "" : " > ") + function;
    return all.empty() ? "not the program's own" : all;
}

// A timer that ticks at every turn of the loop, and a thread that looks whether it does. The timer is a widget's, as
// those are that paint: other timers wait while a server does.
class EventGaps : public QWidget {
public:
    explicit EventGaps(MainWindow& window) : window_(window), main_(pthread_self()) {
        void* warm[1];
        backtrace(warm, 1);  // loads what it needs, which a signal handler may not
        std::signal(SIGUSR1, takeSample);
    }

    template <typename Run>
    void during(Run&& run) {
        last_ = Clock::now();
        watching_ = true;
        std::thread watch([this] { look(); });
        const int heartbeat = startTimer(kHeartbeatMs, Qt::PreciseTimer);
        run();
        turn();
        killTimer(heartbeat);
        watching_ = false;
        watch.join();
    }

    std::vector<double> gaps;                             // ms
    std::map<std::string, std::vector<double>> inTheWay;  // of those above the limit, by what it was

protected:
    void timerEvent(QTimerEvent*) override { turn(); }

private:
    void turn() {
        const auto now = Clock::now();
        const double gap = millisecondsSince(last_.exchange(now), now);
        gaps.push_back(gap);
        const bool sampled = gSampled.exchange(false);
        if (gap <= kMostLongest) return;
        const QStringList lines = window_.TorvikPos1().Log->Lines();
        const std::string line = lines.isEmpty() ? "" : lines.last().section(QStringLiteral("  : "), 1).toStdString();
        inTheWay[(sampled ? ownFunctions(gSample) : "not seen") + ", log at \"" + line.substr(0, 40) + "\""].push_back(
            gap);
    }
    void look() {
        Clock::time_point seen;
        while (watching_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            const Clock::time_point last = last_;
            if (last == seen || millisecondsSince(last, Clock::now()) < kMostLongest * 0.8) continue;
            seen = last;
            pthread_kill(main_, SIGUSR1);
        }
    }

    MainWindow& window_;
    pthread_t main_;
    std::atomic<Clock::time_point> last_;
    std::atomic<bool> watching_ = false;
};

void tell(EventGaps& night, double seconds) {
    std::vector<double>& gaps = night.gaps;
    std::sort(gaps.begin(), gaps.end());
    const auto above = [&](double limit) {
        return static_cast<double>(gaps.end() - std::upper_bound(gaps.begin(), gaps.end(), limit));
    };
    // What a press at any moment meets: gaps by the time that they last.
    double all = 0;
    for (const double gap : gaps) all += gap;
    double before = 0;
    double met = gaps.back();
    for (const double gap : gaps)
        if ((before += gap) >= all * 0.99) {
            met = gap;
            break;
        }
    using torvik::bench::tell;
    tell("event gap in a night of 50 tills, p99", gaps[gaps.size() * 99 / 100], "ms", "50 ms at most", kMostP99);
    tell("event gap that a press at any moment meets, p99", met, "ms", "50 ms at most", kMostP99);
    tell("event gap, longest", gaps.back(), "ms", "100 ms at most", kMostLongest);
    tell({"event gaps above 50 ms", above(kMostP99), "gaps", "", {}});
    tell({"event gaps above 100 ms", above(kMostLongest), "gaps", "", {}});
    tell({"the night", seconds, "s", "", {}});
    for (const auto& [what, each] : night.inTheWay)
        std::cerr << each.size() << " gaps above " << kMostLongest << " ms, the longest "
                  << *std::max_element(each.begin(), each.end()) << " ms: " << what << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    const torvik::bench::ChainProcess chain({.departments = 25, .tills = 50, .days = 2});
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    torvik::test::writeDataLink(folder.filePath(QStringLiteral("Torvik.UDL")),
                                QString::fromStdString(chain.dataLink()));
    torvik::SettingsStore store(folder.filePath(QStringLiteral("settings.ini")));
    store.write("Timeout", 1);
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(folder.path() + QLatin1Char('/'), store);
    window.show();
    QApplication::processEvents();  // painted for the first time long before the night
    torvik::TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.tempFolder = [&folder] { return folder.path(); };
    engine.Seam.now = [now = QDateTime::currentDateTime()] { return now; };  // its minute does not end
    engine.StartTime = engine.Seam.now().time();

    EventGaps night(window);
    const double seconds = torvik::bench::seconds([&] { night.during([&engine] { engine.DoOnTimer(); }); });
    tell(night, seconds);
    if (!engine.ErrorLog->Lines().isEmpty()) {
        std::cerr << engine.ErrorLog->Lines().join(u'\n').toStdString() << std::endl;
        return 1;
    }
    return 0;
}

// How long the window goes without handling events while a run is under way: the gaps between two pumps of the message
// loop, over a whole settlement run in the window and over a wait. The back office and the tills are stand-in servers
// in this process, so they share the machine with the run that is measured.
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <vector>

#include "bench/figure.h"
#include "sandbox/chain/demo_chain.h"
#include "shell/main_window.h"
#include "shell/settings/settings_store.h"
#include "tests/support/data_link.h"

namespace {

using torvik::MainWindow;
using Clock = std::chrono::steady_clock;

constexpr double kMostMilliseconds = 50;

// Times the seams of the engine through which it pumps.
class PumpGaps {
public:
    explicit PumpGaps(torvik::Seams& seams) {
        seams.pumpMessages = [this, pump = seams.pumpMessages] { timed([&] { pump(); }); };
        seams.pumpFor = [this, pump = seams.pumpFor](int milliseconds) { timed([&] { pump(milliseconds); }); };
    }

    template <typename Run>
    std::vector<double> during(Run&& run) {
        gaps_.clear();
        lastPump_ = Clock::now();
        run();
        note();
        std::sort(gaps_.begin(), gaps_.end());
        return gaps_;
    }

private:
    template <typename Pump>
    void timed(Pump&& pump) {
        note();
        pump();
        lastPump_ = Clock::now();
    }
    void note() { gaps_.push_back(std::chrono::duration<double, std::milli>(Clock::now() - lastPump_).count()); }

    Clock::time_point lastPump_;
    std::vector<double> gaps_;
};

void tell(const std::string& what, const std::vector<double>& gaps) {
    torvik::bench::tell("gap between pumps " + what + ", p99", gaps[gaps.size() * 99 / 100], "ms", "50 ms at most",
                        kMostMilliseconds);
    torvik::bench::tell("gap between pumps " + what + ", longest", gaps.back(), "ms", "50 ms at most",
                        kMostMilliseconds);
    torvik::bench::tell({"pumps " + what, static_cast<double>(gaps.size() - 1), "pumps", "", {}});
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    const sandbox::chain::DemoChain chain({.chain = {.departments = 3, .tills = 6, .days = 10}});
    torvik::test::writeDataLink(folder.filePath(QStringLiteral("Torvik.UDL")),
                                QString::fromStdString(chain.dataLink()));
    torvik::SettingsStore store(folder.filePath(QStringLiteral("settings.ini")));
    store.write("Timeout", 1);
    MainWindow window(folder.path() + QLatin1Char('/'), store);
    window.show();
    window.SelectTills = [&chain](torvik::TKasseCollection& tills) {
        for (const auto& till : chain.model().tills) {
            torvik::TKasseItem& item = tills.Add();
            item.Ik_Ku_ID = chain.model().departments[static_cast<std::size_t>(till.department)].id;
            item.Kassenr = QString::fromStdString(till.number).leftJustified(10);
        }
        return true;
    };

    PumpGaps gaps(window.TorvikPos1().Seam);
    auto* fetch = window.findChild<QAction*>(QStringLiteral("actiOppgjorManually"));
    tell("during a settlement run", gaps.during([fetch] { fetch->trigger(); }));
    tell("during a wait", gaps.during([&window] { (void)window.TorvikPos1().WaitSeconds(3); }));
    if (!window.TorvikPos1().ErrorLog->Lines().isEmpty()) {
        std::cerr << window.TorvikPos1().ErrorLog->Lines().join(u'\n').toStdString() << std::endl;
        return 1;
    }
    return 0;
}

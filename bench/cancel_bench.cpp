// How soon a cancel takes effect: from the operator's click, an event that is pumped during a copy, to its abort, and
// to the till's end with both databases rolled back.
#include <QCoreApplication>
#include <QRegularExpression>
#include <QTimer>
#include <chrono>
#include <optional>

#include "bench/big_settlement.h"
#include "bench/chain_process.h"
#include "bench/figure.h"
#include "engine/base/abort.h"
#include "engine/roster/avdeling.h"
#include "inbound/settlement/oppgjor.h"
#include "tests/support/chain_program.h"

namespace {

using namespace torvik;
using Clock = std::chrono::steady_clock;

constexpr int kOrders = 10'000;
constexpr int kClickAtRow = 20'000;
constexpr double kMostToAbort = 100;  // ms

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Tells when the line of a failed transfer is written.
class AbortPane : public StringListPane {
public:
    void AddLine(const QString& line) override {
        if (!aborted && line.contains(QStringLiteral("Feil ved Execute prosedyren"))) aborted = Clock::now();
        StringListPane::AddLine(line);
    }
    std::optional<Clock::time_point> aborted;
};

}  // namespace

int main(int argc, char** argv) {
    const bench::ChainProcess chain({.departments = 1, .tills = 1, .days = 0, .versions = {213}},
                                    [](sandbox::chain::DemoChain& made) { bench::addBigSettlement(made, 0, kOrders); });
    const QCoreApplication application(argc, argv);
    test::ChainProgram program(chain.dataLink());
    AbortPane pane;
    program.engine.Log = &pane;
    program.target.Open();
    program.engine.Avdeling->Open();
    if (!program.engine.ConnectSource()) return 1;

    // The window pumps at each report of progress; the click waits in the queue until then.
    Clock::time_point click;
    program.engine.OnProgress = [&](QObject*, int, const QString& text) {
        if (text.startsWith(QStringLiteral("Overfører Ordrelinje: %1 av").arg(kClickAtRow)))
            QTimer::singleShot(0, &program.engine, [&] {
                click = Clock::now();
                program.engine.SetCancelRequest(true);
            });
        QCoreApplication::processEvents();
    };
    QString failure;
    TOppgjor oppgjor(program.engine.Parts().Visit(), program.joinPoints);
    try {
        oppgjor.Execute();
    } catch (const std::exception& e) {
        failure = ErrorText(e);
    }
    const double toEnd = millisecondsSince(click);
    const auto row = QRegularExpression(QStringLiteral("Overfører Ordrelinje: (\\d+) av ")).match(failure);
    if (!row.hasMatch() || !pane.aborted) return 1;
    const double toAbort = std::chrono::duration<double, std::milli>(*pane.aborted - click).count();

    bench::tell({"cancel during a copy, rows begun after the click", row.captured(1).toDouble() - kClickAtRow, "rows",
                 "1 at most", row.captured(1).toDouble() - kClickAtRow});
    bench::tell("cancel during a copy, from the click to the abort", toAbort, "ms", "100 ms at most", kMostToAbort);
    bench::tell({"cancel during a copy, from the click to the end of the till, all rolled back", toEnd, "ms", {}, {}});
}

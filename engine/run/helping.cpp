#include "engine/run/helping.h"

#include "engine/base/seams.h"
#include "engine/run/night_share.h"
#include "engine/run/run_parts.h"
#include "engine/run/settlement_run.h"

namespace torvik {

namespace {

constexpr int kLongestWaitMinutes = 30;
constexpr int kBetweenLooksMs = 5000;

// The next night to help with; none when the wait is over. A night that has been helped with and still stands may be
// one whose leading copy has died: another may begin.
class NightsToHelp {
public:
    explicit NightsToHelp(RunParts& parts)
        : parts_(parts), end_(parts.Context.Seam.tickCount() + qint64{kLongestWaitMinutes} * 60 * 1000) {}

    [[nodiscard]] std::optional<SharedNight> Next() {
        while (true) {
            parts_.Office.Begin();
            const std::optional<SharedNight> night = SharedNights(parts_.Office).Standing();
            if (night && (!helped_ || night->id != helped_->id)) return helped_ = night;
            const bool ended = helped_ && !night;
            if (ended || parts_.Context.Seam.tickCount() >= end_) return {};
            parts_.Control.Pause(kBetweenLooksMs);
        }
    }
    [[nodiscard]] bool HasHelped() const { return helped_.has_value(); }

private:
    RunParts& parts_;
    qint64 end_;
    std::optional<SharedNight> helped_;
};

void help(RunParts& parts, const SharedNight& night) {
    parts.Log.AddLog(QStringLiteral("Hjelper maskin %1 med innhentingen").arg(night.machine));
    SharedNights(parts.Office).Join(night);
    NightShare share(parts, night, NightShare::Role::Helps);
    ExecuteOppgjor(parts, &share);
    if (parts.Control.Cancelled) parts.Control.TestCancel();
}

}  // namespace

void HelpToFetch(RunParts& parts) {
    parts.Log.AddLog(
        QStringLiteral("Venter i inntil %1 minutter på en innhenting å hjelpe til med").arg(kLongestWaitMinutes));
    NightsToHelp nights(parts);
    while (const std::optional<SharedNight> night = nights.Next()) help(parts, *night);
    parts.Log.AddLog(nights.HasHelped() ? QStringLiteral("Hjelp til innhentingen fullført")
                                        : QStringLiteral("Ingen innhenting å hjelpe til med"));
}

}  // namespace torvik

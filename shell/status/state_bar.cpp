// The states from left to right are a table of data; the bar's parts and the buttons are made of it.
#include "shell/status/state_bar.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <numeric>

#include "shell/look/colors.h"

namespace torvik {

namespace {

constexpr int kBarHeight = 12;

struct StateRow {
    TillState state;
    const char* name;  // of its button
    Tone tone;
};
// From left to right: what is behind the run, where it is, what is before it.
constexpr std::array<StateRow, kTillStates.size()> kStates{{
    {TillState::Done, "stateDone", Tone::Green},
    {TillState::Failed, "stateFailed", Tone::Red},
    {TillState::Running, "stateRunning", Tone::Blue},
    {TillState::Waiting, "stateWaiting", Tone::Grey},
}};

std::size_t at(TillState state) {
    return static_cast<std::size_t>(state);
}

QIcon swatch(Tone tone) {
    QPixmap pixmap(24, 24);
    pixmap.fill(fillColor(tone));
    return pixmap;
}

}  // namespace

class StateBar::Bar : public QWidget {
public:
    explicit Bar(QWidget* parent) : QWidget(parent) { setFixedHeight(kBarHeight); }
    std::array<int, kTillStates.size()> counts{};

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::AlternateBase));
        const int all = std::accumulate(counts.begin(), counts.end(), 0);
        int before = 0;
        for (const StateRow& row : kStates) {
            if (all == 0) break;
            const int from = width() * before / all;
            before += counts[at(row.state)];
            painter.fillRect(from, 0, width() * before / all - from, height(), fillColor(row.tone));
        }
    }
};

StateBar::StateBar(QWidget* parent) : QWidget(parent), bar_(new Bar(this)) {
    auto* buttons = new QHBoxLayout;
    for (const StateRow& row : kStates) {
        auto* button = new QPushButton(swatch(row.tone), QString(), this);
        button->setObjectName(QString::fromUtf8(row.name));
        button->setCheckable(true);
        button->setFlat(true);
        button->setIconSize(QSize(12, 12));
        button->setToolTip(QStringLiteral("Vis bare disse kassene; trykk igjen for å vise alle"));
        connect(button, &QPushButton::toggled, this, [this, state = row.state](bool on) { chosen(state, on); });
        buttons_[at(row.state)] = button;
        buttons->addWidget(button);
    }
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(bar_);
    layout->addLayout(buttons);
    setCounts({});
}

void StateBar::setCounts(const std::array<int, kTillStates.size()>& counts) {
    for (const StateRow& row : kStates)
        buttons_[at(row.state)]->setText(
            QStringLiteral("%1: %2").arg(TillStateText(row.state)).arg(counts[at(row.state)]));
    if (bar_->counts == counts) return;
    bar_->counts = counts;
    bar_->update();
}

// At most one is down.
void StateBar::chosen(TillState state, bool on) {
    if (on)
        for (const StateRow& row : kStates)
            if (row.state != state) {
                const QSignalBlocker quiet(buttons_[at(row.state)]);
                buttons_[at(row.state)]->setChecked(false);
            }
    Q_EMIT filterChanged(on ? std::optional(state) : std::nullopt);
}

}  // namespace torvik

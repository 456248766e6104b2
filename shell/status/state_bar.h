// How far a run is: a bar with a part for each state of tills, and under it a button for each with the number of tills,
// which shows those alone. Owned by the status view.
#pragma once

#include <QWidget>
#include <array>
#include <optional>

#include "engine/status/till_state.h"

class QPushButton;

namespace torvik {

class StateBar : public QWidget {
    Q_OBJECT

public:
    explicit StateBar(QWidget* parent = nullptr);

    void setCounts(const std::array<int, kTillStates.size()>& counts);

Q_SIGNALS:
    // The state whose tills are wanted alone; none for all.
    void filterChanged(std::optional<TillState> only);

private:
    class Bar;

    void chosen(TillState state, bool on);

    Bar* bar_;
    std::array<QPushButton*, kTillStates.size()> buttons_{};
};

}  // namespace torvik

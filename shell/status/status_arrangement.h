// How the operator wants the tills of the status arranged: grouped, sorted, failed ones first, those of one state only.
// StatusTreeModel arranges by it; the panel above the tree sets it.
#pragma once

#include <QString>
#include <Qt>
#include <optional>
#include <utility>

#include "engine/status/oppgjor_status_table.h"
#include "engine/status/till_state.h"

namespace torvik {

enum class StatusGroup { None, Avdeling, Status, Hentet, Sendt };

struct StatusArrangement {
    StatusGroup group = StatusGroup::None;
    // None: the run's order, by department number downwards and then by its text.
    std::optional<OppgjorStatusTable::Column> sortColumn;
    Qt::SortOrder sortOrder = Qt::AscendingOrder;
    bool failedFirst = false;
    std::optional<TillState> only;

    // A change of a till's state or values cannot move it.
    [[nodiscard]] bool isFixed() const;
    bool operator==(const StatusArrangement&) const = default;
};

// All take rows of memOppgjorStatus.
[[nodiscard]] bool shows(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int row);
[[nodiscard]] bool comesBefore(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int left,
                               int right);
// What a till's group is called, and where it stands among the groups; the same for all tills of one.
struct StatusGroupKey {
    QString caption;
    std::pair<int, QString> place;
};
[[nodiscard]] StatusGroupKey groupOf(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int row);

}  // namespace torvik

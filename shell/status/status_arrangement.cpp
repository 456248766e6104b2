// Ties fall back to the run's order, so that the rows never jump among equals.
#include "shell/status/status_arrangement.h"

#include <compare>

#include "engine/status/oppgjor_status.h"

namespace torvik {

namespace {

using Column = OppgjorStatusTable::Column;

// "Nei" before what is not known before "Ja".
StatusGroupKey yesOrNo(const char16_t* what, const std::optional<bool>& value) {
    const QString name = QString::fromUtf16(what);
    if (!value) return {name + QStringLiteral(": ikke ennå"), {1, {}}};
    return *value ? StatusGroupKey{name + QStringLiteral(": Ja"), {2, {}}}
                  : StatusGroupKey{name + QStringLiteral(": Nei"), {0, {}}};
}

// Nulls come first, as in the server's order.
std::partial_ordering compared(const QVariant& left, const QVariant& right) {
    if (!left.isValid() || !right.isValid()) return left.isValid() <=> right.isValid();
    if (left.typeId() == QMetaType::QString)
        return QString::localeAwareCompare(left.toString(), right.toString()) <=> 0;
    const QPartialOrdering order = QVariant::compare(left, right);
    if (order == QPartialOrdering::Less) return std::partial_ordering::less;
    return order == QPartialOrdering::Greater ? std::partial_ordering::greater : std::partial_ordering::equivalent;
}

}  // namespace

bool StatusArrangement::isFixed() const {
    const bool byName = !sortColumn || sortColumn == Column::Avdnr || sortColumn == Column::Kassenr;
    return byName && !failedFirst && !only && (group == StatusGroup::None || group == StatusGroup::Avdeling);
}

bool shows(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int row) {
    return !arrangement.only || *arrangement.only == TillStateOf(status, row);
}

bool comesBefore(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int left, int right) {
    if (arrangement.failedFirst) {
        const bool leftFailed = TillStateOf(status, left) == TillState::Failed;
        const bool rightFailed = TillStateOf(status, right) == TillState::Failed;
        if (leftFailed != rightFailed) return leftFailed;
    }
    const OppgjorStatusTable& table = status.memOppgjorStatus;
    if (arrangement.sortColumn) {
        // A department's number sorts as a number.
        const Column column = arrangement.sortColumn == Column::Avdnr ? Column::AvdnrSort : *arrangement.sortColumn;
        const auto value = [&](int row) { return table.index(row, column).data(OppgjorStatusTable::RawValue); };
        const auto order = compared(value(left), value(right));
        if (order != 0) return arrangement.sortOrder == Qt::AscendingOrder ? order < 0 : order > 0;
    }
    const OppgjorStatusRow& a = table.Row(left);
    const OppgjorStatusRow& b = table.Row(right);
    if (a.AvdnrSort != b.AvdnrSort) return a.AvdnrSort > b.AvdnrSort;
    if (a.Avdnr != b.Avdnr) return a.Avdnr < b.Avdnr;
    return left < right;  // as they were met
}

StatusGroupKey groupOf(const StatusArrangement& arrangement, const TfraOppgjorStatus& status, int row) {
    const OppgjorStatusRow& till = status.memOppgjorStatus.Row(row);
    switch (arrangement.group) {
        case StatusGroup::None: return {};
        case StatusGroup::Avdeling:
            return {QStringLiteral("Avdeling %1 %2").arg(till.Avdnr, till.AvdNavn),
                    {-till.AvdnrSort.value_or(0), till.Avdnr}};
        case StatusGroup::Status: {
            const TillState state = TillStateOf(status, row);
            return {TillStateText(state), {static_cast<int>(state), {}}};
        }
        case StatusGroup::Hentet: return yesOrNo(u"Hentet", till.Hentet);
        case StatusGroup::Sendt: return yesOrNo(u"Sendt", till.Sendt);
    }
    return {};
}

}  // namespace torvik

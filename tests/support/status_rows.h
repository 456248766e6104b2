// The status rows of a run as text, in the order of the roster.
#pragma once

#include <QStringList>

#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"

namespace torvik::test {

// "department/till hentet ja|nei|- sendt ja|nei|-: text"; the comma behind a row's text is left out.
[[nodiscard]] inline QStringList statusRows(const TTorvikPos& engine) {
    const OppgjorStatusTable& table = engine.ffraOppgjorStatus->memOppgjorStatus;
    const auto told = [](const std::optional<bool>& value) {
        return !value ? QStringLiteral("-") : *value ? QStringLiteral("ja") : QStringLiteral("nei");
    };
    QStringList rows;
    for (int i = 0; i < table.RecordCount(); ++i) {
        const OppgjorStatusRow& row = table.Row(i);
        rows << QStringLiteral("%1/%2 hentet %3 sendt %4: %5")
                    .arg(row.Avdnr, row.Kassenr, told(row.Hentet), told(row.Sendt), row.Melding.chopped(1));
    }
    return rows;
}

}  // namespace torvik::test

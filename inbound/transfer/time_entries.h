// The time entries of one transfer: which were copied, and which the till's mark then took. An entry that ended, or was
// released, between the two was marked without having been copied; it gets its status back. Used by TdmPOStoTorvik for
// the steps "Timer" and "Oppdater Timer".
#pragma once

#include <QSet>
#include <QString>
#include <vector>

#include "inbound/pairs/till_mark.h"

namespace torvik {

namespace db {
class DataSet;
}

class TimeEntries {
public:
    // The entries that the step "Timer" has copied: the rows of its source, which is left behind its last row.
    void copied(db::DataSet& source);

    // Before the mark, and after it, in the till's transaction. `after` is handed the rows of FetchedSql as they are
    // then, and gives what the mark has taken for good.
    void before(db::Session& till, bool together);
    [[nodiscard]] static QString FetchedSql();
    [[nodiscard]] std::vector<TillMark> after(db::DataSet& fetched, db::Session& till);

private:
    QSet<qint64> copied_;
    QSet<qint64> fetchedBefore_;
    QString releaseTime_;  // of the till, style 121; empty for none
};

}  // namespace torvik

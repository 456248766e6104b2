// The till's line in the run status while its settlements are fetched: whose line it is, the time since the fetch began
// and the days since the till's last backup go with every call. Used by both phases.
#pragma once

#include <QElapsedTimer>
#include <QTime>

#include "engine/run/till_visit.h"
#include "engine/status/oppgjor_status.h"

namespace torvik {

class TillStatus {
public:
    explicit TillStatus(const TillVisit& visit) : visit_(visit) { elapsed_.start(); }

    // elapsed: the time since it was made, unless given. Without a status frame nothing happens.
    void set(TOKStatus value, TOppgjorStatusType kind, const QString& melding = {}, QTime elapsed = {}) const;

    int DaysSinceLastBackup = -1;  // not known

private:
    const TillVisit& visit_;
    QElapsedTimer elapsed_;
};

}  // namespace torvik

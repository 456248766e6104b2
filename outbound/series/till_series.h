// The number series of one till, its table ledigid: a row holds the next free number of a series. Numbers go up only.
// Used by the number series' run.
#pragma once

#include <QString>

#include "engine/db/mem_table.h"

namespace torvik {

namespace db {
class Session;
}
class OperatorLog;

class TillSeries {
public:
    // Reads the table. The session is the till's and open; both outlive this.
    TillSeries(db::Session& till, OperatorLog& log);

    // Raises the series' next number to this one where it is lower, and tells it; a series that the till does not have
    // is made. Names that differ in case alone are one series. Each change stands by itself at once.
    void raise(const QString& name, int next);

    // Tells the till that its series are up to date; nothing at a till that has no such mark.
    void SetSeriesSynchronized();

private:
    void UpdateIdentity(const QString& TableName, int NewValue);
    void store(const char* sql, const QString& name, int next);

    db::Session& till_;
    OperatorLog& log_;
    db::MemTable series_;  // as the till has them by now
};

}  // namespace torvik

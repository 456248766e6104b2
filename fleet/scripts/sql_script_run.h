// A SQL script over the chosen tills: as batches for their effect, or as one query whose rows come back. Messages to
// the tills travel by it too. See docs/fleet.md.
#pragma once

#include <QStringList>

namespace torvik {

class RunParts;

inline constexpr int kScriptTimeout = 600;  // seconds, a batch

// At every till of the roster. ReturnCursor: the whole script is one query, whose rows go to OnSqlScriptReturnDataEvent
// while they are open; else it is run batch by batch, and a batch's failure, its time-out too, is told and stops
// neither the till nor the script. ParamCheck: as Query has it. What a script leaves of a transaction is rolled back
// and told. A till's failure is told and stops nothing; raises a cancel, which also ends the batch under way, and what
// befalls the roster itself.
void ExecuteSQLScript(RunParts& parts, const QStringList& AScript, bool ReturnCursor, bool ParamCheck,
                      int timeout = kScriptTimeout);

}  // namespace torvik

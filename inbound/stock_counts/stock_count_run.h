// The run that brings the stock counts of all tills of the roster into the back office. docs/till-operations.md.
#pragma once

#include <QString>

namespace torvik {

class RunParts;
class TTorvikPos;

// Lets no till's failure out; raises a cancel, and what befalls the roster. Refuses with an EngineError while another
// copy of the program brings stock counts: the stage is one for the chain. Notes as TVaretelling has them.
void ExecuteVaretelling(RunParts& parts, const QString& noteFolder);

// Joins the stock counts to the engine: sets its OnExecuteVaretelling. Called once, where the program is put together.
void joinStockCounts(TTorvikPos& torvikPos, const QString& noteFolder = {});

}  // namespace torvik

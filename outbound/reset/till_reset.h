// Empties tills that are to be taken into use anew: sales, settlements and logs, and at the operator's choice the
// registers of items, customers and staff. docs/till-operations.md tells the whole.
#pragma once

#include <QString>

namespace torvik {

class RunParts;
class TTorvikPos;

// Over all tills that the roster holds where Ku_Id is -1, else over the one till; InitializeItems says what goes. Asks
// first, and does nothing without a yes, nor in a service. Lets no till's failure out; raises a cancel that comes
// between two tills, and what befalls the roster.
void InitializeTorvikPOS(RunParts& parts, int Ku_Id, const QString& Kassenummer);

// Joins it to the engine: sets its OnInitializeTorvikPOS. Called once, where the program is put together.
void joinReset(TTorvikPos& torvikPos);

}  // namespace torvik

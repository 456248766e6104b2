// A SQL script's text as the runs over the tills see it: the batches it is cut into, and whether it asks for more than
// rows. Used by the script run and by the dialog that it is written in.
#pragma once

#include <QStringList>
#include <vector>

namespace torvik {

// A batch ends with a line that is "GO" and nothing else, which is the batch's last, and with the script. An empty
// script has none.
[[nodiscard]] std::vector<QStringList> scriptBatches(const QStringList& script);

// Whether a word of the script, outside its literals, names and comments, writes rows, changes the database, or runs
// what may do so. For a warning, not a lock.
[[nodiscard]] bool changesData(const QStringList& script);

}  // namespace torvik

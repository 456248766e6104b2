// What a send knows of the till's tables ahead of the steps that use them: its version, whether it has the tables that
// not every till has, and the work tables of all steps, made in one round trip that also tells what they look like. All
// of it is asked of that till, at each send. Used by TdmTorvikToPOS; docs/sending.md.
#pragma once

#include <map>
#include <string>

#include "engine/db/table_shapes.h"

namespace torvik {

namespace db {
class Query;
class Session;
}  // namespace db
struct SendFacts;

class TillTables {
public:
    // Nothing is known: another till, or the same at another time.
    void Forget();

    // The till's version. With `together` the questions of all steps for a table go with it; where the till refuses
    // them together, each is asked by itself when its step comes. `question` is a query on the till.
    [[nodiscard]] int ReadVersion(db::Query& question, bool together);
    [[nodiscard]] bool TableExists(db::Session& till, const char* table);

    // Makes the work tables of all steps of such a send, and asks what they look like: at the first call, which comes
    // before anything is loaded. Gives whether they have been made, at every later call too. False: the till has
    // refused something; each step then makes its own, and the failing one tells itself. Raises all else.
    [[nodiscard]] bool MakeAll(db::Session& till, const SendFacts& facts);

    // What tables look like. Those of a send's own work tables are as MakeAll has found them.
    db::TableShapes Shapes;

private:
    std::map<std::string, bool> has_;  // of the tables asked for
    bool tried_ = false;
    bool made_ = false;
};

}  // namespace torvik

// The small registers of the back office that a send reads in one round trip for several steps (ReadWith), and holds
// until their steps come. Used by TdmTorvikToPOS; docs/sending.md tells which, and why that is safe.
#pragma once

#include <map>
#include <memory>

#include "engine/db/batched_reads.h"
#include "outbound/shape/action.h"

namespace torvik {

class OfficeReads {
public:
    // Nothing is held: another till, or the same at another time.
    void Forget() { groups_.clear(); }

    // The rows of the group's next read, which must be of this text; the first call reads the whole group, as such a
    // send needs it. They are good until the next call. Null where the back office has refused one: this read and those
    // of the group behind it are made by themselves, so that the failing one tells itself. Raises all else.
    [[nodiscard]] db::DataSet* Open(db::Session& office, ReadWith group, const QString& sql, const SendFacts& facts,
                                    int timeout);

private:
    std::map<ReadWith, std::unique_ptr<db::BatchedReads>> groups_;  // null: refused
};

}  // namespace torvik

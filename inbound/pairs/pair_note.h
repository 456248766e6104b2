// What a pair of transactions notes on the program's own disk before the till's commit: enough to find out whether the
// till has committed, and to take the pair's marks back. Kept by PairNotes.
#pragma once

#include <QByteArray>
#include <optional>
#include <vector>

#include "inbound/pairs/pair_intent.h"
#include "inbound/pairs/till_mark.h"

namespace torvik {

struct PairNote {
    PairIntent intent;
    int Ik_Ku_Id = 0;
    QString KasseNr;
    std::optional<NotedSettlement> settlement;  // that the till is known by; none where it had none
    std::vector<TillMark> marks;

    // One JSON object, UTF-8.
    [[nodiscard]] QByteArray toJson() const;
    // Raises EngineError when the text is no note.
    [[nodiscard]] static PairNote fromJson(const QByteArray& json);

    friend bool operator==(const PairNote&, const PairNote&) = default;
};

}  // namespace torvik

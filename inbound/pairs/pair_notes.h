// The notes of this copy of the program, one file a pair, in a folder on its own disk. What has been written is there
// after a power failure. The folder has an identity of its own, which the intents name: a folder that was lost is
// another one, and its intents are then no longer this copy's to judge.
#pragma once

#include <QDir>
#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

#include "inbound/pairs/pair_note.h"

namespace torvik {

class PairNotes {
public:
    // Nothing is touched before the first use.
    explicit PairNotes(const QString& folder) : folder_(folder) {}

    // The folder's identity, as it stands on the disk now. Makes the folder at the first use; raises EngineError where
    // it cannot be made or read.
    [[nodiscard]] QUuid storeId() const;

    // Durable when it returns. Raises EngineError when the disk does not take it; then there is no note.
    void write(const PairNote& note) const;
    // Nothing where there is none; ask storeId as well, since a disk that is gone shows none either. Raises EngineError
    // for one that cannot be read: it is there, and not understood.
    [[nodiscard]] std::optional<PairNote> read(const QUuid& pair) const;
    // Those of one till that can be read. One that cannot may be any till's, or have been removed meanwhile by another
    // copy: it holds back only the till whose intent names it (read).
    [[nodiscard]] std::vector<PairNote> ofTill(int Ik_Ku_Id, const QString& KasseNr) const;
    // A note that stays is found again, and has no intent then.
    void remove(const QUuid& pair) const noexcept;

private:
    [[nodiscard]] QString fileOf(const QUuid& pair) const;

    QDir folder_;
};

}  // namespace torvik

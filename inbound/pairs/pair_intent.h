// The proof of how a pair of transactions has ended: a row of dts_logg that is committed at the back office before the
// pair begins and deleted inside the back office's transaction. While it stands, that side has not committed. Any copy
// of the program reads it. Used by TransactionPair and by the resolution at a till's visit; docs/failures.md tells the
// whole.
#pragma once

#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

namespace torvik {

namespace db {
class Session;
}

struct PairIntent {
    QUuid id;
    QString subject;  // what the pair takes, as the log words it: "overføring", "oppgjør 17"
    QUuid store;      // the notes of the copy that began it (PairNotes::storeId)
    QString machine;  // whose that copy is
    QString began;    // the back office's time; set when read

    // As it stands in dl_info.
    [[nodiscard]] QString text() const;
    // Nothing when the text is no intent.
    [[nodiscard]] static std::optional<PairIntent> fromText(const QString& text);

    friend bool operator==(const PairIntent&, const PairIntent&) = default;
};

// The intents of one till. The session is the back office's and open.
class PairIntents {
public:
    PairIntents(db::Session& backOffice, int Ik_Ku_Id, const QString& KasseNr);

    void write(const PairIntent& intent);
    // Whether the row was there to be deleted.
    bool strike(const PairIntent& intent);
    // Those that stand as far as can be seen without waiting for anybody, oldest first.
    [[nodiscard]] std::vector<PairIntent> standing();
    // Whether it stands for certain, and locks it until the transaction ends. Raises when somebody else holds it: then
    // it is undecided.
    [[nodiscard]] bool standsForCertain(const PairIntent& intent);

private:
    db::Session& backOffice_;
    int ikKuId_;
    QString kasseNr_;
};

}  // namespace torvik

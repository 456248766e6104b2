// What a pair of transactions marks on the till, as it is noted and, where the till's side stands alone, taken back: a
// kind a row, each with the statements that look at the mark and undo it. Values are texts as the till's server writes
// them, so that they compare exactly. Filled in by the fetch, used by PairNote, TransactionPair and the resolution.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <span>

namespace torvik {

namespace db {
class DataSet;
class Session;
}  // namespace db

struct TillMark {
    enum class Kind {
        Settlement,        // OP_OPPDATERTTIDSPUNKT, in a chain
        SettlementStatus,  // OP_STATUS, in a single back office
        GiftCard,          // GA_SYNKTIDSPUNKT
        CreditNote,        // TG_SYNKTIDSPUNKT
        TimeEntry,         // TI_STATUS
        ReleaseTime,       // IN_KLAR_HENT_TIMER, which the mark of time entries clears
    };

    Kind kind;
    QStringList key;  // of its row, in the order of the kind's columns
    QString marked;   // what the pair wrote; nothing for a release time
    QString before;   // what stood there; empty for null

    friend bool operator==(const TillMark&, const TillMark&) = default;
};

struct TillMarkKind {
    TillMark::Kind kind;
    const char* name;      // in a note
    const char* takeBack;  // :Key1 to :Key3, :Marked, :Before where the statement names them
    const char* stands;    // as above: a row where the mark stands; locks it
};

[[nodiscard]] std::span<const TillMarkKind> tillMarkKinds();
[[nodiscard]] const TillMarkKind& kindOf(const TillMark& mark);

// The session is the till's. Whether the mark stands exactly as it was made; raises when somebody else holds its row.
[[nodiscard]] bool stands(const TillMark& mark, db::Session& till);
// Whether it stood and has been taken back.
[[nodiscard]] bool takeBack(const TillMark& mark, db::Session& till);

// A settlement by which a till is known again: a till that was reset or restored does not have it. The time is style
// 121 of the server.
struct NotedSettlement {
    qint64 id = 0;
    QString time;

    friend bool operator==(const NotedSettlement&, const NotedSettlement&) = default;
};

// The till's last settlement; nothing where it has none.
[[nodiscard]] std::optional<NotedSettlement> lastSettlement(db::Session& till);
// The same from the rows of its statement, for whoever asks more at once.
[[nodiscard]] QString lastSettlementSql();
[[nodiscard]] std::optional<NotedSettlement> lastSettlement(const db::DataSet& rows);
// Whether the till still has it, with the same time.
[[nodiscard]] bool has(const NotedSettlement& settlement, db::Session& till);

}  // namespace torvik

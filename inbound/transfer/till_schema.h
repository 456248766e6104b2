// What the transfer asks of a till before it reads it: its version, and whether it has the tables that not every till
// has. Both are the till's own, asked at each visit. Used by TdmPOStoTorvik, and by SettlementTransfer, which begins
// the till's transaction in the same round trip.
#pragma once

#include <QHash>
#include <QString>
#include <optional>

namespace torvik {

namespace db {
class Session;
}

class TillSchema {
public:
    // In one round trip, or one by one where the till refuses that. Raises UsageError for a version that is no whole
    // number, and what the till refuses by itself.
    [[nodiscard]] static TillSchema Ask(db::Session& till);
    // Begins the till's transaction, and asks in the same round trip. Nothing where the till refuses a question or
    // gives no whole number: the transaction has begun, and whoever asks again is told what is wrong. Raises what keeps
    // the transaction from beginning.
    [[nodiscard]] static std::optional<TillSchema> BeginAndAsk(db::Session& till);

    [[nodiscard]] int Version() const { return version_; }
    // A table that some map requires.
    [[nodiscard]] bool Has(const char* table) const { return tables_.value(QString::fromUtf8(table)); }

    // The two questions, for whoever asks them by themselves.
    [[nodiscard]] static QString VersionSql();
    [[nodiscard]] static QString TableSql(const QString& table);

private:
    template <typename RowsOf>
    [[nodiscard]] static TillSchema of(const RowsOf& rowsOf);

    int version_ = 0;
    QHash<QString, bool> tables_;
};

}  // namespace torvik

// Gift cards and credit notes that have changed on the till: brought to the back office's central copies in phase one's
// pair of transactions, and marked on the till.
#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/oppgjor.h"

namespace torvik {

namespace {

constexpr int kLinesABatch = 64;

// What tells the two kinds apart: their texts.
struct VoucherKind {
    const char* prefix;
    const char* changed;
    const char* log;
    const char* issuedBy;  // the column of what issued it, behind the prefix
    const char* insert;
    const char* unlessThere;
    const char* update;
    const char* thisOne;
    const char* mark;
};

constexpr VoucherKind kGavekort{
    "GA_",
    "SELECT * FROM gavekort WHERE GA_SYNKTIDSPUNKT IS NULL",
    "Importerer gavekort %1",
    "OL_ID",
    "INSERT INTO POSGAVEKORT (GA_ID,GA_AVDNR,GA_KASSENR,GA_AN_ID,GA_OL_ID,GA_BELOP,GA_GYLDIGTIL,GA_BET_AVDNR,GA_BET_KASSENR,GA_BET_AN_ID,GA_BT_ID,GA_SYNKTIDSPUNKT) SELECT %1",
    "WHERE NOT EXISTS ( SELECT 1 FROM POSGAVEKORT WHERE GA_ID='%1' AND GA_AVDNR='%2' AND GA_KASSENR='%3')",
    "UPDATE POSGAVEKORT set %1",
    "WHERE Ga_ID='%1' AND Ga_AvdNr='%2' AND Ga_Kassenr = '%3'",
    "UPDATE gavekort SET GA_SYNKTIDSPUNKT=GETDATE() WHERE GA_SYNKTIDSPUNKT IS NULL",
};

constexpr VoucherKind kTilgodelapp{
    "TG_",
    "SELECT * FROM Tilgodelapp WHERE TG_SYNKTIDSPUNKT IS NULL",
    "Importerer tilgodelapp %1",
    "OR_ID",
    "INSERT INTO POSTilgodelapp (TG_ID,TG_AVDNR,TG_KASSENR,TG_AN_ID,TG_OR_ID,TG_BELOP,TG_GYLDIGTIL,TG_BET_AVDNR,TG_BET_KASSENR,TG_BET_AN_ID,TG_BT_ID,TG_SYNKTIDSPUNKT) SELECT %1",
    "WHERE NOT EXISTS ( SELECT 1 FROM POSTilgodelapp WHERE TG_ID='%1' AND TG_AVDNR='%2' AND TG_KASSENR='%3')",
    "UPDATE POSTilgodelapp set %1",
    "WHERE TG_ID='%1' AND TG_AvdNr='%2' AND TG_Kassenr = '%3'",
    "UPDATE Tilgodelapp SET TG_SYNKTIDSPUNKT=GETDATE() WHERE TG_SYNKTIDSPUNKT IS NULL",
};

// The current row of the till's query as pieces of SQL.
class VoucherRow {
public:
    VoucherRow(const VoucherKind& kind, const db::Query& row) : kind_(kind), row_(row) {}

    [[nodiscard]] QString text(const char* column) const { return field(column).AsString().trimmed(); }

    // The four lines that create the card if it is new and update its redemption in any case.
    [[nodiscard]] QStringList statements() const {
        const QString id = text("ID");
        const QString avdnr = text("AVDNR");
        const QString kassenr = text("KASSENR");
        return {QString::fromUtf8(kind_.insert).arg(values()),
                QString::fromUtf8(kind_.unlessThere).arg(id, avdnr, kassenr),
                QString::fromUtf8(kind_.update).arg(redemption()),
                QString::fromUtf8(kind_.thisOne).arg(id, avdnr, kassenr)};
    }

private:
    [[nodiscard]] const db::Field& field(const char* column) const {
        return row_.FieldByName(QString::fromUtf8(kind_.prefix) + QString::fromUtf8(column));
    }
    [[nodiscard]] QString quoted(const char* column) const {
        return field(column).IsNull() ? QStringLiteral("NULL") : QStringLiteral("'%1'").arg(text(column));
    }
    [[nodiscard]] QString number(const char* column) const {
        return field(column).IsNull() ? QStringLiteral("NULL") : numberLiteral(field(column).AsFloat());
    }

    [[nodiscard]] QString values() const {
        const db::Field& validUntil = field("GYLDIGTIL");
        const QStringList list{quoted("ID"),
                               quoted("AVDNR"),
                               quoted("KASSENR"),
                               quoted("AN_ID"),
                               number(kind_.issuedBy),
                               number("BELOP"),
                               validUntil.IsNull() ? QStringLiteral("NULL") : validUntil.AsDateTime().literal(),
                               quoted("BET_AVDNR"),
                               quoted("BET_KASSENR"),
                               quoted("BET_AN_ID"),
                               number("BT_ID"),
                               QStringLiteral("GETDATE()")};
        return list.join(QLatin1Char(','));
    }

    // The list of SET ends in a blank where the payment is not known.
    [[nodiscard]] QString redemption() const {
        const auto set = [this](const char* column, const QString& value) {
            return QString::fromUtf8(kind_.prefix) + QString::fromUtf8(column) + u'=' + value;
        };
        const QString payment = field("BT_ID").IsNull() ? QStringLiteral("NULL ") : number("BT_ID");
        return QStringList{set("BET_AVDNR", quoted("BET_AVDNR")), set("BET_KASSENR", quoted("BET_KASSENR")),
                           set("BET_AN_ID", quoted("BET_AN_ID")), set("BT_ID", payment)}
            .join(QLatin1Char(','));
    }

    const VoucherKind& kind_;
    const db::Query& row_;
};

// Runs the text and empties it, whatever came of it.
void executeBatch(db::Query& query) {
    const auto clear = qScopeGuard([&query] { query.SQL.clear(); });
    query.ExecSQL();
}

void importVouchers(const VoucherKind& kind, TTorvikPos& torvikPos, int timeout) {
    db::Query onTill(torvikPos.SourceConnection);
    db::Query atBackOffice(torvikPos.TargetConnection());
    for (db::Query* query : {&onTill, &atBackOffice}) {
        query->ParamCheck = false;
        query->CommandTimeout = timeout;
    }
    onTill.SQL = QStringList{QString::fromUtf8(kind.changed)};
    onTill.Open();
    for (; !onTill.Eof(); onTill.Next()) {
        const VoucherRow row(kind, onTill);
        torvikPos.AddLog(QString::fromUtf8(kind.log).arg(row.text("ID")));
        atBackOffice.SQL += row.statements();
        if (atBackOffice.SQL.size() % kLinesABatch != 0) continue;
        try {
            executeBatch(atBackOffice);
        } catch (const std::exception& e) {
            // An error that took the transaction with it, or the session, fails the transfer: what follows would stand
            // by itself. Any other drops the batch, and its cards are marked all the same.
            if (!torvikPos.TargetConnection()->InTransaction()) throw;
            torvikPos.AddLog(ErrorText(e), true, kls_Error);
        }
    }
    if (!atBackOffice.SQL.isEmpty()) executeBatch(atBackOffice);

    onTill.Close();
    onTill.SQL = QStringList{QString::fromUtf8(kind.mark)};
    onTill.ExecSQL();
}

}  // namespace

void TOppgjor::ImportGavekort() {
    if (torvikPos_.IncludeGiftVoucherOnOppgjor) importVouchers(kGavekort, torvikPos_, FqryGeneralSource.CommandTimeout);
}

void TOppgjor::ImportTilgodelapp() {
    if (torvikPos_.IncludeCreditCouponOnOppgjor)
        importVouchers(kTilgodelapp, torvikPos_, FqryGeneralSource.CommandTimeout);
}

}  // namespace torvik

// The current row of a query on the till's gift cards or credit notes, as pieces of SQL for the back office's copy.
// Used by VoucherImport.
#pragma once

#include <QString>
#include <QStringList>

#include "inbound/vouchers/voucher_kind.h"

namespace torvik {

namespace db {
class Field;
class Query;
}  // namespace db

class VoucherRow {
public:
    VoucherRow(const VoucherKind& kind, const db::Query& row) : kind_(kind), row_(row) {}

    // A column's trimmed text; the name goes behind the kind's prefix.
    [[nodiscard]] QString text(const char* column) const;
    // Number, department and till.
    [[nodiscard]] QStringList key() const { return {text("ID"), text("AVDNR"), text("KASSENR")}; }
    // "G1 (avd. 101, kasse 1)".
    [[nodiscard]] QString name() const;
    // Redeemed nowhere.
    [[nodiscard]] bool isUnused() const;
    // "avd. 102, kasse 3, ansatt 205, betaling 88", "-" for what is null.
    [[nodiscard]] QString redemptionText() const;

    // The four lines that create the card if it is new and update its redemption in any case.
    [[nodiscard]] QStringList statements() const;
    // A condition that is true of this card alone.
    [[nodiscard]] QString condition() const;

private:
    [[nodiscard]] const db::Field& field(const char* column) const;
    [[nodiscard]] QString quoted(const char* column) const;
    [[nodiscard]] QString number(const char* column) const;
    [[nodiscard]] QString values() const;
    [[nodiscard]] QString redemption() const;
    // Its key in the places of a text.
    [[nodiscard]] QString withKey(const char* text) const;

    const VoucherKind& kind_;
    const db::Query& row_;
};

}  // namespace torvik

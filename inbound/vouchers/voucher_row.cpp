#include "inbound/vouchers/voucher_row.h"

#include <algorithm>

#include "engine/db/query.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr const char* kRedemptionColumns[] = {"BET_AVDNR", "BET_KASSENR", "BET_AN_ID", "BT_ID"};

}  // namespace

const db::Field& VoucherRow::field(const char* column) const {
    return row_.FieldByName(QString::fromUtf8(kind_.prefix) + QString::fromUtf8(column));
}

QString VoucherRow::text(const char* column) const {
    return field(column).AsString().trimmed();
}

QString VoucherRow::name() const {
    return QStringLiteral("%1 (avd. %2, kasse %3)").arg(text("ID"), text("AVDNR"), text("KASSENR"));
}

bool VoucherRow::isUnused() const {
    return std::all_of(std::begin(kRedemptionColumns), std::end(kRedemptionColumns),
                       [this](const char* column) { return field(column).IsNull(); });
}

QString VoucherRow::redemptionText() const {
    const auto shown = [this](const char* column) {
        return field(column).IsNull() ? QStringLiteral("-") : text(column);
    };
    return QStringLiteral("avd. %1, kasse %2, ansatt %3, betaling %4")
        .arg(shown("BET_AVDNR"), shown("BET_KASSENR"), shown("BET_AN_ID"), shown("BT_ID"));
}

QStringList VoucherRow::statements() const {
    return {QString::fromUtf8(kind_.insert).arg(values()), withKey(kind_.unlessThere),
            QString::fromUtf8(kind_.update).arg(redemption()), withKey(kind_.thisOne)};
}

QString VoucherRow::condition() const {
    const QString prefix = QString::fromUtf8(kind_.prefix);
    return QStringLiteral("(%1ID=%2 AND %1AVDNR=%3 AND %1KASSENR=%4)")
        .arg(prefix, quoted("ID"), quoted("AVDNR"), quoted("KASSENR"));
}

QString VoucherRow::withKey(const char* text) const {
    return QString::fromUtf8(text).arg(quotesDoubled(this->text("ID")), quotesDoubled(this->text("AVDNR")),
                                       quotesDoubled(this->text("KASSENR")));
}

QString VoucherRow::quoted(const char* column) const {
    return field(column).IsNull() ? QStringLiteral("NULL") : QStringLiteral("'%1'").arg(quotesDoubled(text(column)));
}

QString VoucherRow::number(const char* column) const {
    return field(column).IsNull() ? QStringLiteral("NULL") : numberLiteral(field(column).AsFloat());
}

QString VoucherRow::values() const {
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

// The list of SET ends in a blank where the payment is not known: required, as it stands.
QString VoucherRow::redemption() const {
    const auto set = [this](const char* column, const QString& value) {
        return QString::fromUtf8(kind_.prefix) + QString::fromUtf8(column) + u'=' + value;
    };
    const QString payment = field("BT_ID").IsNull() ? QStringLiteral("NULL ") : number("BT_ID");
    return QStringList{set("BET_AVDNR", quoted("BET_AVDNR")), set("BET_KASSENR", quoted("BET_KASSENR")),
                       set("BET_AN_ID", quoted("BET_AN_ID")), set("BT_ID", payment)}
        .join(QLatin1Char(','));
}

}  // namespace torvik

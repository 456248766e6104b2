// See decimal.h.
#include "engine/db/decimal.h"

namespace torvik::db {

namespace {

constexpr int kMaxDigits = 38;

}  // namespace

QString Decimal::toQString() const {
    const bool negative = Unscaled < 0;
    Int128 rest = negative ? -Unscaled : Unscaled;
    QString digits;
    while (rest > 0 || digits.size() <= Scale) {
        digits.prepend(QChar(u'0' + int(rest % 10)));
        rest /= 10;
    }
    if (Scale > 0) digits.insert(digits.size() - Scale, u'.');
    return negative ? u'-' + digits : digits;
}

double Decimal::toDouble() const {
    return toQString().toDouble();
}

std::optional<Decimal> Decimal::fromText(QStringView text) {
    Decimal d;
    text = text.trimmed();
    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'-' || text.front() == u'+')) {
        negative = text.front() == u'-';
        text = text.mid(1);
    }
    bool point = false;
    int digits = 0;
    bool any = false;
    for (const QChar c : text) {
        if (c == u'.' && !point) {
            point = true;
            continue;
        }
        if (c < u'0' || c > u'9') return std::nullopt;
        any = true;
        if (digits > 0 || c != u'0') ++digits;
        if (digits > kMaxDigits) return std::nullopt;
        d.Unscaled = d.Unscaled * 10 + (c.unicode() - u'0');
        d.Scale += point;
    }
    if (!any || d.Scale > kMaxDigits) return std::nullopt;
    if (negative) d.Unscaled = -d.Unscaled;
    return d;
}

bool operator==(const Decimal& a, const Decimal& b) {
    const auto bare = [](Decimal d) {
        while (d.Scale > 0 && d.Unscaled % 10 == 0) {
            d.Unscaled /= 10;
            --d.Scale;
        }
        return d;
    };
    const Decimal x = bare(a);
    const Decimal y = bare(b);
    return x.Unscaled == y.Unscaled && x.Scale == y.Scale;
}

}  // namespace torvik::db

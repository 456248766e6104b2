// Exact decimal numbers: money, numeric and decimal columns. Used by Value and by bulk copy.
#pragma once

#include <QString>
#include <optional>

namespace torvik::db {

__extension__ using Int128 = __int128;

// An exact decimal number of up to 38 digits: Unscaled / 10^Scale. Money has Scale 4.
struct Decimal {
    Int128 Unscaled = 0;
    int Scale = 0;

    // "-12.50", with exactly Scale decimals.
    [[nodiscard]] QString toQString() const;
    [[nodiscard]] double toDouble() const;
    // Of "12", "-0.50", ".5"; nothing when the text is no number of at most 38 digits.
    static std::optional<Decimal> fromText(QStringView text);
    // Compares the numbers: 1.50 equals 1.5.
    friend bool operator==(const Decimal& a, const Decimal& b);
};

}  // namespace torvik::db

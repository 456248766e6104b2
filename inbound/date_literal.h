// Dates and numbers as text within SQL.
#pragma once

#include <QDateTime>
#include <QString>

namespace torvik {

// 'yyyymmdd hh:nn:ss:zzz', in single quotes, with a colon before the milliseconds.
[[nodiscard]] QString dateTimeLiteral(const QDateTime& value);

// 'yyyymmdd', in single quotes.
[[nodiscard]] QString dateLiteral(const QDate& value);

// With a point, and no more digits than needed.
[[nodiscard]] QString numberLiteral(double value);

}  // namespace torvik

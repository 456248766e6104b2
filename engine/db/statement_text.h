// Pieces of SQL text: a statement's lines, and dates and numbers as they stand within one.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace torvik {

// The lines of a text, as a query takes them.
[[nodiscard]] QStringList statementLines(const QString& text);
[[nodiscard]] QStringList statementLines(const char* text);  // UTF-8

// 'yyyymmdd hh:nn:ss:zzz', in single quotes, with a colon before the milliseconds.
[[nodiscard]] QString dateTimeLiteral(const QDateTime& value);

// 'yyyymmdd', in single quotes.
[[nodiscard]] QString dateLiteral(const QDate& value);

// With a point, no more digits than needed, and no exponent from 0.00001 up to 15 digits before the point: with one the
// server would count it as a float.
[[nodiscard]] QString numberLiteral(double value);

}  // namespace torvik

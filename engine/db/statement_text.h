// Pieces of SQL text: a statement's lines, and texts and numbers as they stand within one (dates:
// engine/db/date_time.h).
#pragma once

#include <QString>
#include <QStringList>

namespace torvik {

// The lines of a text, as a query takes them.
[[nodiscard]] QStringList statementLines(const QString& text);
[[nodiscard]] QStringList statementLines(const char* text);  // UTF-8

// The text with its single quotes doubled, as it stands within a literal.
[[nodiscard]] QString quotesDoubled(QString text);

// With a point, no more digits than needed, and no exponent from 0.00001 up to 15 digits before the point: with one the
// server would count it as a float.
[[nodiscard]] QString numberLiteral(double value);

}  // namespace torvik

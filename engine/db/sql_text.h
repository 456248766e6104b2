// Where literals, quoted names and comments of T-SQL text begin and end, and what is made of texts by that. Internal;
// used by Query, EditTarget and the parameter scan.
#pragma once

#include <QString>

namespace torvik::db {

// The end of the literal, quoted name or comment that opens at text[i]; i itself where none opens.
[[nodiscard]] qsizetype pastQuoted(const QString& text, qsizetype i);

// The text with literals emptied and comments made a blank; quoted names stay.
[[nodiscard]] QString withoutLiterals(const QString& text);

// The text with comments made a blank, and each literal and quoted name an "x": what is left is words and signs.
[[nodiscard]] QString withoutNames(const QString& text);

// A statement that counts the rows of a SELECT, whose own ORDER BY is left away.
[[nodiscard]] QString countingText(const QString& select);

// "[name]", with "]" doubled.
[[nodiscard]] QString bracketed(const QString& name);

}  // namespace torvik::db

// Small truths about T-SQL text that several parts of the session layer need. Internal.
#pragma once

#include <QString>

namespace torvik::db {

// The end of the literal, quoted name or comment that opens at text[i]; i itself where none opens.
[[nodiscard]] qsizetype pastQuoted(const QString& text, qsizetype i);

// The text with literals emptied and comments made a blank; quoted names stay.
[[nodiscard]] QString withoutLiterals(const QString& text);

// A statement that counts the rows of a SELECT, whose own ORDER BY is left away.
[[nodiscard]] QString countingText(const QString& select);

// "[name]", with "]" doubled.
[[nodiscard]] QString bracketed(const QString& name);

}  // namespace torvik::db

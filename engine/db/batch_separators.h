// "GO", the line that the tools of SQL Server end a batch with. It is theirs and not T-SQL's: the server refuses it,
// takes it for an alias, or hands it to a procedure as an argument. Whoever runs a script of such tools sends it
// without.
#pragma once

#include <QStringList>

namespace torvik::db {

// Whether a line is "GO" and nothing else; neither case nor blanks around it count.
[[nodiscard]] bool isBatchSeparator(const QString& line);

// The lines of a batch without its separators. Such a line within a literal, a quoted name or a comment is part of that
// and stays.
[[nodiscard]] QStringList withoutBatchSeparators(const QStringList& lines);

}  // namespace torvik::db

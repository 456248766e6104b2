// A compound file (OLE structured storage, version 3) with one stream in it: the container of spreadsheets of the
// ".xls" kind. See [MS-CFB].
#pragma once

#include <QByteArray>
#include <QString>

namespace torvik {

// Writes the stream, which the readers may find longer by zeros at its end, under the name. Raises EngineError with the
// file's name when it cannot be written; the file is then as it was before.
void writeCompoundFile(const QString& file, const QString& streamName, QByteArray stream);

}  // namespace torvik

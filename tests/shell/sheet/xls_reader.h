// What an independent reader finds in a .xls file.
#pragma once

#include <QProcess>
#include <QStringList>
#include <stdexcept>

namespace torvik::test {

// A line a sheet and a line a cell, as read_xls.py prints them; raises with the reader's words when it refuses the
// file.
inline QStringList readXls(const QString& file, const QStringList& options = {}) {
    QProcess reader;
    reader.start(QStringLiteral("/usr/bin/python3"),
                 QStringList{QStringLiteral(TORVIK_READ_XLS)} + options + QStringList{file});
    if (!reader.waitForFinished(120000) || reader.exitCode() != 0)
        throw std::runtime_error("not read: " + reader.readAllStandardError().toStdString());
    return QString::fromUtf8(reader.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

}  // namespace torvik::test

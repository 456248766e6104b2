// A data-link file as tests and measurements write it.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <stdexcept>

namespace torvik::test {

// The text in UTF-16, with its mark in front.
inline QByteArray markedUtf16(const QString& text) {
    const QString marked = QChar(0xFEFF) + text;
    return {reinterpret_cast<const char*>(marked.utf16()), marked.size() * 2};
}

// Writes the connection string as a data link to the file, as a system's own dialog does it.
inline void writeDataLink(const QString& file, const QString& connectString) {
    QFile out(file);
    const QByteArray content = markedUtf16(
        QStringLiteral("[oledb]\r\n; Everything after this line is an OLE DB initstring\r\n%1\r\n").arg(connectString));
    if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
        throw std::runtime_error("cannot write " + file.toStdString() + ": " + out.errorString().toStdString());
}

}  // namespace torvik::test

// Opens, appends and closes for each event, so that the file may be moved or read at any time.
#include "logging/file_sink.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace torvik {

TFileSink::TFileSink(const QString& FileName) {
    const QDir folder = QFileInfo(FileName).dir();
    if (folder.exists() || folder.mkpath(QStringLiteral("."))) FFileName = FileName;
}

// Unbuffered, so that the line goes out in one piece although another process may append to the same file. What a full
// disk took of a line is cut off again: the next line would stand behind it.
void TFileSink::Write(const std::shared_ptr<ILogEntry>& entry) {
    if (FFileName.isEmpty()) return;
    const QByteArray line = entry->FormatTemplate().toUtf8() + "\r\n";
    QFile file(FFileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) return;
    const qint64 before = file.size();
    const qint64 written = file.write(line);
    if (written > 0 && written < line.size()) file.resize(before);
}

}  // namespace torvik

// Writing a log as a text file.
#include "engine/log/log_pane.h"

#include <QFile>
#include <filesystem>

#include "engine/base/abort.h"

namespace torvik {

// Written beside the file and then put in its place, so that a full disk leaves the file as it was. The disk is not
// waited for: a run writes a log a till, and what a power cut takes of a log is no loss.
void SaveTextLines(const QString& path, const QStringList& lines) {
    QFile file(path + QStringLiteral(".ny"));
    bool written = file.open(QIODevice::WriteOnly);
    for (const QString& line : lines) written = written && file.write(line.toUtf8() + '\n') >= 0;
    written = written && file.flush();
    QString problem = file.errorString();
    file.close();
    if (written) {
        std::error_code failed;
        std::filesystem::rename(file.filesystemFileName(), QFile(path).filesystemFileName(), failed);
        written = !failed;
        problem = QString::fromStdString(failed.message());
    }
    if (written) return;
    file.remove();
    throw EngineError(QStringLiteral("Klarte ikke å skrive %1: %2").arg(path, problem));
}

void ILogPane::SaveLines(const QString& path) const {
    SaveTextLines(path, Lines());
}

}  // namespace torvik

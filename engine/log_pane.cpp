// Writing a log as a text file.
#include "engine/log_pane.h"

#include <QSaveFile>

#include "engine/abort.h"

namespace torvik {

void SaveTextLines(const QString& path, const QStringList& lines) {
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly);
    for (const QString& line : lines) written = written && file.write(line.toUtf8() + '\n') >= 0;
    if (!written || !file.commit())
        throw EngineError(QStringLiteral("Klarte ikke å skrive %1: %2").arg(path, file.errorString()));
}

void ILogPane::SaveLines(const QString& path) const {
    SaveTextLines(path, Lines());
}

}  // namespace torvik

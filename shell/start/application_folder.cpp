// The folder in "deploy.ini" may be written with either kind of slash.
#include "shell/start/application_folder.h"

#include <QDir>
#include <QFileInfo>

#include "logging/ini_file.h"
#include "logging/program_file.h"

namespace torvik {

QString applicationFolder(const QString& executableFolder) {
    QString folder = QDir::cleanPath(executableFolder);
    const QString deploy = folder + QStringLiteral("/deploy.ini");
    if (QFileInfo::exists(deploy)) {
        QString named = IniFile(deploy).value("deploy", "folder", QStringLiteral("."));
        named.replace(QLatin1Char('\\'), QLatin1Char('/'));
        folder = QDir::cleanPath(QDir(folder).absoluteFilePath(named));
    }
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString applicationFolder() {
    static const QString folder = applicationFolder(QFileInfo(programFile()).path());
    return folder;
}

QString helpFile(const QString& executable) {
    const QFileInfo file(executable);
    return file.dir().filePath(file.completeBaseName() + QStringLiteral(".hlp"));
}

}  // namespace torvik

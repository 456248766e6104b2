// See udl.h.
#include "engine/db/udl.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QStringList>

#include "engine/db/errors.h"

namespace torvik::db {

QString ReadUdlFile(const QString& path) {
    if (!QFileInfo::exists(path)) throw UsageError(QStringLiteral("The UDL file \"%1\" does not exist.").arg(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw UsageError(QStringLiteral("The UDL file \"%1\" cannot be read: %2").arg(path, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (bytes.size() < 2) throw UsageError(QStringLiteral("The UDL file \"%1\" is corrupt.").arg(path));
    if (!bytes.startsWith("\xFF\xFE"))
        throw UsageError(QStringLiteral("The file UDL file \"%1\" is not valid.").arg(path));

    QStringDecoder decoder(QStringConverter::Utf16LE);
    QString text = decoder(QByteArrayView(bytes).sliced(2));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    QStringList lines = text.split(u'\n');
    for (qsizetype i = lines.size() - 1; i >= 0; --i)
        if (lines[i].isEmpty() || lines[i].startsWith(u';') || lines[i].startsWith(u'[')) lines.removeAt(i);
    QString result;
    for (const QString& line : lines) result += line + QStringLiteral("\r\n");
    return result;
}

}  // namespace torvik::db

// The text of a till's ini file: its lines out of the bytes that the till has written, and the settings in it. Used by
// the walk that fetches the files and by the window that shows them.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

namespace torvik {

// By the mark at the beginning UTF-8 or UTF-16, else UTF-8 where the bytes are that, else Windows' code page 1252, as
// till software writes. The end of the last line does not make one more.
[[nodiscard]] QStringList iniLines(const QByteArray& bytes);

// The settings in an ini file's lines; case does not count in names, and of several alike the first counts.
class IniText {
public:
    explicit IniText(const QStringList& lines);

    // The fallback where the section or the key is missing.
    [[nodiscard]] QString value(const QString& section, const QString& key, const QString& fallback = {}) const;
    // The fallback also where the value is no whole number.
    [[nodiscard]] int integer(const QString& section, const QString& key, int fallback) const;
    // Any number but 0 is true.
    [[nodiscard]] bool boolean(const QString& section, const QString& key, bool fallback) const;

private:
    QHash<QString, QHash<QString, QString>> sections_;
};

}  // namespace torvik

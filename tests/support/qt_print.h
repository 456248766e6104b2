// Lets GoogleTest print Qt's texts and times readably. Include it before comparing them.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QTime& time, std::ostream* out) {
    *out << time.toString(u"HH:mm:ss.zzz").toStdString();
}
inline void PrintTo(const QDateTime& time, std::ostream* out) {
    *out << time.toString(u"yyyy-MM-dd HH:mm:ss.zzz").toStdString();
}
inline void PrintTo(const QStringList& lines, std::ostream* out) {
    *out << "[\n";
    for (const QString& line : lines) *out << "  \"" << line.toStdString() << "\"\n";
    *out << "]";
}

// Numbers as spreadsheets and their container hold them: little-endian, appended to bytes.
#pragma once

#include <QByteArray>
#include <QtEndian>

namespace torvik {

template <typename Number>
void appendNumber(QByteArray& to, Number value) {
    const Number little = qToLittleEndian(value);
    to.append(reinterpret_cast<const char*>(&little), sizeof little);
}
inline void append8(QByteArray& to, int value) {
    to.append(static_cast<char>(value));
}
inline void append16(QByteArray& to, int value) {
    appendNumber(to, static_cast<quint16>(value));
}
inline void append32(QByteArray& to, quint32 value) {
    appendNumber(to, value);
}
inline void appendDouble(QByteArray& to, double value) {
    appendNumber(to, value);
}
// The letters of a text, each in two bytes.
inline void appendUtf16(QByteArray& to, QStringView text) {
    for (const QChar c : text) append16(to, c.unicode());
}

}  // namespace torvik

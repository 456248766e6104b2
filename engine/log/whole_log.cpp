#include "engine/log/whole_log.h"

namespace torvik {

namespace {

// RTF takes ASCII; anything else is written as its UTF-16 units.
QByteArray rtfEscaped(const QString& text) {
    QByteArray out;
    for (const QChar c : text) {
        const ushort unit = c.unicode();
        if (unit == '\\' || unit == '{' || unit == '}')
            out += QByteArray("\\") + static_cast<char>(unit);
        else if (unit == '\n')
            out += "\\line ";
        else if (unit < 0x80)
            out += static_cast<char>(unit);
        else
            out += "\\u" + QByteArray::number(static_cast<qint16>(unit)) + "?";
    }
    return out;
}

}  // namespace

QStringList WholeLog::Lines() const {
    QStringList lines;
    lines.reserve(Count());
    for (const Line& line : lines_) lines.append(QString::fromUtf8(line.text));
    return lines;
}

QByteArray WholeLog::RichText() const {
    QByteArray rtf =
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fmodern Courier New;}}{\\colortbl;\\red255\\green0\\blue0;}\\f0\\fs18\r\n";
    for (const Line& line : lines_)
        rtf += (line.color == PaneColor::Red ? "\\cf1 " : "\\cf0 ") + rtfEscaped(QString::fromUtf8(line.text)) +
               "\\par\r\n";
    return rtf + "}\r\n";
}

}  // namespace torvik

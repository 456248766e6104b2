#include "engine/db/statement_text.h"

#include <QLocale>
#include <cmath>

namespace torvik {

QStringList statementLines(const QString& text) {
    return text.split(QLatin1Char('\n'));
}

QStringList statementLines(const char* text) {
    return statementLines(QString::fromUtf8(text));
}

QString quotesDoubled(QString text) {
    return text.replace(QLatin1Char('\''), QStringLiteral("''"));
}

QString numberLiteral(double value) {
    const double size = std::abs(value);
    const bool plain = size == 0 || (size >= 1e-5 && size < 1e15);
    return QString::number(value, plain ? 'f' : 'g', QLocale::FloatingPointShortest);
}

}  // namespace torvik

#include "inbound/date_literal.h"

#include <QLocale>

namespace torvik {

QString dateTimeLiteral(const QDateTime& value) {
    return QStringLiteral("'%1'").arg(
        value.toString(QStringLiteral("yyyyMMdd HH:mm:ss.zzz")).replace(QLatin1Char('.'), QLatin1Char(':')));
}

QString dateLiteral(const QDate& value) {
    return QStringLiteral("'%1'").arg(value.toString(QStringLiteral("yyyyMMdd")));
}

QString numberLiteral(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

}  // namespace torvik

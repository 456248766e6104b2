// How values become JSON, and JSON becomes text. nlohmann's own writer escapes otherwise, so the text is made here.
#include "logging/log_value.h"

#include <QDateTime>
#include <QLocale>
#include <QMetaType>
#include <stdexcept>

namespace torvik {

namespace {

JsonValue fromVariant(const QVariant& v) {
    if (!v.isValid() || v.isNull()) return nullptr;
    switch (v.typeId()) {
        case QMetaType::Bool: return v.toBool();
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::Long:
        case QMetaType::Short: return v.toLongLong();
        case QMetaType::UInt:
        case QMetaType::ULong:
        case QMetaType::UShort:
        case QMetaType::ULongLong: return v.toULongLong();
        case QMetaType::Double:
        case QMetaType::Float: return v.toDouble();
        case QMetaType::QDateTime: return v.toDateTime().toString(Qt::ISODateWithMs).toStdString();
        default: return v.toString().toStdString();
    }
}

QString escaped(char16_t unit) {
    switch (unit) {
        case '\b': return QStringLiteral("\\b");
        case '\t': return QStringLiteral("\\t");
        case '\n': return QStringLiteral("\\n");
        case '\f': return QStringLiteral("\\f");
        case '\r': return QStringLiteral("\\r");
        case '"': return QStringLiteral("\\\"");
        case '\\': return QStringLiteral("\\\\");
        default: break;
    }
    if (unit >= 0x20 && unit < 0x7F) return QString(QChar(unit));
    return QStringLiteral("\\u%1").arg(static_cast<int>(unit), 4, 16, QLatin1Char('0'));
}

template <typename Range, typename Write>
QString joined(const Range& range, Write write) {
    QString text;
    for (const auto& item : range) {
        if (!text.isEmpty()) text += QLatin1Char(',');
        text += write(item);
    }
    return text;
}

}  // namespace

LogArg::LogArg(const QString& v) : json_(v.toStdString()) {}

LogArg::LogArg(const QVariant& v) : json_(fromVariant(v)) {}

LogArg::LogArg(const void* v) {
    if (v)
        json_ = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(v));
    else
        json_ = false;
}

LogArg::LogArg(const std::shared_ptr<const JsonValue>& v) {
    if (!v)
        json_ = false;
    else if (v->is_structured())
        json_ = *v;
    else
        throw std::logic_error("Assertion failure");
}

QString jsonStringText(const QString& text) {
    QString out = QStringLiteral("\"");
    if (text.size() == 1 && text.at(0).isNull()) return QStringLiteral("\"\\u0000\"");
    for (const QChar c : text) {
        if (c.isNull()) break;
        out += escaped(c.unicode());
    }
    return out + QLatin1Char('"');
}

QString jsonText(const JsonValue& value) {
    switch (value.type()) {
        case JsonValue::value_t::null: return QStringLiteral("null");
        case JsonValue::value_t::boolean: return value.get<bool>() ? QStringLiteral("true") : QStringLiteral("false");
        case JsonValue::value_t::number_integer: return QString::number(value.get<qint64>());
        case JsonValue::value_t::number_unsigned: return QString::number(value.get<quint64>());
        case JsonValue::value_t::number_float:
            return QString::number(value.get<double>(), 'g', QLocale::FloatingPointShortest);
        case JsonValue::value_t::string: return jsonStringText(QString::fromStdString(value.get<std::string>()));
        case JsonValue::value_t::array:
            return QLatin1Char('[') + joined(value, [](const JsonValue& v) { return jsonText(v); }) + QLatin1Char(']');
        case JsonValue::value_t::object:
            return QLatin1Char('{') +
                   joined(value.items(),
                          [](const auto& pair) {
                              return jsonStringText(QString::fromStdString(pair.key())) + QLatin1Char(':') +
                                     jsonText(pair.value());
                          }) +
                   QLatin1Char('}');
        default: throw std::logic_error("a binary value has no JSON text");
    }
}

}  // namespace torvik

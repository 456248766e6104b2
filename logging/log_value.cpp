// How values become JSON, and JSON becomes text. nlohmann's own writer escapes otherwise, so the text is made here.
#include "logging/log_value.h"

#include <QDateTime>
#include <QLocale>
#include <QMetaType>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace torvik {

namespace {

[[noreturn]] void assertionFailure() {
    throw std::logic_error("Assertion failure");
}

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

// False for a null pointer, else what it points at; only an object or array will do.
JsonValue fromShared(const std::shared_ptr<const JsonValue>& v) {
    if (!v) return false;
    if (!v->is_structured()) assertionFailure();
    return *v;
}

JsonValue fromAddress(const void* v) {
    if (!v) return false;
    return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(v));
}

// The letter of a two-character escape; 0 for a unit that has none.
char shortEscape(char16_t unit) {
    switch (unit) {
        case '\b': return 'b';
        case '\t': return 't';
        case '\n': return 'n';
        case '\f': return 'f';
        case '\r': return 'r';
        case '"': return '"';
        case '\\': return '\\';
        default: return 0;
    }
}

void appendEscaped(QString& out, char16_t unit) {
    constexpr char kDigits[] = "0123456789abcdef";
    if (const char letter = shortEscape(unit)) {
        out += QLatin1Char('\\');
        out += QLatin1Char(letter);
    } else if (unit >= 0x20 && unit < 0x7F) {
        out += QChar(unit);
    } else {
        out += QLatin1String("\\u");
        for (int shift = 12; shift >= 0; shift -= 4) out += QLatin1Char(kDigits[(unit >> shift) & 0xF]);
    }
}

void appendString(QString& out, const QString& text) {
    out += QLatin1Char('"');
    if (text.size() == 1 && text.at(0).isNull()) {
        appendEscaped(out, 0);
    } else {
        for (const QChar c : text) {
            if (c.isNull()) break;
            appendEscaped(out, c.unicode());
        }
    }
    out += QLatin1Char('"');
}

// Plain decimals in the range that people write so, an exponent outside it; as few digits as tell the number apart.
QString floatText(double value) {
    constexpr double kLeastPlain = 1e-5;
    constexpr double kFirstTooLong = 1e15;
    if (!std::isfinite(value)) return QStringLiteral("null");
    const double size = std::abs(value);
    const bool plain = size == 0 || (size >= kLeastPlain && size < kFirstTooLong);
    return QString::number(value, plain ? 'f' : 'g', QLocale::FloatingPointShortest);
}

void append(QString& out, const JsonValue& value) {
    switch (value.type()) {
        case JsonValue::value_t::null: out += QLatin1String("null"); return;
        case JsonValue::value_t::boolean: out += QLatin1String(value.get<bool>() ? "true" : "false"); return;
        case JsonValue::value_t::number_integer: out += QString::number(value.get<qint64>()); return;
        case JsonValue::value_t::number_unsigned: out += QString::number(value.get<quint64>()); return;
        case JsonValue::value_t::number_float: out += floatText(value.get<double>()); return;
        case JsonValue::value_t::string:
            appendString(out, QString::fromStdString(value.get_ref<const std::string&>()));
            return;
        case JsonValue::value_t::array: {
            QLatin1Char before('[');
            for (const JsonValue& item : value) {
                out += std::exchange(before, QLatin1Char(','));
                append(out, item);
            }
            if (value.empty()) out += before;
            out += QLatin1Char(']');
            return;
        }
        case JsonValue::value_t::object: {
            QLatin1Char before('{');
            for (const auto& [key, item] : value.items()) {
                out += std::exchange(before, QLatin1Char(','));
                appendString(out, QString::fromStdString(key));
                out += QLatin1Char(':');
                append(out, item);
            }
            if (value.empty()) out += before;
            out += QLatin1Char('}');
            return;
        }
        default: throw std::logic_error("a binary value has no JSON text");
    }
}

}  // namespace

LogArg::LogArg(const QVariant& v) : LogArg(fromVariant(v)) {}

LogArg::LogArg(const void* v) : LogArg(fromAddress(v)) {}

LogArg::LogArg(const std::shared_ptr<const JsonValue>& v) : LogArg(fromShared(v)) {}

LogArg::LogArg(const wchar_t*) {
    assertionFailure();
}

LogArg::LogArg(const char16_t*) {
    assertionFailure();
}

QString jsonStringText(const QString& text) {
    QString out;
    appendString(out, text);
    return out;
}

QString jsonText(const JsonValue& value) {
    QString out;
    append(out, value);
    return out;
}

}  // namespace torvik

// The values that a structured log event carries: a JSON value made of what a caller passes, and the JSON text of one.
// Used by events and the logger; docs/log-format.md shows both text forms of an event.
#pragma once

#include <QString>
#include <QVariant>
#include <concepts>
#include <memory>
#include <nlohmann/json.hpp>

namespace torvik {

using JsonValue = nlohmann::ordered_json;

// One positional value of an event, made implicitly of what the caller has.
class LogArg {
public:
    LogArg(bool v) : json_(v) {}
    template <std::integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, char16_t>) LogArg(T v) : json_(v) {}
    LogArg(char v) : LogArg(QString(QLatin1Char(v))) {}
    LogArg(char16_t v) : LogArg(QString(QChar(v))) {}
    LogArg(QChar v) : LogArg(QString(v)) {}
    LogArg(double v) : json_(v) {}
    LogArg(const QString& v);
    LogArg(const char* v) : LogArg(QString::fromUtf8(v)) {}
    LogArg(const QVariant& v);
    // An address, as an integer; a null one is false.
    LogArg(const void* v);
    // A JSON object or array; a null one is false. Raises std::logic_error "Assertion failure" for any other value.
    LogArg(const std::shared_ptr<const JsonValue>& v);

    [[nodiscard]] const JsonValue& json() const { return json_; }

private:
    JsonValue json_;
};

// A JSON value as text: pure ASCII, no spaces. Every UTF-16 unit from 0x7F up leaves as a lower-case \u escape; a NUL
// unit ends a string, save in a string that is nothing else.
[[nodiscard]] QString jsonText(const JsonValue& value);

// A string with its quotes and escapes, by the same rules.
[[nodiscard]] QString jsonStringText(const QString& text);

}  // namespace torvik

// The values that a structured log event carries: a JSON value made of what a caller passes, and the JSON text of one.
// Used by events and the logger; docs/log-format.md shows both text forms of an event.
#pragma once

#include <QString>
#include <QVariant>
#include <concepts>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace torvik {

using JsonValue = nlohmann::ordered_json;

template <typename T>
concept CharacterType = std::same_as<T, char> || std::same_as<T, char8_t> || std::same_as<T, char16_t> ||
    std::same_as<T, char32_t> || std::same_as<T, wchar_t>;
template <typename T>
concept PlainInteger = std::integral<T> && !std::same_as<T, bool> && !CharacterType<T>;

// One positional value of an event, made implicitly of what the caller has. Copies share the value.
class LogArg {
public:
    LogArg(bool v) : LogArg(JsonValue(v)) {}
    template <PlainInteger T>
    LogArg(T v) : LogArg(JsonValue(v)) {}
    template <std::floating_point T>
    LogArg(T v) : LogArg(JsonValue(static_cast<double>(v))) {}
    LogArg(char v) : LogArg(QString(QLatin1Char(v))) {}
    LogArg(char16_t v) : LogArg(QString(QChar(v))) {}
    LogArg(wchar_t v) : LogArg(QString::fromWCharArray(&v, 1)) {}
    LogArg(QChar v) : LogArg(QString(v)) {}
    LogArg(const QString& v) : LogArg(JsonValue(v.toStdString())) {}
    LogArg(const std::string& utf8) : LogArg(JsonValue(utf8)) {}
    LogArg(const char* utf8) : LogArg(QString::fromUtf8(utf8)) {}
    // The variant's value by its own type; a null one is null.
    LogArg(const QVariant& v);
    // An address, as an integer; a null one is false.
    LogArg(const void* v);
    // A JSON object or array; a null one is false. Raises std::logic_error "Assertion failure" for any other value.
    LogArg(const std::shared_ptr<const JsonValue>& v);
    // Text by a wide pointer is not taken: raises std::logic_error "Assertion failure".
    [[noreturn]] LogArg(const wchar_t* v);
    [[noreturn]] LogArg(const char16_t* v);

    [[nodiscard]] const JsonValue& json() const { return *json_; }
    [[nodiscard]] const std::shared_ptr<const JsonValue>& shared() const { return json_; }

private:
    explicit LogArg(JsonValue&& v) : json_(std::make_shared<const JsonValue>(std::move(v))) {}

    std::shared_ptr<const JsonValue> json_;  // never null
};

// A JSON value as text: pure ASCII, no spaces. Every UTF-16 unit from 0x7F up leaves as a lower-case \u escape; a NUL
// unit ends a string, save in a string that is nothing else. A number that JSON cannot hold (infinite, not a number) is
// null.
[[nodiscard]] QString jsonText(const JsonValue& value);

// A string with its quotes and escapes, by the same rules.
[[nodiscard]] QString jsonStringText(const QString& text);

}  // namespace torvik

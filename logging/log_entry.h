// One structured log event: a message template with positional values, a level, a moment, and its two text forms.
// Built by the logger or a caller on one thread; read only, and shared, once it has been logged.
#pragma once

#include <QDateTime>
#include <QString>
#include <exception>
#include <memory>
#include <span>
#include <vector>

#include "logging/log_value.h"

namespace torvik {

enum class TLogLevel { llVerbose, llDebug, llInformation, llWarning, llError, llFatal };

// "Information" as JSON shows it, "INF" as a file line does.
[[nodiscard]] QString logLevelName(TLogLevel level);
[[nodiscard]] QString logLevelShortName(TLogLevel level);

// One named value of an event.
struct TLogArgument {
    QString Name;                            // without braces or "@"
    std::shared_ptr<const JsonValue> Value;  // never null
    int StartIndex = -1;                     // 1-based index of the placeholder's "{"; -1: at no place in the template
    int Length = 0;                          // of the whole placeholder; 0 when StartIndex is -1
};

class ILogEntry {
public:
    virtual ~ILogEntry() = default;

    // Appends a copy; a like name is not looked for.
    virtual void AddArgument(const TLogArgument& argument) = 0;

    // Each appends a value that stands at no place in the template, and returns the same event.
    virtual ILogEntry& WithArgument(const QString& name, const JsonValue& value) = 0;
    template <typename Object>
    requires requires(JsonValue& j, const Object& o) { to_json(j, o); }
    ILogEntry& WithArgument(const QString& name, const Object& object) {
        JsonValue value;
        to_json(value, object);
        return WithArgument(name, value);
    }
    virtual ILogEntry& WithArgument(const QString& name, const QVariant& value) = 0;

    // One JSON object on one line (compact log event format: @t, @mt, @x, @l, then the values; the last of a name
    // stands).
    [[nodiscard]] virtual QString FormatCompactJson() const = 0;

    // The line of a log file, without a line end.
    [[nodiscard]] virtual QString FormatTemplate() const = 0;
};

class TLogEntry final : public ILogEntry {
public:
    // exception may be null. Placeholders without a value stay text; values without a placeholder are dropped.
    TLogEntry(TLogLevel level, const QString& messageTemplate, std::span<const LogArg> values = {},
              const std::exception* exception = nullptr, const QDateTime& timestamp = QDateTime::currentDateTimeUtc());

    void AddArgument(const TLogArgument& argument) override;
    using ILogEntry::WithArgument;
    ILogEntry& WithArgument(const QString& name, const JsonValue& value) override;
    ILogEntry& WithArgument(const QString& name, const QVariant& value) override;
    [[nodiscard]] QString FormatCompactJson() const override;
    [[nodiscard]] QString FormatTemplate() const override;

    const TLogLevel Level;
    const QDateTime Timestamp;  // UTC
    const QString Exception;    // its text; empty for none
    const QString Template;
    std::vector<TLogArgument> Arguments;
};

}  // namespace torvik

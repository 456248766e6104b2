// The process-wide structured log: stamps its properties on each event and hands it to its sinks, in their order, on
// the caller's thread. Sinks and properties are set while the program starts and only read afterwards, so there is no
// lock. No level is ever left out.
#pragma once

#include <QString>
#include <exception>
#include <initializer_list>
#include <memory>
#include <vector>

#include "logging/log_entry.h"
#include "logging/log_sink.h"

namespace torvik {

class TLogger {
public:
    using Args = std::initializer_list<LogArg>;

    TLogger() = default;
    ~TLogger();  // SyncAndClose first
    TLogger(const TLogger&) = delete;
    TLogger& operator=(const TLogger&) = delete;

    void AddSink(std::shared_ptr<ILogSink> sink);
    void ClearSinks();    // SyncAndClose, then lets go of each sink
    void SyncAndClose();  // of each sink, in order

    // A property that stands on every later event. The same name, by exact comparison, is replaced in its place.
    TLogger& WithProperty(const QString& name, const JsonValue& value);
    TLogger& WithProperty(const QString& name, const QVariant& value);
    template <typename Object>
    requires requires(JsonValue& j, const Object& o) { to_json(j, o); }
    TLogger& WithProperty(const QString& name, const Object& object) {
        JsonValue value;
        to_json(value, object);
        return WithProperty(name, value);
    }

    void Log(const std::shared_ptr<ILogEntry>& entry);
    // exception may be null.
    void Log(TLogLevel level, const std::exception* exception, const QString& messageTemplate, Args args);

    void LogDebug(const QString& messageTemplate, Args args = {});
    void LogDebug(const std::exception& exception, const QString& messageTemplate, Args args = {});
    void LogInformation(const QString& messageTemplate, Args args = {});
    void LogInformation(const std::exception& exception, const QString& messageTemplate, Args args = {});
    void LogWarning(const QString& messageTemplate, Args args = {});
    void LogWarning(const std::exception& exception, const QString& messageTemplate, Args args = {});
    void LogError(const QString& messageTemplate, Args args = {});
    void LogError(const std::exception& exception, const QString& messageTemplate, Args args = {});

private:
    std::vector<std::shared_ptr<ILogSink>> FSinks;
    std::vector<TLogArgument> FArguments;
};

// The one logger of the process. It exists, with no sinks, from its first use to the process's end.
TLogger& GlobalLogger();

}  // namespace torvik

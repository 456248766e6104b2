// The logger's lists and its short forms.
#include "logging/logger.h"

#include <algorithm>

namespace torvik {

TLogger::~TLogger() {
    try {
        SyncAndClose();
    } catch (const std::exception&) {
        // a sink that fails now has nobody left to tell
    }
}

void TLogger::AddSink(std::shared_ptr<ILogSink> sink) {
    FSinks.push_back(std::move(sink));
}

void TLogger::ClearSinks() {
    SyncAndClose();
    FSinks.clear();
}

void TLogger::SyncAndClose() {
    for (const auto& sink : FSinks) sink->SyncAndClose();
}

TLogger& TLogger::WithProperty(const QString& name, const JsonValue& value) {
    const TLogArgument argument{name, std::make_shared<JsonValue>(value), -1, 0};
    const auto found =
        std::find_if(FArguments.begin(), FArguments.end(), [&](const auto& a) { return a.Name == name; });
    if (found == FArguments.end())
        FArguments.push_back(argument);
    else
        *found = argument;
    return *this;
}

TLogger& TLogger::WithProperty(const QString& name, const QVariant& value) {
    return WithProperty(name, LogArg(value).json());
}

void TLogger::Log(const std::shared_ptr<ILogEntry>& entry) {
    for (const TLogArgument& argument : FArguments) entry->AddArgument(argument);
    for (const auto& sink : FSinks) sink->Write(entry);
}

void TLogger::Log(TLogLevel level, const std::exception* exception, const QString& messageTemplate, Args args) {
    Log(std::make_shared<TLogEntry>(level, messageTemplate, std::span(args.begin(), args.size()), exception));
}

void TLogger::LogDebug(const QString& messageTemplate, Args args) {
    Log(TLogLevel::llDebug, nullptr, messageTemplate, args);
}

void TLogger::LogDebug(const std::exception& exception, const QString& messageTemplate, Args args) {
    Log(TLogLevel::llDebug, &exception, messageTemplate, args);
}

void TLogger::LogInformation(const QString& messageTemplate, Args args) {
    Log(TLogLevel::llInformation, nullptr, messageTemplate, args);
}

void TLogger::LogInformation(const std::exception& exception, const QString& messageTemplate, Args args) {
    Log(TLogLevel::llInformation, &exception, messageTemplate, args);
}

void TLogger::LogWarning(const QString& messageTemplate, Args args) {
    Log(TLogLevel::llWarning, nullptr, messageTemplate, args);
}

void TLogger::LogWarning(const std::exception& exception, const QString& messageTemplate, Args args) {
    Log(TLogLevel::llWarning, &exception, messageTemplate, args);
}

void TLogger::LogError(const QString& messageTemplate, Args args) {
    Log(TLogLevel::llError, nullptr, messageTemplate, args);
}

void TLogger::LogError(const std::exception& exception, const QString& messageTemplate, Args args) {
    Log(TLogLevel::llError, &exception, messageTemplate, args);
}

TLogger& GlobalLogger() {
    static TLogger logger;
    return logger;
}

}  // namespace torvik

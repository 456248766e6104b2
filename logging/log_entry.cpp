// Building an event from its template, and its two text forms.
#include "logging/log_entry.h"

#include <QHash>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cstdlib>

namespace torvik {

namespace {

constexpr std::size_t kRoomForProperties = 4;

struct LevelNames {
    TLogLevel level;
    const char* name;
    const char* shortName;
};

constexpr std::array<LevelNames, 6> kLevels{{
    {TLogLevel::llVerbose, "Verbose", "VRB"},
    {TLogLevel::llDebug, "Debug", "DBG"},
    {TLogLevel::llInformation, "Information", "INF"},
    {TLogLevel::llWarning, "Warning", "WRN"},
    {TLogLevel::llError, "Error", "ERR"},
    {TLogLevel::llFatal, "Fatal", "FTL"},
}};

const LevelNames& namesOf(TLogLevel level) {
    return kLevels.at(static_cast<std::size_t>(level));
}

struct Placeholder {
    QString name;
    int start;   // 1-based index of "{"
    int length;  // with the braces
};
using Placeholders = std::vector<Placeholder>;

Placeholders searched(const QString& messageTemplate) {
    static const QRegularExpression expression(QStringLiteral("{@?([a-zA-Z0-9_]+)}"));
    Placeholders found;
    for (auto matches = expression.globalMatch(messageTemplate); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        found.push_back(
            {match.captured(1), static_cast<int>(match.capturedStart()) + 1, static_cast<int>(match.capturedLength())});
    }
    return found;
}

// The program has some hundred templates, and each is searched once by a thread. What comes beyond them is no constant.
const Placeholders& placeholdersOf(const QString& messageTemplate) {
    constexpr qsizetype kMostKnown = 500;
    thread_local QHash<QString, Placeholders> known;
    const auto found = known.constFind(messageTemplate);
    if (found != known.constEnd()) return *found;
    if (known.size() >= kMostKnown) known.clear();
    return *known.insert(messageTemplate, searched(messageTemplate));
}

// "+01:00"; "Z" where local time is UTC at that moment.
QString zoneOf(const QDateTime& local) {
    const int offset = local.offsetFromUtc();
    if (offset == 0) return QStringLiteral("Z");
    const int minutes = std::abs(offset) / 60;
    return QStringLiteral("%1%2:%3")
        .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

const QString kTimeFormat = QStringLiteral("yyyy'-'MM'-'dd'T'HH':'mm':'ss'.'zzz");

}  // namespace

QString logLevelName(TLogLevel level) {
    return QLatin1String(namesOf(level).name);
}

QString logLevelShortName(TLogLevel level) {
    return QLatin1String(namesOf(level).shortName);
}

TLogEntry::TLogEntry(TLogLevel level, const QString& messageTemplate, std::span<const LogArg> values,
                     const std::exception* exception, const QDateTime& timestamp)
    : Level(level),
      Timestamp(timestamp.toUTC()),
      Exception(exception ? QString::fromUtf8(exception->what()) : QString()),
      Template(messageTemplate) {
    const Placeholders& placeholders = placeholdersOf(Template);
    const std::size_t count = std::min(placeholders.size(), values.size());
    Arguments.reserve(count + kRoomForProperties);
    for (std::size_t i = 0; i < count; ++i) {
        const Placeholder& place = placeholders[i];
        AddArgument({place.name, values[i].shared(), place.start, place.length});
    }
}

void TLogEntry::AddArgument(const TLogArgument& argument) {
    Arguments.push_back(argument);
}

ILogEntry& TLogEntry::WithArgument(const QString& name, const JsonValue& value) {
    AddArgument({name, std::make_shared<JsonValue>(value), -1, 0});
    return *this;
}

ILogEntry& TLogEntry::WithArgument(const QString& name, const QVariant& value) {
    AddArgument({name, LogArg(value).shared(), -1, 0});
    return *this;
}

QString TLogEntry::FormatCompactJson() const {
    JsonValue object = JsonValue::object();
    const auto set = [&object](const QString& key, const JsonValue& value) {
        const std::string name = key.toStdString();
        object.erase(name);  // the last value of a name stands, and stands last
        object[name] = value;
    };
    set(QStringLiteral("@t"), (Timestamp.toString(kTimeFormat) + QLatin1Char('Z')).toStdString());
    set(QStringLiteral("@mt"), Template.toStdString());
    if (!Exception.isEmpty()) set(QStringLiteral("@x"), Exception.toStdString());
    set(QStringLiteral("@l"), logLevelName(Level).toStdString());
    for (const TLogArgument& argument : Arguments) set(argument.Name, *argument.Value);
    return jsonText(object);
}

// Between two placeholders the character before the second one is lost, and after the last one the character behind it:
// what reads these files has always been given them so.
QString TLogEntry::FormatTemplate() const {
    const QDateTime local = Timestamp.toLocalTime();
    QString line =
        local.toString(kTimeFormat) + zoneOf(local) + QLatin1Char(' ') + logLevelShortName(Level) + QLatin1Char(' ');
    int last = 0;
    for (const TLogArgument& argument : Arguments) {
        if (argument.StartIndex < 0) continue;
        line += Template.mid(std::max(last, 1) - 1, std::max(argument.StartIndex - last - 1, 0));
        last = argument.StartIndex + argument.Length;
        line += jsonText(*argument.Value);
    }
    line += Template.mid(last);
    if (!Exception.isEmpty()) line += QStringLiteral(" (%1)").arg(Exception);
    return line;
}

}  // namespace torvik

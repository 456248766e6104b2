// The two text forms of an event, to the character.
#include "logging/log_entry.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "logging/logger.h"
#include "tests/support/recording_sink.h"
#include "tests/support/time_zone.h"

namespace torvik {
namespace {

const QDateTime kMoment(QDate(2026, 3, 1), QTime(8, 15, 30, 250), Qt::UTC);

struct Rendering {
    const char* name;
    QString messageTemplate;
    std::vector<LogArg> values;
    QString message;  // of the file line
    QString json;     // what follows "@l" in the compact JSON
};

class LogRendering : public testing::TestWithParam<Rendering> {};

TEST_P(LogRendering, FollowsThePlaceholders) {
    const Rendering& p = GetParam();
    const TLogEntry entry(TLogLevel::llInformation, p.messageTemplate, p.values, {}, kMoment);

    EXPECT_EQ(entry.FormatTemplate().section(QLatin1Char(' '), 2), p.message);
    const QString head = QStringLiteral(R"({"@t":"2026-03-01T08:15:30.250Z","@mt":%1,"@l":"Information")")
                             .arg(jsonStringText(p.messageTemplate));
    EXPECT_EQ(entry.FormatCompactJson(), head + p.json + QLatin1Char('}'));
}

INSTANTIATE_TEST_SUITE_P(
    All, LogRendering,
    testing::Values(
        Rendering{"NoPlaceholder", "Hei", {}, "Hei", ""},
        Rendering{"CharacterBeforeTheSecondAndAfterTheLastIsLost",
                  "Henter for avdeling {Avdeling} kasse {Kassenummer} nå",
                  {12, 3},
                  "Henter for avdeling 12 kasse3nå",
                  R"(,"Avdeling":12,"Kassenummer":3)"},
        Rendering{"AdjoiningPlaceholders", "{A}{B}", {1, 2}, "12", R"(,"A":1,"B":2)"},
        Rendering{"PlaceholderWithoutValue", "{A}", {}, "{A}", ""},
        Rendering{"OneNameTwice", "{A} {A}", {1, 2}, "12", R"(,"A":2)"},
        Rendering{"AtSignIsDropped", "{@A}", {1}, "1", R"(,"A":1)"},
        Rendering{"NotAPlaceholder", "{a.b} {}", {1}, "{a.b} {}", ""},
        Rendering{"ValueWithoutPlaceholder", "{A}", {1, 2}, "1", R"(,"A":1)"},
        Rendering{"TextKeepsQuotesAndEscapes", "{A}", {"Å\"\\\n/"}, R"("\u00c5\"\\\n/")", R"(,"A":"\u00c5\"\\\n/")"},
        Rendering{"NulAloneIsEscaped", "{A}", {QChar(u'\0')}, R"("\u0000")", R"(,"A":"\u0000")"},
        Rendering{"NulEndsAText", "{A}", {QString(QChar(u'x')) + QChar(u'\0') + QChar(u'y')}, R"("x")", R"(,"A":"x")"},
        Rendering{"KindsOfValues",
                  "{A}{B}{C}{D}",
                  {true, 1.5, static_cast<const void*>(nullptr), QVariant()},
                  "true1.5falsenull",
                  R"(,"A":true,"B":1.5,"C":false,"D":null)"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(LogEntry, ExceptionStandsInBothForms) {
    const TLogEntry entry(TLogLevel::llError, QStringLiteral("Hei"), {}, QStringLiteral("gikk galt"), kMoment);

    EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral(" ERR Hei (gikk galt)")));
    EXPECT_EQ(entry.FormatCompactJson(),
              QStringLiteral(R"({"@t":"2026-03-01T08:15:30.250Z","@mt":"Hei","@x":"gikk galt","@l":"Error"})"));
}

TEST(LogEntry, EmptyExceptionTextCountsAsNone) {
    const TLogEntry entry(TLogLevel::llFatal, QStringLiteral("Hei"), {}, QString(), kMoment);
    EXPECT_FALSE(entry.FormatCompactJson().contains(QStringLiteral("@x")));
    EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral("FTL Hei")));
}

TEST(LogEntry, FileLineShowsLocalTimeWithItsOffset) {
    const test::TimeZone oslo("Europe/Oslo");
    const TLogEntry entry(TLogLevel::llDebug, QStringLiteral("Hei"), {}, {}, kMoment);
    EXPECT_EQ(entry.FormatTemplate(), QStringLiteral("2026-03-01T09:15:30.250+01:00 DBG Hei"));
}

TEST(LogEntry, FileLineShowsZWhereLocalTimeIsUtc) {
    const test::TimeZone utc("UTC");
    const TLogEntry entry(TLogLevel::llVerbose, QStringLiteral("Hei"), {}, {}, kMoment);
    EXPECT_EQ(entry.FormatTemplate(), QStringLiteral("2026-03-01T08:15:30.250Z VRB Hei"));
}

TEST(LogEntry, SharedJsonMustBeAnObjectOrArray) {
    EXPECT_THROW(LogArg(std::make_shared<const JsonValue>(1)), std::logic_error);
    EXPECT_EQ(jsonText(LogArg(std::make_shared<const JsonValue>(JsonValue::array({1, "b"}))).json()), R"([1,"b"])");
}

TEST(Logger, PropertiesFollowTheValuesAndTheLastOfANameStands) {
    TLogger logger;
    auto sink = std::make_shared<test::RecordingSink>();
    logger.AddSink(sink);
    logger.WithProperty(QStringLiteral("A"), JsonValue("old"))
        .WithProperty(QStringLiteral("B"), JsonValue(2))
        .WithProperty(QStringLiteral("A"), JsonValue("new"));

    logger.LogWarning(QStringLiteral("{X} {B}"), {7, 8});

    ASSERT_EQ(sink->entries.size(), 1u);
    EXPECT_TRUE(
        sink->entries[0]->FormatCompactJson().endsWith(QStringLiteral(R"("@l":"Warning","X":7,"A":"new","B":2})")));
}

TEST(Logger, HandsEveryLevelToEverySinkInOrder) {
    TLogger logger;
    auto first = std::make_shared<test::RecordingSink>();
    auto second = std::make_shared<test::RecordingSink>();
    logger.AddSink(first);
    logger.AddSink(second);

    logger.LogDebug(QStringLiteral("a"));
    logger.Log(TLogLevel::llVerbose, nullptr, QStringLiteral("b"), {});
    logger.LogError(std::runtime_error("feil"), QStringLiteral("c {N}"), {1});

    const QStringList expected{"DBG a", "VRB b", "ERR c {N} N=1 !feil"};
    EXPECT_EQ(first->lines(), expected);
    EXPECT_EQ(second->lines(), expected);
    logger.ClearSinks();
    EXPECT_EQ(first->syncs, 1);
}

}  // namespace
}  // namespace torvik

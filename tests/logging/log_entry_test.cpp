// The two text forms of an event, to the character.
#include "logging/log_entry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
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
    const TLogEntry entry(TLogLevel::llInformation, p.messageTemplate, p.values, nullptr, kMoment);

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
        Rendering{"LettersBeyondTheBasicPlaneLeaveAsTwo", "{A}", {"😀"}, R"("\ud83d\ude00")", R"(,"A":"\ud83d\ude00")"},
        Rendering{"NulAloneIsEscaped", "{A}", {QChar(u'\0')}, R"("\u0000")", R"(,"A":"\u0000")"},
        Rendering{"NulEndsAText", "{A}", {QString(QChar(u'x')) + QChar(u'\0') + QChar(u'y')}, R"("x")", R"(,"A":"x")"},
        Rendering{"KindsOfValues",
                  "{A}{B}{C}{D}",
                  {true, 1.5, static_cast<const void*>(nullptr), QVariant()},
                  "true1.5falsenull",
                  R"(,"A":true,"B":1.5,"C":false,"D":null)"},
        Rendering{"Addresses",
                  "{A}{B}",
                  {reinterpret_cast<const void*>(255), std::shared_ptr<const JsonValue>()},
                  "255false",
                  R"(,"A":255,"B":false)"},
        Rendering{"Characters",
                  "{A}{B}{C}",
                  {'a', u'ø', L'å'},
                  R"("a""\u00f8""\u00e5")",
                  R"(,"A":"a","B":"\u00f8","C":"\u00e5")"},
        Rendering{"Integers",
                  "{A}{B}",
                  {std::int64_t{-9007199254740993}, std::uint64_t{18446744073709551615u}},
                  "-900719925474099318446744073709551615",
                  R"(,"A":-9007199254740993,"B":18446744073709551615)"},
        Rendering{"Variants",
                  "{A}{B}{C}{D}",
                  {QVariant(7), QVariant(2.25), QVariant(true), QVariant(QStringLiteral("x"))},
                  R"(72.25true"x")",
                  R"(,"A":7,"B":2.25,"C":true,"D":"x")"},
        Rendering{"FloatingNumbers",
                  "{A}{B}{C}{D}{E}",
                  {1250000.0, 0.1, -3.0f, 1e20, std::nan("")},
                  "12500000.1-31e+20null",
                  R"(,"A":1250000,"B":0.1,"C":-3,"D":1e+20,"E":null)"},
        Rendering{"ControlCharacters",
                  "{A}",
                  {"\b\f\r\t\x01\x1f\x7f"},
                  R"("\b\f\r\t\u0001\u001f\u007f")",
                  R"(,"A":"\b\f\r\t\u0001\u001f\u007f")"},
        Rendering{"ObjectsAndArrays",
                  "{A}{B}{C}",
                  {std::make_shared<const JsonValue>(JsonValue::parse(R"({"z":1,"a":[null,"ø"]})")),
                   std::make_shared<const JsonValue>(JsonValue::array()),
                   std::make_shared<const JsonValue>(JsonValue::object())},
                  R"({"z":1,"a":[null,"\u00f8"]}[]{})",
                  R"(,"A":{"z":1,"a":[null,"\u00f8"]},"B":[],"C":{})"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(LogEntry, EachLevelHasALongAndAShortName) {
    const std::pair<const char*, const char*> names[] = {{"Verbose", "VRB"}, {"Debug", "DBG"}, {"Information", "INF"},
                                                         {"Warning", "WRN"}, {"Error", "ERR"}, {"Fatal", "FTL"}};
    for (int level = 0; level < 6; ++level) {
        const TLogEntry entry(static_cast<TLogLevel>(level), QStringLiteral("Hei"), {}, nullptr, kMoment);
        EXPECT_TRUE(entry.FormatCompactJson().endsWith(QStringLiteral(R"("@l":"%1"})").arg(names[level].first)));
        EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral(" %1 Hei").arg(names[level].second)));
    }
}

TEST(LogEntry, ExceptionStandsInBothForms) {
    const std::runtime_error failure("gikk galt");
    const TLogEntry entry(TLogLevel::llError, QStringLiteral("Hei"), {}, &failure, kMoment);

    EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral(" ERR Hei (gikk galt)")));
    EXPECT_EQ(entry.FormatCompactJson(),
              QStringLiteral(R"({"@t":"2026-03-01T08:15:30.250Z","@mt":"Hei","@x":"gikk galt","@l":"Error"})"));
}

TEST(LogEntry, EmptyExceptionTextCountsAsNone) {
    const std::runtime_error failure("");
    const TLogEntry entry(TLogLevel::llFatal, QStringLiteral("Hei"), {}, &failure, kMoment);
    EXPECT_FALSE(entry.FormatCompactJson().contains(QStringLiteral("@x")));
    EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral("FTL Hei")));
}

TEST(LogEntry, FileLineShowsLocalTimeWithItsOffset) {
    const test::TimeZone oslo("Europe/Oslo");
    const TLogEntry entry(TLogLevel::llDebug, QStringLiteral("Hei"), {}, nullptr, kMoment);
    EXPECT_EQ(entry.FormatTemplate(), QStringLiteral("2026-03-01T09:15:30.250+01:00 DBG Hei"));
}

TEST(LogEntry, FileLineShowsZWhereLocalTimeIsUtc) {
    const test::TimeZone utc("UTC");
    const TLogEntry entry(TLogLevel::llVerbose, QStringLiteral("Hei"), {}, nullptr, kMoment);
    EXPECT_EQ(entry.FormatTemplate(), QStringLiteral("2026-03-01T08:15:30.250Z VRB Hei"));
}

std::string failureOf(const std::function<void()>& call) {
    try {
        call();
        return "none";
    } catch (const std::logic_error& failure) {
        return failure.what();
    }
}

TEST(LogEntry, ValuesThatAreNotTakenAreAssertionFailures) {
    EXPECT_EQ(failureOf([] { LogArg{std::make_shared<const JsonValue>(1)}; }), "Assertion failure");
    EXPECT_EQ(failureOf([] { LogArg{L"bred"}; }), "Assertion failure");
    EXPECT_EQ(failureOf([] { LogArg{u"bred"}; }), "Assertion failure");
}

TEST(LogEntry, TimestampIsTheMomentInUtc) {
    const test::TimeZone oslo("Europe/Oslo");
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const TLogEntry entry(TLogLevel::llDebug, QStringLiteral("Hei"));
    EXPECT_EQ(entry.Timestamp.offsetFromUtc(), 0);
    EXPECT_GE(entry.Timestamp, before);
    EXPECT_LE(entry.Timestamp, QDateTime::currentDateTimeUtc());
}

TEST(LogEntry, FileLineShowsAnOffsetOfHoursAndMinutesWestOfGreenwich) {
    const test::TimeZone stJohns("America/St_Johns");
    const TLogEntry entry(TLogLevel::llDebug, QStringLiteral("Hei"), {}, nullptr, kMoment);
    EXPECT_EQ(entry.FormatTemplate(), QStringLiteral("2026-03-01T04:45:30.250-03:30 DBG Hei"));
}

struct Till {
    int number;
};
void to_json(JsonValue& json, const Till& till) {
    json = JsonValue{{"Kasse", till.number}};
}

TEST(LogEntry, WithArgumentAddsToTheJsonAndLeavesTheLineAsItIs) {
    TLogEntry entry(TLogLevel::llInformation, QStringLiteral("Hei {A}."), std::vector<LogArg>{1}, nullptr, kMoment);
    ILogEntry& same = entry.WithArgument(QStringLiteral("Json"), JsonValue(nullptr))
                          .WithArgument(QStringLiteral("Objekt"), Till{3})
                          .WithArgument(QStringLiteral("Variant"), QVariant(2.5))
                          .WithArgument(QStringLiteral("A"), QVariant(9));
    EXPECT_EQ(&same, &entry);
    EXPECT_TRUE(entry.FormatTemplate().endsWith(QStringLiteral(" INF Hei 1")));
    EXPECT_TRUE(entry.FormatCompactJson().endsWith(
        QStringLiteral(R"("@l":"Information","Json":null,"Objekt":{"Kasse":3},"Variant":2.5,"A":9})")));
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

TEST(Logger, TakesPropertiesInThreeForms) {
    TLogger logger;
    auto sink = std::make_shared<test::RecordingSink>();
    logger.AddSink(sink);
    EXPECT_EQ(&logger.WithProperty(QStringLiteral("a"), QVariant(1)).WithProperty(QStringLiteral("A"), Till{2}),
              &logger);
    logger.LogDebug(QStringLiteral("x"));
    EXPECT_TRUE(
        sink->entries[0]->FormatCompactJson().endsWith(QStringLiteral(R"("@l":"Debug","a":1,"A":{"Kasse":2}})")));
}

TEST(Logger, WithoutSinksIsNoFault) {
    TLogger logger;
    logger.LogError(std::runtime_error("feil"), QStringLiteral("x {A}"), {1});
    logger.SyncAndClose();
    logger.ClearSinks();
}

TEST(Logger, RaisesWhatASinkRaises) {
    struct Broken final : ILogSink {
        void Write(const std::shared_ptr<ILogEntry>&) override { throw std::runtime_error("disk"); }
        void SyncAndClose() override {}
    };
    TLogger logger;
    logger.AddSink(std::make_shared<Broken>());
    EXPECT_THROW(logger.LogDebug(QStringLiteral("x")), std::runtime_error);
}

TEST(Logger, DrainsItsSinksWhenItEnds) {
    auto sink = std::make_shared<test::RecordingSink>();
    {
        TLogger logger;
        logger.AddSink(sink);
    }
    EXPECT_EQ(sink->syncs, 1);
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

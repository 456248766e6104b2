// The point of time without a zone: its texts, literals, order, and that no zone ever bends it.
#include "engine/db/date_time.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/table.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"
#include "tests/support/time_zone.h"

namespace torvik::db {
namespace {

TEST(DateTime, KeepsStepsOf100Nanoseconds) {
    const DateTime time(QDate(2024, 1, 2), QTime(23, 59, 59, 999), 9999);
    EXPECT_EQ(time.fraction(), 9999999);
    EXPECT_EQ(time.time(), QTime(23, 59, 59, 999));
    EXPECT_EQ(DateTime::fromTicks(time.date(), time.ticksOfDay()), time);
}

TEST(DateTime, LiteralHasAColonBeforeTheMilliseconds) {
    EXPECT_EQ(DateTime(QDate(2026, 3, 2), QTime(21, 5, 9, 7)).literal(), QStringLiteral("'20260302 21:05:09:007'"));
}

TEST(DateTime, DateLiteralHasNoTime) {
    EXPECT_EQ(DateTime(QDate(2026, 12, 31), QTime(21, 5)).dateLiteral(), QStringLiteral("'20261231'"));
}

TEST(DateTime, InvalidOneIsAnErrorAndNeverAnEmptyLiteral) {
    const DateTime invalid[] = {DateTime(), DateTime(QDate(2026, 2, 30)), DateTime(QDate(2026, 2, 3), QTime(24, 0)),
                                DateTime::fromTicks(QDate(2026, 2, 3), qint64{24} * 3600 * 10'000'000),
                                DateTime::fromTicks(QDate(2026, 2, 3), -1)};
    for (const DateTime& value : invalid) {
        EXPECT_FALSE(value.isValid());
        EXPECT_THROW(static_cast<void>(value.literal()), UsageError);
        EXPECT_THROW(static_cast<void>(value.dateLiteral()), UsageError);
        EXPECT_EQ(value.toString(QStringLiteral("yyyy")), QString());
        EXPECT_TRUE(Value(value).isNull());
    }
}

TEST(DateTime, IsOrderedByDayThenTimeWithTheInvalidOneFirst) {
    const DateTime rising[] = {DateTime(), DateTime(QDate(2024, 1, 1), QTime(23, 0)),
                               DateTime(QDate(2024, 1, 2), QTime(1, 0)), DateTime(QDate(2024, 1, 2), QTime(1, 0), 1),
                               DateTime(QDate(2024, 2, 1), QTime(0, 0))};
    for (size_t i = 0; i < std::size(rising); ++i)
        for (size_t j = 0; j < std::size(rising); ++j) {
            EXPECT_EQ(rising[i] < rising[j], i < j) << i << ' ' << j;
            EXPECT_EQ(rising[i] == rising[j], i == j) << i << ' ' << j;
        }
}

TEST(DateTime, TextsInTheThreeFormsOfADay) {
    const DateTime noon(QDate(2024, 1, 31), QTime(12, 0));
    for (const char* text : {"31.01.2024 12:00", "20240131 12:00:00", "2024-01-31T12:00:00.000", " 31.01.2024  12:00 "})
        EXPECT_EQ(DateTime::fromText(QLatin1String(text)), noon) << text;
    EXPECT_EQ(DateTime::fromText(QStringLiteral("31.01.2024")), DateTime(QDate(2024, 1, 31)));
    for (const char* text : {"", "i morgen", "32.01.2024", "31.01.2024 25:00", "31.01.2024 tolv"})
        EXPECT_EQ(DateTime::fromText(QLatin1String(text)), std::nullopt) << text;
}

// Both change-overs of 2026 in Norway: the hour that is left out, the hour that comes twice, and their edges.
const QDate kSpring(2026, 3, 29);
const QDate kAutumn(2026, 10, 25);

std::vector<DateTime> changeOvers() {
    std::vector<DateTime> all;
    for (const QDate& day : {kSpring, kAutumn})
        for (const QTime& time : {QTime(1, 59, 59, 997), QTime(2, 0), QTime(2, 30), QTime(2, 59, 59, 997), QTime(3, 0)})
            all.emplace_back(day, time);
    return all;
}

class Zones : public testing::TestWithParam<const char*> {
protected:
    test::TimeZone zone{GetParam()};
};

TEST_P(Zones, TextAndLiteralOfEveryHourOfTheChangeOversAreItsOwn) {
    const DateTime spring(kSpring, QTime(2, 30));
    EXPECT_EQ(spring.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")), QStringLiteral("29.03.2026 02:30:00"));
    EXPECT_EQ(spring.literal(), QStringLiteral("'20260329 02:30:00:000'"));
    EXPECT_EQ(DateTime::fromText(QStringLiteral("29.03.2026 02:30:00")), spring);
    const DateTime autumn(kAutumn, QTime(2, 30));
    EXPECT_EQ(autumn.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")), QStringLiteral("25.10.2026 02:30:00"));
    EXPECT_EQ(autumn.literal(), QStringLiteral("'20261025 02:30:00:000'"));
}

TEST_P(Zones, ChangeOversTravelFromTableToTableAsTheyAre) {
    test::SandboxServer server(test::Wire::Plain);
    server.run(
        QStringLiteral("CREATE TABLE Fra (n int, a datetime, b datetime2, c smalldatetime) "
                       "CREATE TABLE Til (n int, a datetime, b datetime2, c smalldatetime) "
                       "CREATE TABLE Ord (a datetime)"));
    std::string expected = "n | a | b | c\n";
    int n = 0;
    for (const DateTime& moment : changeOvers()) {
        const QString at = moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        const QString minute = DateTime(moment.date(), QTime(moment.time().hour(), 30))
                                   .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        server.run(
            QStringLiteral("INSERT Fra VALUES (%1, '%2', '%2', '%3')")
                .arg(QString::number(++n), QString(at).replace(u' ', u'T'), QString(minute).replace(u' ', u'T')));
        expected += QStringLiteral("%1 | %2 | %2 | %3\n").arg(QString::number(n), at, minute).toStdString();
    }
    Query source(&server.session());
    source.SQL = {QStringLiteral("SELECT * FROM Fra ORDER BY n")};
    source.Open();
    Table target(&server.session());
    target.SetTableName(QStringLiteral("Til"));
    target.Open();
    Query literal(&server.session());
    for (; !source.Eof(); source.Next()) {
        target.Append();
        for (int i = 0; i < source.FieldCount(); ++i) target.Fields(i) = source.Fields(i).AsValue();
        target.Post();
        literal.SQL = {QStringLiteral("INSERT Ord VALUES (%1)").arg(source.dateTime("a").literal())};
        literal.ParamCheck = false;
        literal.ExecSQL();
    }
    target.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM Til ORDER BY n")), expected);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Ord ORDER BY a")),
              server.rows(QStringLiteral("SELECT a FROM Fra ORDER BY a")));
}

TEST_P(Zones, ChangeOversAreParametersAndFoundAgain) {
    test::SandboxServer server(test::Wire::Plain);
    server.run(QStringLiteral("CREATE TABLE T (a datetime)"));
    Query insert(&server.session());
    insert.SQL = {QStringLiteral("INSERT T VALUES (:a)")};
    for (const DateTime& moment : changeOvers()) {
        insert.ParamByName(QStringLiteral("a")) = moment;
        insert.ExecSQL();
    }
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT a FROM T")};
    query.Open();
    for (const DateTime& moment : changeOvers()) {
        ASSERT_TRUE(query.Locate(QStringLiteral("a"), moment)) << moment.literal().toStdString();
        EXPECT_EQ(query.Fields(0).AsDateTime(), moment);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Zones, testing::Values("Europe/Oslo", "UTC"),
                         [](const auto& test) { return std::string(test.index == 0 ? "Oslo" : "Utc"); });

}  // namespace
}  // namespace torvik::db

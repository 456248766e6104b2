// The in-memory table, and with it all that every data set does with rows on the client.
#include "engine/db/mem_table.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

class MemTableTest : public testing::Test {
protected:
    MemTableTest() {
        table.AddColumn(QStringLiteral("Avd"), FieldType::Text, 10);
        table.AddColumn(QStringLiteral("Kasse"), FieldType::Integer);
        table.AddColumn(QStringLiteral("Sum"), FieldType::Decimal);
        table.Open();
    }

    void add(const char* avd, int kasse, const char16_t* sum) {
        table.Append();
        table.FieldByName(QStringLiteral("Avd")) = avd;
        table.FieldByName(QStringLiteral("Kasse")) = kasse;
        table.FieldByName(QStringLiteral("Sum")) = *Decimal::fromText(sum);
        table.Post();
    }

    void addThree() {
        add("001", 1, u"1.50");
        add("002", 1, u"2.50");
        add("002", 2, u"3.50");
        table.First();
    }

    [[nodiscard]] QString avd() const { return table.FieldByName(QStringLiteral("Avd")).AsString(); }

    MemTable table;
};

TEST_F(MemTableTest, AnEmptyTableIsAtBothEnds) {
    table.First();
    EXPECT_TRUE(table.Eof());
    EXPECT_TRUE(table.Bof());
    EXPECT_TRUE(table.IsEmpty());
    EXPECT_EQ(table.RecNo(), 0);
    EXPECT_TRUE(table.Fields(0).IsNull());
    table.Next();
    table.Prior();
    table.Last();
    EXPECT_TRUE(table.Eof());
}

TEST_F(MemTableTest, WalkingGoesThroughAllRowsInOrder) {
    addThree();
    QStringList seen;
    for (table.First(); !table.Eof(); table.Next())
        seen += QStringLiteral("%1 %2/%3").arg(table.RecNo()).arg(avd()).arg(table.Fields(1).AsInteger());
    EXPECT_EQ(seen, (QStringList{QStringLiteral("1 001/1"), QStringLiteral("2 002/1"), QStringLiteral("3 002/2")}));
    table.Prior();
    EXPECT_EQ(table.RecNo(), 2);
    table.First();
    table.Prior();
    EXPECT_TRUE(table.Bof());
    table.Last();
    EXPECT_EQ(table.RecNo(), 3);
    EXPECT_TRUE(table.Eof());
}

TEST_F(MemTableTest, ABookmarkLeadsBack) {
    addThree();
    table.Next();
    Bookmark mark = table.GetBookmark();
    table.Last();
    table.GotoBookmark(mark);
    table.FreeBookmark(mark);
    EXPECT_EQ(table.RecNo(), 2);
    EXPECT_FALSE(table.Eof());
}

TEST_F(MemTableTest, LocateFindsTheFirstRowOnSeveralColumns) {
    addThree();
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd;kasse"), {Value("002"), Value("2")}));
    EXPECT_EQ(table.RecNo(), 3);
    EXPECT_TRUE(table.Locate(QStringLiteral("AVD"), "002"));
    EXPECT_EQ(table.RecNo(), 2);
    EXPECT_TRUE(table.Locate(QStringLiteral("Sum"), 3.5));
    EXPECT_EQ(table.RecNo(), 3);
}

TEST_F(MemTableTest, LocateThatFindsNothingStaysWhereItIs) {
    addThree();
    table.Next();
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), "009"));
    EXPECT_FALSE(table.Locate(QStringLiteral("Kasse"), "abc"));
    EXPECT_EQ(table.RecNo(), 2);
}

TEST_F(MemTableTest, LocateOnAColumnThatIsNotThereLeavesTheNextSearchAlone) {
    addThree();
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "001"));
    EXPECT_THROW(static_cast<void>(table.Locate(QStringLiteral("Sum;Borte"), {Value(3.5), Value(1)})), UsageError);
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "002"));
    EXPECT_EQ(table.RecNo(), 2);
}

TEST_F(MemTableTest, LocateOptions) {
    add("Øst  ", 1, u"1");
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "Øst"));
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), "øST"));
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "øST", LocateOption::CaseInsensitive));
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), "Øs"));
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "Øs", LocateOption::PartialKey));
}

TEST_F(MemTableTest, LocateSeesRowsPostedAndDeletedSince) {
    addThree();
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), "003"));
    add("003", 1, u"1");
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), "003"));
    table.Delete();
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), "003"));
    EXPECT_EQ(table.RecordCount(), 3);
}

TEST_F(MemTableTest, LocateFindsNull) {
    table.Append();
    table.Post();
    EXPECT_TRUE(table.Locate(QStringLiteral("Avd"), Value()));
    EXPECT_FALSE(table.Locate(QStringLiteral("Avd"), ""));
}

TEST_F(MemTableTest, EditChangesTheCurrentRowOnly) {
    addThree();
    table.Next();
    table.Edit();
    table.FieldByName(QStringLiteral("Avd")) = "en lengre tekst enn før";
    table.Fields(2).Clear();
    EXPECT_EQ(avd(), QStringLiteral("en lengre tekst enn før"));
    table.Post();
    EXPECT_EQ(table.ValueAt(0, 0), Value("001"));
    EXPECT_EQ(table.ValueAt(1, 0), Value("en lengre tekst enn før"));
    EXPECT_TRUE(table.ValueAt(1, 2).isNull());
    EXPECT_EQ(table.ValueAt(2, 0), Value("002"));
}

TEST_F(MemTableTest, CancelForgetsAndMovingPosts) {
    addThree();
    table.Edit();
    table.Fields(0) = "borte";
    table.Cancel();
    EXPECT_EQ(avd(), QStringLiteral("001"));
    table.Edit();
    table.Fields(0) = "ny";
    table.Next();
    EXPECT_EQ(table.ValueAt(0, 0), Value("ny"));
}

TEST_F(MemTableTest, DeletingWhileWalkingTakesEachRowOnce) {
    addThree();
    for (table.First(); !table.Eof();) {
        if (avd() == u"002")
            table.Delete();
        else
            table.Next();
        if (table.RecordCount() == 1) break;
    }
    EXPECT_EQ(table.RecordCount(), 1);
    EXPECT_EQ(avd(), QStringLiteral("001"));
}

TEST_F(MemTableTest, UnknownFields) {
    EXPECT_EQ(table.FindField(QStringLiteral("Finnes_ikke")), nullptr);
    EXPECT_NE(table.FindField(QStringLiteral("KASSE")), nullptr);
    try {
        static_cast<void>(table.FieldByName(QStringLiteral("Finnes_ikke")));
        FAIL() << "found";
    } catch (const UsageError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("Field 'Finnes_ikke' not found"));
    }
}

TEST_F(MemTableTest, AValueOfTheWrongKindIsRefusedWithTheFieldsName) {
    table.Append();
    try {
        table.FieldByName(QStringLiteral("Kasse")) = "abc";
        FAIL() << "taken";
    } catch (const UsageError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("'abc' is not a valid integer value for field 'Kasse'"));
    }
}

TEST_F(MemTableTest, SettingAFieldOutsideEditIsRefused) {
    addThree();
    EXPECT_THROW(table.Fields(0) = "x", UsageError);
    EXPECT_THROW(table.Post(), UsageError);
}

TEST_F(MemTableTest, AClosedTableRefusesEverything) {
    table.Close();
    EXPECT_FALSE(table.Active());
    EXPECT_THROW(table.First(), UsageError);
    EXPECT_THROW(static_cast<void>(table.Eof()), UsageError);
    EXPECT_THROW(static_cast<void>(table.FindField(QStringLiteral("Avd"))), UsageError);
    table.Close();
}

TEST_F(MemTableTest, CopyFromTakesColumnsAndRowsAndLeavesTheSourceWhereItIs) {
    addThree();
    table.Next();
    MemTable copy;
    copy.CopyFrom(table);
    EXPECT_EQ(copy.FieldNames(), table.FieldNames());
    EXPECT_EQ(copy.RecordCount(), 3);
    EXPECT_EQ(copy.RecNo(), 1);
    EXPECT_EQ(copy.ValueAt(2, 2), Value(*Decimal::fromText(u"3.5")));
    EXPECT_EQ(table.RecNo(), 2);
    copy.Clear();
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_TRUE(copy.Active());
}

TEST(MemTable, AColumnStandsOnce) {
    MemTable table;
    table.AddColumn(QStringLiteral("a"), FieldType::Text);
    EXPECT_THROW(table.AddColumn(QStringLiteral("A"), FieldType::Text), UsageError);
    table.Open();
    EXPECT_THROW(table.AddColumn(QStringLiteral("b"), FieldType::Text), UsageError);
}

TEST(MemTable, TextIsTrimmedAndIntegerIsChecked) {
    MemTable table;
    table.AddColumn(QStringLiteral("navn"), FieldType::Text);
    table.AddColumn(QStringLiteral("nummer"), FieldType::Integer);
    table.AddColumn(QStringLiteral("når"), FieldType::DateTime);
    table.Open();
    table.Append();
    table.FieldByName(QStringLiteral("navn")) = " Kari  ";
    table.FieldByName(QStringLiteral("nummer")) = 7;
    table.FieldByName(QStringLiteral("når")) = DateTime(QDate(2026, 3, 29), QTime(2, 30));
    table.Post();
    EXPECT_EQ(table.text("NAVN"), QStringLiteral("Kari"));
    EXPECT_EQ(table.integer("nummer"), 7);
    EXPECT_EQ(table.dateTime("når"), DateTime(QDate(2026, 3, 29), QTime(2, 30)));
    EXPECT_THROW(static_cast<void>(table.text("finnes ikke")), UsageError);

    table.Append();
    table.FieldByName(QStringLiteral("nummer")) = qint64{1} << 31;
    table.Post();
    EXPECT_EQ(table.text("navn"), QString());
    const auto textOfError = [](auto read) {
        try {
            read();
        } catch (const UsageError& e) {
            return e.text();
        }
        return QString();
    };
    EXPECT_EQ(textOfError([&] { static_cast<void>(table.integer("nummer")); }),
              QStringLiteral("'2147483648' is not a valid integer value for field 'nummer'"));
    EXPECT_EQ(textOfError([&] { static_cast<void>(table.dateTime("når")); }),
              QStringLiteral("Row 2 has no date and time for field 'når'"));
    table.First();
    EXPECT_EQ(textOfError([&] { static_cast<void>(table.integer("navn")); }),
              QStringLiteral("' Kari  ' is not a valid integer value for field 'navn'"));
}

}  // namespace
}  // namespace torvik::db

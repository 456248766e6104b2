// Notes and intents as text, and on the disk.
#include "inbound/pairs/pair_note.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <set>

#include "engine/base/abort.h"
#include "inbound/pairs/pair_notes.h"
#include "tests/support/full_disk.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

PairNote noteOf(const QString& till, const QUuid& store = QUuid::createUuid()) {
    return {{QUuid::createUuid(), QStringLiteral("oppgjør 17"), store, QStringLiteral("KASSEPC"), {}},
            1001,
            till,
            NotedSettlement{17, QStringLiteral("2026-03-02 21:00:00.123")},
            {{TillMark::Kind::Settlement, {QStringLiteral("17")}, QStringLiteral("2026-03-02 22:10:11.457"), {}},
             {TillMark::Kind::GiftCard,
              {QStringLiteral("G'1"), QStringLiteral("101"), QStringLiteral("1")},
              QStringLiteral("2026-03-02 22:10:11.460"),
              {}},
             {TillMark::Kind::TimeEntry,
              {QStringLiteral("5"), QStringLiteral("2026-03-02 08:00:00.000")},
              QStringLiteral("18"),
              QStringLiteral("2")},
             {TillMark::Kind::ReleaseTime, {}, {}, QStringLiteral("2026-03-04 00:00:00.000")}}};
}

TEST(PairNote, ComesBackFromItsText) {
    const PairNote note = noteOf(QStringLiteral("1"));
    EXPECT_EQ(PairNote::fromJson(note.toJson()), note);
    PairNote ofNewTill = note;
    ofNewTill.settlement = {};
    ofNewTill.marks = {};
    EXPECT_EQ(PairNote::fromJson(ofNewTill.toJson()), ofNewTill);
}

TEST(PairNote, TextThatIsNoNoteIsAnError) {
    EXPECT_THROW(static_cast<void>(PairNote::fromJson("{")), EngineError);
    EXPECT_THROW(static_cast<void>(PairNote::fromJson("{}")), EngineError);
    QByteArray unknown = noteOf(QStringLiteral("1")).toJson();
    unknown.replace("\"gavekort\"", "\"noe annet\"");
    EXPECT_THROW(static_cast<void>(PairNote::fromJson(unknown)), EngineError);
}

TEST(PairIntent, ComesBackFromItsTextAndFitsItsColumn) {
    PairIntent intent = noteOf(QStringLiteral("1")).intent;
    EXPECT_EQ(PairIntent::fromText(intent.text()), intent);
    intent.machine = QString(200, QLatin1Char('M'));
    intent.subject = QStringLiteral("oppgjør 2147483647");
    EXPECT_LE(intent.text().size(), 255);
    EXPECT_EQ(PairIntent::fromText(intent.text())->id, intent.id);
}

TEST(PairIntent, OtherTextsOfTheLogAreNone) {
    for (const char* text : {"1", "", "Par", "Par {x} oppgjør 1, notat {y}, maskin z"})
        EXPECT_FALSE(PairIntent::fromText(QString::fromUtf8(text))) << text;
}

TEST(TillMarkKinds, HaveNamesOfTheirOwn) {
    std::set<std::string> names;
    for (const TillMarkKind& kind : tillMarkKinds()) {
        EXPECT_TRUE(names.insert(kind.name).second) << kind.name;
        EXPECT_EQ(&kindOf({kind.kind, {}, {}, {}}), &kind);
    }
}

TEST(PairNotes, KeepWhatWasWrittenUntilItIsRemoved) {
    const QTemporaryDir folder;
    const PairNotes notes(folder.filePath(QStringLiteral("Notater/her")));
    const QUuid store = notes.storeId();
    const PairNote first = noteOf(QStringLiteral("1"), store);
    const PairNote second = noteOf(QStringLiteral("2"), store);
    notes.write(first);
    notes.write(second);

    const PairNotes again(folder.filePath(QStringLiteral("Notater/her")));
    EXPECT_EQ(again.storeId(), store);
    EXPECT_EQ(again.read(first.intent.id), first);
    EXPECT_EQ(again.ofTill(1001, QStringLiteral("1")), std::vector<PairNote>{first});
    EXPECT_TRUE(again.ofTill(1002, QStringLiteral("1")).empty());

    again.remove(first.intent.id);
    EXPECT_EQ(again.read(first.intent.id), std::nullopt);
    EXPECT_EQ(again.read(second.intent.id), second);
}

TEST(PairNotes, FolderThatWasLostIsAnotherFolder) {
    const QTemporaryDir folder;
    const PairNotes notes(folder.filePath(QStringLiteral("Notater")));
    const QUuid store = notes.storeId();
    ASSERT_TRUE(QDir(folder.filePath(QStringLiteral("Notater"))).removeRecursively());
    EXPECT_NE(notes.storeId(), store);
}

TEST(PairNotes, FolderThatCannotBeMadeIsAnError) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("Notater")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_THROW(static_cast<void>(PairNotes(file.fileName()).storeId()), EngineError);
}

TEST(PairNotes, DiskThatDoesNotTakeANoteLeavesNone) {
    const QTemporaryDir folder;
    const PairNotes notes(folder.path());
    const PairNote note = noteOf(QStringLiteral("1"), notes.storeId());
    {
        const FullDisk full(100);
        EXPECT_THROW(notes.write(note), EngineError);
    }
    EXPECT_EQ(notes.read(note.intent.id), std::nullopt);
    EXPECT_TRUE(QDir(folder.path()).entryList({QStringLiteral("par-*")}).isEmpty());
}

TEST(PairNotes, NoteThatCannotBeReadIsAnErrorAndNotNone) {
    const QTemporaryDir folder;
    const PairNotes notes(folder.path());
    const PairNote note = noteOf(QStringLiteral("1"), notes.storeId());
    notes.write(note);
    QFile file(folder.filePath(QStringLiteral("par-%1.json").arg(note.intent.id.toString(QUuid::WithoutBraces))));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.close();
    EXPECT_THROW(static_cast<void>(notes.read(note.intent.id)), EngineError);
    // It holds back the till whose intent names it, and no other.
    const PairNote other = noteOf(QStringLiteral("2"), notes.storeId());
    notes.write(other);
    EXPECT_EQ(notes.ofTill(1001, QStringLiteral("2")), std::vector<PairNote>{other});
    EXPECT_TRUE(QFile::exists(file.fileName()));
}

}  // namespace
}  // namespace torvik::test

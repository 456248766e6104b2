// The lists of the health check.
#include "shell/results/health_view.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QHeaderView>
#include <QTemporaryDir>

#include "fleet/health/health_status.h"
#include "shell/look/colors.h"
#include "shell/results/grid.h"
#include "tests/shell/modal.h"
#include "tests/shell/sheet/xls_reader.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

class HealthLists : public testing::Test {
protected:
    HealthLists()
        : view({.askSpreadsheet = [this] { return file; },
                .tell = [](const QString&) {},
                .guarded = [](const std::function<void()>& body) { body(); }}) {}

    [[nodiscard]] Grid& grid(const char* name) { return child<Grid>(view, name); }
    [[nodiscard]] static QStringList rows(const Grid& grid) {
        QStringList all;
        for (int row = 0; row < grid.model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < grid.model()->columnCount(); ++column)
                cells << grid.model()->index(row, column).data().toString();
            all << cells.join(u'|');
        }
        return all;
    }
    void backup(const char* till, const char* database, const QDate& date, int days) {
        summary.LastBackupDates.Items.push_back({1001, QString::fromUtf8(till), "101", "Sentrum",
                                                 QString::fromUtf8(database), days, db::DateTime(date, QTime(2, 0))});
    }

    QTemporaryDir folder;
    QString file;
    THealthSummary summary;
    HealthView view;
};

TEST_F(HealthLists, ShowWhatACheckFoundAndNothingOfTheOneBefore) {
    backup("1", "TorvikPOS", QDate(2026, 3, 7), 2);
    summary.FailedJobs.Items.push_back({1001, "2", "101", "Sentrum", "Nattbackup"});
    view.showHealth(summary);
    view.showHealth(summary);
    EXPECT_EQ(view.memLastBackupDates->FieldNames(),
              (QStringList{"AvdNr", "AvdNavn", "Kassenr", "DatabaseName", "LastBackupDate", "DaysSinceLastBackup"}));
    EXPECT_EQ(view.memFailedJobs->FieldNames(), (QStringList{"AvdNr", "AvdNavn", "Kassenr", "JobName"}));
    EXPECT_EQ(rows(grid("lastBackupDates")), QStringList{"101|Sentrum|1|TorvikPOS|07.03.2026 02:00:00|2"});
    EXPECT_EQ(rows(grid("failedJobs")), QStringList{"101|Sentrum|2|Nattbackup"});
    view.showHealth({});
    EXPECT_EQ(rows(grid("lastBackupDates")), QStringList());
    EXPECT_EQ(rows(grid("failedJobs")), QStringList());
}

TEST_F(HealthLists, BackupsFromBeforeThereWereAnyHaveNoDateAndTheirGreatNumberOfDays) {
    backup("1", "ingen", QDate(1900, 1, 1), 46088);
    backup("1", "niende", QDate(1900, 1, 8), 46081);
    backup("1", "tiende", QDate(1900, 1, 9), 5001);
    view.showHealth(summary);
    EXPECT_EQ(rows(grid("lastBackupDates")), (QStringList{"101|Sentrum|1|ingen||46088", "101|Sentrum|1|niende||46081",
                                                          "101|Sentrum|1|tiende|09.01.1900 02:00:00|5001"}));
}

TEST_F(HealthLists, SortByValueUpwardsDownwardsAndBack) {
    backup("10", "a", QDate(2026, 3, 1), 9);
    backup("9", "b", QDate(2026, 2, 1), 37);
    backup("2", "c", QDate(1900, 1, 1), 46088);
    backup("1", "d", QDate(2025, 12, 1), 100);
    view.showHealth(summary);
    view.resize(900, 600);
    view.show();
    Grid& list = grid("lastBackupDates");
    const auto databases = [&] {
        QString all;
        for (int row = 0; row < 4; ++row) all += list.model()->index(row, 3).data().toString();
        return all;
    };
    const auto pressCaption = [&](int column) {
        QHeaderView& header = *list.horizontalHeader();
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(column) + 5, header.height() / 2));
    };
    EXPECT_EQ(databases(), "abcd") << "as the tills came";
    pressCaption(2);
    EXPECT_EQ(databases(), "dcba") << "by number, not by letter";
    pressCaption(2);
    EXPECT_EQ(databases(), "abcd");
    pressCaption(5);
    EXPECT_EQ(databases(), "abdc");
    pressCaption(4);
    EXPECT_EQ(databases(), "cdba") << "none, then the oldest";
    pressCaption(4);
    pressCaption(4);
    EXPECT_EQ(databases(), "abcd");
}

TEST_F(HealthLists, ColourTellsHowOldABackupIs) {
    const struct {
        int days;
        QVariant color;
    } ages[]{{0, {}}, {1, {}}, {2, textColor(Tone::Blue)}, {7, textColor(Tone::Blue)}, {8, textColor(Tone::Red)}};
    for (const auto& age : ages) backup("1", "a", QDate(2026, 3, 7), age.days);
    backup("1", "ingen", QDate(1900, 1, 1), 46088);
    view.showHealth(summary);
    const QAbstractItemModel& model = *grid("lastBackupDates").model();
    for (int row = 0; row < 5; ++row)
        EXPECT_EQ(model.index(row, 0).data(Qt::ForegroundRole), ages[row].color) << ages[row].days;
    EXPECT_EQ(model.index(5, 0).data(Qt::ForegroundRole), QVariant(textColor(Tone::Red)));
}

TEST_F(HealthLists, AreExportedAsTheyAreSorted) {
    backup("1", "a", QDate(2026, 3, 7), 1);
    backup("2", "b", QDate(1900, 1, 1), 46088);
    view.showHealth(summary);
    grid("lastBackupDates").sortByColumn(3, Qt::DescendingOrder);
    file = folder.filePath("helse.xls");
    grid("lastBackupDates").findChild<QAction*>("exportList")->trigger();
    EXPECT_EQ(readXls(file).mid(7), (QStringList{"1,0 text 101", "1,1 text Sentrum", "1,2 text 2", "1,3 text b",
                                                 "1,5 number 46088.0", "2,0 text 101", "2,1 text Sentrum", "2,2 text 1",
                                                 "2,3 text a", "2,4 date 2026-03-07 02:00:00.000", "2,5 number 1.0"}));
    file.clear();
    grid("failedJobs").findChild<QAction*>("exportList")->trigger();
}

}  // namespace
}  // namespace torvik::test

// Time entries that end, or are released, between their copy and the mark: they are fetched by the next run.
#include <gtest/gtest.h>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kOnTill = "SELECT TI_ID, TI_STATUS FROM TIMER ORDER BY TI_ID";
const char* const kAtBackOffice = "SELECT Pti_Id FROM PosTimer ORDER BY Pti_Id";
const char* const kRelease = "SELECT IN_KLAR_HENT_TIMER FROM INNSTILLINGER";

class TimeEntriesTest : public OneTill {
protected:
    TimeEntriesTest() : OneTill(213, 0) { onTill("DELETE TIMERPRKODE\nDELETE TIMER"); }

    // `out` with its quotes, or NULL.
    void entry(int id, int status, const std::string& out) {
        onTill("INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS) VALUES (" +
               std::to_string(id) + ", '100', '20260302 08:00', " + out + ", 1, " + std::to_string(status) + ")");
    }
    // On the till's own session, since the till's database is the transfer's for the moment.
    void betweenCopyAndMark(const QString& statement) {
        run.engine.OnProgress = [this, statement](QObject*, int, const QString& text) {
            if (text != QStringLiteral("Start Signatur: ")) return;
            db::Query query(&run.source);
            query.SQL = QStringList{statement};
            query.ExecSQL();
        };
    }
    void fetchAgain() {
        run.engine.OnProgress = nullptr;
        EXPECT_EQ(execute(), QString());
    }
};

TEST_F(TimeEntriesTest, EntryThatEndsMeanwhileIsFetchedByTheNextRun) {
    entry(1, 1, "'20260302 16:00'");
    entry(2, 2, "NULL");
    entry(3, 17, "'20260301 16:00'");
    onTill("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260304'");
    betweenCopyAndMark(QStringLiteral("UPDATE TIMER SET TI_TIDUT = '20260302 17:00' WHERE TI_ID = 2"));

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(till(kOnTill), Rows({"1 | 17", "2 | 2", "3 | 17"}));
    EXPECT_EQ(backOffice(kAtBackOffice), Rows({"1"}));
    EXPECT_EQ(till(kRelease), Rows({"2026-03-04 00:00:00.000"}));
    fetchAgain();
    EXPECT_EQ(till(kOnTill), Rows({"1 | 17", "2 | 18", "3 | 17"}));
    EXPECT_EQ(backOffice(kAtBackOffice), Rows({"1", "2"}));
    EXPECT_EQ(till(kRelease), Rows({"NULL"}));
}

TEST_F(TimeEntriesTest, EntryThatIsReleasedMeanwhileIsFetchedByTheNextRun) {
    inBackOffice("UPDATE Internkunde SET Ik_TimeImportType = 0");
    entry(1, 2, "'20260302 16:00'");
    betweenCopyAndMark(QStringLiteral("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260304 12:30'"));

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(till(kOnTill), Rows({"1 | 2"}));
    EXPECT_EQ(till(kRelease), Rows({"2026-03-04 12:30:00.000"}));
    fetchAgain();
    EXPECT_EQ(till(kOnTill), Rows({"1 | 18"}));
    EXPECT_EQ(backOffice(kAtBackOffice), Rows({"1"}));
    EXPECT_EQ(till(kRelease), Rows({"NULL"}));
}

TEST_F(TimeEntriesTest, WithoutAChangeTheMarkTakesWhatWasCopied) {
    entry(1, 1, "'20260302 16:00'");
    entry(2, 2, "NULL");
    onTill("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260304'");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(till(kOnTill), Rows({"1 | 17", "2 | 2"}));
    EXPECT_EQ(till(kRelease), Rows({"NULL"}));
}

}  // namespace
}  // namespace torvik::test

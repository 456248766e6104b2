// Items that the back office no longer has leave the till, with all that points to them.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "tests/outbound/one_item.h"
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Item 777099 stands on the till alone, and a row of each table points to it; a row of each but one points to 777098,
// which the back office has.
constexpr char kPointers[] = R"sql(
INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('777099', 'Borte', 1), ('777098', 'Blir', 1)
INSERT INTERNFLYTTING (IF_ID, IF_AN_ID, IF_TIDSPUNKT, IF_TIL_AVDNR) VALUES (9100, '100', '20260305', '102')
INSERT INTERNFLYTTINGLINJE (IFL_ID, IFL_IF_ID, IFL_VA_ID, IFL_ANTALL) VALUES (9101, 9100, '777099', 1), (9102, 9100, '777098', 1)
INSERT ORDRE (OR_ID, OR_KU_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS)
SELECT 9200, MIN(KU_ID), (SELECT MIN(AN_ID) FROM ANSATT), '20260305', '20260305', 0 FROM KUNDE
INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_RABATT, OL_SALGSPRIS, OL_MVASATS, OL_KOSTPRIS, OL_MERSALG)
VALUES (9201, 9200, '777099', 1, 0, 10, 25, 5, 0), (9202, 9200, '777099', 2, 0, 10, 25, 5, 0),
  (9203, 9200, '777098', 3, 0, 10, 25, 5, 0)
INSERT VAREBESTILLING (VB_ID, VB_AN_ID, VB_TIDSPUNKT) VALUES (9300, '100', '20260305')
INSERT VAREBESTILLINGLINJE (VBL_ID, VBL_VB_ID, VBL_VA_ID, VBL_ANTALL) VALUES (9301, 9300, '777099', 1), (9302, 9300, '777098', 1)
INSERT VAREMOTTAK (VM_ID, VM_AN_ID, VM_TIDSPUNKT) VALUES (9400, '100', '20260305')
INSERT VAREMOTTAKLINJE (VML_ID, VML_VM_ID, VML_VA_ID) VALUES (9401, 9400, '777099'), (9402, 9400, '777098')
INSERT VARETELLING (VT_ID, VT_AN_ID, VT_TIDSPUNKT) VALUES (9500, '100', '20260305')
INSERT VARETELLINGLINJE (VL_ID, VL_VT_ID, VL_VA_ID, VL_ANTALL) VALUES (9501, 9500, '777099', 1), (9502, 9500, '777098', 1)
INSERT BEHOLDNINGSTRANSAKSJONER (BHT_ID, BHT_VA_ID, BHT_ANTALL, BHT_TIDSPUNKT)
VALUES (9601, '777099', 1, '20260305'), (9602, '777098', 1, '20260305')
INSERT PLU (PLU_ID, PLU_NAVN) VALUES (9700, 'Tast')
INSERT PLUMEDLEM (PLM_PLU_ID, PLM_VA_ID) VALUES (9700, '777099'), (9700, '777098')
INSERT VAREGRUPPE (VG_VA_ID, VG_HOVED_VG_VA_ID) VALUES ('777099', '777098'), ('777098', '777099'), ('777098', NULL)
INSERT REKLAMASJON (REK_ID, REK_AN_ID, REK_TIDSPUNKT) VALUES (9800, '100', '20260305')
INSERT REKLAMASJONLINJE (REKL_ID, REKL_REK_ID, REKL_VA_ID, REKL_ANTALL) VALUES (9801, 9800, '777099', 1), (9802, 9800, '777098', 1)
)sql";

constexpr char kLog[] =
    "SELECT RTRIM(Vdl_Va_Id), Vdl_Vdlt_Id, RTRIM(Vdl_Reference) FROM VareDeleteLogg WHERE Vdl_Va_Id LIKE '7770%' ORDER BY 2, 3, 1";

class ItemDeletion : public testing::Test {
protected:
    ItemDeletion() {
        send.dm.DeleteItem = true;
        send.inBackOffice(plainItem("777098"));
        send.inBackOffice(plainItem("777000"));
        send.inBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = '777000'");
        send.onTill(kPointers);
    }
    TillSend send{229};
};

TEST_F(ItemDeletion, MovesOrDeletesWhatPointsToAnItemThatIsGoneAndLogsIt) {
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VA_ID FROM VARE WHERE VA_ID = '777099'"), IsEmpty());
    const struct {
        const char* rows;
        Rows left;
    } kLeft[] = {
        {"SELECT IFL_ID, RTRIM(IFL_VA_ID) FROM INTERNFLYTTINGLINJE WHERE IFL_ID > 9000 ORDER BY 1",
         {"9101 | 777000", "9102 | 777098"}},
        {"SELECT OL_ID, RTRIM(OL_VA_ID) FROM ORDRELINJE WHERE OL_OR_ID = 9200 ORDER BY 1",
         {"9201 | 777000", "9202 | 777000", "9203 | 777098"}},
        {"SELECT VBL_ID, RTRIM(VBL_VA_ID) FROM VAREBESTILLINGLINJE WHERE VBL_VB_ID = 9300 ORDER BY 1",
         {"9301 | 777000", "9302 | 777098"}},
        {"SELECT VML_ID, RTRIM(VML_VA_ID) FROM VAREMOTTAKLINJE WHERE VML_VM_ID = 9400 ORDER BY 1",
         {"9401 | 777000", "9402 | 777098"}},
        {"SELECT VL_ID, RTRIM(VL_VA_ID) FROM VARETELLINGLINJE WHERE VL_ID > 9000 ORDER BY 1",
         {"9501 | 777000", "9502 | 777098"}},
        {"SELECT BHT_ID FROM BEHOLDNINGSTRANSAKSJONER WHERE BHT_ID > 9000 ORDER BY 1", {"9602"}},
        {"SELECT RTRIM(PLM_VA_ID) FROM PLUMEDLEM WHERE PLM_PLU_ID = 9700", {"777098"}},
        {"SELECT RTRIM(VG_VA_ID), VG_HOVED_VG_VA_ID FROM VAREGRUPPE WHERE VG_VA_ID LIKE '7770%'", {"777098 | NULL"}},
        {"SELECT REKL_ID FROM REKLAMASJONLINJE WHERE REKL_REK_ID = 9800", {"9802"}},
    };
    for (const auto& [rows, left] : kLeft) EXPECT_EQ(send.till(rows), left) << rows;
    // Kind 4 stands for goods received and for stock transactions, kind 12 for the item.
    EXPECT_THAT(send.till(kLog), ElementsAre("777099 | 1 | 9101", "777099 | 2 | 9201", "777099 | 2 | 9202",
                                             "777099 | 3 | 9301", "777099 | 4 | 9401", "777099 | 4 | 9601",
                                             "777099 | 5 | 9501", "777099 | 9 | 777099", "777099 | 10 | 777098",
                                             "777099 | 11 | 777098", "777099 | 12 | 777099", "777099 | 13 | 9801"));
    EXPECT_THAT(send.till("SELECT COUNT(*) FROM VareDeleteLogg WHERE Vdl_Time IS NULL"), ElementsAre("0"));
    EXPECT_THAT(send.till("SELECT name FROM sysobjects WHERE name = 'VareDelete'"), IsEmpty());
}

// What stands on the till afterwards, as tills have always known it: which rows are noted and touched in which order,
// and which of the statements are followed by a test.
TEST_F(ItemDeletion, ProcedureNotesAndTouchesRowsInItsOrder) {
    ASSERT_EQ(send.send(), QString());
    const QStringList lines =
        QString::fromStdString(
            send.till("SELECT m.definition FROM sysobjects o JOIN sys.sql_modules m ON m.object_id = o.id "
                      "WHERE o.name = 'SlettVarer'")
                .front())
            .remove(u'\r')
            .split(u'\n');
    // L: a row of the log; M: moved; D: deleted; T: tested; C: tested, and counted.
    QStringList order;
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1String("INSERT INTO VareDeleteLogg SELECT ")))
            order << QStringLiteral("L ") + line.section(u' ', 4).remove(QStringLiteral(",GETDATE()"));
        if (line.startsWith(QLatin1String("UPDATE "))) order << QStringLiteral("M ") + line.section(u' ', 1, 1);
        if (line.startsWith(QLatin1String("DELETE FROM "))) order << QStringLiteral("D ") + line.section(u' ', 2, 2);
        if (line == QLatin1String("SELECT @err = @@ERROR")) order << QStringLiteral("T");
        if (line == QLatin1String("SELECT @err = @@ERROR, @DeleteCount=@@ROWCOUNT")) order << QStringLiteral("C");
    }
    EXPECT_EQ(order, (QStringList{"L IFL_VA_ID,1,IFL_ID",
                                  "T",
                                  "M INTERNFLYTTINGLINJE",
                                  "T",
                                  "L OL_VA_ID,2,OL_ID",
                                  "T",
                                  "M ORDRELINJE",
                                  "T",
                                  "L VBL_VA_ID,3,VBL_ID",
                                  "T",
                                  "M VAREBESTILLINGLINJE",
                                  "T",
                                  "L VML_VA_ID,4,VML_ID",
                                  "T",
                                  "M VAREMOTTAKLINJE",
                                  "T",
                                  "L VL_VA_ID,5,VL_ID",
                                  "T",
                                  "M VARETELLINGLINJE",
                                  "T",
                                  "L BHT_VA_ID,4,BHT_ID",
                                  "T",
                                  "D BEHOLDNINGSTRANSAKSJONER",
                                  "L DV_HOVED_VA_ID,6,DV_DELVARE_VA_ID",
                                  "T",
                                  "D DELVARE",
                                  "T",
                                  "L DV_DELVARE_VA_ID,7,DV_HOVED_VA_ID",
                                  "T",
                                  "D DELVARE",
                                  "T",
                                  "L MSV_VA_ID,8,MSV_VA_ID",
                                  "T",
                                  "D MERSALGVARE",
                                  "T",
                                  "L PLM_VA_ID,9,PLM_VA_ID",
                                  "T",
                                  "D PLUMEDLEM",
                                  "T",
                                  "L VG_VA_ID,10,VG_HOVED_VG_VA_ID",
                                  "T",
                                  "D VAREGRUPPE",
                                  "T",
                                  "L VG_HOVED_VG_VA_ID,11,VG_VA_ID",
                                  "T",
                                  "D VAREGRUPPE",
                                  "T",
                                  "L REKL_VA_ID,13,REKL_ID",
                                  "T",
                                  "D REKLAMASJONLINJE",
                                  "T",
                                  "L VR_VA_ID,12,VR_VA_ID",
                                  "D VAREALIAS",
                                  "L VA_ID,12,VA_ID",
                                  "T",
                                  "D VARE",
                                  "C"}));
    EXPECT_EQ(lines.count(QStringLiteral("if @err != 0 goto HANDLE_ERROR")), 27);
    EXPECT_EQ(lines.count(QStringLiteral("AND NOT EXISTS (SELECT 1 FROM Varealias WHERE VR_ID = Vr_VA_ID )")), 2);
}

// The send itself brings parts, aliases and extra-sale items up to date before this step: what the step makes of them
// shows where the procedure is run by itself.
TEST_F(ItemDeletion, TakesPartsExtraSaleItemsAndAliasesToo) {
    ASSERT_EQ(send.send(), QString());
    send.onTill(R"(
        DELETE VareDeleteLogg
        CREATE TABLE VareDelete (Vad_ID char(15) not null)
        INSERT VareDelete SELECT VA_ID FROM VARE
        INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('777097', 'Borte', 1)
        INSERT DELVARE (DV_HOVED_VA_ID, DV_DELVARE_VA_ID) VALUES ('777097', '777098'), ('777098', '777097')
        INSERT MERSALGVARE (MSV_VA_ID) VALUES ('777097'), ('777098')
        INSERT VAREALIAS (VR_VA_ID, VR_ID) VALUES ('777097', '70971'), ('777098', '70981'))");
    send.onTill(
        "DECLARE @deleted int EXEC @deleted = SlettVarer '777000' IF @deleted <> 1 RAISERROR('Slettet %d', 16, 1, @deleted)");
    EXPECT_THAT(send.till("SELECT RTRIM(MSV_VA_ID) FROM MERSALGVARE WHERE MSV_VA_ID LIKE '7770%'"),
                ElementsAre("777098"));
    EXPECT_THAT(send.till("SELECT VR_ID FROM VAREALIAS WHERE VR_ID LIKE '709%'"), ElementsAre("70981"));
    EXPECT_THAT(send.till("SELECT COUNT(*) FROM DELVARE WHERE DV_HOVED_VA_ID LIKE '7770%'"), ElementsAre("0"));
    EXPECT_THAT(send.till(kLog), ElementsAre("777097 | 6 | 777098", "777097 | 7 | 777098", "777097 | 8 | 777097",
                                             "777097 | 12 | 777097", "777097 | 12 | 777097"));
}

TEST_F(ItemDeletion, GiftCardItemMovesItsLinesAndStaysAndIsLoggedAtEachSend) {
    send.onTill("INSERT GAVEKORTVARE (GAV_VA_ID, GAV_AKTIV) VALUES ('777099', 1)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID = '777099'"), ElementsAre("777099"));
    EXPECT_THAT(send.till("SELECT OL_ID FROM ORDRELINJE WHERE OL_VA_ID = '777099'"), IsEmpty());
    const std::string noted = "SELECT Vdl_Vdlt_Id FROM VareDeleteLogg WHERE Vdl_Va_Id = '777099' AND Vdl_Vdlt_Id = 12";
    EXPECT_THAT(send.till(noted), ElementsAre("12"));
    const std::string others = "SELECT COUNT(*) FROM VareDeleteLogg WHERE Vdl_Va_Id = '777099' AND Vdl_Vdlt_Id <> 12";
    const Rows before = send.till(others);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(noted), ElementsAre("12", "12"));
    EXPECT_EQ(send.till(others), before);
}

TEST_F(ItemDeletion, NumberThatIsAnAliasKeepsItsLinesAndLosesItsStockTransactions) {
    send.inBackOffice("INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('777099', '777098')");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID = '777099'"), ElementsAre("777099"));
    EXPECT_THAT(send.till("SELECT OL_ID FROM ORDRELINJE WHERE OL_VA_ID = '777099' ORDER BY 1"),
                ElementsAre("9201", "9202"));
    EXPECT_THAT(send.till("SELECT BHT_ID FROM BEHOLDNINGSTRANSAKSJONER WHERE BHT_ID > 9000"), ElementsAre("9602"));
    EXPECT_THAT(send.till(kLog), ElementsAre("777099 | 4 | 9601"));
}

TEST_F(ItemDeletion, FailureInTheMiddleLeavesNoTrace) {
    send.onTill(
        "CREATE TABLE SPERRE (S_VA_ID char(15) NOT NULL REFERENCES VARE (VA_ID)) INSERT SPERRE VALUES ('777099')");
    const QString failure = send.send();
    EXPECT_TRUE(failure.startsWith(QStringLiteral("TorvikToPOS failed: DeleteVare SessionID: ")))
        << failure.toStdString();
    EXPECT_THAT(send.till("SELECT OL_ID FROM ORDRELINJE WHERE OL_VA_ID = '777099' ORDER BY 1"),
                ElementsAre("9201", "9202"));
    EXPECT_THAT(send.till("SELECT BHT_ID FROM BEHOLDNINGSTRANSAKSJONER WHERE BHT_ID > 9000 ORDER BY 1"),
                ElementsAre("9601", "9602"));
    EXPECT_THAT(send.till("SELECT COUNT(*) FROM VareDeleteLogg"), ElementsAre("0"));
}

// Of two tables the procedure does not test whether the delete has failed: there the server itself has to give the
// whole up. In each case the item stays, so that nothing later fails on what the delete has left.
struct UntestedDelete {
    const char* name;
    const char* backOffice;  // why the item stays, or comes to the delete
    const char* till;
};
const UntestedDelete kUntestedDeletes[] = {
    {"OfStockTransactions", "INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('777099', '777098')",
     "CREATE TABLE SPERRE (S_BHT_ID int NOT NULL REFERENCES BEHOLDNINGSTRANSAKSJONER (BHT_ID)) "
     "INSERT SPERRE VALUES (9601)"},
    {"OfAliases",
     "ALTER TABLE VareAlias DROP CONSTRAINT FK_VareAlias_Vare "
     "INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('70991', '777099')",
     "INSERT GAVEKORTVARE (GAV_VA_ID, GAV_AKTIV) VALUES ('777099', 1) "
     "CREATE TABLE SPERRE (S_VR_ID varchar(50) NOT NULL, S_VA_ID char(15) NOT NULL, "
     "FOREIGN KEY (S_VR_ID, S_VA_ID) REFERENCES VAREALIAS (VR_ID, VR_VA_ID)) "
     "INSERT SPERRE VALUES ('70991', '777099')"},
};

class FailedDelete : public ItemDeletion, public testing::WithParamInterface<UntestedDelete> {
protected:
    // All that the step may touch, table by table.
    [[nodiscard]] std::map<std::string, Rows> touched() const {
        std::map<std::string, Rows> all;
        for (const char* table : {"INTERNFLYTTINGLINJE", "ORDRELINJE", "VAREBESTILLINGLINJE", "VAREMOTTAKLINJE",
                                  "VARETELLINGLINJE", "BEHOLDNINGSTRANSAKSJONER", "DELVARE", "MERSALGVARE", "PLUMEDLEM",
                                  "VAREGRUPPE", "REKLAMASJONLINJE", "VAREALIAS", "VARE", "VareDeleteLogg"}) {
            Rows& rows = all[table] = send.till(std::string("SELECT * FROM ") + table);
            std::sort(rows.begin(), rows.end());
        }
        return all;
    }
};
INSTANTIATE_TEST_SUITE_P(Untested, FailedDelete, testing::ValuesIn(kUntestedDeletes),
                         [](const auto& test) { return test.param.name; });

TEST_P(FailedDelete, LeavesTheTillAsItWas) {
    send.inBackOffice(GetParam().backOffice);
    send.dm.DeleteItem = false;
    send.onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('777097', 'Borte', 1)");
    ASSERT_EQ(send.send(), QString());
    send.onTill(GetParam().till);
    send.onTill(
        "CREATE TABLE VareDeleteLogg (Vdl_Va_Id char(15), Vdl_Vdlt_Id int, Vdl_Reference varchar(20), Vdl_Time datetime)");
    const auto before = touched();

    send.dm.DeleteItem = true;
    EXPECT_THAT(send.send().toStdString(), testing::StartsWith("TorvikToPOS failed: DeleteVare SessionID: "));
    EXPECT_EQ(touched(), before);

    send.onTill("DROP TABLE SPERRE");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID IN ('777097', '777099')"), ElementsAre("777099"));
}

// A list that is not whole would take every item that it lacks.
class ListOfItems : public testing::Test {
protected:
    ListOfItems() {
        send.dm.DeleteItem = true;
        send.dm.ItemUpdateSelection = iusNone;
        send.inBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = (SELECT MIN(Va_Id) FROM Vare)");
        send.onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('777099', 'Borte', 1)");
    }
    // The send breaks off in the middle of the list, and the next one comes to its end.
    void expectKeptWhenItBreaksOff(const std::function<void()>& cause) {
        send.dm.OnProgress = [&](QObject*, int, const QString& text) {
            if (text == QStringLiteral("Forbereder overføring av VAREDELETE... ")) cause();
        };
        const Rows before = items();
        const std::string failure = send.send().toStdString();
        EXPECT_THAT(failure, testing::StartsWith("TorvikToPOS failed: VAREDELETE SessionID: "));
        EXPECT_EQ(items(), before);

        send.dm.OnProgress = nullptr;
        ASSERT_EQ(send.send(), QString());
        EXPECT_EQ(items().size(), before.size() - 1);
        EXPECT_THAT(send.till("SELECT VA_ID FROM VARE WHERE VA_ID = '777099'"), IsEmpty());
    }
    [[nodiscard]] Rows items() const { return send.till("SELECT RTRIM(VA_ID) FROM VARE ORDER BY 1"); }

    TillSend send{229, {.items = 12000, .tillItems = 12000}};
};

TEST_F(ListOfItems, ThatBreaksOffAtTheBackOfficeDeletesNothing) {
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    expectKeptWhenItBreaksOff([&] { send.run.chain.backOffice().faults().dropAfterBytes(150'000); });
}

TEST_F(ListOfItems, ThatBreaksOffAtTheTillDeletesNothing) {
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    expectKeptWhenItBreaksOff([&] {
        sandbox::FaultRule cut;
        cut.match.textContains = "insert bulk VAREDELETE";
        cut.skip = 1;
        send.run.chain.till(0).faults().add(cut);
    });
}

// What is gone is judged by the back office's register, not by what has been sent.
TEST_F(ItemDeletion, KeepsTheBackOfficesItemsInASendOfNone) {
    send.dm.DeleteItem = false;
    ASSERT_EQ(send.send(), QString());
    const Rows before = send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID <> '777099' ORDER BY 1");
    send.dm.DeleteItem = true;
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(VA_ID) FROM VARE ORDER BY 1"), before);
}

TEST_F(ItemDeletion, SecondSendFindsNothingMore) {
    ASSERT_EQ(send.send(), QString());
    const Rows noted = send.till(kLog);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(kLog), noted);
}

TEST_F(ItemDeletion, DoesNotRunWithoutAReplacement) {
    send.inBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = NULL");
    ASSERT_EQ(send.send(), QString());
    EXPECT_FALSE(send.dm.DeleteItem);
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID = '777099'"), ElementsAre("777099"));
    EXPECT_THAT(send.till("SELECT name FROM sysobjects WHERE name IN ('SlettVarer', 'VareDeleteLogg')"), IsEmpty());
}

TEST_F(ItemDeletion, DoesNotRunUnlessAskedFor) {
    send.dm.DeleteItem = false;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID = '777099'"), ElementsAre("777099"));
    EXPECT_THAT(send.till("SELECT name FROM sysobjects WHERE name IN ('SlettVarer', 'VareDeleteLogg')"), IsEmpty());
}

// The procedure writes the number that it is given: whether the till takes one that it has no item for is for the
// till's foreign keys to say. With them nothing is lost.
TEST_F(ItemDeletion, ReplacementThatTheTillHasNotLeavesTheTillAsItWas) {
    send.inBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = '999999'");
    const QString failure = send.send();
    EXPECT_TRUE(failure.startsWith(QStringLiteral("TorvikToPOS failed: DeleteVare SessionID: ")))
        << failure.toStdString();
    EXPECT_THAT(send.till("SELECT OL_ID FROM ORDRELINJE WHERE OL_VA_ID = '777099' ORDER BY 1"),
                ElementsAre("9201", "9202"));
    EXPECT_THAT(send.till("SELECT COUNT(*) FROM VareDeleteLogg"), ElementsAre("0"));
}

TEST_F(ItemDeletion, ReplacementThatTheTillHasNotIsWrittenWhereNoForeignKeyForbidsIt) {
    for (const char* lines :
         {"ORDRELINJE", "VAREMOTTAKLINJE", "INTERNFLYTTINGLINJE", "VAREBESTILLINGLINJE", "VARETELLINGLINJE"})
        send.onTill(std::string("ALTER TABLE ") + lines + " DROP CONSTRAINT FK_" + lines + "_VARE");
    send.inBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = '999999'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT OL_ID, RTRIM(OL_VA_ID) FROM ORDRELINJE WHERE OL_OR_ID = 9200 ORDER BY 1"),
                ElementsAre("9201 | 999999", "9202 | 999999", "9203 | 777098"));
    EXPECT_THAT(send.till("SELECT VA_ID FROM VARE WHERE VA_ID IN ('777099', '999999')"), IsEmpty());
    EXPECT_THAT(send.till("SELECT RTRIM(Vdl_Reference) FROM VareDeleteLogg WHERE Vdl_Va_Id = '777099' AND "
                          "Vdl_Vdlt_Id = 2 ORDER BY 1"),
                ElementsAre("9201", "9202"));
}

}  // namespace
}  // namespace torvik::test

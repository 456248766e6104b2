// What the procedures of the demo chain do: those of the back office, and those that a till has of its own.
#include <gtest/gtest.h>

#include "sandbox/chain/chain_builder.h"
#include "sandbox/chain/install.h"
#include "sandbox/chain/scripts.h"
#include "tests/sandbox/support/session_runner.h"

namespace sandbox::chain {
namespace {

using test::SessionRunner;

// The rows of an answer alone, one a line.
std::string rows(const std::string& answer) {
    std::string out;
    std::size_t at = 0;
    while (at < answer.size()) {
        const std::size_t end = answer.find('\n', at);
        const std::string line = answer.substr(at, end - at);
        if (line.starts_with("row ")) out += (out.empty() ? "" : "\n") + line.substr(4);
        if (line.starts_with("error ")) out += (out.empty() ? "" : "\n") + line.substr(0, line.find(' ', 6));
        at = end + 1;
    }
    return out;
}

void runOrFail(SessionRunner& server, std::string_view batch) {
    const std::string answer = server.run(batch);
    ASSERT_EQ(answer.find("error "), std::string::npos) << answer << batch.substr(0, 300);
}

class BackOffice : public testing::Test {
protected:
    BackOffice() {
        installBackOffice(model, [](const Till&) { return TillAddress{}; },
                          {.run = [this](auto batch) { runOrFail(server, batch); }});
    }
    std::string run(std::string_view batch) { return rows(server.run(batch)); }

    Chain model = chain().departments(2).tills(2).days(1).build();
    SessionRunner server;
};

TEST_F(BackOffice, SeriesGiveTheirNumbersOnceEach) {
    EXPECT_EQ(run("EXEC GetID 'OR_ID'"), "500001");
    EXPECT_EQ(run("EXEC GetID 'or_id'"), "500002");
    EXPECT_EQ(run("declare @OR_ID int exec dbo.GetspID 'Or_ID', @Or_ID OUTPUT select @Or_ID as Or_ID"), "500003");
    EXPECT_EQ(run("declare @id int\nexec GetSPID \"NH_ID\",@id out\nselect @id"), "1");
    EXPECT_EQ(run("EXEC GetID 'XX_ID'"), "0");
}

TEST_F(BackOffice, StoreSalesAddUpAndTakeFromTheStock) {
    run("EXEC UpdateButikksalg2 1001,'100000','20260302',3,150.5,0,0,2\n"
        "EXEC UpdateButikksalg2 1001,'100000','20260302',-1,-50,0,0,2\n"
        "EXEC UpdateButikksalg2 1001,'100000','20260302',5,100,0,0");
    EXPECT_EQ(run("SELECT Bs_Ol_Status, Bs_Antall, Bs_Omsetning FROM Butikksalg ORDER BY Bs_Ol_Status"),
              "1|5.0|100.0\n2|2.0|100.5");
    EXPECT_EQ(run("SELECT Vbh_Antall FROM Varebeholdning"), "-7.0");
}

TEST_F(BackOffice, SessionGetsNoItemsOrTheMarkedOrAll) {
    run("EXEC KasseVareAlle 1001, '1', 1, '17', 0");
    EXPECT_EQ(run("SELECT COUNT(*) FROM VareEksport"), "0");
    run("EXEC KasseVareAlle 1001, '1', 1, '18', 1\nEXEC KasseVareAlle 1001, '1', 1, '19', 2");
    EXPECT_EQ(run("SELECT COUNT(*) FROM Vare WHERE Va_SendTilButikkKasser = 1"),
              run("SELECT COUNT(*) FROM VareEksport WHERE Ve_SesjonID = '18'"));
    EXPECT_NE(run("SELECT COUNT(*) FROM VareEksport WHERE Ve_SesjonID = '18'"), "0");
    EXPECT_EQ(run("SELECT COUNT(*) FROM VareEksport WHERE Ve_SesjonID = '19'"), "44");
    EXPECT_EQ(run("SELECT COUNT(*) FROM VareEksport WHERE Ve_Varegruppe LIKE 'Gruppe _/Undergruppe _'"),
              run("SELECT COUNT(*) FROM VareEksport WHERE Ve_Vg_Id IS NOT NULL"));
}

TEST_F(BackOffice, GiftCardsGoOnceUntilTheyAreRedeemed) {
    run("INSERT POSGAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, GA_SYNKTIDSPUNKT) "
        "VALUES ('1', '101', '1', '100', NULL, 500, NULL, DATEADD(month, -11, GETDATE())), "
        "('2', '101', '1', '100', 7, 500, NULL, DATEADD(month, -13, GETDATE())), "
        "('3', '101', '1', '100', 8, 500, DATEADD(day, -1, GETDATE()), GETDATE())");
    EXPECT_EQ(run("EXEC GetPosGavekort 1002, '1'").substr(0, 4), "'1'|");
    EXPECT_EQ(run("SELECT COUNT(*) FROM POSGAVEKORT"), "3");

    run("INSERT InternKundeKasseOverfort VALUES (1002, '1', 'G', '1', '101', '1', GETDATE())");
    EXPECT_EQ(run("EXEC GetPosGavekort 1002, '1'"), "");
    EXPECT_NE(run("EXEC GetPosGavekort 1001, '1'"), "");

    run("UPDATE POSGAVEKORT SET GA_BT_ID = 4 WHERE GA_ID = '1'");
    EXPECT_NE(run("EXEC GetPosGavekort 1002, '1'"), "");
}

TEST_F(BackOffice, CreditNotesGoWhileTheyAreValid) {
    run("INSERT POSTilgodelapp (TG_ID, TG_AVDNR, TG_KASSENR, TG_AN_ID, TG_OR_ID, TG_BELOP, TG_GYLDIGTIL) "
        "VALUES ('1', '101', '1', '100', 5, 70, DATEADD(day, 1, GETDATE())), ('2', '101', '1', '100', 6, 70, NULL)");
    EXPECT_EQ(run("EXEC GetPosTilgodelapp 1002, '1'").substr(0, 4), "'1'|");
}

TEST_F(BackOffice, SeriesOfATillGoOnAfterWhatItHasSent) {
    EXPECT_EQ(run("EXEC POSLedigID 1001, '1'").substr(0, 20), "'OP_ID'|1\n'OPL_ID'|1");
    run("INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, Pos_Op_Status) "
        "VALUES (1001, '1', 41, GETDATE(), 'NORMAL', 0), (1001, '2', 99, GETDATE(), 'NORMAL', 0)");
    EXPECT_EQ(run("EXEC POSLedigID 1001, '1'").substr(0, 10), "'OP_ID'|42");
}

TEST_F(BackOffice, CountedLinesAddUpInThePeriod) {
    run("INSERT nipponordrehode VALUES (1, 1001, 0, 0, 77)\n"
        "INSERT nipponordrelinje (Nl_Nh_Id, Nl_Va_ID, Nl_Antall, Nl_Soner) "
        "VALUES (1, '100000', 3, null), (1, '100000', 4, 'A'), (1, '100001', 1, null)\n"
        "exec NipponToVaretell 'sa',202603,-1, 77");
    EXPECT_EQ(run("SELECT RTRIM(Vt_Va_Id), Vt_Antall, Vt_Soner FROM Varetelling WHERE Vt_Periode = 202603"),
              "'100000'|7.0|'A'\n'100001'|1.0|NULL");
    run("exec NipponToVaretell 'sa',202603,1001, 77");
    EXPECT_EQ(run("SELECT SUM(Vt_Antall) FROM Varetelling"), "16.0");
    EXPECT_EQ(run("exec NipponToVaretell 'sa',202603,-1, 78"), "error 50000");
}

TEST_F(BackOffice, AccumulationTakesWaitingSalesOnce) {
    run("INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, Pos_Op_Status) "
        "VALUES (1001, '1', 1, '20260302 21:00', 'NORMAL', 0), (1001, '1', 2, '20260302 22:00', 'VARETELLING', 0)\n"
        "INSERT PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id, Pos_Or_Op_Id, Pos_Or_Ku_Id, Pos_Or_Ika_Id, "
        "Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status, Pos_Or_Varetelling) "
        "SELECT 1001, '1', 1, 1, 4711, '100', '20260302', '20260302', 0, 0\n"
        "INSERT PosOrdrelinje (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id, Pos_Ol_Or_Id, Pos_Ol_Va_Id, Pos_Ol_Antall, "
        "Pos_Ol_Rabatt, Pos_Ol_Salgspris, Pos_Ol_Mvasats, Pos_Ol_Kostpris, Pos_Ol_Mersalg) "
        "VALUES (1001, '1', 1, 1, '100000', 2, 50, 100, 25, 0, 0), (1001, '1', 2, 1, '100001', 1, 0, 30, 25, 0, 0)");
    run("EXEC AccumulatePosData 0\nEXEC AccumulatePosData 0\nEXEC UpdateVareStatistikk");
    EXPECT_EQ(run("SELECT Pds_Ik_Ku_Id, Pds_Dato, Pds_AntallSalg, Pds_Omsetning FROM PosDagsalg"),
              "1001|2026-03-02 00:00:00.000|1|130.0");
    EXPECT_EQ(run("SELECT Pos_Op_Id, Pos_Op_Status FROM PosOppgjor ORDER BY 1"), "1|8\n2|0");
    EXPECT_EQ(run("SELECT Kst_Ku_Id, Kst_Periode, Kst_AntallSalg, Kst_Omsetning FROM KundeStatistikk"),
              "4711|202603|1|130.0");
}

class TillOfItsOwn : public testing::Test {
protected:
    void install(int version) {
        const Chain model = chain().departments(1).tills(1).days(1).versions({version}).everyKind().build();
        installTill(model, model.tills.front(), {.run = [this](auto batch) { runOrFail(server, batch); }});
    }
    std::string run(std::string_view batch) { return rows(server.run(batch)); }
    std::string sold() {
        return run(
            "SELECT (SELECT COUNT(*) FROM ORDRE) + (SELECT COUNT(*) FROM ORDRELINJE) + "
            "(SELECT COUNT(*) FROM BETALING) + (SELECT COUNT(*) FROM OPPGJOR) + "
            "(SELECT COUNT(*) FROM OPPGJORLINJE) + (SELECT COUNT(*) FROM GAVEKORT) + "
            "(SELECT COUNT(*) FROM TILGODELAPP) + (SELECT COUNT(*) FROM LOGG)");
    }

    SessionRunner server;
};

TEST_F(TillOfItsOwn, MessageTakesItsLongFormFromVersion149) {
    install(138);
    EXPECT_EQ(run("EXEC CreateInstantMessage 'Hei','Alle','HK','Stengt'\nSELECT ME_TITTEL, ME_TEKST FROM MELDING"),
              "'Hei'|'Stengt'");
    EXPECT_EQ(run("EXEC CreateInstantMessage 'Hei','Alle','HK','Stengt', 2, '2026-03-02 12:00:00',1"), "error 8144");
    for (const char* script : {"till_149"})
        for (const std::string_view batch : batchesOf(script)) runOrFail(server, batch);
    EXPECT_EQ(run("EXEC CreateInstantMessage 'Nytt','Alle','HK','Åpent', 2, '2026-03-02 12:00:00',1\n"
                  "SELECT ME_PRIORITET, ME_UTLOPER, ME_STARTSKJERM FROM MELDING WHERE ME_TITTEL = 'Nytt'"),
              "2|2026-03-02 12:00:00.000|1");
}

TEST_F(TillOfItsOwn, ResetEmptiesItOfWhatItSold) {
    install(229);
    EXPECT_NE(sold(), "0");
    EXPECT_EQ(run("EXEC ResetDB"), "");
    EXPECT_EQ(sold(), "0");
    EXPECT_NE(run("SELECT COUNT(*) FROM VARE"), "0");
}

// The order that deletes by hand go in: heads take their lines along, registers go last.
TEST_F(TillOfItsOwn, IsEmptiedByTheHeadsOfItsDocuments) {
    install(198);
    for (const char* table : {"betalingsignatur",
                              "generellsignatur",
                              "logg",
                              "ordre",
                              "kasseuttak",
                              "varemottaklinje",
                              "varemottak",
                              "ekstraansattoppgjor",
                              "Reklamasjonlinje",
                              "Reklamasjon",
                              "Vedlegg",
                              "oppgjor",
                              "gavekort",
                              "tilgodelapp",
                              "timer",
                              "melding",
                              "meldingvedlegg",
                              "mersalgvare",
                              "gavekortvare",
                              "varegruppe",
                              "varealias",
                              "plumedlem",
                              "plu",
                              "vare",
                              "rabattkortkunde",
                              "kunde",
                              "adgangskort",
                              "arbeidsplan",
                              "ansatt"}) {
        EXPECT_EQ(run(std::string("delete from ") + table), "") << table;
        EXPECT_EQ(run(std::string("select count(*) from ") + table), "0") << table;
    }
    EXPECT_EQ(sold(), "0");
}

}  // namespace
}  // namespace sandbox::chain

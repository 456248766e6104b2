// One row of each table of a till, every column with a value of its own: what the transfer stages of it, column by
// column. A column that is left out or taken for another shows here, whether or not the made-up chain ever fills it.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/inbound/till_transfer.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr int kNewestTill = 229;

constexpr const char* kRowOfEachTable = R"sql(
INSERT LOGGTYPE VALUES (5001, 'Loggtype')
INSERT GRUNNTYPE VALUES (5002, 'Grunntype')
INSERT GRUNN (GR_ID, GR_GT_ID, GR_NAVN, GR_UTSKRIFTSFLAGG) VALUES (5003, 5002, 'Grunn', 6)
INSERT PENGEENHET VALUES (5004, 'Seddel', 250.5, 1, 0x0102)
INSERT KORTUTSTEDER VALUES (5005, 'Utsteder')
INSERT BETALINGFORM (BF_ID, BF_KO_ID, BF_NAVN, BF_AKTIV, BF_SKUFF, BF_SYNLIG, BF_PAAVIRKERSALG, BF_VU_ID)
VALUES (5006, 5005, 'Form', 2, 3, 4, 5, 'NOK')
INSERT TIMEPROFIL (TP_ID, TP_NAVN) VALUES (5007, 'Profil')
INSERT ANSATT (AN_ID, AN_TP_ID, AN_NAVN, AN_AKTIV, AN_RABATT, AN_RABKUNPAAORDPRIS, AN_NIVAA, AN_ANSATTDATO)
VALUES ('900', 5007, 'Ny ansatt', 1, 12.5, 2, 3, '20200102 03:04')

INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_OPPDATERTTIDSPUNKT, OP_TYPE, OP_STATUS, OP_TIDSPUNKTFERDIG,
  OP_ANTKUNDERINNOM, OP_NATTSAFE_INNKASTNR, OP_KOMMENTAR)
VALUES (5010, '100', '20260305 21:01', '20260305 21:02', 'NORMAL', 1, '20260305 21:03', 33, 'Nattsafe', 'Kommentar')
SET IDENTITY_INSERT OPPGJORLINJE ON
INSERT OPPGJORLINJE (OPL_ID, OPL_OP_ID, OPL_PE_ID, OPL_VEKSLEPENGER, OPL_OPPTALT, OPL_FAKTISK)
VALUES (5011, 5010, 5004, 1.5, 2.5, 3.5)
SET IDENTITY_INSERT OPPGJORLINJE OFF
INSERT OPPGJORBETALING VALUES (5010, 5006, 4.5, 5.5)
INSERT EKSTRAANSATTOPPGJOR (EAO_ID, EAO_AN_ID, EAO_OP_ID, EAO_UTLEVAV_AN_ID, EAO_NAVN, EAO_TIDSPUNKT)
VALUES (5012, '100', 5010, '101', 'Ekstra', '20260305 08:01')
INSERT LOGG (LO_ID, LO_AN_ID, LO_LT_ID, LO_OP_ID, LO_TIDSPUNKT, LO_MERKNADER)
VALUES (5013, '100', 5001, 5010, '20260305 08:02', 'Merknad')
INSERT VAREMOTTAK (VM_ID, VM_AN_ID, VM_OP_ID, VM_TIDSPUNKT, VM_REFERANSE)
VALUES (5014, '100', 5010, '20260305 08:03', 'Pakkseddel')
INSERT VAREMOTTAKLINJE (VML_ID, VML_VM_ID, VML_VA_ID, VML_ANTALL, VML_PRIS) VALUES (5015, 5014, '100001', 6.5, 7.5)
INSERT VAREBESTILLING (VB_ID, VB_OP_ID, VB_AN_ID, VB_TIDSPUNKT, VB_REFERANSE, VB_STATUS)
VALUES (5016, 5010, '100', '20260305 08:04', 'Bestilling', 2)
INSERT VAREBESTILLINGLINJE (VBL_ID, VBL_VB_ID, VBL_VA_ID, VBL_ANTALL) VALUES (5017, 5016, '100002', 8.5)
INSERT VEDLEGG (VLG_ID, VLG_OP_ID, VLG_FILNAVN, VLG_INNHOLD) VALUES (5018, 5010, 'bilag.pdf', 0x0B0C)

INSERT KUNDE (KU_ID, KU_NAVN) VALUES (5020, 'Kunde')
INSERT ORDRE (OR_ID, OR_KU_ID, OR_OP_ID, OR_AN_ID, OR_RA_ID, OR_RABATT_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG,
  OR_STATUS, OR_REKVISISJONSNUMMER, OR_POSTNR, OR_TELEFON, OR_STATISTIKK_AN_ID, OR_VARETELLING, OR_EAN13,
  OR_TORVIK_OR_ID)
VALUES (5021, 5020, 5010, '100', 'Rabatt', '101', '20260305 10:01', '20260305 10:02', 3, 'Rekvisisjon', '0181',
  '90012345', '102', 1, '2000000000017', 777)
INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_RABATT, OL_SALGSPRIS, OL_MVASATS, OL_KOSTPRIS, OL_SLETTET,
  OL_MERSALG, OL_STATUS, OL_TORVIK_OR_ID, OL_TORVIK_KU_ID, OL_VISNINGSVARE, OL_KORREKSJON, OL_GJELDENDEPRIS)
VALUES (5022, 5021, '100003', 2.5, 10.5, 99.5, 15.5, 44.5, 1, 0, 2, 778, 4002, 1, 1, 111.5)
INSERT ORDREGRUNN (OG_OR_ID, OG_GR_ID) VALUES (5021, 5003)
INSERT ORDRELINJEGRUNN (OLG_OL_ID, OLG_GR_ID) VALUES (5022, 5003)
INSERT ORDRELINJETEKST VALUES (5022, 'Tekst')
INSERT KUPONG (KUP_ID, KUP_PR_ID, KUP_AKTIVERT, KUP_OPPR_ANTALL, KUP_BRUKT_ANTALL, KUP_MERKET_BRUKT)
VALUES (5023, 4711, '20260301', 5, 2, 1)
INSERT KUPONGORDRELINJE (KOL_KUP_ID, KOL_OL_ID) VALUES (5023, 5022)
INSERT ORDRERETUR (ORE_ID, ORE_OR_ID, ORE_RETUR_OR_ID, ORE_RETUR_AVDNR, ORE_RETUR_KASSENR)
VALUES (5024, 5021, 1, '102', '3')

INSERT BETALING (BT_ID, BT_BF_ID, BT_OR_ID, BT_BELOP, BT_VU_KURS) VALUES (5030, 5006, 5021, 199.5, 11.5)
INSERT BETALINGBANKINFO (BBI_ID, BBI_BT_ID, BBI_KO_ID, BBI_KORTDATA, BBI_TIDSSTEMPEL, BBI_LOJALITETSINFO,
  BBI_AVSTEM_SESJONSNUMMER, BBI_TRANID, BBI_AUTH)
VALUES (5031, 5030, 5005, 'Kort', '20260305100300', 'Lojal', '9', 'Tran', 'Auth')
INSERT UTBETALING (UB_BT_ID, UB_NAVN, UB_KONTO, UB_TELEFON, UB_EPOST, UB_ADRESSE, UB_STATUS)
VALUES (5030, 'Berit', '15031234567', '90054321', 'berit@example.no', 'Storgata 1', 3)
INSERT VippsBetaling (VIB_BT_ID, VIB_REFERANSE, VIB_ORDRENUMMER) VALUES (5030, 'Referanse', 'Ordrenummer')

INSERT SIGNATUR (SI_ID, SI_BILDE) VALUES (5041, 0x0A41), (5042, 0x0A42), (5043, 0x0A43)
INSERT BETALINGSIGNATUR (BTSI_BT_ID, BTSI_SI_ID, BTSI_SIT_ID) VALUES (5030, 5041, 21)
INSERT ORDRESIGNATUR (ORSI_OR_ID, ORSI_SI_ID, ORSI_SIT_ID) VALUES (5021, 5042, 22)
INSERT OPPGJORSIGNATUR (OPSI_OP_ID, OPSI_SI_ID, OPSI_SIT_ID) VALUES (5010, 5043, 23)

INSERT TIMER (TI_ID, TI_AN_ID, TI_GODKJENN_GR_ID, TI_TIDINN, TI_TIDUT, TI_TEKST, TI_INNMETODE, TI_UTMETODE,
  TI_KORRIGERTTIDINN, TI_KORRIGERTTIDUT, TI_STATUS, TI_MANUELL_TK_ID, TI_TREKKPAUSE, TI_SYK_GR_ID)
VALUES (5050, '100', 31, '20260305 08:11', '20260305 16:12', 'Vakt', 1, 2, '20260305 08:13', '20260305 16:14', 8, 32,
  33, 34)
INSERT TIMERPRKODE (TPK_TI_ID, TPK_TK_ID, TPK_TID) VALUES (5050, 35, '20260305 07:30')
)sql";

struct StagedRow {
    const char* table;
    const char* columns;  // all but the run's identifier and the time of the copy
    const char* where;
    const char* row;
};

// Department 1001, till 1.
constexpr StagedRow kStagedRows[] = {
    {"Temp_Loggtype_Import", "tlti_id, tlti_ik_ku_id, tlti_kassenr, RTRIM(tlti_navn)", "tlti_id = 5001",
     "5001 | 1001 | 1 | Loggtype"},
    {"Temp_Oppgjor_Import",
     "toi_op_id, toi_ik_ku_id, toi_kassenr, RTRIM(toi_ika_id), toi_tidspunkt, toi_oppdaterttidspunkt, toi_type, "
     "toi_status, toi_tidspunktferdig, toi_antkunderinnom, toi_nattsafe_innkastnr, toi_Kommentar",
     "toi_op_id = 5010",
     "5010 | 1001 | 1 | 100 | 2026-03-05 21:01:00.000 | 2026-03-05 21:02:00.000 | NORMAL | 0 | 2026-03-05 "
     "21:03:00.000 | 33 | Nattsafe | Kommentar"},
    {"Temp_Oppgjorlinje_Import",
     "toli_opl_id, toli_ik_ku_id, toli_kassenr, toli_op_id, toli_pe_id, toli_vekslepenger, toli_opptalt, toli_faktisk",
     "toli_opl_id = 5011", "5011 | 1001 | 1 | 5010 | 5004 | 1.5 | 2.5 | 3.5"},
    {"Temp_Oppgjorbetaling_Import",
     "tobi_op_id, tobi_ik_ku_id, tobi_kassenr, tobi_bf_id, tobi_belop, tobi_opptalt, CASE WHEN "
     "ABS(DATEDIFF(minute, tobi_tidspunktferdig, GETDATE())) < 10 THEN 'now' END",
     "tobi_op_id = 5010", "5010 | 1001 | 1 | 5006 | 4.5 | 5.5 | now"},
    {"Temp_Grunntype_Import", "tgi_id, tgi_ik_ku_id, tgi_kassenr, tgi_navn", "tgi_id = 5002",
     "5002 | 1001 | 1 | Grunntype"},
    {"Temp_Grunn_Import", "tgi_id, tgi_ik_ku_id, tgi_kassenr, tgi_gt_id, tgi_navn, tgi_utskriftsflagg", "tgi_id = 5003",
     "5003 | 1001 | 1 | 5002 | Grunn | 6"},
    {"Temp_Pengeenhet_Import", "tpi_id, tpi_ik_ku_id, tpi_kassenr, tpi_vu_id, tpi_navn, tpi_verdi, tpi_mynt, tpi_bilde",
     "tpi_id = 5004", "5004 | 1001 | 1 | NOK | Seddel | 250.5 | 1 | 0x0102"},
    {"Temp_Betalingform_Import",
     "tbfi_id, tbfi_ik_ku_id, tbfi_kassenr, tbfi_ko_id, RTRIM(tbfi_navn), tbfi_aktiv, tbfi_skuff, tbfi_synlig, "
     "tbfi_paavirkersalg, tbfi_vu_id",
     "tbfi_id = 5006", "5006 | 1001 | 1 | 5005 | Form | 2 | 3 | 4 | 5 | NOK"},
    {"Temp_Kortutsteder_Import", "tki_id, tki_ik_ku_id, tki_kassenr, tki_navn", "tki_id = 5005",
     "5005 | 1001 | 1 | Utsteder"},
    {"Temp_Ordre_Import",
     "toi_or_id, toi_ik_ku_id, toi_kassenr, toi_ku_id, toi_op_id, RTRIM(toi_ika_id), RTRIM(toi_ra_id), "
     "RTRIM(toi_rabatt_ika_id), toi_tidspunkt, toi_tidspunktferdig, toi_status, toi_rekvisisjonsnummer, toi_postnr, "
     "toi_telefon, toi_varetelling, toi_Or_Torvik_Or_Id, toi_Or_EAN13, toi_statistikk_ika_id, toi_salgssum, toi_rabatt",
     "toi_or_id = 5021",
     "5021 | 1001 | 1 | 5020 | 5010 | 100 | Rabatt | 101 | 2026-03-05 10:01:00.000 | 2026-03-05 10:02:00.000 | 3 | "
     "Rekvisisjon | 0181 | 90012345 | 1 | 777 | 2000000000017 | 102 | NULL | NULL"},
    {"Temp_Ordrelinje_Import",
     "toli_ol_id, toli_ik_ku_id, toli_kassenr, toli_or_id, RTRIM(toli_va_id), toli_antall, toli_rabatt, "
     "toli_salgspris, toli_mvasats, toli_kostpris, toli_slettet, toli_mersalg, toli_status, toli_torvik_or_id, "
     "toli_torvik_ku_id, toli_visningsvare, toli_GjeldendePris",
     "toli_ol_id = 5022",
     "5022 | 1001 | 1 | 5021 | 100003 | 2.5 | 10.5 | 99.5 | 15.5 | -1 | 1 | 0 | 2 | 778 | 4002 | 1 | 111.5"},
    {"Temp_Ordregrunn_Import", "tog_gr_id, tog_or_id, tog_ik_ku_id, tog_kassenr", "tog_or_id = 5021",
     "5003 | 5021 | 1001 | 1"},
    {"Temp_Ordrelinjegrunn_Import", "tolg_gr_id, tolg_ol_id, tolg_ik_ku_id, tolg_kassenr", "tolg_ol_id = 5022",
     "5003 | 5022 | 1001 | 1"},
    {"Temp_Ordrelinjetekst_Import", "tot_ol_id, tot_ik_ku_id, tot_kassenr, tot_navn", "tot_ol_id = 5022",
     "5022 | 1001 | 1 | Tekst"},
    {"Temp_Kupong_Import",
     "tki_Kup_Id, tki_Kup_Ik_Ku_ID, tki_Kup_Kassenr, tki_Kup_Pr_ID, tki_Kup_Aktivert, tki_Kup_Oppr_Antall, "
     "tki_Kup_Brukt_Antall, tki_Kup_Merket_Brukt",
     "tki_Kup_Id = 5023", "5023 | 1001 | 1 | 4711 | 2026-03-01 00:00:00.000 | 5 | 2 | 1"},
    {"Temp_KupongOrdrelinje_Import",
     "tkol_Kol_Kup_Id, tkol_Kol_Kup_Ik_Ku_ID, tkol_Kol_Kup_Kassenr, tkol_Kup_Ol_Id, tkol_Kup_Ol_Or_Ik_Ku_ID, "
     "tkol_Kup_Ol_Or_KasseNr",
     "tkol_Kol_Kup_Id = 5023", "5023 | 1001 | 1 | 5022 | 1001 | 1"},
    {"Temp_Betaling_Import", "tbi_bt_id, tbi_ik_ku_id, tbi_kassenr, tbi_bf_id, tbi_or_id, tbi_belop, tbi_vu_kurs",
     "tbi_bt_id = 5030", "5030 | 1001 | 1 | 5006 | 5021 | 199.5 | 11.5"},
    {"Temp_Betalingbankinfo_Import",
     "tbbi_bbi_id, tbbi_ik_ku_id, tbbi_kassenr, tbbi_bt_id, tbbi_ko_id, tbbi_kortdata, tbbi_tidsstempel, "
     "tbbi_lojalitetsinfo, tbbi_avstem_sesjonsnummer, tbbi_tranid, tbbi_auth",
     "tbbi_bbi_id = 5031", "5031 | 1001 | 1 | 5030 | 5005 | Kort | 20260305100300 | Lojal | 9 | Tran | Auth"},
    {"Temp_InternkundeAnsatt_Import",
     "RTRIM(tikai_id), tikai_ik_ku_id, tikai_kassenr, tikai_pos_tp_id, tikai_navn, tikai_aktiv, tikai_rabatt, "
     "tikai_rabattkunpaaordpris, tikai_nivaa, tikai_ansattdato, tikai_lonnskonto, tikai_personnr",
     "tikai_id = '900'",
     "900 | 1001 | 1 | 5007 | Ny ansatt | 1 | 12.5 | 2 | 3 | 2020-01-02 03:04:00.000 | NULL | NULL"},
    {"Temp_Ekstraansattoppgjor_Import",
     "teaoi_eao_id, teaoi_ik_ku_id, teaoi_kassenr, RTRIM(teaoi_ika_id), teaoi_op_id, RTRIM(teaoi_utlev_ika_id), "
     "teaoi_navn, teaoi_tidspunkt",
     "teaoi_eao_id = 5012", "5012 | 1001 | 1 | 100 | 5010 | 101 | Ekstra | 2026-03-05 08:01:00.000"},
    {"Temp_Logg_Import",
     "tli_lo_id, tli_ik_ku_id, tli_kassenr, RTRIM(tli_ika_id), tli_lt_id, tli_op_id, tli_tidspunkt, tli_merknader",
     "tli_lo_id = 5013", "5013 | 1001 | 1 | 100 | 5001 | 5010 | 2026-03-05 08:02:00.000 | Merknad"},
    {"Temp_Varemottak_Import",
     "tvi_vm_id, tvi_ik_ku_id, tvi_kassenr, RTRIM(tvi_ika_id), tvi_op_id, tvi_tidspunkt, tvi_referanse, tvi_motregnet",
     "tvi_vm_id = 5014", "5014 | 1001 | 1 | 100 | 5010 | 2026-03-05 08:03:00.000 | Pakkseddel | NULL"},
    {"Temp_Varemottaklinje_Import",
     "tvmi_vml_id, tvmi_vm_id, tvmi_op_id, tvmi_ik_ku_id, tvmi_kassenr, RTRIM(tvmi_va_id), tvmi_antall, tvmi_pris, "
     "tvmi_helper",
     "tvmi_vml_id = 5015", "5015 | 5014 | 5010 | 1001 | 1 | 100001 | 6.5 | 7.5 | -1"},
    {"Temp_Varebestilling_Import",
     "tvi_id, tvi_ik_ku_id, tvi_kassenr, tvi_op_id, RTRIM(tvi_ika_id), tvi_tidspunkt, tvi_referanse, tvi_status",
     "tvi_id = 5016", "5016 | 1001 | 1 | 5010 | 100 | 2026-03-05 08:04:00.000 | Bestilling | 2"},
    {"Temp_Varebestillinglinje_Import",
     "tvbi_id, RTRIM(tvbi_va_id), tvbi_vb_id, tvbi_op_id, tvbi_ik_ku_id, tvbi_kassenr, tvbi_antall, tvbi_or_id",
     "tvbi_id = 5017", "5017 | 100002 | 5016 | 5010 | 1001 | 1 | 8.5 | NULL"},
    {"Temp_Utbetaling_Import",
     "tui_bt_id, tui_ik_ku_id, tui_kassenr, tui_kundenavn, tui_telefon, tui_epost, tui_adresse, tui_konto, tui_status, "
     "tui_forsendelsesnr, tui_oppdragsnr",
     "tui_bt_id = 5030",
     "5030 | 1001 | 1 | Berit | 90054321 | berit@example.no | Storgata 1 | 15031234567 | 3 | NULL | NULL"},
    {"Temp_Timer_Import",
     "tti_id, tti_ik_ku_id, tti_kassenr, RTRIM(tti_ika_id), tti_godkjenn_gr_id, tti_tidinn, tti_tidut, tti_tekst, "
     "tti_innmetode, tti_utmetode, tti_korrigerttidinn, tti_korrigerttidut, tti_status, tti_manuell_tk_id, "
     "tti_trekkpause, tti_syk_gr_id",
     "tti_id = 5050",
     "5050 | 1001 | 1 | 100 | 31 | 2026-03-05 08:11:00.000 | 2026-03-05 16:12:00.000 | Vakt | 1 | 2 | 2026-03-05 "
     "08:13:00.000 | 2026-03-05 16:14:00.000 | 8 | 32 | 33 | 34"},
    {"temp_POSSIGNATUR_Import", "imp_Pos_Si_Ik_Ku_ID, imp_Pos_Si_Kassenummer, imp_Pos_Si_ID, imp_Pos_Si_Bilde",
     "imp_Pos_Si_ID = 5042", "1001 | 1 | 5042 | 0x0A42"},
    {"temp_POSBETALINGSIGNATUR_Import",
     "imp_Pos_Btsi_Bt_Id, imp_Pos_Btsi_Bt_Or_Ik_Ku_ID, imp_Pos_Btsi_Bt_Or_KasseNr, imp_Pos_Btsi_Si_ID, "
     "imp_Pos_Btsi_Sit_ID",
     "imp_Pos_Btsi_Bt_Id = 5030", "5030 | 1001 | 1 | 5041 | 21"},
    {"temp_POSORDRESIGNATUR_Import",
     "imp_Pos_Orsi_Or_Id, imp_Pos_Orsi_Or_Ik_Ku_ID, imp_Pos_Orsi_Or_KasseNr, imp_Pos_Orsi_Si_ID, imp_Pos_Orsi_Sit_ID",
     "imp_Pos_Orsi_Or_Id = 5021", "5021 | 1001 | 1 | 5042 | 22"},
    {"temp_POSOPPGJORSIGNATUR_Import",
     "imp_Pos_Opsi_Op_Id, imp_Pos_Opsi_Op_Ik_Ku_ID, imp_Pos_Opsi_Op_KasseNr, imp_Pos_Opsi_Si_ID, imp_Pos_Opsi_Sit_ID",
     "imp_Pos_Opsi_Op_Id = 5010", "5010 | 1001 | 1 | 5043 | 23"},
    {"temp_POSVEDLEGG_import",
     "imp_Pos_Vlg_ID, imp_Pos_Vlg_Op_Id, imp_Pos_Vlg_Op_Ik_Ku_ID, imp_Pos_Vlg_Op_KasseNr, imp_Pos_Vlg_Filnavn, "
     "imp_Pos_Vlg_Innhold",
     "imp_Pos_Vlg_ID = 5018", "5018 | 5010 | 1001 | 1 | bilag.pdf | 0x0B0C"},
    {"Temp_PosOrdreRetur_Import",
     "ti_ORE_ID, ti_ORE_OR_ID, ti_ORE_OR_IK_KU_ID, ti_ORE_OR_KASSENR, ti_ORE_RETUR_OR_ID, ti_ORE_RETUR_AVDNR, "
     "ti_ORE_RETUR_KASSENR",
     "ti_ORE_ID = 5024", "5024 | 5021 | 1001 | 1 | 1 | 102 | 3"},
    {"Temp_VippsBetaling_Import",
     "tvib_Bt_Or_Ik_Ku_Id, tvib_Bt_Or_KasseNr, tvib_BT_ID, tvib_REFERANSE, tvib_ORDRENUMMER", "tvib_BT_ID = 5030",
     "1001 | 1 | 5030 | Referanse | Ordrenummer"},
    {"Temp_Timerprkode_Import", "ttpi_ti_id, ttpi_ik_ku_id, ttpi_kassenr, ttpi_tk_id, ttpi_tid", "ttpi_ti_id = 5050",
     "5050 | 1001 | 1 | 35 | 2026-03-05 07:30:00.000"},
};

TEST(EveryColumn, OfEveryTableIsStagedAsItStandsOnTheTill) {
    TillTransfer transfer(kNewestTill);
    transfer.onTill(kRowOfEachTable);

    EXPECT_EQ(transfer.execute(), QString());

    for (const StagedRow& staged : kStagedRows)
        EXPECT_EQ(transfer.run.backOfficeRows(std::string("SELECT ") + staged.columns + " FROM " + staged.table +
                                              " WHERE " + staged.where),
                  std::vector<std::string>{staged.row})
            << staged.table;
    // Of each row also the run and the moment.
    for (const TableMap* map : allTableMaps())
        for (const ColumnRule& rule : map->columns) {
            const std::string all = std::string("SELECT COUNT(*) FROM ") + map->target + " WHERE ";
            if (rule.from.kind == From::Kind::UnId) {
                EXPECT_EQ(transfer.staged(all + "ISNULL(CONVERT(varchar(36), " + rule.target + "), '') <> '" +
                                          QUuid(transfer.dm.UnID()).toString(QUuid::WithoutBraces).toStdString() + "'"),
                          "0")
                    << map->step;
            }
            if (rule.from.kind == From::Kind::Now) {
                EXPECT_EQ(transfer.staged(all + "ABS(DATEDIFF(minute, " + rule.target + ", GETDATE())) >= 10"), "0")
                    << map->step;
            }
        }
}

// What the back office has is known by the last settlement that it has posted: that one and those before it stay away.
TEST(EveryColumn, ComesFromTheFirstSettlementThatTheBackOfficeLacks) {
    TillTransfer transfer(kNewestTill);
    transfer.onTill(kRowOfEachTable);
    const auto postedUpTo = [&](int settlement) {
        transfer.run.chain.runInBackOffice(
            "DELETE PosOppgjor WHERE Pos_Op_Kassenr = '1' AND Pos_Op_Id = 5009\n"
            "INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, "
            "Pos_Op_Status, Pos_Op_Synkronisert) VALUES (1001, '1', " +
            std::to_string(settlement) + ", GETDATE(), 'NORMAL', 0, GETDATE())");
    };
    transfer.run.chain.runInBackOffice(
        "ALTER PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RETURN 0");
    const auto bySettlement = [](const TableMap& map) {
        return QString::fromUtf8(map.source).contains(QStringLiteral("%d")) || &map == &kUtbetalingImportMap;
    };
    // The till has sales of settlement 1 and 5010.
    postedUpTo(5009);
    EXPECT_EQ(transfer.execute(), QString());
    for (const StagedRow& staged : kStagedRows)
        EXPECT_EQ(transfer.staged(std::string("SELECT COUNT(*) FROM ") + staged.table + " WHERE " + staged.where), "1")
            << staged.table;
    EXPECT_EQ(transfer.run.backOfficeRows("SELECT imp_Pos_Si_ID FROM temp_POSSIGNATUR_Import ORDER BY imp_Pos_Si_ID"),
              (std::vector<std::string>{"5041", "5042", "5043"}));
    for (const TableMap* map : allTableMaps())
        if (bySettlement(*map)) {
            const std::string rows = map == &kSignaturMap ? "3" : "1";
            EXPECT_EQ(transfer.staged(std::string("SELECT COUNT(*) FROM ") + map->target), rows) << map->step;
        }

    for (const TableMap* map : allTableMaps()) transfer.run.chain.runInBackOffice(std::string("DELETE ") + map->target);
    postedUpTo(5010);
    EXPECT_EQ(transfer.execute(), QString());
    for (const TableMap* map : allTableMaps())
        if (bySettlement(*map)) {
            EXPECT_EQ(transfer.staged(std::string("SELECT COUNT(*) FROM ") + map->target), "0") << map->step;
        }
}

// The test above would prove less than it says if a table or a column were missing in it.
TEST(EveryColumn, OfTheMapsIsLookedAt) {
    for (const TableMap* map : allTableMaps()) {
        const auto* const staged = std::find_if(std::begin(kStagedRows), std::end(kStagedRows),
                                                [&](const auto& row) { return std::string(row.table) == map->target; });
        ASSERT_NE(staged, std::end(kStagedRows)) << map->step;
        for (const ColumnRule& rule : map->columns) {
            if (rule.from.kind == From::Kind::UnId) continue;
            if (rule.from.kind == From::Kind::Now && rule.when == When::Always) continue;
            EXPECT_NE(std::string(staged->columns).find(rule.target), std::string::npos) << map->step << rule.target;
        }
    }
}

struct VersionCase {
    const char* version;
    const char* line;   // what the order line's later columns come to
    QStringList steps;  // of the steps by version, those that run
};

TEST(EveryColumn, AndEveryStepComesWithItsVersion) {
    const QStringList all{"Signatur", "BetalingSignatur", "OrdreSignatur", "OppgjorSignatur",
                          "Vedlegg",  "Ordreretur",       "VippsBetaling"};
    const QStringList signatures = all.mid(0, 5);
    const VersionCase cases[] = {
        {"137", "NULL | NULL | NULL | 111.5", {}},           {"138", "NULL | NULL | NULL | 111.5", {"Vedlegg"}},
        {"149", "NULL | NULL | NULL | 111.5", {"Vedlegg"}},  {"150", "778 | 4002 | NULL | 111.5", {"Vedlegg"}},
        {"157", "778 | 4002 | NULL | 111.5", {"Vedlegg"}},   {"158", "778 | 4002 | NULL | 111.5", signatures},
        {"187", "778 | 4002 | NULL | 111.5", signatures},    {"188", "778 | 4002 | NULL | 111.5", all.mid(0, 6)},
        {"193", "778 | 4002 | NULL | 111.5", all.mid(0, 6)}, {"194", "778 | 4002 | 1 | 111.5", all.mid(0, 6)},
        {"197", "778 | 4002 | 1 | 111.5", all.mid(0, 6)},    {"198", "778 | 4002 | 1 | 111.5", all},
    };
    TillTransfer transfer(kNewestTill);
    transfer.onTill(kRowOfEachTable);
    transfer.run.chain.runInBackOffice(
        "ALTER PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RETURN 0");
    for (const VersionCase& c : cases) {
        SCOPED_TRACE(c.version);
        transfer.onTill(std::string("UPDATE INNSTILLINGER SET IN_DBVERSION = '") + c.version + "'");
        transfer.run.chain.runInBackOffice("DELETE Temp_Ordrelinje_Import");
        transfer.progress.clear();

        EXPECT_EQ(transfer.execute(), QString());

        transfer.run.source.Close();
        transfer.run.target.Close();
        EXPECT_EQ(transfer.run.backOfficeRows("SELECT toli_torvik_or_id, toli_torvik_ku_id, toli_visningsvare, "
                                              "toli_GjeldendePris FROM Temp_Ordrelinje_Import WHERE toli_ol_id = 5022"),
                  std::vector<std::string>{c.line});
        QStringList steps;
        for (const QString& step : all)
            if (transfer.progress.contains(QStringLiteral("Start %1: ").arg(step))) steps << step;
        EXPECT_EQ(steps, c.steps);
    }
}

TEST(EveryColumn, ThatTheBackOfficesStageLacksIsLeftOut) {
    TillTransfer transfer(kNewestTill);
    transfer.onTill(kRowOfEachTable);
    transfer.run.chain.runInBackOffice(
        "ALTER PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RETURN 0");
    transfer.run.chain.runInBackOffice(R"(ALTER TABLE Temp_Ordre_Import DROP COLUMN toi_Or_EAN13, toi_Or_Torvik_Or_Id
ALTER TABLE Temp_Oppgjorbetaling_Import DROP COLUMN tobi_tidspunktferdig)");

    EXPECT_EQ(transfer.execute(), QString());

    EXPECT_EQ(transfer.staged("SELECT toi_telefon FROM Temp_Ordre_Import WHERE toi_or_id = 5021"), "90012345");
    EXPECT_EQ(transfer.staged("SELECT tobi_belop FROM Temp_Oppgjorbetaling_Import WHERE tobi_op_id = 5010"), "4.5");
}

}  // namespace
}  // namespace torvik::test

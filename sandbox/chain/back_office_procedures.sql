-- What the back office does with the rows that one fetch of one till has staged: posts them, and clears the stage.
-- A fetch is known by department, till and run identifier. A row that stands in the back office already stays as it is,
-- so a settlement that comes a second time changes nothing; what a till has in its registers and the chain has not is
-- added to the chain's; settlements become synchronised with the last statement.
-- The two procedures run in the caller's transaction and end none themselves.

CREATE PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier
AS
SET NOCOUNT ON

INSERT INTO PosOppgjor (
  Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Ika_Id, Pos_Op_Tidspunkt, Pos_Op_OppdatertTidspunkt,
  Pos_Op_Type, Pos_Op_Status, Pos_Op_TidspunktFerdig, Pos_Op_AntKunderInnom, Pos_Op_Nattsafe_Innkastnr,
  Pos_Op_Kommentar)
SELECT
  toi_ik_ku_id, CONVERT(varchar(20), toi_kassenr), toi_op_id, toi_ika_id, toi_tidspunkt, toi_oppdaterttidspunkt,
  toi_type, toi_status, toi_tidspunktferdig, toi_antkunderinnom, toi_nattsafe_innkastnr, toi_kommentar
FROM Temp_Oppgjor_Import
WHERE toi_ik_ku_id = @Ik_Ku_Id AND toi_kassenr = @KasseNr AND toi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOppgjor WHERE Pos_Op_Ik_Ku_Id = toi_ik_ku_id AND Pos_Op_Kassenr = CONVERT(varchar(20), toi_kassenr)
    AND Pos_Op_Id = toi_op_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOppgjorlinje (
  Pos_Opl_Ik_Ku_Id, Pos_Opl_Kassenr, Pos_Opl_Id, Pos_Opl_Op_Id, Pos_Opl_Pe_Id, Pos_Opl_Vekslepenger,
  Pos_Opl_Opptalt, Pos_Opl_Faktisk)
SELECT
  toli_ik_ku_id, CONVERT(varchar(20), toli_kassenr), toli_opl_id, toli_op_id, toli_pe_id, toli_vekslepenger,
  toli_opptalt, toli_faktisk
FROM Temp_Oppgjorlinje_Import
WHERE toli_ik_ku_id = @Ik_Ku_Id AND toli_kassenr = @KasseNr AND toli_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOppgjorlinje WHERE Pos_Opl_Ik_Ku_Id = toli_ik_ku_id AND Pos_Opl_Kassenr = CONVERT(varchar(20), toli_kassenr)
    AND Pos_Opl_Id = toli_opl_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOppgjorbetaling (
  Pos_Ob_Ik_Ku_Id, Pos_Ob_Kassenr, Pos_Ob_Op_Id, Pos_Ob_Bf_Id, Pos_Ob_Belop, Pos_Ob_Opptalt)
SELECT
  tobi_ik_ku_id, tobi_kassenr, tobi_op_id, tobi_bf_id, tobi_belop, tobi_opptalt
FROM Temp_Oppgjorbetaling_Import
WHERE tobi_ik_ku_id = @Ik_Ku_Id AND tobi_kassenr = @KasseNr AND tobi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOppgjorbetaling WHERE Pos_Ob_Ik_Ku_Id = tobi_ik_ku_id AND Pos_Ob_Kassenr = tobi_kassenr
    AND Pos_Ob_Op_Id = tobi_op_id AND Pos_Ob_Bf_Id = tobi_bf_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdre (
  Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id, Pos_Or_Op_Id, Pos_Or_Ku_Id, Pos_Or_Ika_Id, Pos_Or_Ra_Id,
  Pos_Or_Rabatt_Ika_Id, Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status, Pos_Or_Rekvisisjonsnummer,
  Pos_Or_Postnr, Pos_Or_Telefon, Pos_Or_Varetelling, Pos_Or_Torvik_Or_Id, Pos_Or_EAN13, Pos_Or_Statistikk_Ika_Id)
SELECT
  toi_ik_ku_id, toi_kassenr, toi_or_id, toi_op_id, toi_ku_id, toi_ika_id, toi_ra_id, toi_rabatt_ika_id,
  toi_tidspunkt, toi_tidspunktferdig, toi_status, toi_rekvisisjonsnummer, toi_postnr, toi_telefon, toi_varetelling,
  toi_Or_Torvik_Or_Id, toi_Or_EAN13, toi_statistikk_ika_id
FROM Temp_Ordre_Import
WHERE toi_ik_ku_id = @Ik_Ku_Id AND toi_kassenr = @KasseNr AND toi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdre WHERE Pos_Or_Ik_Ku_Id = toi_ik_ku_id AND Pos_Or_KasseNr = toi_kassenr
    AND Pos_Or_Id = toi_or_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdrelinje (
  Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id, Pos_Ol_Or_Id, Pos_Ol_Va_Id, Pos_Ol_Antall, Pos_Ol_Rabatt,
  Pos_Ol_Salgspris, Pos_Ol_Mvasats, Pos_Ol_Kostpris, Pos_Ol_Slettet, Pos_Ol_Mersalg, Pos_Ol_Status,
  Pos_Ol_Torvik_Or_Id, Pos_Ol_Torvik_Ku_Id, Pos_Ol_Visningsvare, Pos_Ol_GjeldendePris)
SELECT
  toli_ik_ku_id, toli_kassenr, toli_ol_id, toli_or_id, toli_va_id, toli_antall, toli_rabatt, toli_salgspris,
  toli_mvasats,
  CASE WHEN toli_kostpris = -1 THEN ISNULL((SELECT Va_Kostpris FROM Vare WHERE Va_Id = toli_va_id), 0) ELSE toli_kostpris END,
  toli_slettet, toli_mersalg, toli_status, toli_torvik_or_id, toli_torvik_ku_id, toli_visningsvare,
  toli_GjeldendePris
FROM Temp_Ordrelinje_Import
WHERE toli_ik_ku_id = @Ik_Ku_Id AND toli_kassenr = @KasseNr AND toli_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdrelinje WHERE Pos_Ol_Ik_Ku_Id = toli_ik_ku_id AND Pos_Ol_KasseNr = toli_kassenr
    AND Pos_Ol_Id = toli_ol_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdregrunn (
  Pos_Og_Ik_Ku_Id, Pos_Og_KasseNr, Pos_Og_Gr_Id, Pos_Og_Or_Id)
SELECT
  tog_ik_ku_id, tog_kassenr, tog_gr_id, tog_or_id
FROM Temp_Ordregrunn_Import
WHERE tog_ik_ku_id = @Ik_Ku_Id AND tog_kassenr = @KasseNr AND tog_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdregrunn WHERE Pos_Og_Ik_Ku_Id = tog_ik_ku_id AND Pos_Og_KasseNr = tog_kassenr
    AND Pos_Og_Gr_Id = tog_gr_id AND Pos_Og_Or_Id = tog_or_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdrelinjegrunn (
  Pos_Olg_Ik_Ku_Id, Pos_Olg_KasseNr, Pos_Olg_Gr_Id, Pos_Olg_Ol_Id)
SELECT
  tolg_ik_ku_id, tolg_kassenr, tolg_gr_id, tolg_ol_id
FROM Temp_Ordrelinjegrunn_Import
WHERE tolg_ik_ku_id = @Ik_Ku_Id AND tolg_kassenr = @KasseNr AND tolg_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdrelinjegrunn WHERE Pos_Olg_Ik_Ku_Id = tolg_ik_ku_id AND Pos_Olg_KasseNr = tolg_kassenr
    AND Pos_Olg_Gr_Id = tolg_gr_id AND Pos_Olg_Ol_Id = tolg_ol_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdrelinjetekst (
  Pos_Olt_Ik_Ku_Id, Pos_Olt_KasseNr, Pos_Olt_Ol_Id, Pos_Olt_Navn)
SELECT
  tot_ik_ku_id, CONVERT(varchar(20), tot_kassenr), tot_ol_id, tot_navn
FROM Temp_Ordrelinjetekst_Import
WHERE tot_ik_ku_id = @Ik_Ku_Id AND tot_kassenr = @KasseNr AND tot_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdrelinjetekst WHERE Pos_Olt_Ik_Ku_Id = tot_ik_ku_id AND Pos_Olt_KasseNr = CONVERT(varchar(20), tot_kassenr)
    AND Pos_Olt_Ol_Id = tot_ol_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosBetaling (
  Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Id, Pos_Bt_Bf_Id, Pos_Bt_Or_Id, Pos_Bt_Belop, Pos_Bt_Vu_Kurs)
SELECT
  tbi_ik_ku_id, tbi_kassenr, tbi_bt_id, tbi_bf_id, tbi_or_id, tbi_belop, tbi_vu_kurs
FROM Temp_Betaling_Import
WHERE tbi_ik_ku_id = @Ik_Ku_Id AND tbi_kassenr = @KasseNr AND tbi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosBetaling WHERE Pos_Bt_Ik_Ku_Id = tbi_ik_ku_id AND Pos_Bt_KasseNr = tbi_kassenr
    AND Pos_Bt_Id = tbi_bt_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosBetalingBankinfo (
  Pos_Bbi_Ik_Ku_Id, Pos_Bbi_KasseNr, Pos_Bbi_Id, Pos_Bbi_Bt_Id, Pos_Bbi_Ko_Id, Pos_Bbi_Kortdata,
  Pos_Bbi_Tidsstempel, Pos_Bbi_Lojalitetsinfo, Pos_Bbi_Avstem_Sesjonsnummer, Pos_Bbi_Tranid, Pos_Bbi_Auth)
SELECT
  tbbi_ik_ku_id, tbbi_kassenr, tbbi_bbi_id, tbbi_bt_id, tbbi_ko_id, tbbi_kortdata, tbbi_tidsstempel,
  tbbi_lojalitetsinfo, tbbi_avstem_sesjonsnummer, tbbi_tranid, tbbi_auth
FROM Temp_Betalingbankinfo_Import
WHERE tbbi_ik_ku_id = @Ik_Ku_Id AND tbbi_kassenr = @KasseNr AND tbbi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosBetalingBankinfo WHERE Pos_Bbi_Ik_Ku_Id = tbbi_ik_ku_id AND Pos_Bbi_KasseNr = tbbi_kassenr
    AND Pos_Bbi_Id = tbbi_bbi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosKupong (
  Pos_Kup_Ik_Ku_Id, Pos_Kup_KasseNr, Pos_Kup_Id, Pos_Kup_Pr_Id, Pos_Kup_Aktivert, Pos_Kup_Oppr_Antall,
  Pos_Kup_Brukt_Antall, Pos_Kup_Merket_Brukt)
SELECT
  tki_Kup_Ik_Ku_ID, tki_Kup_Kassenr, tki_Kup_Id, tki_Kup_Pr_ID, tki_Kup_Aktivert, tki_Kup_Oppr_Antall,
  tki_Kup_Brukt_Antall, tki_Kup_Merket_Brukt
FROM Temp_Kupong_Import
WHERE tki_Kup_Ik_Ku_ID = @Ik_Ku_Id AND tki_Kup_Kassenr = @KasseNr AND tki_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosKupong WHERE Pos_Kup_Ik_Ku_Id = tki_Kup_Ik_Ku_ID AND Pos_Kup_KasseNr = tki_Kup_Kassenr
    AND Pos_Kup_Id = tki_Kup_Id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosKupongOrdrelinje (
  Pos_Kol_Ik_Ku_Id, Pos_Kol_KasseNr, Pos_Kol_Kup_Id, Pos_Kol_Ol_Id)
SELECT
  tkol_Kol_Kup_Ik_Ku_ID, tkol_Kol_Kup_Kassenr, tkol_Kol_Kup_Id, tkol_Kup_Ol_Id
FROM Temp_KupongOrdrelinje_Import
WHERE tkol_Kol_Kup_Ik_Ku_ID = @Ik_Ku_Id AND tkol_Kol_Kup_Kassenr = @KasseNr AND tkol_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosKupongOrdrelinje WHERE Pos_Kol_Ik_Ku_Id = tkol_Kol_Kup_Ik_Ku_ID AND Pos_Kol_KasseNr = tkol_Kol_Kup_Kassenr
    AND Pos_Kol_Kup_Id = tkol_Kol_Kup_Id AND Pos_Kol_Ol_Id = tkol_Kup_Ol_Id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosSignatur (
  Pos_Si_Ik_Ku_Id, Pos_Si_Kassenummer, Pos_Si_Id, Pos_Si_Bilde)
SELECT
  imp_Pos_Si_Ik_Ku_ID, imp_Pos_Si_Kassenummer, imp_Pos_Si_ID, imp_Pos_Si_Bilde
FROM temp_POSSIGNATUR_Import
WHERE imp_Pos_Si_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Si_Kassenummer = @KasseNr AND imp_Pos_Si_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosSignatur WHERE Pos_Si_Ik_Ku_Id = imp_Pos_Si_Ik_Ku_ID AND Pos_Si_Kassenummer = imp_Pos_Si_Kassenummer
    AND Pos_Si_Id = imp_Pos_Si_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosBetalingSignatur (
  Pos_Btsi_Ik_Ku_Id, Pos_Btsi_KasseNr, Pos_Btsi_Bt_Id, Pos_Btsi_Si_Id, Pos_Btsi_Sit_Id)
SELECT
  imp_Pos_Btsi_Bt_Or_Ik_Ku_ID, imp_Pos_Btsi_Bt_Or_KasseNr, imp_Pos_Btsi_Bt_Id, imp_Pos_Btsi_Si_ID,
  imp_Pos_Btsi_Sit_ID
FROM temp_POSBETALINGSIGNATUR_Import
WHERE imp_Pos_Btsi_Bt_Or_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Btsi_Bt_Or_KasseNr = @KasseNr AND imp_Pos_Btsi_Unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosBetalingSignatur WHERE Pos_Btsi_Ik_Ku_Id = imp_Pos_Btsi_Bt_Or_Ik_Ku_ID AND Pos_Btsi_KasseNr = imp_Pos_Btsi_Bt_Or_KasseNr
    AND Pos_Btsi_Bt_Id = imp_Pos_Btsi_Bt_Id AND Pos_Btsi_Si_Id = imp_Pos_Btsi_Si_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdreSignatur (
  Pos_Orsi_Ik_Ku_Id, Pos_Orsi_KasseNr, Pos_Orsi_Or_Id, Pos_Orsi_Si_Id, Pos_Orsi_Sit_Id)
SELECT
  imp_Pos_Orsi_Or_Ik_Ku_ID, imp_Pos_Orsi_Or_KasseNr, imp_Pos_Orsi_Or_Id, imp_Pos_Orsi_Si_ID, imp_Pos_Orsi_Sit_ID
FROM temp_POSORDRESIGNATUR_Import
WHERE imp_Pos_Orsi_Or_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Orsi_Or_KasseNr = @KasseNr AND imp_Pos_Orsi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdreSignatur WHERE Pos_Orsi_Ik_Ku_Id = imp_Pos_Orsi_Or_Ik_Ku_ID AND Pos_Orsi_KasseNr = imp_Pos_Orsi_Or_KasseNr
    AND Pos_Orsi_Or_Id = imp_Pos_Orsi_Or_Id AND Pos_Orsi_Si_Id = imp_Pos_Orsi_Si_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOppgjorSignatur (
  Pos_Opsi_Ik_Ku_Id, Pos_Opsi_KasseNr, Pos_Opsi_Op_Id, Pos_Opsi_Si_Id, Pos_Opsi_Sit_Id)
SELECT
  imp_Pos_Opsi_Op_Ik_Ku_ID, imp_Pos_Opsi_Op_KasseNr, imp_Pos_Opsi_Op_Id, imp_Pos_Opsi_Si_ID, imp_Pos_Opsi_Sit_ID
FROM temp_POSOPPGJORSIGNATUR_Import
WHERE imp_Pos_Opsi_Op_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Opsi_Op_KasseNr = @KasseNr AND imp_Pos_Opsi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOppgjorSignatur WHERE Pos_Opsi_Ik_Ku_Id = imp_Pos_Opsi_Op_Ik_Ku_ID AND Pos_Opsi_KasseNr = imp_Pos_Opsi_Op_KasseNr
    AND Pos_Opsi_Op_Id = imp_Pos_Opsi_Op_Id AND Pos_Opsi_Si_Id = imp_Pos_Opsi_Si_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVedlegg (
  Pos_Vlg_Ik_Ku_Id, Pos_Vlg_KasseNr, Pos_Vlg_Id, Pos_Vlg_Op_Id, Pos_Vlg_Filnavn, Pos_Vlg_Innhold)
SELECT
  imp_Pos_Vlg_Op_Ik_Ku_ID, imp_Pos_Vlg_Op_KasseNr, imp_Pos_Vlg_ID, imp_Pos_Vlg_Op_Id, imp_Pos_Vlg_Filnavn,
  imp_Pos_Vlg_Innhold
FROM temp_POSVEDLEGG_import
WHERE imp_Pos_Vlg_Op_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Vlg_Op_KasseNr = @KasseNr AND imp_Pos_Vlg__Unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVedlegg WHERE Pos_Vlg_Ik_Ku_Id = imp_Pos_Vlg_Op_Ik_Ku_ID AND Pos_Vlg_KasseNr = imp_Pos_Vlg_Op_KasseNr
    AND Pos_Vlg_Id = imp_Pos_Vlg_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosOrdreRetur (
  Pos_Ore_Or_Ik_Ku_Id, Pos_Ore_Or_KasseNr, Pos_Ore_Id, Pos_Ore_Or_Id, Pos_Ore_Retur_Or_Id, Pos_Ore_Retur_Avdnr,
  Pos_Ore_Retur_Kassenr)
SELECT
  ti_ORE_OR_IK_KU_ID, ti_ORE_OR_KASSENR, ti_ORE_ID, ti_ORE_OR_ID, ti_ORE_RETUR_OR_ID, ti_ORE_RETUR_AVDNR,
  ti_ORE_RETUR_KASSENR
FROM Temp_PosOrdreRetur_Import
WHERE ti_ORE_OR_IK_KU_ID = @Ik_Ku_Id AND ti_ORE_OR_KASSENR = @KasseNr AND ti_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosOrdreRetur WHERE Pos_Ore_Or_Ik_Ku_Id = ti_ORE_OR_IK_KU_ID AND Pos_Ore_Or_KasseNr = ti_ORE_OR_KASSENR
    AND Pos_Ore_Id = ti_ORE_ID)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVippsBetaling (
  Pos_Vib_Bt_Ik_Ku_Id, Pos_Vib_Bt_KasseNr, Pos_Vib_Bt_Id, Pos_Vib_Referanse, Pos_Vib_Ordrenummer)
SELECT
  tvib_Bt_Or_Ik_Ku_Id, tvib_Bt_Or_KasseNr, tvib_BT_ID, tvib_REFERANSE, tvib_ORDRENUMMER
FROM Temp_VippsBetaling_Import
WHERE tvib_Bt_Or_Ik_Ku_Id = @Ik_Ku_Id AND tvib_Bt_Or_KasseNr = @KasseNr AND tvib_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVippsBetaling WHERE Pos_Vib_Bt_Ik_Ku_Id = tvib_Bt_Or_Ik_Ku_Id AND Pos_Vib_Bt_KasseNr = tvib_Bt_Or_KasseNr
    AND Pos_Vib_Bt_Id = tvib_BT_ID)
IF @@ERROR <> 0 RETURN -1

UPDATE PosKupong SET
  Pos_Kup_Brukt_Antall = tki_Kup_Brukt_Antall,
  Pos_Kup_Merket_Brukt = tki_Kup_Merket_Brukt
FROM PosKupong
JOIN Temp_Kupong_Import ON Pos_Kup_Ik_Ku_Id = tki_Kup_Ik_Ku_ID AND Pos_Kup_KasseNr = tki_Kup_Kassenr AND Pos_Kup_Id = tki_Kup_Id
WHERE tki_Kup_Ik_Ku_ID = @Ik_Ku_Id AND tki_Kup_Kassenr = @KasseNr AND tki_unid = @UnId
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosLoggtype (Pos_Lt_Id, Pos_Lt_Navn)
SELECT tlti_id, tlti_navn
FROM Temp_Loggtype_Import
WHERE tlti_ik_ku_id = @Ik_Ku_Id AND tlti_kassenr = @KasseNr AND tlti_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosLoggtype WHERE Pos_Lt_Id = tlti_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosGrunntype (Pos_Gt_Id, Pos_Gt_Navn)
SELECT tgi_id, tgi_navn
FROM Temp_Grunntype_Import
WHERE tgi_ik_ku_id = @Ik_Ku_Id AND tgi_kassenr = @KasseNr AND tgi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosGrunntype WHERE Pos_Gt_Id = tgi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosGrunn (Pos_Gr_Id, Pos_Gr_Gt_Id, Pos_Gr_Navn, Pos_Gr_Utskriftsflagg)
SELECT tgi_id, tgi_gt_id, tgi_navn, tgi_utskriftsflagg
FROM Temp_Grunn_Import
WHERE tgi_ik_ku_id = @Ik_Ku_Id AND tgi_kassenr = @KasseNr AND tgi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosGrunn WHERE Pos_Gr_Id = tgi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosPengeenhet (Pos_Pe_Id, Pos_Pe_Vu_Id, Pos_Pe_Navn, Pos_Pe_Verdi, Pos_Pe_Mynt, Pos_Pe_Bilde)
SELECT tpi_id, tpi_vu_id, tpi_navn, tpi_verdi, tpi_mynt, tpi_bilde
FROM Temp_Pengeenhet_Import
WHERE tpi_ik_ku_id = @Ik_Ku_Id AND tpi_kassenr = @KasseNr AND tpi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosPengeenhet WHERE Pos_Pe_Id = tpi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosKortutsteder (Pos_Ko_Id, Pos_Ko_Navn)
SELECT tki_id, tki_navn
FROM Temp_Kortutsteder_Import
WHERE tki_ik_ku_id = @Ik_Ku_Id AND tki_kassenr = @KasseNr AND tki_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosKortutsteder WHERE Pos_Ko_Id = tki_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosBetalingform (Pos_Bf_Id, Pos_Bf_Ko_Id, Pos_Bf_Navn, Pos_Bf_Aktiv, Pos_Bf_Skuff, Pos_Bf_Synlig,
  Pos_Bf_Paavirkersalg, Pos_Bf_Vu_Id)
SELECT tbfi_id, tbfi_ko_id, tbfi_navn, tbfi_aktiv, tbfi_skuff, tbfi_synlig, tbfi_paavirkersalg, tbfi_vu_id
FROM Temp_Betalingform_Import
WHERE tbfi_ik_ku_id = @Ik_Ku_Id AND tbfi_kassenr = @KasseNr AND tbfi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosBetalingform WHERE Pos_Bf_Id = tbfi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosEkstraAnsattOppgjor (
  Peao_Ik_Ku_Id, Peao_KasseNr, Peao_Id, Peao_Op_Id, Peao_Ika_Id, Peao_Utlev_Ika_Id, Peao_Navn, Peao_Tidspunkt)
SELECT
  teaoi_ik_ku_id, CONVERT(varchar(20), teaoi_kassenr), teaoi_eao_id, teaoi_op_id, teaoi_ika_id, teaoi_utlev_ika_id,
  teaoi_navn, teaoi_tidspunkt
FROM Temp_Ekstraansattoppgjor_Import
WHERE teaoi_ik_ku_id = @Ik_Ku_Id AND teaoi_kassenr = @KasseNr AND teaoi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosEkstraAnsattOppgjor WHERE Peao_Ik_Ku_Id = teaoi_ik_ku_id
    AND Peao_KasseNr = CONVERT(varchar(20), teaoi_kassenr) AND Peao_Id = teaoi_eao_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosLogg (
  Plo_Ik_Ku_Id, Plo_KasseNr, Plo_Id, Plo_Op_Id, Plo_Ika_Id, Plo_Lt_Id, Plo_Tidspunkt, Plo_Merknader)
SELECT
  tli_ik_ku_id, CONVERT(varchar(20), tli_kassenr), tli_lo_id, tli_op_id, tli_ika_id, tli_lt_id, tli_tidspunkt,
  tli_merknader
FROM Temp_Logg_Import
WHERE tli_ik_ku_id = @Ik_Ku_Id AND tli_kassenr = @KasseNr AND tli_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosLogg WHERE Plo_Ik_Ku_Id = tli_ik_ku_id
    AND Plo_KasseNr = CONVERT(varchar(20), tli_kassenr) AND Plo_Id = tli_lo_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVaremottak (
  Pvm_Ik_Ku_Id, Pvm_KasseNr, Pvm_Id, Pvm_Op_Id, Pvm_Ika_Id, Pvm_Tidspunkt, Pvm_Referanse)
SELECT
  tvi_ik_ku_id, CONVERT(varchar(20), tvi_kassenr), tvi_vm_id, tvi_op_id, tvi_ika_id, tvi_tidspunkt, tvi_referanse
FROM Temp_Varemottak_Import
WHERE tvi_ik_ku_id = @Ik_Ku_Id AND tvi_kassenr = @KasseNr AND tvi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVaremottak WHERE Pvm_Ik_Ku_Id = tvi_ik_ku_id
    AND Pvm_KasseNr = CONVERT(varchar(20), tvi_kassenr) AND Pvm_Id = tvi_vm_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVaremottaklinje (
  Pvml_Ik_Ku_Id, Pvml_KasseNr, Pvml_Id, Pvml_Vm_Id, Pvml_Va_Id, Pvml_Antall, Pvml_Pris)
SELECT
  tvmi_ik_ku_id, CONVERT(varchar(20), tvmi_kassenr), tvmi_vml_id, tvmi_vm_id, tvmi_va_id, tvmi_antall, tvmi_pris
FROM Temp_Varemottaklinje_Import
WHERE tvmi_ik_ku_id = @Ik_Ku_Id AND tvmi_kassenr = @KasseNr AND tvmi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVaremottaklinje WHERE Pvml_Ik_Ku_Id = tvmi_ik_ku_id
    AND Pvml_KasseNr = CONVERT(varchar(20), tvmi_kassenr) AND Pvml_Id = tvmi_vml_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVarebestilling (
  Pvb_Ik_Ku_Id, Pvb_KasseNr, Pvb_Id, Pvb_Op_Id, Pvb_Ika_Id, Pvb_Tidspunkt, Pvb_Referanse, Pvb_Status)
SELECT
  tvi_ik_ku_id, CONVERT(varchar(20), tvi_kassenr), tvi_id, tvi_op_id, tvi_ika_id, tvi_tidspunkt, tvi_referanse,
  tvi_status
FROM Temp_Varebestilling_Import
WHERE tvi_ik_ku_id = @Ik_Ku_Id AND tvi_kassenr = @KasseNr AND tvi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVarebestilling WHERE Pvb_Ik_Ku_Id = tvi_ik_ku_id
    AND Pvb_KasseNr = CONVERT(varchar(20), tvi_kassenr) AND Pvb_Id = tvi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosVarebestillinglinje (
  Pvbl_Ik_Ku_Id, Pvbl_KasseNr, Pvbl_Id, Pvbl_Vb_Id, Pvbl_Va_Id, Pvbl_Antall)
SELECT
  tvbi_ik_ku_id, CONVERT(varchar(20), tvbi_kassenr), tvbi_id, tvbi_vb_id, tvbi_va_id, tvbi_antall
FROM Temp_Varebestillinglinje_Import
WHERE tvbi_ik_ku_id = @Ik_Ku_Id AND tvbi_kassenr = @KasseNr AND tvbi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosVarebestillinglinje WHERE Pvbl_Ik_Ku_Id = tvbi_ik_ku_id
    AND Pvbl_KasseNr = CONVERT(varchar(20), tvbi_kassenr) AND Pvbl_Id = tvbi_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosUtbetaling (
  Pub_Ik_Ku_Id, Pub_KasseNr, Pub_Bt_Id, Pub_Kundenavn, Pub_Telefon, Pub_Epost, Pub_Adresse, Pub_Konto, Pub_Status)
SELECT
  tui_ik_ku_id, CONVERT(varchar(20), tui_kassenr), tui_bt_id, tui_kundenavn, tui_telefon, tui_epost, tui_adresse,
  tui_konto, tui_status
FROM Temp_Utbetaling_Import
WHERE tui_ik_ku_id = @Ik_Ku_Id AND tui_kassenr = @KasseNr AND tui_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosUtbetaling WHERE Pub_Ik_Ku_Id = tui_ik_ku_id
    AND Pub_KasseNr = CONVERT(varchar(20), tui_kassenr) AND Pub_Bt_Id = tui_bt_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosTimer (
  Pti_Ik_Ku_Id, Pti_KasseNr, Pti_Id, Pti_Ika_Id, Pti_Godkjenn_Gr_Id, Pti_TidInn, Pti_TidUt, Pti_Tekst,
  Pti_InnMetode, Pti_UtMetode, Pti_KorrigertTidInn, Pti_KorrigertTidUt, Pti_Status, Pti_Manuell_Tk_Id,
  Pti_TrekkPause, Pti_Syk_Gr_Id)
SELECT
  tti_ik_ku_id, CONVERT(varchar(20), tti_kassenr), tti_id, tti_ika_id, tti_godkjenn_gr_id, tti_tidinn, tti_tidut,
  tti_tekst, tti_innmetode, tti_utmetode, tti_korrigerttidinn, tti_korrigerttidut, tti_status, tti_manuell_tk_id,
  tti_trekkpause, tti_syk_gr_id
FROM Temp_Timer_Import
WHERE tti_ik_ku_id = @Ik_Ku_Id AND tti_kassenr = @KasseNr AND tti_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosTimer WHERE Pti_Ik_Ku_Id = tti_ik_ku_id
    AND Pti_KasseNr = CONVERT(varchar(20), tti_kassenr) AND Pti_Id = tti_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO PosTimerPrKode (
  Ptpk_Ik_Ku_Id, Ptpk_KasseNr, Ptpk_Ti_Id, Ptpk_Tk_Id, Ptpk_Tid)
SELECT
  ttpi_ik_ku_id, CONVERT(varchar(20), ttpi_kassenr), ttpi_ti_id, ttpi_tk_id, ttpi_tid
FROM Temp_Timerprkode_Import
WHERE ttpi_ik_ku_id = @Ik_Ku_Id AND ttpi_kassenr = @KasseNr AND ttpi_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM PosTimerPrKode WHERE Ptpk_Ik_Ku_Id = ttpi_ik_ku_id
    AND Ptpk_KasseNr = CONVERT(varchar(20), ttpi_kassenr) AND Ptpk_Ti_Id = ttpi_ti_id AND Ptpk_Tk_Id = ttpi_tk_id)
IF @@ERROR <> 0 RETURN -1

INSERT INTO InternKundeAnsatt (
  Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Visningsnavn, Ika_Aktiv, Ika_Rabatt, Ika_RabattKunPaaOrdPris, Ika_Nivaa)
SELECT
  tikai_id, tikai_ik_ku_id, tikai_navn, tikai_navn, tikai_aktiv, tikai_rabatt, tikai_rabattkunpaaordpris, tikai_nivaa
FROM Temp_InternkundeAnsatt_Import
WHERE tikai_ik_ku_id = @Ik_Ku_Id AND tikai_kassenr = @KasseNr AND tikai_unid = @UnId
  AND NOT EXISTS (SELECT 1 FROM InternKundeAnsatt WHERE Ika_Id = tikai_id)
IF @@ERROR <> 0 RETURN -1

UPDATE PosOppgjor SET Pos_Op_Synkronisert = GETDATE()
FROM PosOppgjor
JOIN Temp_Oppgjor_Import ON Pos_Op_Ik_Ku_Id = toi_ik_ku_id AND Pos_Op_Kassenr = CONVERT(varchar(20), toi_kassenr) AND Pos_Op_Id = toi_op_id
WHERE toi_ik_ku_id = @Ik_Ku_Id AND toi_kassenr = @KasseNr AND toi_unid = @UnId AND Pos_Op_Synkronisert IS NULL
IF @@ERROR <> 0 RETURN -1
RETURN 0
go

CREATE PROCEDURE DeleteFromTemp @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier
AS
SET NOCOUNT ON
DELETE FROM Temp_Oppgjor_Import WHERE toi_ik_ku_id = @Ik_Ku_Id AND toi_kassenr = @KasseNr AND toi_unid = @UnId
DELETE FROM Temp_Oppgjorlinje_Import WHERE toli_ik_ku_id = @Ik_Ku_Id AND toli_kassenr = @KasseNr AND toli_unid = @UnId
DELETE FROM Temp_Oppgjorbetaling_Import WHERE tobi_ik_ku_id = @Ik_Ku_Id AND tobi_kassenr = @KasseNr AND tobi_unid = @UnId
DELETE FROM Temp_Ordre_Import WHERE toi_ik_ku_id = @Ik_Ku_Id AND toi_kassenr = @KasseNr AND toi_unid = @UnId
DELETE FROM Temp_Ordrelinje_Import WHERE toli_ik_ku_id = @Ik_Ku_Id AND toli_kassenr = @KasseNr AND toli_unid = @UnId
DELETE FROM Temp_Ordregrunn_Import WHERE tog_ik_ku_id = @Ik_Ku_Id AND tog_kassenr = @KasseNr AND tog_unid = @UnId
DELETE FROM Temp_Ordrelinjegrunn_Import WHERE tolg_ik_ku_id = @Ik_Ku_Id AND tolg_kassenr = @KasseNr AND tolg_unid = @UnId
DELETE FROM Temp_Ordrelinjetekst_Import WHERE tot_ik_ku_id = @Ik_Ku_Id AND tot_kassenr = @KasseNr AND tot_unid = @UnId
DELETE FROM Temp_Betaling_Import WHERE tbi_ik_ku_id = @Ik_Ku_Id AND tbi_kassenr = @KasseNr AND tbi_unid = @UnId
DELETE FROM Temp_Betalingbankinfo_Import WHERE tbbi_ik_ku_id = @Ik_Ku_Id AND tbbi_kassenr = @KasseNr AND tbbi_unid = @UnId
DELETE FROM Temp_Kupong_Import WHERE tki_Kup_Ik_Ku_ID = @Ik_Ku_Id AND tki_Kup_Kassenr = @KasseNr AND tki_unid = @UnId
DELETE FROM Temp_KupongOrdrelinje_Import WHERE tkol_Kol_Kup_Ik_Ku_ID = @Ik_Ku_Id AND tkol_Kol_Kup_Kassenr = @KasseNr AND tkol_unid = @UnId
DELETE FROM temp_POSSIGNATUR_Import WHERE imp_Pos_Si_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Si_Kassenummer = @KasseNr AND imp_Pos_Si_unid = @UnId
DELETE FROM temp_POSBETALINGSIGNATUR_Import WHERE imp_Pos_Btsi_Bt_Or_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Btsi_Bt_Or_KasseNr = @KasseNr AND imp_Pos_Btsi_Unid = @UnId
DELETE FROM temp_POSORDRESIGNATUR_Import WHERE imp_Pos_Orsi_Or_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Orsi_Or_KasseNr = @KasseNr AND imp_Pos_Orsi_unid = @UnId
DELETE FROM temp_POSOPPGJORSIGNATUR_Import WHERE imp_Pos_Opsi_Op_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Opsi_Op_KasseNr = @KasseNr AND imp_Pos_Opsi_unid = @UnId
DELETE FROM temp_POSVEDLEGG_import WHERE imp_Pos_Vlg_Op_Ik_Ku_ID = @Ik_Ku_Id AND imp_Pos_Vlg_Op_KasseNr = @KasseNr AND imp_Pos_Vlg__Unid = @UnId
DELETE FROM Temp_PosOrdreRetur_Import WHERE ti_ORE_OR_IK_KU_ID = @Ik_Ku_Id AND ti_ORE_OR_KASSENR = @KasseNr AND ti_unid = @UnId
DELETE FROM Temp_VippsBetaling_Import WHERE tvib_Bt_Or_Ik_Ku_Id = @Ik_Ku_Id AND tvib_Bt_Or_KasseNr = @KasseNr AND tvib_unid = @UnId
DELETE FROM Temp_Loggtype_Import WHERE tlti_ik_ku_id = @Ik_Ku_Id AND tlti_kassenr = @KasseNr AND tlti_unid = @UnId
DELETE FROM Temp_Grunntype_Import WHERE tgi_ik_ku_id = @Ik_Ku_Id AND tgi_kassenr = @KasseNr AND tgi_unid = @UnId
DELETE FROM Temp_Grunn_Import WHERE tgi_ik_ku_id = @Ik_Ku_Id AND tgi_kassenr = @KasseNr AND tgi_unid = @UnId
DELETE FROM Temp_Pengeenhet_Import WHERE tpi_ik_ku_id = @Ik_Ku_Id AND tpi_kassenr = @KasseNr AND tpi_unid = @UnId
DELETE FROM Temp_Betalingform_Import WHERE tbfi_ik_ku_id = @Ik_Ku_Id AND tbfi_kassenr = @KasseNr AND tbfi_unid = @UnId
DELETE FROM Temp_Kortutsteder_Import WHERE tki_ik_ku_id = @Ik_Ku_Id AND tki_kassenr = @KasseNr AND tki_unid = @UnId
DELETE FROM Temp_InternkundeAnsatt_Import WHERE tikai_ik_ku_id = @Ik_Ku_Id AND tikai_kassenr = @KasseNr AND tikai_unid = @UnId
DELETE FROM Temp_Ekstraansattoppgjor_Import WHERE teaoi_ik_ku_id = @Ik_Ku_Id AND teaoi_kassenr = @KasseNr AND teaoi_unid = @UnId
DELETE FROM Temp_Logg_Import WHERE tli_ik_ku_id = @Ik_Ku_Id AND tli_kassenr = @KasseNr AND tli_unid = @UnId
DELETE FROM Temp_Varemottak_Import WHERE tvi_ik_ku_id = @Ik_Ku_Id AND tvi_kassenr = @KasseNr AND tvi_unid = @UnId
DELETE FROM Temp_Varemottaklinje_Import WHERE tvmi_ik_ku_id = @Ik_Ku_Id AND tvmi_kassenr = @KasseNr AND tvmi_unid = @UnId
DELETE FROM Temp_Varebestilling_Import WHERE tvi_ik_ku_id = @Ik_Ku_Id AND tvi_kassenr = @KasseNr AND tvi_unid = @UnId
DELETE FROM Temp_Varebestillinglinje_Import WHERE tvbi_ik_ku_id = @Ik_Ku_Id AND tvbi_kassenr = @KasseNr AND tvbi_unid = @UnId
DELETE FROM Temp_Utbetaling_Import WHERE tui_ik_ku_id = @Ik_Ku_Id AND tui_kassenr = @KasseNr AND tui_unid = @UnId
DELETE FROM Temp_Timer_Import WHERE tti_ik_ku_id = @Ik_Ku_Id AND tti_kassenr = @KasseNr AND tti_unid = @UnId
DELETE FROM Temp_Timerprkode_Import WHERE ttpi_ik_ku_id = @Ik_Ku_Id AND ttpi_kassenr = @KasseNr AND ttpi_unid = @UnId
RETURN 0
go

-- What the back office sends to the tills: the choice of items of a session, the gift cards and credit notes that a till
-- may have to redeem, and the next free numbers of a till's series. Run after back_office_sales.sql.

-- What one session sends to one till. Rows live as long as the run.
CREATE TABLE VareEksport (
  Ve_SesjonID varchar(10) NOT NULL,
  Ve_InsDato datetime NOT NULL,
  Ve_Va_ID char(15) NOT NULL,
  Ve_Va_Navn varchar(50) NOT NULL,
  Ve_Pris float NOT NULL,
  Ve_Va_Utgaatt smallint NOT NULL,
  Ve_Nummertype varchar(20) NULL,
  Ve_Varegruppe varchar(60) NOT NULL,
  Ve_VeilPris float NULL,
  Ve_Mvasats float NULL,
  Ve_Kostpris float NULL,
  Ve_Le_Id int NULL,
  Ve_Minlager float NULL,
  Ve_Makslager float NULL,
  Ve_Vg_Id char(4) NULL,
  Ve_Prislapp int NULL,
  Ve_Va_Slettet bit NULL,
  Ve_P_Navn varchar(100) NULL,
  Ve_Fargenavn varchar(50) NULL,
  Ve_Storrelsenavn varchar(50) NULL,
  CONSTRAINT PK_VareEksport PRIMARY KEY (Ve_SesjonID, Ve_Va_ID)
)

-- Which gift cards (G) and credit notes (T) have been sent to which till; the last two columns but one tell where the
-- card was made.
CREATE TABLE InternKundeKasseOverfort (
  Ikko_Ikk_Ik_Ku_ID int NOT NULL,
  Ikko_Ikk_Kassenummer char(10) NOT NULL,
  Ikko_Type char(1) NOT NULL,
  Ikko_Id varchar(13) NOT NULL,
  Ikko_AvdNr char(20) NOT NULL,
  Ikko_Kassenr char(20) NOT NULL,
  Ikko_Tidspunkt datetime NOT NULL,
  CONSTRAINT PK_InternKundeKasseOverfort
    PRIMARY KEY (Ikko_Ikk_Ik_Ku_ID, Ikko_Ikk_Kassenummer, Ikko_Type, Ikko_Id, Ikko_AvdNr, Ikko_Kassenr),
  CONSTRAINT FK_InternKundeKasseOverfort_Internkundekasse FOREIGN KEY (Ikko_Ikk_Ik_Ku_ID, Ikko_Ikk_Kassenummer)
    REFERENCES Internkundekasse (Ikk_Ik_Ku_Id, Ikk_Kassenummer)
)
go

-- Chooses the items of a session: none (@Utvalg 0), those marked to be sent to the tills (1), all (2). With @Nummertype
-- the kind of each number goes along. The group goes by name, its parent's first.
CREATE PROCEDURE KasseVareAlle @Ik_Ku_Id int, @Kassenummer varchar(10), @Nummertype bit, @SesjonID varchar(10),
  @Utvalg int
AS
SET NOCOUNT ON
INSERT INTO VareEksport (
  Ve_SesjonID, Ve_InsDato, Ve_Va_ID, Ve_Va_Navn, Ve_Pris, Ve_Va_Utgaatt, Ve_Nummertype, Ve_Varegruppe, Ve_VeilPris,
  Ve_Mvasats, Ve_Kostpris, Ve_Le_Id, Ve_Minlager, Ve_Makslager, Ve_Vg_Id, Ve_Prislapp, Ve_Va_Slettet, Ve_P_Navn,
  Ve_Fargenavn, Ve_Storrelsenavn)
SELECT
  @SesjonID, GETDATE(), Va_Id, Va_Navn, Va_Pris, Va_Utgaatt, CASE WHEN @Nummertype = 1 THEN Va_Nummertype END,
  ISNULL(CASE WHEN hoved.Vg_Id IS NULL THEN gruppe.Vg_Navn ELSE hoved.Vg_Navn + '/' + gruppe.Vg_Navn END, ''),
  Va_VeilPris, Va_Mvasats, Va_Kostpris, Va_Le_Id, Va_Minlager, Va_Makslager, Va_Vg_Id, Va_Prislapp, Va_Slettet,
  P_Navn, Va_Fargenavn, Va_Storrelsenavn
FROM Vare
LEFT OUTER JOIN Varegruppe gruppe ON gruppe.Vg_Id = Va_Vg_Id
LEFT OUTER JOIN Varegruppe hoved ON hoved.Vg_Id = gruppe.Vg_Hoved_Vg_ID
LEFT OUTER JOIN Produkt ON P_Id = Va_P_ID
WHERE @Utvalg = 2 OR (@Utvalg = 1 AND Va_SendTilButikkKasser = 1)
IF @@ERROR <> 0 RETURN -1
RETURN 0
go

-- The gift cards that a till may have to redeem: valid ones that it has not been sent. A card without an end, or with one
-- before 1980, is valid for a year from when it came in. Redeemed ones go each time, for nothing tells since when they are.
CREATE PROCEDURE GetPosGavekort @Ik_Ku_Id int, @Kassenr varchar(10)
AS
SET NOCOUNT ON
SELECT GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, ISNULL(GA_OL_ID, -1) AS GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, GA_BET_AVDNR,
  GA_BET_KASSENR, GA_BET_AN_ID, GA_BT_ID, GA_SYNKTIDSPUNKT, CONVERT(varchar(20), NULL) AS GA_PASSORD,
  @Ik_Ku_Id AS knr, @Kassenr AS kassenr
FROM POSGAVEKORT
WHERE CASE WHEN ISNULL(GA_GYLDIGTIL, '19050531') < '19800101' THEN DATEADD(year, 1, GA_SYNKTIDSPUNKT)
    ELSE GA_GYLDIGTIL END > GETDATE()
  AND (GA_BT_ID IS NOT NULL OR NOT EXISTS (
    SELECT 1 FROM InternKundeKasseOverfort
    WHERE Ikko_Ikk_Ik_Ku_ID = @Ik_Ku_Id AND Ikko_Ikk_Kassenummer = @Kassenr AND Ikko_Type = 'G' AND Ikko_Id = GA_ID
      AND Ikko_AvdNr = GA_AVDNR AND Ikko_Kassenr = GA_KASSENR))
go

CREATE PROCEDURE GetPosTilgodelapp @Ik_Ku_Id int, @Kassenr varchar(10)
AS
SET NOCOUNT ON
SELECT TG_ID, TG_AVDNR, TG_KASSENR, TG_AN_ID, TG_OR_ID, TG_BELOP, TG_GYLDIGTIL, TG_BET_AVDNR, TG_BET_KASSENR,
  TG_BET_AN_ID, TG_BT_ID, TG_SYNKTIDSPUNKT
FROM POSTilgodelapp
WHERE TG_GYLDIGTIL > GETDATE()
  AND (TG_BT_ID IS NOT NULL OR NOT EXISTS (
    SELECT 1 FROM InternKundeKasseOverfort
    WHERE Ikko_Ikk_Ik_Ku_ID = @Ik_Ku_Id AND Ikko_Ikk_Kassenummer = @Kassenr AND Ikko_Type = 'T' AND Ikko_Id = TG_ID
      AND Ikko_AvdNr = TG_AVDNR AND Ikko_Kassenr = TG_KASSENR))
go

-- The lowest number that each series of a till may go on with, as far as the back office knows the till's documents.
CREATE PROCEDURE POSLedigID @Ik_Ku_Id int, @Kassenr varchar(10)
AS
SET NOCOUNT ON
SELECT 'OP_ID' AS LI_ATTRIBUTT, ISNULL(MAX(Pos_Op_Id), 0) + 1 AS LI_NESTELEDIGEID
FROM PosOppgjor WHERE Pos_Op_Ik_Ku_Id = @Ik_Ku_Id AND Pos_Op_Kassenr = @Kassenr
UNION ALL
SELECT 'OPL_ID', ISNULL(MAX(Pos_Opl_Id), 0) + 1
FROM PosOppgjorlinje WHERE Pos_Opl_Ik_Ku_Id = @Ik_Ku_Id AND Pos_Opl_Kassenr = @Kassenr
UNION ALL
SELECT 'OR_ID', ISNULL(MAX(Pos_Or_Id), 0) + 1
FROM PosOrdre WHERE Pos_Or_Ik_Ku_Id = @Ik_Ku_Id AND Pos_Or_KasseNr = @Kassenr
UNION ALL
SELECT 'OL_ID', ISNULL(MAX(Pos_Ol_Id), 0) + 1
FROM PosOrdrelinje WHERE Pos_Ol_Ik_Ku_Id = @Ik_Ku_Id AND Pos_Ol_KasseNr = @Kassenr
UNION ALL
SELECT 'BT_ID', ISNULL(MAX(Pos_Bt_Id), 0) + 1
FROM PosBetaling WHERE Pos_Bt_Ik_Ku_Id = @Ik_Ku_Id AND Pos_Bt_KasseNr = @Kassenr
UNION ALL
SELECT 'VM_ID', ISNULL(MAX(Pvm_Id), 0) + 1
FROM PosVaremottak WHERE Pvm_Ik_Ku_Id = @Ik_Ku_Id AND Pvm_KasseNr = @Kassenr
UNION ALL
SELECT 'VB_ID', ISNULL(MAX(Pvb_Id), 0) + 1
FROM PosVarebestilling WHERE Pvb_Ik_Ku_Id = @Ik_Ku_Id AND Pvb_KasseNr = @Kassenr
UNION ALL
SELECT 'TI_ID', ISNULL(MAX(Pti_Id), 0) + 1
FROM PosTimer WHERE Pti_Ik_Ku_Id = @Ik_Ku_Id AND Pti_KasseNr = @Kassenr
UNION ALL
SELECT 'LO_ID', ISNULL(MAX(Plo_Id), 0) + 1
FROM PosLogg WHERE Plo_Ik_Ku_Id = @Ik_Ku_Id AND Plo_KasseNr = @Kassenr
go

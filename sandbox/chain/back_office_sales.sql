-- What the back office makes of the tills' sales: invoiceable orders, store statistics and stock, and the central copies
-- of gift cards and credit notes. Run after back_office_pos.sql.

CREATE VIEW vLager AS
SELECT Krl_Fra_Ku_Id, Krl_Til_Ku_Id FROM KundeRelasjon WHERE Krl_Type = 'LAGER'
go

CREATE TABLE ORDRE (
  Or_ID int NOT NULL CONSTRAINT PK_ORDRE PRIMARY KEY,
  Or_Fra_Ik_Ku_ID int NOT NULL CONSTRAINT FK_ORDRE_Fra_Kunde REFERENCES Kunde (Ku_Id),
  Or_Til_Ik_Ku_ID int NULL CONSTRAINT FK_ORDRE_Til_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Or_Eier_Ik_Ku_ID int NULL CONSTRAINT FK_ORDRE_Eier_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Or_Ku_ID int NOT NULL CONSTRAINT FK_ORDRE_Kunde REFERENCES Kunde (Ku_Id),
  Or_Pi_ID int NULL,
  Or_An_ID char(10) NOT NULL,
  Or_Lb_ID int NULL,
  Or_Bb_ID int NULL,
  Or_Ka_ID int NULL,
  Or_Kav_Id int NULL,
  Or_Le_Id int NULL,
  Or_Ordretype int NOT NULL,
  Or_Vu_Id char(3) NOT NULL,
  Or_Vu_Kurs float NOT NULL,
  Or_Dato datetime NOT NULL,
  Or_LevDato datetime NULL,
  Or_Status int NOT NULL,
  Or_MvaBeregnes tinyint NOT NULL,
  Or_MvaSats float NOT NULL,
  Or_Porto float NOT NULL,
  Or_Rabatt float NOT NULL,
  Or_Avrunding float NOT NULL,
  Or_Prislapp int NOT NULL,
  Or_AntKolli int NOT NULL,
  Or_AntPaller int NOT NULL,
  Or_VaarRef varchar(100) NULL,
  Or_DeresRef varchar(100) NULL,
  Or_Info varchar(1024) NULL,
  Or_InternInfo varchar(1024) NULL
)
CREATE INDEX IX_ORDRE_Dato ON ORDRE (Or_Dato, Or_Ordretype)

CREATE TABLE ORDRELINJE (
  OL_ID int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_ORDRELINJE PRIMARY KEY,
  OL_Or_ID int NOT NULL CONSTRAINT FK_ORDRELINJE_ORDRE REFERENCES ORDRE (Or_ID),
  OL_Va_ID char(15) NOT NULL CONSTRAINT FK_ORDRELINJE_Vare REFERENCES Vare (Va_Id),
  OL_Navn varchar(50) NOT NULL,
  OL_Bestilt float NOT NULL,
  OL_Levert float NOT NULL,
  OL_Pris float NOT NULL,
  OL_Rabatt float NOT NULL,
  OL_Kostpris float NULL,
  OL_Status int NOT NULL,
  OL_MvaBeregnes tinyint NOT NULL,
  OL_Mvasats float NOT NULL,
  OL_Utskrift int NOT NULL,
  OL_Hoved_OL_ID int NULL
)
CREATE INDEX IX_ORDRELINJE_ORDRE ON ORDRELINJE (OL_Or_ID)
go

-- One day's sales of one item in one department, split by the status of the lines.
CREATE TABLE Butikksalg (
  Bs_Ik_Ku_Id int NOT NULL CONSTRAINT FK_Butikksalg_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Bs_Va_Id char(15) NOT NULL CONSTRAINT FK_Butikksalg_Vare REFERENCES Vare (Va_Id),
  Bs_Dato datetime NOT NULL,
  Bs_Ol_Status int NOT NULL,
  Bs_Antall float NOT NULL,
  Bs_Omsetning float NOT NULL,
  CONSTRAINT PK_Butikksalg PRIMARY KEY (Bs_Ik_Ku_Id, Bs_Dato, Bs_Va_Id, Bs_Ol_Status)
)

-- What a department has of an item; below zero when more has been sold than was received.
CREATE TABLE Varebeholdning (
  Vbh_Ik_Ku_Id int NOT NULL CONSTRAINT FK_Varebeholdning_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Vbh_Va_Id char(15) NOT NULL CONSTRAINT FK_Varebeholdning_Vare REFERENCES Vare (Va_Id),
  Vbh_Antall float NOT NULL,
  CONSTRAINT PK_Varebeholdning PRIMARY KEY (Vbh_Ik_Ku_Id, Vbh_Va_Id)
)

CREATE TABLE timesalg (
  Ts_Ik_Ku_ID int NOT NULL CONSTRAINT FK_timesalg_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Ts_Dato datetime NOT NULL,
  Ts_Time int NOT NULL,
  Ts_Omsetning float NOT NULL,
  Ts_AntallSalg int NOT NULL,
  CONSTRAINT PK_timesalg PRIMARY KEY (Ts_Ik_Ku_ID, Ts_Dato, Ts_Time)
)
go

-- Gift cards and credit notes of all tills. Numbers are a till's own, so department and till stand in the key.

CREATE TABLE POSGAVEKORT (
  GA_ID varchar(13) NOT NULL,
  GA_AVDNR char(20) NOT NULL,
  GA_KASSENR char(20) NOT NULL,
  GA_AN_ID char(10) NOT NULL,
  GA_OL_ID int NULL,
  GA_BELOP float NOT NULL,
  GA_GYLDIGTIL datetime NULL,
  GA_BET_AVDNR char(20) NULL,
  GA_BET_KASSENR char(20) NULL,
  GA_BET_AN_ID char(10) NULL,
  GA_BT_ID int NULL,
  GA_SYNKTIDSPUNKT datetime NULL,
  CONSTRAINT PK_POSGAVEKORT PRIMARY KEY (GA_ID, GA_AVDNR, GA_KASSENR)
)

CREATE TABLE POSTilgodelapp (
  TG_ID varchar(13) NOT NULL,
  TG_AVDNR char(20) NOT NULL,
  TG_KASSENR char(20) NOT NULL,
  TG_AN_ID char(10) NOT NULL,
  TG_OR_ID int NOT NULL,
  TG_BELOP float NOT NULL,
  TG_GYLDIGTIL datetime NULL,
  TG_BET_AVDNR char(20) NULL,
  TG_BET_KASSENR char(20) NULL,
  TG_BET_AN_ID char(10) NULL,
  TG_BT_ID int NULL,
  TG_SYNKTIDSPUNKT datetime NULL,
  CONSTRAINT PK_POSTilgodelapp PRIMARY KEY (TG_ID, TG_AVDNR, TG_KASSENR)
)

-- Commands to a till, taken by whoever serves it.
CREATE TABLE InternkundeKasseKommando (
  Ikkk_Id int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_InternkundeKasseKommando PRIMARY KEY,
  Ikkk_Ikk_Ik_Ku_ID int NOT NULL,
  Ikkk_Ikk_Kassenummer char(10) NOT NULL,
  Ikkk_Kommando varchar(50) NOT NULL,
  Ikkk_Id1 varchar(50) NULL,
  CONSTRAINT FK_InternkundeKasseKommando_Internkundekasse FOREIGN KEY (Ikkk_Ikk_Ik_Ku_ID, Ikkk_Ikk_Kassenummer)
    REFERENCES Internkundekasse (Ikk_Ik_Ku_Id, Ikk_Kassenummer)
)
go

-- The back office's own number series: the next number of each.
CREATE TABLE Ledignummer (
  Ln_Navn varchar(30) NOT NULL CONSTRAINT PK_Ledignummer PRIMARY KEY,
  Ln_Neste int NOT NULL
)
INSERT Ledignummer VALUES ('OR_ID', 500001), ('NH_ID', 1)
go

-- Takes the next number of a series. A series that is not there gives 0.
CREATE PROCEDURE GetSPID @Navn varchar(30), @Id int OUTPUT
AS
SET NOCOUNT ON
SET @Id = 0
UPDATE Ledignummer SET @Id = Ln_Neste, Ln_Neste = Ln_Neste + 1 WHERE Ln_Navn = @Navn
RETURN 0
go

-- The same as a row, for callers that want one.
CREATE PROCEDURE GetID @Navn varchar(30)
AS
SET NOCOUNT ON
DECLARE @Id int
EXEC GetSPID @Navn, @Id OUTPUT
SELECT @Id AS Id
RETURN 0
go

-- Posts what one department sold of one item on one day: adds to the statistics, takes from the stock. What was taken out
-- of the store in other ways (@Svinn) leaves the stock and is no sale. Without a status the lines are plain sales (1).
CREATE PROCEDURE UpdateButikksalg2 @Ik_Ku_Id int, @Va_Id char(15), @Dato datetime, @Antall float, @Omsetning float,
  @Svinn float, @SvinnBelop float, @Ol_Status int = 1
AS
SET NOCOUNT ON
UPDATE Butikksalg SET Bs_Antall = Bs_Antall + @Antall, Bs_Omsetning = Bs_Omsetning + @Omsetning
WHERE Bs_Ik_Ku_Id = @Ik_Ku_Id AND Bs_Dato = @Dato AND Bs_Va_Id = @Va_Id AND Bs_Ol_Status = @Ol_Status
IF @@ROWCOUNT = 0
  INSERT INTO Butikksalg (Bs_Ik_Ku_Id, Bs_Dato, Bs_Va_Id, Bs_Ol_Status, Bs_Antall, Bs_Omsetning)
  VALUES (@Ik_Ku_Id, @Dato, @Va_Id, @Ol_Status, @Antall, @Omsetning)
IF @@ERROR <> 0 RETURN -1

UPDATE Varebeholdning SET Vbh_Antall = Vbh_Antall - @Antall - @Svinn
WHERE Vbh_Ik_Ku_Id = @Ik_Ku_Id AND Vbh_Va_Id = @Va_Id
IF @@ROWCOUNT = 0
  INSERT INTO Varebeholdning (Vbh_Ik_Ku_Id, Vbh_Va_Id, Vbh_Antall) VALUES (@Ik_Ku_Id, @Va_Id, 0 - @Antall - @Svinn)
IF @@ERROR <> 0 RETURN -1
RETURN 0
go

-- Stock counts. The two nippon tables are the stage that a count comes in through, named after the system that once
-- filled them; one count at a time stands there.

CREATE TABLE nipponordrehode (
  Nh_ID int NOT NULL CONSTRAINT PK_nipponordrehode PRIMARY KEY,
  Nh_Ku_ID int NOT NULL CONSTRAINT FK_nipponordrehode_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Nh_Prislapp int NOT NULL,
  Nh_Or_ID int NOT NULL,
  Nh_Key int NOT NULL
)

CREATE TABLE nipponordrelinje (
  Nl_Id int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_nipponordrelinje PRIMARY KEY,
  Nl_Nh_Id int NOT NULL CONSTRAINT FK_nipponordrelinje_nipponordrehode REFERENCES nipponordrehode (Nh_ID),
  Nl_Va_ID char(15) NOT NULL,
  Nl_Antall float NOT NULL,
  Nl_Soner varchar(50) NULL
)

CREATE TABLE Varetelling (
  Vt_Ik_Ku_Id int NOT NULL CONSTRAINT FK_Varetelling_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Vt_Periode int NOT NULL,
  Vt_Va_Id char(15) NOT NULL CONSTRAINT FK_Varetelling_Vare REFERENCES Vare (Va_Id),
  Vt_Antall float NOT NULL,
  Vt_Soner varchar(50) NULL,
  Vt_Bruker varchar(30) NOT NULL,
  Vt_Tidspunkt datetime NOT NULL,
  CONSTRAINT PK_Varetelling PRIMARY KEY (Vt_Ik_Ku_Id, Vt_Periode, Vt_Va_Id)
)
go

-- Takes the staged counts of one key into the count of the period; @Ku_Id -1 takes every department's. What has been
-- counted before in the same period is added to, since a store counts shelf by shelf.
CREATE PROCEDURE NipponToVaretell @Bruker varchar(30), @Periode int, @Ku_Id int, @Key int
AS
SET NOCOUNT ON
SELECT Nh_Ku_ID AS Ku_Id, Nl_Va_ID AS Va_Id, SUM(Nl_Antall) AS Antall, MAX(Nl_Soner) AS Soner
INTO #Telt
FROM nipponordrehode
JOIN nipponordrelinje ON Nl_Nh_Id = Nh_ID
WHERE Nh_Key = @Key AND (@Ku_Id = -1 OR Nh_Ku_ID = @Ku_Id)
GROUP BY Nh_Ku_ID, Nl_Va_ID
IF @@ROWCOUNT = 0
BEGIN
  RAISERROR('Ingen varetelling med nøkkel %d', 16, 1, @Key)
  RETURN -1
END

UPDATE Varetelling SET
  Vt_Antall = Vt_Antall + Antall, Vt_Soner = COALESCE(Soner, Vt_Soner), Vt_Bruker = @Bruker, Vt_Tidspunkt = GETDATE()
FROM Varetelling
JOIN #Telt ON Vt_Ik_Ku_Id = Ku_Id AND Vt_Va_Id = Va_Id
WHERE Vt_Periode = @Periode
IF @@ERROR <> 0 RETURN -1

INSERT INTO Varetelling (Vt_Ik_Ku_Id, Vt_Periode, Vt_Va_Id, Vt_Antall, Vt_Soner, Vt_Bruker, Vt_Tidspunkt)
SELECT Ku_Id, @Periode, Va_Id, Antall, Soner, @Bruker, GETDATE()
FROM #Telt
WHERE NOT EXISTS (
  SELECT 1 FROM Varetelling WHERE Vt_Ik_Ku_Id = Ku_Id AND Vt_Periode = @Periode AND Vt_Va_Id = Va_Id)
IF @@ERROR <> 0 RETURN -1
RETURN 0
go

-- Statistics, taken from what the tills have settled.

CREATE TABLE PosDagsalg (
  Pds_Ik_Ku_Id int NOT NULL CONSTRAINT FK_PosDagsalg_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Pds_Dato datetime NOT NULL,
  Pds_AntallSalg int NOT NULL,
  Pds_Omsetning float NOT NULL,
  CONSTRAINT PK_PosDagsalg PRIMARY KEY (Pds_Ik_Ku_Id, Pds_Dato)
)

CREATE TABLE VareStatistikk (
  Vst_Va_Id char(15) NOT NULL CONSTRAINT FK_VareStatistikk_Vare REFERENCES Vare (Va_Id),
  Vst_Periode int NOT NULL,
  Vst_Antall float NOT NULL,
  Vst_Omsetning float NOT NULL,
  CONSTRAINT PK_VareStatistikk PRIMARY KEY (Vst_Va_Id, Vst_Periode)
)

CREATE TABLE KundeStatistikk (
  Kst_Ku_Id int NOT NULL,
  Kst_Periode int NOT NULL,
  Kst_AntallSalg int NOT NULL,
  Kst_Omsetning float NOT NULL,
  CONSTRAINT PK_KundeStatistikk PRIMARY KEY (Kst_Ku_Id, Kst_Periode)
)
go

-- Adds settlements that wait (status below 8) to the days' sales of their departments and marks them as taken: those from
-- @FraDato on, at most a thousand at a time, oldest first. Stock counts are no sales and never wait here.
CREATE PROCEDURE AccumulatePosData @FraDato datetime
AS
SET NOCOUNT ON
SELECT TOP (1000) Pos_Op_Ik_Ku_Id AS Ik_Ku_Id, Pos_Op_Kassenr AS Kassenr, Pos_Op_Id AS Op_Id,
  CONVERT(datetime, CONVERT(char(8), Pos_Op_Tidspunkt, 112), 112) AS Dato
INTO #Ventende
FROM PosOppgjor
WHERE Pos_Op_Status < 8 AND Pos_Op_Type = 'NORMAL' AND Pos_Op_Tidspunkt >= @FraDato
ORDER BY Pos_Op_Tidspunkt

SELECT v.Ik_Ku_Id, v.Dato, COUNT(DISTINCT v.Kassenr + '/' + CONVERT(varchar(10), Pos_Or_Id)) AS AntallSalg,
  SUM(Pos_Ol_Antall * Pos_Ol_Salgspris * (100 - Pos_Ol_Rabatt) / 100) AS Omsetning
INTO #Dager
FROM #Ventende v
JOIN PosOrdre ON Pos_Or_Ik_Ku_Id = v.Ik_Ku_Id AND Pos_Or_KasseNr = v.Kassenr AND Pos_Or_Op_Id = v.Op_Id
JOIN PosOrdrelinje ON Pos_Ol_Ik_Ku_Id = Pos_Or_Ik_Ku_Id AND Pos_Ol_KasseNr = Pos_Or_KasseNr AND Pos_Ol_Or_Id = Pos_Or_Id
WHERE Pos_Or_Status = 0
GROUP BY v.Ik_Ku_Id, v.Dato

BEGIN TRANSACTION
UPDATE PosDagsalg SET Pds_AntallSalg = Pds_AntallSalg + AntallSalg, Pds_Omsetning = Pds_Omsetning + Omsetning
FROM PosDagsalg
JOIN #Dager ON Pds_Ik_Ku_Id = Ik_Ku_Id AND Pds_Dato = Dato

INSERT INTO PosDagsalg (Pds_Ik_Ku_Id, Pds_Dato, Pds_AntallSalg, Pds_Omsetning)
SELECT Ik_Ku_Id, Dato, AntallSalg, Omsetning
FROM #Dager
WHERE NOT EXISTS (SELECT 1 FROM PosDagsalg WHERE Pds_Ik_Ku_Id = Ik_Ku_Id AND Pds_Dato = Dato)

UPDATE PosOppgjor SET Pos_Op_Status = 8
FROM PosOppgjor
JOIN #Ventende v ON Pos_Op_Ik_Ku_Id = v.Ik_Ku_Id AND Pos_Op_Kassenr = v.Kassenr AND Pos_Op_Id = v.Op_Id
COMMIT TRANSACTION
RETURN 0
go

-- Makes the statistics of items and customers anew, by month (YYYYMM).
CREATE PROCEDURE UpdateVareStatistikk
AS
SET NOCOUNT ON
BEGIN TRANSACTION
DELETE FROM VareStatistikk
INSERT INTO VareStatistikk (Vst_Va_Id, Vst_Periode, Vst_Antall, Vst_Omsetning)
SELECT Bs_Va_Id, YEAR(Bs_Dato) * 100 + MONTH(Bs_Dato), SUM(Bs_Antall), SUM(Bs_Omsetning)
FROM Butikksalg
GROUP BY Bs_Va_Id, YEAR(Bs_Dato) * 100 + MONTH(Bs_Dato)

DELETE FROM KundeStatistikk
INSERT INTO KundeStatistikk (Kst_Ku_Id, Kst_Periode, Kst_AntallSalg, Kst_Omsetning)
SELECT Pos_Or_Ku_Id, YEAR(Pos_Or_Tidspunkt) * 100 + MONTH(Pos_Or_Tidspunkt),
  COUNT(DISTINCT CONVERT(varchar(10), Pos_Or_Ik_Ku_Id) + '/' + Pos_Or_KasseNr + '/' + CONVERT(varchar(10), Pos_Or_Id)),
  SUM(Pos_Ol_Antall * Pos_Ol_Salgspris * (100 - Pos_Ol_Rabatt) / 100)
FROM PosOrdre
JOIN PosOrdrelinje ON Pos_Ol_Ik_Ku_Id = Pos_Or_Ik_Ku_Id AND Pos_Ol_KasseNr = Pos_Or_KasseNr AND Pos_Ol_Or_Id = Pos_Or_Id
WHERE Pos_Or_Status = 0 AND Pos_Or_Varetelling = 0
GROUP BY Pos_Or_Ku_Id, YEAR(Pos_Or_Tidspunkt) * 100 + MONTH(Pos_Or_Tidspunkt)
COMMIT TRANSACTION
RETURN 0
go

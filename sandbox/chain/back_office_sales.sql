-- What the back office makes of the tills' sales: invoiceable orders, store statistics and stock, and the central copies
-- of gift cards and credit notes. Run after back_office.sql.

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
  GA_ID varchar(30) NOT NULL,
  GA_AVDNR char(10) NOT NULL,
  GA_KASSENR char(10) NOT NULL,
  GA_AN_ID char(10) NOT NULL,
  GA_OL_ID int NOT NULL,
  GA_BELOP float NOT NULL,
  GA_GYLDIGTIL datetime NULL,
  GA_BET_AVDNR char(10) NULL,
  GA_BET_KASSENR char(10) NULL,
  GA_BET_AN_ID char(10) NULL,
  GA_BT_ID int NULL,
  GA_SYNKTIDSPUNKT datetime NULL,
  CONSTRAINT PK_POSGAVEKORT PRIMARY KEY (GA_ID, GA_AVDNR, GA_KASSENR)
)

CREATE TABLE POSTilgodelapp (
  TG_ID varchar(30) NOT NULL,
  TG_AVDNR char(10) NOT NULL,
  TG_KASSENR char(10) NOT NULL,
  TG_AN_ID char(10) NOT NULL,
  TG_OR_ID int NOT NULL,
  TG_BELOP float NOT NULL,
  TG_GYLDIGTIL datetime NULL,
  TG_BET_AVDNR char(10) NULL,
  TG_BET_KASSENR char(10) NULL,
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

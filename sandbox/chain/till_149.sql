-- Schema version 149: pay-outs to a customer's account; messages with a priority, an end, and a place on the start screen.
CREATE TABLE UTBETALING (
  UB_BT_ID int NOT NULL CONSTRAINT PK_UTBETALING PRIMARY KEY
    CONSTRAINT FK_UTBETALING_BETALING REFERENCES BETALING (BT_ID) ON DELETE CASCADE,
  UB_NAVN varchar(25) NOT NULL,
  UB_KONTO char(11) NOT NULL,
  UB_TELEFON varchar(30) NULL,
  UB_EPOST varchar(255) NULL,
  UB_ADRESSE varchar(512) NULL,
  UB_STATUS tinyint NULL
)
ALTER TABLE MELDING ADD ME_PRIORITET int NULL, ME_UTLOPER datetime NULL, ME_STARTSKJERM bit NULL
go
ALTER PROCEDURE CreateInstantMessage @Tittel varchar(100), @Til varchar(100), @Fra varchar(100), @Tekst text,
  @Prioritet int = NULL, @Utloper varchar(30) = NULL, @Startskjerm bit = 0
AS
SET NOCOUNT ON
INSERT INTO MELDING (ME_TITTEL, ME_TIL, ME_FRA, ME_TEKST, ME_TIDSPUNKT, ME_PRIORITET, ME_UTLOPER, ME_STARTSKJERM)
VALUES (@Tittel, @Til, @Fra, @Tekst, GETDATE(), @Prioritet, CONVERT(datetime, @Utloper, 120), @Startskjerm)
go
UPDATE INNSTILLINGER SET IN_DBVERSION = '149'
go

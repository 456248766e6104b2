-- What the tills have sold and settled. Every key of a till is unique on that till only, so department and till stand in
-- every key here. Run after back_office.sql.

CREATE TABLE PosOppgjor (
  Pos_Op_Ik_Ku_Id int NOT NULL CONSTRAINT FK_PosOppgjor_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Pos_Op_Kassenr varchar(20) NOT NULL,
  Pos_Op_Id int NOT NULL,
  Pos_Op_Ika_Id char(10) NULL,
  Pos_Op_Tidspunkt datetime NOT NULL,
  Pos_Op_OppdatertTidspunkt datetime NULL,
  Pos_Op_Type varchar(15) NOT NULL,
  Pos_Op_Status int NOT NULL,
  Pos_Op_TidspunktFerdig datetime NULL,
  Pos_Op_AntKunderInnom int NULL,
  Pos_Op_Nattsafe_Innkastnr varchar(50) NULL,
  Pos_Op_Kommentar varchar(1024) NULL,
  Pos_Op_Synkronisert datetime NULL,
  CONSTRAINT PK_PosOppgjor PRIMARY KEY (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id)
)

CREATE TABLE PosOppgjorlinje (
  Pos_Opl_Ik_Ku_Id int NOT NULL,
  Pos_Opl_Kassenr varchar(20) NOT NULL,
  Pos_Opl_Id int NOT NULL,
  Pos_Opl_Op_Id int NOT NULL,
  Pos_Opl_Pe_Id int NOT NULL,
  Pos_Opl_Vekslepenger float NOT NULL,
  Pos_Opl_Opptalt float NOT NULL,
  Pos_Opl_Faktisk float NOT NULL,
  CONSTRAINT PK_PosOppgjorlinje PRIMARY KEY (Pos_Opl_Ik_Ku_Id, Pos_Opl_Kassenr, Pos_Opl_Id),
  CONSTRAINT FK_PosOppgjorlinje_PosOppgjor FOREIGN KEY (Pos_Opl_Ik_Ku_Id, Pos_Opl_Kassenr, Pos_Opl_Op_Id)
    REFERENCES PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id)
)

CREATE TABLE PosOppgjorbetaling (
  Pos_Ob_Ik_Ku_Id int NOT NULL,
  Pos_Ob_Kassenr varchar(20) NOT NULL,
  Pos_Ob_Op_Id int NOT NULL,
  Pos_Ob_Bf_Id int NOT NULL,
  Pos_Ob_Belop float NOT NULL,
  Pos_Ob_Opptalt float NOT NULL,
  CONSTRAINT PK_PosOppgjorbetaling PRIMARY KEY (Pos_Ob_Ik_Ku_Id, Pos_Ob_Kassenr, Pos_Ob_Op_Id, Pos_Ob_Bf_Id),
  CONSTRAINT FK_PosOppgjorbetaling_PosOppgjor FOREIGN KEY (Pos_Ob_Ik_Ku_Id, Pos_Ob_Kassenr, Pos_Ob_Op_Id)
    REFERENCES PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id)
)

CREATE TABLE PosOrdre (
  Pos_Or_Ik_Ku_Id int NOT NULL,
  Pos_Or_KasseNr varchar(20) NOT NULL,
  Pos_Or_Id int NOT NULL,
  Pos_Or_Op_Id int NOT NULL,
  Pos_Or_Ku_Id int NOT NULL,
  Pos_Or_Ika_Id char(10) NOT NULL,
  Pos_Or_Ra_Id char(20) NULL,
  Pos_Or_Rabatt_Ika_Id char(10) NULL,
  Pos_Or_Tidspunkt datetime NOT NULL,
  Pos_Or_TidspunktFerdig datetime NOT NULL,
  Pos_Or_Status int NOT NULL,
  Pos_Or_Rekvisisjonsnummer varchar(30) NULL,
  Pos_Or_Postnr varchar(10) NULL,
  Pos_Or_Telefon varchar(20) NULL,
  Pos_Or_Varetelling bit NULL,
  Pos_Or_Torvik_Or_Id int NULL,
  Pos_Or_EAN13 varchar(13) NULL,
  Pos_Or_Statistikk_Ika_Id varchar(10) NULL,
  Pos_Or_Kreditt_Or_Id int NULL,
  Pos_Or_OppdatertBeholdning datetime NULL,
  CONSTRAINT PK_PosOrdre PRIMARY KEY (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id),
  CONSTRAINT FK_PosOrdre_PosOppgjor FOREIGN KEY (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id)
    REFERENCES PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id)
)
CREATE INDEX IX_PosOrdre_Oppgjor ON PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id)

CREATE TABLE PosOrdrelinje (
  Pos_Ol_Ik_Ku_Id int NOT NULL,
  Pos_Ol_KasseNr varchar(20) NOT NULL,
  Pos_Ol_Id int NOT NULL,
  Pos_Ol_Or_Id int NOT NULL,
  Pos_Ol_Va_Id char(15) NOT NULL,
  Pos_Ol_Antall float NOT NULL,
  Pos_Ol_Rabatt float NOT NULL,
  Pos_Ol_Salgspris float NOT NULL,
  Pos_Ol_Mvasats float NOT NULL,
  Pos_Ol_Kostpris float NOT NULL,
  Pos_Ol_Slettet bit NULL,
  Pos_Ol_Mersalg bit NOT NULL,
  Pos_Ol_Status tinyint NULL,
  Pos_Ol_Torvik_Or_Id int NULL,
  Pos_Ol_Torvik_Ku_Id int NULL,
  Pos_Ol_Visningsvare bit NULL,
  Pos_Ol_GjeldendePris float NULL,
  CONSTRAINT PK_PosOrdrelinje PRIMARY KEY (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id),
  CONSTRAINT FK_PosOrdrelinje_PosOrdre FOREIGN KEY (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Or_Id)
    REFERENCES PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id)
)
CREATE INDEX IX_PosOrdrelinje_Ordre ON PosOrdrelinje (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Or_Id)

CREATE TABLE PosOrdregrunn (
  Pos_Og_Ik_Ku_Id int NOT NULL,
  Pos_Og_KasseNr varchar(20) NOT NULL,
  Pos_Og_Gr_Id int NOT NULL,
  Pos_Og_Or_Id int NOT NULL,
  CONSTRAINT PK_PosOrdregrunn PRIMARY KEY (Pos_Og_Ik_Ku_Id, Pos_Og_KasseNr, Pos_Og_Or_Id, Pos_Og_Gr_Id),
  CONSTRAINT FK_PosOrdregrunn_PosOrdre FOREIGN KEY (Pos_Og_Ik_Ku_Id, Pos_Og_KasseNr, Pos_Og_Or_Id)
    REFERENCES PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id)
)

CREATE TABLE PosOrdrelinjegrunn (
  Pos_Olg_Ik_Ku_Id int NOT NULL,
  Pos_Olg_KasseNr varchar(20) NOT NULL,
  Pos_Olg_Gr_Id int NOT NULL,
  Pos_Olg_Ol_Id int NOT NULL,
  CONSTRAINT PK_PosOrdrelinjegrunn PRIMARY KEY (Pos_Olg_Ik_Ku_Id, Pos_Olg_KasseNr, Pos_Olg_Ol_Id, Pos_Olg_Gr_Id),
  CONSTRAINT FK_PosOrdrelinjegrunn_PosOrdrelinje FOREIGN KEY (Pos_Olg_Ik_Ku_Id, Pos_Olg_KasseNr, Pos_Olg_Ol_Id)
    REFERENCES PosOrdrelinje (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id)
)

CREATE TABLE PosOrdrelinjetekst (
  Pos_Olt_Ik_Ku_Id int NOT NULL,
  Pos_Olt_KasseNr varchar(20) NOT NULL,
  Pos_Olt_Ol_Id int NOT NULL,
  Pos_Olt_Navn varchar(50) NOT NULL,
  CONSTRAINT PK_PosOrdrelinjetekst PRIMARY KEY (Pos_Olt_Ik_Ku_Id, Pos_Olt_KasseNr, Pos_Olt_Ol_Id),
  CONSTRAINT FK_PosOrdrelinjetekst_PosOrdrelinje FOREIGN KEY (Pos_Olt_Ik_Ku_Id, Pos_Olt_KasseNr, Pos_Olt_Ol_Id)
    REFERENCES PosOrdrelinje (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id)
)

CREATE TABLE PosBetaling (
  Pos_Bt_Ik_Ku_Id int NOT NULL,
  Pos_Bt_KasseNr varchar(20) NOT NULL,
  Pos_Bt_Id int NOT NULL,
  Pos_Bt_Bf_Id int NOT NULL,
  Pos_Bt_Or_Id int NOT NULL,
  Pos_Bt_Belop float NOT NULL,
  Pos_Bt_Vu_Kurs float NULL,
  CONSTRAINT PK_PosBetaling PRIMARY KEY (Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Id),
  CONSTRAINT FK_PosBetaling_PosOrdre FOREIGN KEY (Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Or_Id)
    REFERENCES PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id)
)

CREATE TABLE PosBetalingBankinfo (
  Pos_Bbi_Ik_Ku_Id int NOT NULL,
  Pos_Bbi_KasseNr varchar(20) NOT NULL,
  Pos_Bbi_Id int NOT NULL,
  Pos_Bbi_Bt_Id int NOT NULL,
  Pos_Bbi_Ko_Id int NOT NULL,
  Pos_Bbi_Kortdata varchar(25) NULL,
  Pos_Bbi_Tidsstempel char(14) NULL,
  Pos_Bbi_Lojalitetsinfo varchar(100) NULL,
  Pos_Bbi_Avstem_Sesjonsnummer varchar(10) NULL,
  Pos_Bbi_Tranid varchar(30) NULL,
  Pos_Bbi_Auth varchar(30) NULL,
  CONSTRAINT PK_PosBetalingBankinfo PRIMARY KEY (Pos_Bbi_Ik_Ku_Id, Pos_Bbi_KasseNr, Pos_Bbi_Id),
  CONSTRAINT FK_PosBetalingBankinfo_PosBetaling FOREIGN KEY (Pos_Bbi_Ik_Ku_Id, Pos_Bbi_KasseNr, Pos_Bbi_Bt_Id)
    REFERENCES PosBetaling (Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Id)
)

CREATE TABLE PosKupong (
  Pos_Kup_Ik_Ku_Id int NOT NULL,
  Pos_Kup_KasseNr varchar(20) NOT NULL,
  Pos_Kup_Id int NOT NULL,
  Pos_Kup_Pr_Id int NOT NULL,
  Pos_Kup_Aktivert datetime NULL,
  Pos_Kup_Oppr_Antall int NULL,
  Pos_Kup_Brukt_Antall int NULL,
  Pos_Kup_Merket_Brukt bit NULL,
  CONSTRAINT PK_PosKupong PRIMARY KEY (Pos_Kup_Ik_Ku_Id, Pos_Kup_KasseNr, Pos_Kup_Id)
)

CREATE TABLE PosKupongOrdrelinje (
  Pos_Kol_Ik_Ku_Id int NOT NULL,
  Pos_Kol_KasseNr varchar(20) NOT NULL,
  Pos_Kol_Kup_Id int NOT NULL,
  Pos_Kol_Ol_Id int NOT NULL,
  CONSTRAINT PK_PosKupongOrdrelinje PRIMARY KEY (Pos_Kol_Ik_Ku_Id, Pos_Kol_KasseNr, Pos_Kol_Kup_Id, Pos_Kol_Ol_Id),
  CONSTRAINT FK_PosKupongOrdrelinje_PosKupong FOREIGN KEY (Pos_Kol_Ik_Ku_Id, Pos_Kol_KasseNr, Pos_Kol_Kup_Id)
    REFERENCES PosKupong (Pos_Kup_Ik_Ku_Id, Pos_Kup_KasseNr, Pos_Kup_Id),
  CONSTRAINT FK_PosKupongOrdrelinje_PosOrdrelinje FOREIGN KEY (Pos_Kol_Ik_Ku_Id, Pos_Kol_KasseNr, Pos_Kol_Ol_Id)
    REFERENCES PosOrdrelinje (Pos_Ol_Ik_Ku_Id, Pos_Ol_KasseNr, Pos_Ol_Id)
)

CREATE TABLE PosSignatur (
  Pos_Si_Ik_Ku_Id int NOT NULL,
  Pos_Si_Kassenummer varchar(20) NOT NULL,
  Pos_Si_Id int NOT NULL,
  Pos_Si_Bilde image NULL,
  CONSTRAINT PK_PosSignatur PRIMARY KEY (Pos_Si_Ik_Ku_Id, Pos_Si_Kassenummer, Pos_Si_Id)
)

CREATE TABLE PosBetalingSignatur (
  Pos_Btsi_Ik_Ku_Id int NOT NULL,
  Pos_Btsi_KasseNr varchar(20) NOT NULL,
  Pos_Btsi_Bt_Id int NOT NULL,
  Pos_Btsi_Si_Id int NOT NULL,
  Pos_Btsi_Sit_Id int NULL,
  CONSTRAINT PK_PosBetalingSignatur PRIMARY KEY (Pos_Btsi_Ik_Ku_Id, Pos_Btsi_KasseNr, Pos_Btsi_Bt_Id, Pos_Btsi_Si_Id),
  CONSTRAINT FK_PosBetalingSignatur_PosBetaling FOREIGN KEY (Pos_Btsi_Ik_Ku_Id, Pos_Btsi_KasseNr, Pos_Btsi_Bt_Id)
    REFERENCES PosBetaling (Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Id),
  CONSTRAINT FK_PosBetalingSignatur_PosSignatur FOREIGN KEY (Pos_Btsi_Ik_Ku_Id, Pos_Btsi_KasseNr, Pos_Btsi_Si_Id)
    REFERENCES PosSignatur (Pos_Si_Ik_Ku_Id, Pos_Si_Kassenummer, Pos_Si_Id)
)

CREATE TABLE PosOrdreSignatur (
  Pos_Orsi_Ik_Ku_Id int NOT NULL,
  Pos_Orsi_KasseNr varchar(20) NOT NULL,
  Pos_Orsi_Or_Id int NOT NULL,
  Pos_Orsi_Si_Id int NOT NULL,
  Pos_Orsi_Sit_Id int NULL,
  CONSTRAINT PK_PosOrdreSignatur PRIMARY KEY (Pos_Orsi_Ik_Ku_Id, Pos_Orsi_KasseNr, Pos_Orsi_Or_Id, Pos_Orsi_Si_Id),
  CONSTRAINT FK_PosOrdreSignatur_PosOrdre FOREIGN KEY (Pos_Orsi_Ik_Ku_Id, Pos_Orsi_KasseNr, Pos_Orsi_Or_Id)
    REFERENCES PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id),
  CONSTRAINT FK_PosOrdreSignatur_PosSignatur FOREIGN KEY (Pos_Orsi_Ik_Ku_Id, Pos_Orsi_KasseNr, Pos_Orsi_Si_Id)
    REFERENCES PosSignatur (Pos_Si_Ik_Ku_Id, Pos_Si_Kassenummer, Pos_Si_Id)
)

CREATE TABLE PosOppgjorSignatur (
  Pos_Opsi_Ik_Ku_Id int NOT NULL,
  Pos_Opsi_KasseNr varchar(20) NOT NULL,
  Pos_Opsi_Op_Id int NOT NULL,
  Pos_Opsi_Si_Id int NOT NULL,
  Pos_Opsi_Sit_Id int NULL,
  CONSTRAINT PK_PosOppgjorSignatur PRIMARY KEY (Pos_Opsi_Ik_Ku_Id, Pos_Opsi_KasseNr, Pos_Opsi_Op_Id, Pos_Opsi_Si_Id),
  CONSTRAINT FK_PosOppgjorSignatur_PosOppgjor FOREIGN KEY (Pos_Opsi_Ik_Ku_Id, Pos_Opsi_KasseNr, Pos_Opsi_Op_Id)
    REFERENCES PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id),
  CONSTRAINT FK_PosOppgjorSignatur_PosSignatur FOREIGN KEY (Pos_Opsi_Ik_Ku_Id, Pos_Opsi_KasseNr, Pos_Opsi_Si_Id)
    REFERENCES PosSignatur (Pos_Si_Ik_Ku_Id, Pos_Si_Kassenummer, Pos_Si_Id)
)

CREATE TABLE PosVedlegg (
  Pos_Vlg_Ik_Ku_Id int NOT NULL,
  Pos_Vlg_KasseNr varchar(20) NOT NULL,
  Pos_Vlg_Id int NOT NULL,
  Pos_Vlg_Op_Id int NOT NULL,
  Pos_Vlg_Filnavn varchar(255) NOT NULL,
  Pos_Vlg_Innhold image NULL,
  CONSTRAINT PK_PosVedlegg PRIMARY KEY (Pos_Vlg_Ik_Ku_Id, Pos_Vlg_KasseNr, Pos_Vlg_Id),
  CONSTRAINT FK_PosVedlegg_PosOppgjor FOREIGN KEY (Pos_Vlg_Ik_Ku_Id, Pos_Vlg_KasseNr, Pos_Vlg_Op_Id)
    REFERENCES PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id)
)

CREATE TABLE PosOrdreRetur (
  Pos_Ore_Or_Ik_Ku_Id int NOT NULL,
  Pos_Ore_Or_KasseNr varchar(20) NOT NULL,
  Pos_Ore_Id int NOT NULL,
  Pos_Ore_Or_Id int NOT NULL,
  Pos_Ore_Retur_Or_Id int NULL,
  Pos_Ore_Retur_Avdnr varchar(10) NULL,
  Pos_Ore_Retur_Kassenr varchar(10) NULL,
  CONSTRAINT PK_PosOrdreRetur PRIMARY KEY (Pos_Ore_Or_Ik_Ku_Id, Pos_Ore_Or_KasseNr, Pos_Ore_Id),
  CONSTRAINT FK_PosOrdreRetur_PosOrdre FOREIGN KEY (Pos_Ore_Or_Ik_Ku_Id, Pos_Ore_Or_KasseNr, Pos_Ore_Or_Id)
    REFERENCES PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id)
)

CREATE TABLE PosVippsBetaling (
  Pos_Vib_Bt_Ik_Ku_Id int NOT NULL,
  Pos_Vib_Bt_KasseNr varchar(20) NOT NULL,
  Pos_Vib_Bt_Id int NOT NULL,
  Pos_Vib_Referanse varchar(50) NULL,
  Pos_Vib_Ordrenummer varchar(50) NULL,
  CONSTRAINT PK_PosVippsBetaling PRIMARY KEY (Pos_Vib_Bt_Ik_Ku_Id, Pos_Vib_Bt_KasseNr, Pos_Vib_Bt_Id),
  CONSTRAINT FK_PosVippsBetaling_PosBetaling FOREIGN KEY (Pos_Vib_Bt_Ik_Ku_Id, Pos_Vib_Bt_KasseNr, Pos_Vib_Bt_Id)
    REFERENCES PosBetaling (Pos_Bt_Ik_Ku_Id, Pos_Bt_KasseNr, Pos_Bt_Id)
)

CREATE TABLE Posbeholdningstransaksjoner (
  Pbt_Id int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_Posbeholdningstransaksjoner PRIMARY KEY,
  Pbt_Ik_Ku_Id int NOT NULL,
  Pbt_Va_Id char(15) NOT NULL,
  Pbt_Antall float NOT NULL
)
go

-- The chain's registers of what tills count and write in. A till's own number for something is the chain's.

CREATE TABLE PosLoggtype (
  Pos_Lt_Id int NOT NULL CONSTRAINT PK_PosLoggtype PRIMARY KEY,
  Pos_Lt_Navn char(50) NOT NULL
)

CREATE TABLE PosGrunntype (
  Pos_Gt_Id int NOT NULL CONSTRAINT PK_PosGrunntype PRIMARY KEY,
  Pos_Gt_Navn varchar(50) NOT NULL
)

CREATE TABLE PosGrunn (
  Pos_Gr_Id int NOT NULL CONSTRAINT PK_PosGrunn PRIMARY KEY,
  Pos_Gr_Gt_Id int NULL CONSTRAINT FK_PosGrunn_PosGrunntype REFERENCES PosGrunntype (Pos_Gt_Id),
  Pos_Gr_Navn varchar(50) NOT NULL,
  Pos_Gr_Utskriftsflagg tinyint NOT NULL,
  Pos_Gr_Synlig_Kasse bit NULL
)

CREATE TABLE PosPengeenhet (
  Pos_Pe_Id int NOT NULL CONSTRAINT PK_PosPengeenhet PRIMARY KEY,
  Pos_Pe_Vu_Id char(3) NOT NULL,
  Pos_Pe_Navn varchar(30) NOT NULL,
  Pos_Pe_Verdi float NOT NULL,
  Pos_Pe_Mynt bit NOT NULL,
  Pos_Pe_Bilde image NULL
)

CREATE TABLE PosKortutsteder (
  Pos_Ko_Id int NOT NULL CONSTRAINT PK_PosKortutsteder PRIMARY KEY,
  Pos_Ko_Navn varchar(50) NOT NULL
)

CREATE TABLE PosBetalingform (
  Pos_Bf_Id int NOT NULL CONSTRAINT PK_PosBetalingform PRIMARY KEY,
  Pos_Bf_Ko_Id int NULL CONSTRAINT FK_PosBetalingform_PosKortutsteder REFERENCES PosKortutsteder (Pos_Ko_Id),
  Pos_Bf_Navn char(50) NOT NULL,
  Pos_Bf_Aktiv tinyint NOT NULL,
  Pos_Bf_Skuff tinyint NOT NULL,
  Pos_Bf_Synlig tinyint NOT NULL,
  Pos_Bf_Paavirkersalg tinyint NOT NULL,
  Pos_Bf_Vu_Id char(3) NOT NULL,
  Pos_Bf_Min_Belop decimal(18, 4) NULL,
  Pos_Bf_Maks_Belop decimal(18, 4) NULL,
  Pos_Bf_Er_Kontant bit NULL
)
go

-- The tills' side records.

CREATE TABLE PosEkstraAnsattOppgjor (
  Peao_Ik_Ku_Id int NOT NULL,
  Peao_KasseNr varchar(20) NOT NULL,
  Peao_Id int NOT NULL,
  Peao_Op_Id int NOT NULL,
  Peao_Ika_Id char(10) NOT NULL,
  Peao_Utlev_Ika_Id char(10) NULL,
  Peao_Navn varchar(50) NOT NULL,
  Peao_Tidspunkt datetime NOT NULL,
  CONSTRAINT PK_PosEkstraAnsattOppgjor PRIMARY KEY (Peao_Ik_Ku_Id, Peao_KasseNr, Peao_Id)
)

CREATE TABLE PosLogg (
  Plo_Ik_Ku_Id int NOT NULL,
  Plo_KasseNr varchar(20) NOT NULL,
  Plo_Id int NOT NULL,
  Plo_Op_Id int NULL,
  Plo_Ika_Id char(10) NOT NULL,
  Plo_Lt_Id int NOT NULL,
  Plo_Tidspunkt datetime NOT NULL,
  Plo_Merknader varchar(255) NULL,
  CONSTRAINT PK_PosLogg PRIMARY KEY (Plo_Ik_Ku_Id, Plo_KasseNr, Plo_Id)
)

CREATE TABLE PosVaremottak (
  Pvm_Ik_Ku_Id int NOT NULL,
  Pvm_KasseNr varchar(20) NOT NULL,
  Pvm_Id int NOT NULL,
  Pvm_Op_Id int NOT NULL,
  Pvm_Ika_Id char(10) NOT NULL,
  Pvm_Tidspunkt smalldatetime NOT NULL,
  Pvm_Referanse varchar(30) NULL,
  CONSTRAINT PK_PosVaremottak PRIMARY KEY (Pvm_Ik_Ku_Id, Pvm_KasseNr, Pvm_Id)
)

CREATE TABLE PosVaremottaklinje (
  Pvml_Ik_Ku_Id int NOT NULL,
  Pvml_KasseNr varchar(20) NOT NULL,
  Pvml_Id int NOT NULL,
  Pvml_Vm_Id int NOT NULL,
  Pvml_Va_Id char(15) NOT NULL,
  Pvml_Antall float NULL,
  Pvml_Pris float NULL,
  CONSTRAINT PK_PosVaremottaklinje PRIMARY KEY (Pvml_Ik_Ku_Id, Pvml_KasseNr, Pvml_Id)
)

CREATE TABLE PosVarebestilling (
  Pvb_Ik_Ku_Id int NOT NULL,
  Pvb_KasseNr varchar(20) NOT NULL,
  Pvb_Id int NOT NULL,
  Pvb_Op_Id int NOT NULL,
  Pvb_Ika_Id char(10) NOT NULL,
  Pvb_Tidspunkt smalldatetime NOT NULL,
  Pvb_Referanse varchar(30) NULL,
  Pvb_Status int NULL,
  CONSTRAINT PK_PosVarebestilling PRIMARY KEY (Pvb_Ik_Ku_Id, Pvb_KasseNr, Pvb_Id)
)

CREATE TABLE PosVarebestillinglinje (
  Pvbl_Ik_Ku_Id int NOT NULL,
  Pvbl_KasseNr varchar(20) NOT NULL,
  Pvbl_Id int NOT NULL,
  Pvbl_Vb_Id int NOT NULL,
  Pvbl_Va_Id char(15) NOT NULL,
  Pvbl_Antall float NULL,
  CONSTRAINT PK_PosVarebestillinglinje PRIMARY KEY (Pvbl_Ik_Ku_Id, Pvbl_KasseNr, Pvbl_Id)
)

CREATE TABLE PosUtbetaling (
  Pub_Ik_Ku_Id int NOT NULL,
  Pub_KasseNr varchar(20) NOT NULL,
  Pub_Bt_Id int NOT NULL,
  Pub_Kundenavn varchar(25) NULL,
  Pub_Telefon varchar(30) NULL,
  Pub_Epost varchar(255) NULL,
  Pub_Adresse varchar(512) NULL,
  Pub_Konto char(11) NULL,
  Pub_Status tinyint NOT NULL,
  CONSTRAINT PK_PosUtbetaling PRIMARY KEY (Pub_Ik_Ku_Id, Pub_KasseNr, Pub_Bt_Id)
)

CREATE TABLE PosTimer (
  Pti_Ik_Ku_Id int NOT NULL,
  Pti_KasseNr varchar(20) NOT NULL,
  Pti_Id int NOT NULL,
  Pti_Ika_Id char(10) NOT NULL,
  Pti_Godkjenn_Gr_Id int NULL,
  Pti_TidInn smalldatetime NOT NULL,
  Pti_TidUt smalldatetime NULL,
  Pti_Tekst varchar(255) NULL,
  Pti_InnMetode tinyint NOT NULL,
  Pti_UtMetode tinyint NULL,
  Pti_KorrigertTidInn smalldatetime NULL,
  Pti_KorrigertTidUt smalldatetime NULL,
  Pti_Status tinyint NOT NULL,
  Pti_Manuell_Tk_Id int NULL,
  Pti_TrekkPause tinyint NULL,
  Pti_Syk_Gr_Id int NULL,
  CONSTRAINT PK_PosTimer PRIMARY KEY (Pti_Ik_Ku_Id, Pti_KasseNr, Pti_Id)
)

CREATE TABLE PosTimerPrKode (
  Ptpk_Ik_Ku_Id int NOT NULL,
  Ptpk_KasseNr varchar(20) NOT NULL,
  Ptpk_Ti_Id int NOT NULL,
  Ptpk_Tk_Id int NOT NULL,
  Ptpk_Tid smalldatetime NULL,
  CONSTRAINT PK_PosTimerPrKode PRIMARY KEY (Ptpk_Ik_Ku_Id, Ptpk_KasseNr, Ptpk_Ti_Id, Ptpk_Tk_Id)
)
go

-- The log of the fetch.

CREATE TABLE dts_loggtype (
  dlt_id int NOT NULL CONSTRAINT PK_dts_loggtype PRIMARY KEY,
  dlt_navn varchar(50) NOT NULL
)

CREATE TABLE dts_logg (
  dl_id int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_dts_logg PRIMARY KEY,
  dl_dlt_id int NOT NULL CONSTRAINT FK_dts_logg_dts_loggtype REFERENCES dts_loggtype (dlt_id),
  dl_ik_ku_id int NOT NULL,
  dl_kassenr varchar(20) NOT NULL,
  dl_tidspunkt datetime NOT NULL,
  dl_dp_id int NOT NULL,
  dl_info varchar(255) NULL
)
go

-- Staging tables that belong to the back office itself, and those whose later columns its upgrades have brought.

CREATE TABLE Temp_Oppgjorbetaling_Import (
  tobi_op_id int NOT NULL,
  tobi_ik_ku_id int NOT NULL,
  tobi_kassenr varchar(20) COLLATE Database_Default NOT NULL,
  tobi_bf_id int NOT NULL,
  tobi_belop float NOT NULL,
  tobi_opptalt float NOT NULL,
  tobi_inserted datetime NOT NULL,
  tobi_unid uniqueidentifier NULL,
  tobi_tidspunktferdig datetime NULL
)
CREATE INDEX t_oppgjorbetaling_i ON Temp_Oppgjorbetaling_Import (tobi_op_id)

CREATE TABLE Temp_Ordre_Import (
  toi_or_id int NOT NULL,
  toi_ik_ku_id int NOT NULL,
  toi_kassenr varchar(20) COLLATE Database_Default NOT NULL,
  toi_ku_id int NOT NULL,
  toi_op_id int NOT NULL,
  toi_ika_id char(10) COLLATE Database_Default NOT NULL,
  toi_ra_id char(20) COLLATE Database_Default NULL,
  toi_rabatt_ika_id char(10) COLLATE Database_Default NULL,
  toi_tidspunkt datetime NOT NULL,
  toi_tidspunktferdig datetime NOT NULL,
  toi_status int NOT NULL,
  toi_rekvisisjonsnummer varchar(30) COLLATE Database_Default NULL,
  toi_postnr varchar(10) COLLATE Database_Default NULL,
  toi_telefon varchar(20) COLLATE Database_Default NULL,
  toi_salgssum float NULL,
  toi_rabatt float NULL,
  toi_inserted datetime NOT NULL,
  toi_unid uniqueidentifier NULL,
  toi_statistikk_ika_id varchar(10) NULL,
  toi_varetelling bit NULL,
  toi_Or_Torvik_Or_Id int NULL,
  toi_Or_EAN13 varchar(13) NULL
)
CREATE INDEX t_ordre_i ON Temp_Ordre_Import (toi_or_id)

CREATE TABLE Temp_Ordrelinje_Import (
  toli_ol_id int NOT NULL,
  toli_ik_ku_id int NOT NULL,
  toli_kassenr varchar(20) COLLATE Database_Default NOT NULL,
  toli_or_id int NOT NULL,
  toli_va_id char(15) COLLATE Database_Default NOT NULL,
  toli_antall float NOT NULL,
  toli_rabatt float NOT NULL,
  toli_salgspris float NOT NULL,
  toli_mvasats float NOT NULL,
  toli_kostpris float NOT NULL,
  toli_slettet bit NULL,
  toli_mersalg bit NOT NULL,
  toli_status tinyint NULL,
  toli_inserted datetime NOT NULL,
  toli_unid uniqueidentifier NULL,
  toli_torvik_or_id int NULL,
  toli_torvik_ku_id int NULL,
  toli_visningsvare bit NULL,
  toli_GjeldendePris float NULL
)
CREATE INDEX t_ordrelinje_i ON Temp_Ordrelinje_Import (toli_ol_id)

CREATE TABLE Temp_VippsBetaling_Import (
  tvib_Bt_Or_Ik_Ku_Id int NOT NULL,
  tvib_Bt_Or_KasseNr varchar(20) NOT NULL,
  tvib_BT_ID int NOT NULL,
  tvib_REFERANSE varchar(50) NULL,
  tvib_ORDRENUMMER varchar(50) NULL,
  tvib_unid uniqueidentifier NULL
)

CREATE TABLE Temp_PosOrdreRetur_Import (
  ti_ORE_ID int NOT NULL,
  ti_ORE_OR_ID int NOT NULL,
  ti_ORE_OR_IK_KU_ID int NOT NULL,
  ti_ORE_OR_KASSENR varchar(20) NOT NULL,
  ti_ORE_RETUR_OR_ID int NULL,
  ti_ORE_RETUR_AVDNR varchar(10) NULL,
  ti_ORE_RETUR_KASSENR varchar(10) NULL,
  ti_inserted datetime NOT NULL,
  ti_unid uniqueidentifier NULL
)

CREATE TABLE Temp_Kupong_Import (
  tki_Kup_Id int NOT NULL,
  tki_Kup_Ik_Ku_ID int NOT NULL,
  tki_Kup_Kassenr varchar(20) NOT NULL,
  tki_Kup_Pr_ID int NOT NULL,
  tki_Kup_Aktivert datetime NULL,
  tki_Kup_Oppr_Antall int NULL,
  tki_Kup_Brukt_Antall int NULL,
  tki_Kup_Merket_Brukt bit NULL,
  tki_inserted datetime NOT NULL,
  tki_unid uniqueidentifier NULL
)

CREATE TABLE Temp_KupongOrdrelinje_Import (
  tkol_Kol_Kup_Id int NOT NULL,
  tkol_Kol_Kup_Ik_Ku_ID int NOT NULL,
  tkol_Kol_Kup_Kassenr varchar(20) NOT NULL,
  tkol_Kup_Ol_Id int NOT NULL,
  tkol_Kup_Ol_Or_Ik_Ku_ID int NOT NULL,
  tkol_Kup_Ol_Or_KasseNr varchar(20) NOT NULL,
  tkol_inserted datetime NOT NULL,
  tkol_unid uniqueidentifier NULL
)

CREATE TABLE temp_POSSIGNATUR_Import (
  imp_Pos_Si_Ik_Ku_ID int NOT NULL,
  imp_Pos_Si_Kassenummer varchar(20) NOT NULL,
  imp_Pos_Si_ID int NOT NULL,
  imp_Pos_Si_Bilde image NULL,
  imp_Pos_Si_Inserted datetime NOT NULL,
  imp_Pos_Si_unid uniqueidentifier NULL
)

CREATE TABLE temp_POSBETALINGSIGNATUR_Import (
  imp_Pos_Btsi_Bt_Id int NOT NULL,
  imp_Pos_Btsi_Bt_Or_Ik_Ku_ID int NOT NULL,
  imp_Pos_Btsi_Bt_Or_KasseNr varchar(20) NOT NULL,
  imp_Pos_Btsi_Si_ID int NOT NULL,
  imp_Pos_Btsi_Sit_ID int NULL,
  imp_Pos_Btsi_Inserted datetime NOT NULL,
  imp_Pos_Btsi_Unid uniqueidentifier NULL
)

CREATE TABLE temp_POSORDRESIGNATUR_Import (
  imp_Pos_Orsi_Or_Id int NOT NULL,
  imp_Pos_Orsi_Or_Ik_Ku_ID int NOT NULL,
  imp_Pos_Orsi_Or_KasseNr varchar(20) NOT NULL,
  imp_Pos_Orsi_Si_ID int NOT NULL,
  imp_Pos_Orsi_Sit_ID int NULL,
  imp_Pos_Orsi_Inserted datetime NOT NULL,
  imp_Pos_Orsi_unid uniqueidentifier NULL
)

CREATE TABLE temp_POSOPPGJORSIGNATUR_Import (
  imp_Pos_Opsi_Op_Id int NOT NULL,
  imp_Pos_Opsi_Op_Ik_Ku_ID int NOT NULL,
  imp_Pos_Opsi_Op_KasseNr varchar(20) NOT NULL,
  imp_Pos_Opsi_Si_ID int NOT NULL,
  imp_Pos_Opsi_Sit_ID int NULL,
  imp_Pos_Opsi_Inserted datetime NOT NULL,
  imp_Pos_Opsi_unid uniqueidentifier NULL
)

CREATE TABLE temp_POSVEDLEGG_import (
  imp_Pos_Vlg_ID int NOT NULL,
  imp_Pos_Vlg_Op_Id int NOT NULL,
  imp_Pos_Vlg_Op_Ik_Ku_ID int NOT NULL,
  imp_Pos_Vlg_Op_KasseNr varchar(20) NOT NULL,
  imp_Pos_Vlg_Filnavn varchar(255) NOT NULL,
  imp_Pos_Vlg_Innhold image NULL,
  imp_Pos_Vlg_Inserted datetime NOT NULL,
  imp_Pos_Vlg__Unid uniqueidentifier NULL
)
go

INSERT dts_loggtype VALUES
  (0, 'Overføring startet'), (1, 'Tilkoblet'), (2, 'Data lest inn'), (3, 'Data overført'), (4, 'Feil ved innlesing'),
  (5, 'Timer oppdatert'), (6, 'Feil ved overføring'), (7, 'Overføring fullført')
go

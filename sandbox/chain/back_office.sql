-- The back office of a retail chain, as far as the tills concern it: its registers. Customers, departments, tills, staff,
-- items with their prices, offers and discounts. The other back_office scripts follow: back_office_pos (what the tills
-- have sold), back_office_sales (what is made of it), back_office_procedures (posting a fetch), back_office_send (what
-- goes to the tills). Plain T-SQL for SQL Server 2016 and later; run them in a new, empty database, in this order.

CREATE TABLE Innstillinger (
  In_Id int NOT NULL CONSTRAINT PK_Innstillinger PRIMARY KEY,
  In_DbVersjon float NOT NULL,
  In_DagligJobbFlagg int NULL,
  In_Anonym_Ku_ID int NULL,
  In_KlikkOgHent_Ku_ID int NULL,
  In_Hoved_Ik_Ku_Id int NULL,
  In_Rpos_Or_Status_Import int NOT NULL CONSTRAINT DF_Innstillinger_Rpos_Or_Status DEFAULT (0),
  In_Kredittsalg_An_ID char(10) NULL,
  In_Direkteordre_Le_ID int NULL,
  In_Fakturagebyr_Va_ID char(15) NULL,
  In_SendValutaTilkasse bit NULL,
  In_Slett_Va_ID char(15) NULL,
  In_Gavekort_Va_ID char(15) NULL
)

CREATE TABLE Land (
  La_Id int NOT NULL CONSTRAINT PK_Land PRIMARY KEY,
  La_Navn varchar(25) NOT NULL
)

CREATE TABLE Poststed (
  Po_Id varchar(15) NOT NULL,
  Po_La_Id int NOT NULL CONSTRAINT FK_Poststed_Land REFERENCES Land (La_Id),
  Po_Navn varchar(50) NOT NULL,
  CONSTRAINT PK_Poststed PRIMARY KEY (Po_Id, Po_La_Id)
)

CREATE TABLE Valuta (
  Vu_ID char(3) NOT NULL CONSTRAINT PK_Valuta PRIMARY KEY,
  Vu_Navn char(50) NOT NULL,
  Vu_Kurs float NOT NULL,
  Vu_Forhold int NOT NULL
)

CREATE TABLE Priskategori (
  Pi_ID int NOT NULL CONSTRAINT PK_Priskategori PRIMARY KEY,
  Pi_Navn varchar(20) NOT NULL,
  Pi_InklMva bit NOT NULL
)

-- Buyers, departments and warehouses alike. Type 0 is none of the tills' business.
CREATE TABLE Kunde (
  Ku_Id int NOT NULL CONSTRAINT PK_Kunde PRIMARY KEY,
  Ku_Navn varchar(100) NOT NULL,
  Ku_Adresse1 varchar(100) NULL,
  Ku_Adresse2 varchar(100) NULL,
  Ku_Po_Id varchar(15) NULL,
  Ku_La_Id int NULL,
  Ku_Telefon varchar(20) NULL,
  Ku_Telefax varchar(20) NULL,
  Ku_Type int NOT NULL CONSTRAINT DF_Kunde_Type DEFAULT (0),
  Ku_Sperret bit NOT NULL CONSTRAINT DF_Kunde_Sperret DEFAULT (0),
  Ku_UpdDato datetime NOT NULL CONSTRAINT DF_Kunde_UpdDato DEFAULT (GETDATE()),
  Ku_Pi_Id int NULL CONSTRAINT FK_Kunde_Priskategori REFERENCES Priskategori (Pi_ID),
  Ku_Lb_Id int NULL,
  Ku_Bb_Id int NULL,
  Ku_Kav_Id int NULL,
  Ku_Mvaberegnes tinyint NOT NULL CONSTRAINT DF_Kunde_Mvaberegnes DEFAULT (1),
  Ku_FjernGebyr bit NOT NULL CONSTRAINT DF_Kunde_FjernGebyr DEFAULT (0),
  CONSTRAINT FK_Kunde_Poststed FOREIGN KEY (Ku_Po_Id, Ku_La_Id) REFERENCES Poststed (Po_Id, Po_La_Id)
)

CREATE TABLE KundeGruppe (
  Kg_Id int NOT NULL CONSTRAINT PK_KundeGruppe PRIMARY KEY,
  Kg_Navn varchar(50) NOT NULL
)

CREATE TABLE KundeKundegruppe (
  Kk_Ku_Id int NOT NULL CONSTRAINT FK_KundeKundegruppe_Kunde REFERENCES Kunde (Ku_Id),
  Kk_Kg_Id int NOT NULL CONSTRAINT FK_KundeKundegruppe_KundeGruppe REFERENCES KundeGruppe (Kg_Id),
  CONSTRAINT PK_KundeKundegruppe PRIMARY KEY (Kk_Ku_Id, Kk_Kg_Id)
)

-- Which customer or department stands in which relation to which other; a department is supplied by its warehouse.
CREATE TABLE KundeRelasjon (
  Krl_Fra_Ku_Id int NOT NULL CONSTRAINT FK_KundeRelasjon_Fra REFERENCES Kunde (Ku_Id),
  Krl_Til_Ku_Id int NOT NULL CONSTRAINT FK_KundeRelasjon_Til REFERENCES Kunde (Ku_Id),
  Krl_Type varchar(10) NOT NULL,
  CONSTRAINT PK_KundeRelasjon PRIMARY KEY (Krl_Fra_Ku_Id, Krl_Til_Ku_Id, Krl_Type)
)

CREATE TABLE Internkunde (
  Ik_Ku_Id int NOT NULL CONSTRAINT PK_Internkunde PRIMARY KEY
    CONSTRAINT FK_Internkunde_Kunde REFERENCES Kunde (Ku_Id),
  Ik_Avdelingsnummer char(10) NOT NULL CONSTRAINT UQ_Internkunde_Avdelingsnummer UNIQUE,
  Ik_Modemtelefon varchar(20) NULL,
  Ik_AntallKasser int NULL,
  Ik_KasseBong1 varchar(50) NULL,
  Ik_KasseBong2 varchar(50) NULL,
  Ik_KasseBong3 varchar(50) NULL,
  Ik_KasseBong4 varchar(50) NULL,
  Ik_Foretaksnummer varchar(20) NULL,
  Ik_Properties int NOT NULL CONSTRAINT DF_Internkunde_Properties DEFAULT (0),
  Ik_Butikktype int NULL,
  Ik_PlukkPrioritet int NULL,
  Ik_FaktorForLagernivaa float NULL,
  Ik_Fakturaregel int NULL,
  Ik_TimeImportType int NULL,
  Ik_MvaSats float NOT NULL CONSTRAINT DF_Internkunde_MvaSats DEFAULT (25)
)

CREATE TABLE KasseType (
  Kt_Id int NOT NULL CONSTRAINT PK_KasseType PRIMARY KEY,
  Kt_Navn varchar(50) NOT NULL
)

CREATE TABLE Internkundekasse (
  Ikk_Ik_Ku_Id int NOT NULL CONSTRAINT FK_Internkundekasse_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Ikk_Kassenummer char(10) NOT NULL,
  Ikk_Kt_Id int NOT NULL CONSTRAINT FK_Internkundekasse_KasseType REFERENCES KasseType (Kt_Id),
  Ikk_Server varchar(128) NOT NULL,
  Ikk_Database varchar(128) NOT NULL,
  Ikk_Brukernavn varchar(128) NULL,
  Ikk_Passord varchar(128) NULL,
  Ikk_AutentiseringType int NULL,
  Ikk_Provider int NULL,
  Ikk_SynkVersjon int NULL,
  Ikk_Aktiv bit NOT NULL CONSTRAINT DF_Internkundekasse_Aktiv DEFAULT (1),
  Ikk_AntIkkeOppgjorteSalg int NULL,
  Ikk_SistHentetOppgjor datetime NULL,
  CONSTRAINT PK_Internkundekasse PRIMARY KEY (Ikk_Ik_Ku_Id, Ikk_Kassenummer)
)

CREATE TABLE POSTIMEPROFIL (
  Pos_Tp_Id int NOT NULL CONSTRAINT PK_POSTIMEPROFIL PRIMARY KEY,
  Pos_Tp_Navn varchar(30) NOT NULL,
  Pos_Tp_Stemplingsregel int NULL
)

CREATE TABLE InternKundeAnsatt (
  Ika_Id char(10) NOT NULL CONSTRAINT PK_InternKundeAnsatt PRIMARY KEY,
  Ika_Ik_Ku_Id int NOT NULL CONSTRAINT FK_InternKundeAnsatt_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Ika_Navn varchar(50) NOT NULL,
  Ika_Visningsnavn varchar(50) NULL,
  Ika_Kortnummer varchar(30) NULL,
  Ika_Aktiv tinyint NOT NULL CONSTRAINT DF_InternKundeAnsatt_Aktiv DEFAULT (1),
  Ika_Rabatt float NOT NULL CONSTRAINT DF_InternKundeAnsatt_Rabatt DEFAULT (0),
  Ika_RabattKunPaaOrdPris tinyint NOT NULL CONSTRAINT DF_InternKundeAnsatt_RabattKun DEFAULT (0),
  Ika_Nivaa tinyint NOT NULL CONSTRAINT DF_InternKundeAnsatt_Nivaa DEFAULT (0),
  Ika_AnsattDato datetime NULL,
  Ika_Pos_Tp_Id int NULL CONSTRAINT FK_InternKundeAnsatt_POSTIMEPROFIL REFERENCES POSTIMEPROFIL (Pos_Tp_Id),
  Ika_Pi_Id int NULL CONSTRAINT FK_InternKundeAnsatt_Priskategori REFERENCES Priskategori (Pi_ID),
  Ika_Maks_Rabatt decimal(18, 4) NULL
)
go

CREATE TABLE Leverandor (
  Le_Id int NOT NULL CONSTRAINT PK_Leverandor PRIMARY KEY,
  Le_Navn varchar(50) NOT NULL,
  Le_PostAdr varchar(50) NULL,
  Le_PostPostnr varchar(10) NULL,
  Le_PostSted varchar(50) NULL,
  Le_Post_La_Id int NULL CONSTRAINT FK_Leverandor_Land REFERENCES Land (La_Id),
  Le_Telefon varchar(20) NULL,
  Le_Telefax varchar(20) NULL,
  Le_Email varchar(30) NULL
)

CREATE TABLE Varegruppe (
  Vg_Id char(4) NOT NULL CONSTRAINT PK_Varegruppe PRIMARY KEY,
  Vg_Navn varchar(30) NOT NULL,
  Vg_Hoved_Vg_ID char(4) NULL CONSTRAINT FK_Varegruppe_Hoved REFERENCES Varegruppe (Vg_Id),
  Vg_Root_Vg_ID char(4) NULL CONSTRAINT FK_Varegruppe_Root REFERENCES Varegruppe (Vg_Id)
)

-- A product comes in items of several colours and sizes.
CREATE TABLE Produkt (
  P_Id varchar(20) NOT NULL CONSTRAINT PK_Produkt PRIMARY KEY,
  P_Navn varchar(100) NOT NULL,
  P_InfoIntern varchar(1024) NULL,
  P_InfoEkstern varchar(1024) NULL,
  P_InfoRegel tinyint NULL
)

CREATE TABLE Vare (
  Va_Id char(15) NOT NULL CONSTRAINT PK_Vare PRIMARY KEY,
  Va_Navn varchar(50) NOT NULL,
  Va_Kostpris float NOT NULL,
  Va_Pris float NOT NULL,
  Va_VeilPris float NULL,
  Va_Mvasats float NOT NULL CONSTRAINT DF_Vare_Mvasats DEFAULT (25),
  Va_Utgaatt smallint NOT NULL CONSTRAINT DF_Vare_Utgaatt DEFAULT (0),
  Va_Slettet bit NOT NULL CONSTRAINT DF_Vare_Slettet DEFAULT (0),
  Va_Nummertype varchar(20) NULL,
  Va_Vg_Id char(4) NULL CONSTRAINT FK_Vare_Varegruppe REFERENCES Varegruppe (Vg_Id),
  Va_Le_Id int NULL CONSTRAINT FK_Vare_Leverandor REFERENCES Leverandor (Le_Id),
  Va_P_ID varchar(20) NULL CONSTRAINT FK_Vare_Produkt REFERENCES Produkt (P_Id),
  Va_Fargenavn varchar(50) NULL,
  Va_Storrelsenavn varchar(50) NULL,
  Va_Minlager float NULL,
  Va_Makslager float NULL,
  Va_Prislapp int NULL,
  Va_MaksRabatt int NULL,
  Va_SendTilButikkKasser bit NOT NULL CONSTRAINT DF_Vare_SendTilButikkKasser DEFAULT (0)
)

CREATE TABLE VareAlias (
  Vr_Id varchar(50) NOT NULL,
  Vr_Va_Id char(15) NOT NULL CONSTRAINT FK_VareAlias_Vare REFERENCES Vare (Va_Id),
  Vr_Navn varchar(20) NULL,
  CONSTRAINT PK_VareAlias PRIMARY KEY (Vr_Id, Vr_Va_Id)
)

CREATE TABLE Delvare (
  Dv_Hoved_Va_ID char(15) NOT NULL CONSTRAINT FK_Delvare_Hovedvare REFERENCES Vare (Va_Id),
  Dv_Delvare_Va_ID char(15) NOT NULL CONSTRAINT FK_Delvare_Vare REFERENCES Vare (Va_Id),
  Dv_Antall float NULL,
  Dv_Pris float NULL,
  Dv_Utskriftsregel int NULL,
  CONSTRAINT PK_Delvare PRIMARY KEY (Dv_Hoved_Va_ID, Dv_Delvare_Va_ID)
)

-- Items with a special place in a department, by type: EKS are offered beside other sales.
CREATE TABLE Kundevare (
  Kv_Ik_Ku_Id int NOT NULL CONSTRAINT FK_Kundevare_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  Kv_Va_Id char(15) NOT NULL CONSTRAINT FK_Kundevare_Vare REFERENCES Vare (Va_Id),
  Kv_Kvt_Id char(3) NOT NULL,
  Kv_FraDato datetime NOT NULL,
  Kv_TilDato datetime NOT NULL,
  CONSTRAINT PK_Kundevare PRIMARY KEY (Kv_Ik_Ku_Id, Kv_Va_Id, Kv_Kvt_Id, Kv_FraDato)
)

CREATE TABLE Pris (
  Ps_Va_Id char(15) NOT NULL CONSTRAINT FK_Pris_Vare REFERENCES Vare (Va_Id),
  Ps_Pi_Id int NOT NULL CONSTRAINT FK_Pris_Priskategori REFERENCES Priskategori (Pi_ID),
  Ps_Prisen float NOT NULL,
  Ps_UpdDato datetime NOT NULL CONSTRAINT DF_Pris_UpdDato DEFAULT (GETDATE()),
  CONSTRAINT PK_Pris PRIMARY KEY (Ps_Va_Id, Ps_Pi_Id)
)
go

CREATE TABLE PristilbudStatus (
  Pst_Id int NOT NULL CONSTRAINT PK_PristilbudStatus PRIMARY KEY,
  Pst_Navn varchar(50) NOT NULL
)

CREATE TABLE Pristilbud (
  Pr_Id int NOT NULL CONSTRAINT PK_Pristilbud PRIMARY KEY,
  Pr_Navn varchar(50) NOT NULL,
  Pr_FraDato datetime NOT NULL,
  Pr_TilDato datetime NOT NULL,
  Pr_Type int NOT NULL,
  Pr_Beregningsmetode int NOT NULL,
  Pr_Fast_Rabatt float NULL,
  Pr_GjelderAlleAvd bit NOT NULL,
  Pr_Pst_Id int NOT NULL CONSTRAINT FK_Pristilbud_PristilbudStatus REFERENCES PristilbudStatus (Pst_Id)
)

CREATE TABLE Pristilbudlinje (
  Pl_Pr_Id int NOT NULL CONSTRAINT FK_Pristilbudlinje_Pristilbud REFERENCES Pristilbud (Pr_Id),
  Pl_Va_Id char(15) NOT NULL CONSTRAINT FK_Pristilbudlinje_Vare REFERENCES Vare (Va_Id),
  Pl_Pris float NULL,
  CONSTRAINT PK_Pristilbudlinje PRIMARY KEY (Pl_Pr_Id, Pl_Va_Id)
)

CREATE TABLE PristilbudInternKunde (
  Pb_Pr_Id int NOT NULL CONSTRAINT FK_PristilbudInternKunde_Pristilbud REFERENCES Pristilbud (Pr_Id),
  Pb_Ik_Ku_Id int NOT NULL CONSTRAINT FK_PristilbudInternKunde_Internkunde REFERENCES Internkunde (Ik_Ku_Id),
  CONSTRAINT PK_PristilbudInternKunde PRIMARY KEY (Pb_Pr_Id, Pb_Ik_Ku_Id)
)

-- Which tills an offer has been sent to.
CREATE TABLE Pristilbudlogg (
  Ptl_Id int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_Pristilbudlogg PRIMARY KEY,
  Ptl_Pl_Pr_ID int NOT NULL CONSTRAINT FK_Pristilbudlogg_Pristilbud REFERENCES Pristilbud (Pr_Id),
  Ptl_Ikk_Ik_Ku_ID int NOT NULL,
  Ptl_Ikk_Kassenummer char(10) NOT NULL,
  Ptl_Tidspunkt datetime NOT NULL,
  CONSTRAINT FK_Pristilbudlogg_Internkundekasse FOREIGN KEY (Ptl_Ikk_Ik_Ku_ID, Ptl_Ikk_Kassenummer)
    REFERENCES Internkundekasse (Ikk_Ik_Ku_Id, Ikk_Kassenummer)
)

-- A discount card may be shared by several customers, or belong to none.
CREATE TABLE POSRABATTKORT (
  Pos_Ra_Nr int IDENTITY(1, 1) NOT NULL CONSTRAINT PK_POSRABATTKORT PRIMARY KEY,
  Pos_Ra_ID char(20) NOT NULL,
  Pos_Ra_Navn varchar(50) NULL,
  Pos_Ra_GyldigTil datetime NULL,
  Pos_Ra_Rabatt float NOT NULL,
  Pos_Ra_Aktiv tinyint NOT NULL,
  Pos_Ra_KunPaaOrdPris tinyint NOT NULL,
  Pos_Ra_Ku_ID int NULL CONSTRAINT FK_POSRABATTKORT_Kunde REFERENCES Kunde (Ku_Id),
  Pos_Ra_Ku_Kreditt_Prosent float NULL,
  Pos_Ra_UpdDato datetime NOT NULL CONSTRAINT DF_POSRABATTKORT_UpdDato DEFAULT (GETDATE()),
  CONSTRAINT UQ_POSRABATTKORT UNIQUE (Pos_Ra_ID, Pos_Ra_Ku_ID)
)

-- The discount that a customer group has on an item group, by the amount bought for.
CREATE TABLE RabattMatrise (
  Rm_Kg_Id int NOT NULL CONSTRAINT FK_RabattMatrise_KundeGruppe REFERENCES KundeGruppe (Kg_Id),
  Rm_Vg_ID char(4) NOT NULL CONSTRAINT FK_RabattMatrise_Varegruppe REFERENCES Varegruppe (Vg_Id),
  Rm_Fra float NOT NULL,
  Rm_Til float NOT NULL,
  Rm_Rabatt float NOT NULL,
  CONSTRAINT PK_RabattMatrise PRIMARY KEY (Rm_Kg_Id, Rm_Vg_ID, Rm_Fra, Rm_Til)
)
go

ALTER TABLE Innstillinger ADD
  CONSTRAINT FK_Innstillinger_Anonym_Kunde FOREIGN KEY (In_Anonym_Ku_ID) REFERENCES Kunde (Ku_Id),
  CONSTRAINT FK_Innstillinger_KlikkOgHent_Kunde FOREIGN KEY (In_KlikkOgHent_Ku_ID) REFERENCES Kunde (Ku_Id),
  CONSTRAINT FK_Innstillinger_Hovedkontor FOREIGN KEY (In_Hoved_Ik_Ku_Id) REFERENCES Internkunde (Ik_Ku_Id),
  CONSTRAINT FK_Innstillinger_Fakturagebyr FOREIGN KEY (In_Fakturagebyr_Va_ID) REFERENCES Vare (Va_Id),
  CONSTRAINT FK_Innstillinger_Gavekort FOREIGN KEY (In_Gavekort_Va_ID) REFERENCES Vare (Va_Id)

INSERT KasseType VALUES (1, 'TorvikPOS'), (2, 'Annen kasse')
INSERT PristilbudStatus VALUES (0, 'Under arbeid'), (1, 'Til godkjenning'), (2, 'Endelig godkjent')
go

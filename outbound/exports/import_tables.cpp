// The work tables that every send makes in one batch before it loads anything (qryCreateImportTables). A column without
// "not null" takes null.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kProduktImport{"PRODUKTIMPORT", R"(create table PRODUKTIMPORT (
  PI_ID varchar(20) not null,
  PI_INFOEKSTERN varchar(1024) null,
  PI_INFOINTERN varchar(1024) null,
  PI_INFOREGEL tinyint null
)
create index PI_ID on PRODUKTIMPORT (PI_ID))"};

constexpr WorkTable kVareImport{"VAREIMPORT", R"(create table VAREIMPORT (
  VAI_ID char(20) not null,
  VAI_NAVN char(50) not null,
  VAI_PRIS float not null,
  VAI_UTGAATT smallint not null default 0,
  VAI_NUMMERTYPE varchar(20) null,
  VAI_VAREGRUPPE varchar(60) not null,
  VAI_VEILPRIS float null,
  VAI_MVASATS float null,
  VAI_KOSTPRIS float null,
  VAI_LE_ID int null,
  VAI_MINLAGER float null,
  VAI_MAKSLAGER float null,
  VAI_VG_ID char(4),
  VAI_PRISLAPP int null,
  VAI_P_ID varchar(25),
  VAI_MAKSRABATT int null,
  VAI_SLETTET bit null,
  VAI_P_NAVN varchar(100) null,
  VAI_FARGENAVN varchar(50) null,
  VAI_STORRELSENAVN varchar(50) null
)
create index VAI_ID on VAREIMPORT (VAI_ID))"};

constexpr WorkTable kDelvareImport{"DELVAREIMPORT", R"(create table DELVAREIMPORT (
  DVI_HOVED_VA_ID char(20) not null,
  DVI_DELVARE_VA_ID char(20) not null,
  DVI_ANTALL float null,
  DVI_PRIS float null,
  DVI_UTSKRIFTSREGEL int null
))"};

constexpr WorkTable kVareAliasImport{"VAREALIASIMPORT", R"(create table VAREALIASIMPORT (
  VRI_VA_ID char(20) not null,
  VRI_ID varchar(50) not null,
  VRI_NAVN varchar(20) null
)
create index iVRI_VA_ID on VAREALIASIMPORT (VRI_VA_ID, VRI_ID))"};

// Nothing fills it: InsertVareAlias reads it in a send of changes.
constexpr WorkTable kVareAliasImportDelete{"VAREALIASIMPORTDELETE", R"(create table VAREALIASIMPORTDELETE (
  VRID_VA_ID char(20) not null,
  VRID_ID varchar(50) not null,
  VRID_NAVN varchar(20) null
)
create index iVRID_VA_ID on VAREALIASIMPORTDELETE (VRID_VA_ID, VRID_ID))"};

constexpr WorkTable kLeverandorImport{"LEVERANDORIMPORT", R"(create table LEVERANDORIMPORT (
  LEI_ID int,
  LEI_NAVN varchar(50) null,
  LEI_ADRESSE varchar(50) null,
  LEI_PO_ID varchar(10) null,
  LEI_PO_NAVN varchar(50) null,
  LEI_PO_LAND varchar(25) null,
  LEI_TELEFON varchar(20) null,
  LEI_TELEFAX varchar(20) null,
  LEI_EPOST varchar(30) null
)
create index LEI_ID on LEVERANDORIMPORT (LEI_ID))"};

constexpr WorkTable kVaregruppeImport{"VAREGRUPPEIMPORT", R"(create table VAREGRUPPEIMPORT (
  VGRI_ID char(4),
  VGRI_NAVN varchar(30) null,
  VGRI_HOVED_VGR_ID char(4) null,
  VGRI_ROOT_VGR_ID char(4) null
)
create index VGRI_ID on VAREGRUPPEIMPORT (VGRI_ID))"};

constexpr WorkTable kKundeImport{"KUNDEIMPORT", R"(create table KUNDEIMPORT (
  KUI_ID int,
  KUI_NAVN varchar(50) null,
  KUI_ADRESSE1 varchar(50) null,
  KUI_ADRESSE2 varchar(50) null,
  KUI_PO_ID varchar(15) null,
  KUI_PO_NAVN varchar(50) null,
  KUI_PI_ID int null,
  KUI_KG_ID int null,
  KUI_FJERNGEBYR bit null,
  KUI_SPERRET bit null
)
create index KUI_ID on KUNDEIMPORT (KUI_ID))"};

constexpr WorkTable kTimeProfilImport{"TIMEPROFILIMPORT", R"(create table TIMEPROFILIMPORT (
  Tpi_Id int null,
  Tpi_Navn varchar(30) null,
  Tpi_Stemplingsregel int null
)
create index TPI_ID on TIMEPROFILIMPORT (Tpi_ID))"};

constexpr WorkTable kBetalingFormImport{"BETALINGFORMIMPORT", R"(create table BETALINGFORMIMPORT (
  TBF_ID int null,
  TBF_MIN_BELOP decimal(18,4) null,
  TBF_MAKS_BELOP decimal(18,4) null,
  TBF_ER_KONTANT bit null
))"};

// The comma behind the last column is the text's own; the server takes it.
constexpr WorkTable kGrunnImport{"GRUNNIMPORT", R"(create table GRUNNIMPORT (
  iGR_ID int not null,
  iGR_GT_ID int null,
  iGR_NAVN varchar(50) not null,
  iGR_UTSKRIFTSFLAGG tinyint not null,
  iGR_AKTIV bit null,
))"};

constexpr const WorkTable* kTables[] = {
    &kProduktImport,         &kVareImport,         &kDelvareImport,    &kVareAliasImport,
    &kVareAliasImportDelete, &kLeverandorImport,   &kVaregruppeImport, &kKundeImport,
    &kTimeProfilImport,      &kBetalingFormImport, &kGrunnImport,
};

constexpr Action kCreate[] = {CreateTables{kTables}};

}  // namespace

constinit const Actions kCreateImportTables{kCreate};

}  // namespace torvik

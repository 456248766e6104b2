// The work tables of gift cards and credit notes, which live for one send only. They have the columns of the back
// office's procedures; the last three of gift cards are carried no further.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kGiftCards{"GKORTEKSPORT", R"(create table GKORTEKSPORT (
  GA_ID varchar(13) COLLATE database_default not null,
  GA_AVDNR char(20) COLLATE database_default not null,
  GA_KASSENR char(20) COLLATE database_default not null,
  GA_AN_ID char(10) COLLATE database_default not null,
  GA_OL_ID int not null,
  GA_BELOP float not null,
  GA_GYLDIGTIL datetime null,
  GA_BET_AVDNR char(20) COLLATE database_default null,
  GA_BET_KASSENR char(20) COLLATE database_default null,
  GA_BET_AN_ID char(10) COLLATE database_default null,
  GA_BT_ID int null,
  GA_SYNKTIDSPUNKT datetime null,
  GA_PASSORD varchar(20) COLLATE database_default null,
  knr int null,
  kassenr varchar(20) COLLATE database_default null
)
create index GAE_INDEX on GKORTEKSPORT (GA_ID,GA_AVDNR,GA_KASSENR))"};

constexpr WorkTable kCreditNotes{"TGLAPPEKSPORT", R"(create table TGLAPPEKSPORT (
  TG_ID varchar(13) not null,
  TG_AVDNR char(20) COLLATE database_default not null,
  TG_KASSENR char(20) COLLATE database_default not null,
  TG_AN_ID char(10) COLLATE database_default not null,
  TG_OR_ID int not null,
  TG_BELOP float not null,
  TG_GYLDIGTIL datetime null,
  TG_BET_AVDNR char(20) COLLATE database_default null,
  TG_BET_KASSENR char(20) COLLATE database_default null,
  TG_BET_AN_ID char(10) COLLATE database_default null,
  TG_BT_ID int null,
  TG_SYNKTIDSPUNKT datetime null
)
create index TGE_INDEX on TGLAPPEKSPORT (TG_ID,TG_AVDNR,TG_KASSENR))"};

constexpr const WorkTable* kTables[] = {&kGiftCards, &kCreditNotes};

constexpr Action kCreate[] = {
    SetTransformation{"Opprette gavekort- og Tilgodelapptabeller"},
    CreateTables{kTables},
};
constexpr Action kDrop[] = {DropTable{"GKORTEKSPORT"}, DropTable{"TGLAPPEKSPORT"}};

}  // namespace

constinit const Actions kCreateVoucherTables{kCreate};
constinit const Actions kDropVoucherTables{kDrop};

}  // namespace torvik

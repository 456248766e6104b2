// Price categories, all of them, and the prices of the session's items in the categories that somebody uses. The till
// keeps only the prices that were loaded, in a send of changes too.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kPriskategoriTable{"iPriskategori", R"(create table iPriskategori (
  iPi_Id int not null,
  iPi_Navn varchar(20) not null,
  iPi_Inklmva bit not null
)
create index i_iPi_Id on iPriskategori (iPi_Id))"};

constexpr WorkTable kPrisTable{"iPris", R"(create table iPris (
  iPs_Va_Id char(20) not null,
  iPs_Pi_Id int not null,
  iPs_Prisen float not null
)
create index i_iPs_Id on iPris (iPs_Va_Id, iPs_Pi_Id))"};

constexpr const WorkTable* kTables[] = {&kPriskategoriTable, &kPrisTable};

constexpr Action kCreate[] = {CreateTables{kTables}};

constexpr char kPriceCategories[] = "select Pi_ID, Pi_Navn, Pi_InklMva from priskategori";

constexpr CopiedColumn kPriceCategoryColumns[] = {
    {"Pi_ID", "iPi_ID"},
    {"Pi_Navn", "iPi_Navn"},
    {"Pi_InklMva", "iPi_InklMva"},
};

constexpr Action kCategories[] = {
    StartClock{},
    SetTransformation{"Priskategori"},
    CopyRows{"Overfører Priskategori", "Priskategori", kPriceCategories, "iPriskategori", kPriceCategoryColumns},
};

constexpr Piece kPrices[] = {
    {R"(SELECT Ps_Va_Id AS iPs_Va_Id, Ps_Pi_Id AS iPs_Pi_Id, Ps_Prisen AS iPs_Prisen FROM Pris join VareEksport on ps_va_id = VE_Va_ID
join (select distinct upid pid 
from (select ku_pi_id upid from kunde where ku_type > 0 and Ku_Sperret=0
union select Ika_Pi_ID upid from internkundeansatt where Ika_Aktiv=1 ) UPIDs
) as PIDs on pid = ps_pi_id
WHERE Ve_SesjonID = '%s')",
     kAlways,
     {Arg::SessionID}},
    {"AND Ps_UpdDato > getdate()-%d", kChangesOnly, {Arg::DagerSidenEndring}},
};

constexpr Action kLoadPrices[] = {LoadTable{"Pris", "iPris", kPrices}};

constexpr Piece kMerge[] = {
    {"update kunde set ku_pi_id = NULL where Ku_Pi_Id not in (select iPi_Id from iPriskategori)"},
    {"delete from Pris where Ps_Pi_Id not in (select iPi_Id from iPriskategori) "},
    {"delete from Priskategori where Pi_Id not in (select iPi_Id from iPriskategori) "},
    {R"(update Priskategori set Pi_Navn = iPi_Navn, Pi_Inklmva = iPi_Inklmva
from iPriskategori where Pi_Id = iPi_Id)"},
    {R"(insert into Priskategori (Pi_Id, Pi_Navn, Pi_Inklmva)
select iPi_Id, iPi_Navn, iPi_Inklmva
from iPriskategori left outer join Priskategori p on p.Pi_Id = iPi_Id where p.Pi_Id is null)"},
    {"delete from Pris where not exists (select 1 from iPris where iPs_Va_Id = Ps_Va_Id and iPs_Pi_Id = Ps_Pi_Id)"},
    {R"(update Pris set Ps_Prisen = iPs_Prisen
from iPris where iPs_Va_Id = Ps_Va_Id and iPs_Pi_Id = Ps_Pi_Id)"},
    {R"(insert into Pris (Ps_Va_Id,Ps_Pi_Id,Ps_Prisen)
select distinct iPs_Va_Id,iPs_Pi_Id,iPs_Prisen
from iPris left outer join Pris p on p.Ps_Va_Id = iPs_Va_Id and p.Ps_Pi_Id = iPs_Pi_Id
where p.Ps_Va_Id is null)"},
};

constexpr Action kMergeBatch[] = {TillBatch{kMerge}};

}  // namespace

constinit const Actions kCreatePriceTables{kCreate};
constinit const Actions kSendPriceCategories{kCategories};
constinit const Actions kSendPrices{kLoadPrices};
constinit const Actions kMergePrices{kMergeBatch};

}  // namespace torvik

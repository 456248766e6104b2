// Items that are sold as parts of another: the pairs of which either side is of the session's choice. The till keeps
// only the pairs that were loaded, in a send of changes too.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Piece kItemParts[] = {
    {R"(SELECT Dv_Hoved_Va_ID AS Dvi_Hoved_Va_ID, Dv_Delvare_Va_ID AS Dvi_Delvare_Va_ID, Dv_Antall AS Dvi_Antall, Dv_Pris AS Dvi_Pris, Dv_Utskriftsregel AS Dvi_Utskriftsregel FROM Delvare
WHERE Dv_Hoved_Va_Id IN (SELECT Ve_Va_Id FROM Vareeksport WHERE VE_SesjonID = '%s')
OR Dv_Delvare_Va_ID IN (SELECT Ve_Va_Id FROM Vareeksport WHERE VE_SesjonID = '%s'))",
     kAlways,
     {Arg::SessionID, Arg::SessionID}}};

constexpr Action kSend[] = {
    SetTransformation{"Delvare"},
    LoadTable{"Delvareimport", "DELVAREIMPORT", kItemParts},
};

constexpr int kPartsHaveAPrintRule = 192;

constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into Delvare (Dv_Hoved_Va_ID,Dv_Delvare_Va_ID,Dv_Antall,Dv_Pris, Dv_Utskriftsregel)
select DISTINCT Dvi_Hoved_va_ID,Dvi_Delvare_Va_Id,Dvi_Antall,Dvi_Pris, Dvi_Utskriftsregel)",
     schemaFrom(kPartsHaveAPrintRule)},
    {R"(insert into Delvare (Dv_Hoved_Va_ID,Dv_Delvare_Va_ID,Dv_Antall,Dv_Pris)
select DISTINCT Dvi_Hoved_va_ID,Dvi_Delvare_Va_Id,Dvi_Antall,Dvi_Pris)",
     schemaBelow(kPartsHaveAPrintRule)},
    {R"(from DelvareImport join Vare v1 on Dvi_Hoved_Va_ID = v1.Va_ID left outer join Delvare ON Dvi_Hoved_Va_ID = Dv_Hoved_Va_Id AND Dvi_Delvare_Va_ID = Dv_Delvare_Va_ID JOIN vare v2 ON v2.Va_Id=Dvi_Delvare_Va_ID collate database_default
where Dv_Hoved_Va_Id is null)"},
    {R"(update Delvare
SET Dv_Antall = Dvi_Antall, Dv_Pris = Dvi_Pris, Dv_Utskriftsregel=Dvi_Utskriftsregel)",
     schemaFrom(kPartsHaveAPrintRule)},
    {R"(update Delvare
SET Dv_Antall = Dvi_Antall, Dv_Pris = Dvi_Pris)",
     schemaBelow(kPartsHaveAPrintRule)},
    {"from Delvare join DelvareImport i on Dv_Hoved_Va_Id = Dvi_Hoved_Va_Id AND Dv_Delvare_Va_Id = Dvi_Delvare_Va_Id"},
    {R"(delete from delvare where not exists (select * from delvareimport where dvi_hoved_va_id = dv_hoved_va_id and
dvi_delvare_va_id = dv_delvare_va_id))"},
    {"DROP TABLE DelvareImport"},
    {"END"},
};

}  // namespace

constinit const Actions kSendItemParts{kSend};
constinit const Procedure kInsertDelvare{"InsertDelvare", kBody};

}  // namespace torvik

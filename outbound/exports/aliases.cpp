// Other numbers of items: all of the chain's go at every send, but for those that are an item's number as well. They
// are merged at once; those of items that come with this send are merged once more behind the items.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Piece kEmptyImport[] = {{"DELETE VareAliasImport"}};

constexpr Piece kAliases[] = {{R"(select distinct Vri_Va_ID, Vri_Id, Vri_Navn
FROM (
SELECT Vr_Va_ID AS Vri_Va_ID,Vr_Id AS Vri_Id,Vr_Navn AS Vri_Navn FROM VAREALIAS
) as VareAlias
where Vri_id not in (select va_id from vare))"}};

constexpr Piece kMerge[] = {
    {"DELETE VAREALIAS WHERE NOT EXISTS ( SELECT 1 FROM VareAliasImport WHERE Vr_Id=Vri_Id COLLATE DATABASE_DEFAULT AND Vr_Va_Id=Vri_Va_Id COLLATE DATABASE_DEFAULT)"},
    {R"(INSERT INTO VareAlias (VR_VA_ID, VR_ID, VR_NAVN) SELECT Vri_Va_Id, vri_Id, Vri_Navn FROM VareAliasImport JOIN Vare ON Vri_Va_Id=Va_Id COLLATE DATABASE_DEFAULT
WHERE NOT EXISTS ( SELECT 1 FROM VareAlias WHERE Vr_Id=Vri_Id COLLATE DATABASE_DEFAULT AND Vr_Va_Id=Vri_Va_Id COLLATE DATABASE_DEFAULT ))"},
    {"UPDATE VareAlias SET Vr_Navn=Vri_Navn FROM VareAliasImport WHERE Vr_id=Vri_Id COLLATE DATABASE_DEFAULT AND Vr_Va_Id=Vri_Va_Id COLLATE DATABASE_DEFAULT"},
};

constexpr Action kSend[] = {
    SetTransformation{"Varealias"},
    TillBatch{kEmptyImport},
    LoadTable{"VAREALIAS", "VAREALIASIMPORT", kAliases},
    TillBatch{kMerge},
};

constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(Insert Into VareAlias (Vr_Va_Id,Vr_Id,Vr_Navn)
Select Distinct Vri_Va_Id,Vri_Id,VRI_Navn From VareAliasImport JOIN vare ON ( Vri_Va_Id=Va_Id)
Left Outer Join VareAlias On Vri_Va_Id = Vr_Va_Id And Vri_Id = Vr_Id
Where Vr_Id Is Null And Vr_Va_Id Is Null)"},
    {R"(Update VA Set VA.Vr_Va_Id = VAI.Vri_Va_Id, VA.Vr_Id = VAI.Vri_Id, VA.Vr_Navn = VAI.Vri_Navn
From VareAlias VA
Join VareAliasImport VAI On VA.Vr_Id = VAI.Vri_ID AND VA.Vr_Va_Id = VAI.Vri_Va_Id)"},
    // Nothing fills the table that this one reads: it deletes nothing.
    {R"(Delete From VareAlias Where Exists (select 1 From VareAliasImportDelete WHERE Vrid_Id = Vr_Id
And Vrid_Va_Id = Vr_Va_Id))",
     kChangesOnly},
    {R"(Delete From VareAlias Where Not Exists (select 1 From VareAliasImport WHERE Vri_Id = Vr_Id
And Vri_Va_Id = Vr_Va_Id))",
     kNotChangesOnly},
    {"Drop table VAREALIASIMPORTDELETE"},
    {"Drop table VAREALIASIMPORT"},
    {"END"},
};

}  // namespace

constinit const Actions kSendAliases{kSend};
constinit const Procedure kInsertVareAlias{"InsertVareAlias", kBody};

}  // namespace torvik

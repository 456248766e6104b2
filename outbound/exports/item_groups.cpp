// Item groups: all of them go, none is deleted on the till. Of a parent that the till has not, nothing is changed.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Piece kItemGroups[] = {
    {"SELECT Vg_Id AS Vgri_ID, VG_NAVN AS Vgri_Navn, Vg_Hoved_Vg_ID AS VGRI_HOVED_VGR_ID, Vg_Root_Vg_ID AS VGRI_ROOT_VGR_ID FROM Varegruppe"}};

constexpr Action kSend[] = {
    SetTransformation{"Varegruppe"},
    LoadTable{.caption = "VAREGRUPPE",
              .table = "VAREGRUPPEIMPORT",
              .query = kItemGroups,
              .readWith = ReadWith::ItemRegisters},
};

constexpr int kGroupsInATree = 211;

constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into VareGrp (VGR_ID,VGR_NAVN)
select DISTINCT VGRI_ID,VGRI_NAVN
from varegruppeimport i left outer join varegrp vgr on i.vgri_id = vgr.vgr_id
where vgr.vgr_id is null)"},
    {R"(update vgr
SET VGR_NAVN=i.VGRI_NAVN
from varegrp vgr join varegruppeimport i on vgr.vgr_id = i.vgri_id)"},
    {R"(update vgr
SET VGR_HOVED_VGR_ID=i.VGRI_HOVED_VGR_ID
from varegrp vgr join varegruppeimport i on vgr.vgr_id = i.vgri_id join varegrp HovedVgr ON HovedVgr.Vgr_Id=i.VGRI_HOVED_VGR_ID)",
     schemaFrom(kGroupsInATree)},
    {R"(update vgr
SET VGR_ROOT_VGR_ID=i.VGRI_ROOT_VGR_ID
from varegrp vgr join varegruppeimport i on vgr.vgr_id = i.vgri_id join varegrp RootVgr ON RootVgr.Vgr_Id=i.VGRI_ROOT_VGR_ID)",
     schemaFrom(kGroupsInATree)},
    {"DROP TABLE varegruppeimport"},
    {"END"},
};

}  // namespace

constinit const Actions kSendItemGroups{kSend};
constinit const Procedure kInsertVaregruppe{"InsertVaregruppe", kBody};

}  // namespace torvik

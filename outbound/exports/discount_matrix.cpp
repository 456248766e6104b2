// The discount that a customer group has on an item group, by the amount bought for. The work table is made by every
// send and filled by those with prices. The query has no column for RMI_KUNPAAORDPRIS; the procedure takes null for 1.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kRabattMatriseImport{"RabattMatriseImport", R"(create table RabattMatriseImport (
  RMI_KG_ID int,
  RMI_Vg_ID char(4),
  RMI_Fra float,
  RMI_Til float,
  RMI_Rabatt float,
  RMI_KUNPAAORDPRIS int
))"};

constexpr const WorkTable* kTables[] = {&kRabattMatriseImport};

constexpr Action kCreate[] = {SetTransformation{"Rabattmatrise"}, CreateTables{kTables}};

constexpr Piece kMatrix[] = {
    {"SELECT Rm_Kg_Id AS Rmi_Kg_Id, Rm_Vg_ID AS Rmi_Vg_ID, Rm_Fra AS Rmi_Fra, Rm_Til AS Rmi_Til, Rm_Rabatt AS "
     "Rmi_Rabatt FROM RabattMatrise"}};

constexpr Action kLoad[] = {
    SetTransformation{"RabattMatrise"},
    LoadTable{.caption = "Rabattmatrise",
              .table = "RabattmatriseImport",
              .query = kMatrix,
              .readWith = ReadWith::OtherRegisters},
};

// The delete compares rm_til with itself: a row stays while any row of its groups and lower bound was loaded.
constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into RabattMatrise (RM_KG_ID,RM_VGR_ID,RM_FRA,RM_TIL,RM_RABATT,RM_KUNPAAORDPRIS)
select distinct RMI_KG_ID,RMI_Vg_ID,RMI_Fra,RMI_Til,RMI_Rabatt,ISNULL(RMI_KUNPAAORDPRIS,1)
FROM RabattMatriseImport I LEFT OUTER JOIN RabattMatrise R ON
I.RMI_KG_ID=R.RM_KG_ID AND I.RMI_VG_ID=R.RM_VGR_ID AND I.RMI_Fra=R.RM_Fra AND I.RMI_TIL=R.RM_TIL
WHERE R.RM_KG_ID IS NULL)"},
    {R"(update R
SET R.RM_KG_ID=I.RMI_KG_ID, R.RM_VGR_ID=I.RMI_VG_ID, R.RM_FRA=I.RMI_FRA, R.RM_TIL=I.RMI_TIL, R.RM_RABATT=I.RMI_RABATT, R.RM_KUNPAAORDPRIS=ISNULL(I.RMI_KUNPAAORDPRIS,1)
FROM RabattMatrise R JOIN RabattmatriseImport I
ON I.RMI_KG_ID=R.RM_KG_ID AND I.RMI_VG_ID=R.RM_VGR_ID AND I.RMI_Fra=R.RM_Fra AND I.RMI_TIL=R.RM_TIL)"},
    {R"(delete from rabattmatrise where not exists
(select 1 from rabattmatriseimport where rmi_kg_id=rm_kg_id and rmi_vg_id=rm_vgr_id and rmi_fra=rm_fra and rm_til=rm_til))"},
    {"END"},
};

constexpr Procedure kInsertRabattMatrise{"InsertRabattMatrise", kBody};

constexpr Action kMerge[] = {
    SetTransformation{"Rabattmatrise"},
    Install{&kInsertRabattMatrise},
    Run{&kInsertRabattMatrise},
};

}  // namespace

constinit const Actions kCreateDiscountMatrixTable{kCreate};
constinit const Actions kSendDiscountMatrix{kLoad};
constinit const Actions kMergeDiscountMatrix{kMerge};

}  // namespace torvik

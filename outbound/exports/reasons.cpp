// Reasons for returns and the like, at every schema version. None is deleted; one that no till is to show goes
// inactive.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kReasons[] = {{R"(SELECT Pos_Gr_Id iGR_Id,Pos_Gr_Gt_Id iGr_Gt_Id,
Pos_Gr_Navn iGr_Navn,Pos_Gr_Utskriftsflagg iGr_Utskriftsflagg,
isnull(Pos_Gr_Synlig_Kasse,0) iGr_Aktiv
FROM POSGRUNN)"}};

constexpr Action kLoad[] = {
    LoadTable{.caption = "PosGrunn", .table = "GrunnImport", .query = kReasons, .readWith = ReadWith::OtherRegisters}};

constexpr Piece kMerge[] = {
    {R"(INSERT INTO GRUNN (GR_ID, GR_GT_ID, GR_NAVN, Gr_UTSKRIFTSFLAGG, GR_AKTIV)
SELECT iGr_Id, iGr_Gt_Id, iGr_Navn, iGr_Utskriftsflagg, iGr_Aktiv
FROM GRUNNIMPORT WHERE iGr_Id not in (SELECT GR_ID FROM GRUNN))"},
    {R"(UPDATE GRUNN SET GR_GT_ID = iGr_Gt_Id, Gr_Navn = iGr_Navn, Gr_Utskriftsflagg = iGr_Utskriftsflagg , GR_AKTIV = iGR_AKTIV
FROM GRUNNIMPORT WHERE GR_ID = iGR_ID)"},
};

constexpr Action kMergeBatch[] = {SetTransformation{"Grunn"}, TillBatch{kMerge}};

constexpr Action kRestart[] = {StartClock{}};

}  // namespace

constinit const Actions kSendReasons{kLoad};
constinit const Actions kMergeReasons{kMergeBatch};
constinit const Actions kRestartClock{kRestart};

}  // namespace torvik

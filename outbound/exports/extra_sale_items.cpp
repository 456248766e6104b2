// Items that the till offers beside a sale: the department's, replaced as a whole in the till's own table.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kDelete[] = {{"DELETE FROM MersalgVare"}};

constexpr Piece kExtraSaleItems[] = {
    {"select Kv_Va_Id AS MSV_VA_ID from kundevare where kv_kvt_id='EKS' and Kv_Ik_Ku_Id= %d  and GETDATE() between Kv_FraDato AND DateAdd(second,-1,Kv_TilDato+1)",
     kAlways,
     {Arg::Ik_Ku_ID}}};

constexpr Action kSend[] = {
    SetTransformation{"Mersalgvare"},
    TillBatch{kDelete},
    LoadTable{.caption = "MersalgVare",
              .table = "MersalgVare",
              .query = kExtraSaleItems,
              .tillsOwn = true,
              .readWith = ReadWith::ItemRegisters},
};

}  // namespace

constinit const Actions kSendExtraSaleItems{kSend};

}  // namespace torvik

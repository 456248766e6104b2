// The limits of payment forms. A form that the till lacks stays absent.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kLimits[] = {
    {"SELECT Pos_Bf_Id AS TBF_ID, Pos_Bf_Min_Belop AS TBF_MIN_BELOP, Pos_Bf_Maks_Belop AS TBF_MAKS_BELOP,  "
     "Pos_Bf_Er_Kontant AS TBF_ER_KONTANT FROM PosBetalingForm"}};

constexpr Action kLoad[] = {
    SetTransformation{"Betalingform"},
    LoadTable{.caption = "BETALINGFORM",
              .table = "BETALINGFORMIMPORT",
              .query = kLimits,
              .readWith = ReadWith::ItemRegisters},
};

constexpr Piece kMerge[] = {
    {"UPDATE BetalingForm SET Bf_Min_Belop=TBF_MIN_BELOP, Bf_Maks_Belop=TBF_MAKS_BELOP, Bf_Er_Kontant = "
     "TBF_ER_KONTANT FROM BetalingFormImport WHERE Bf_Id=TBF_ID"}};

constexpr Action kMergeBatch[] = {SetTransformation{"Betalingform"}, TillBatch{kMerge}};

}  // namespace

constinit const Actions kSendPaymentForms{kLoad};
constinit const Actions kMergePaymentForms{kMergeBatch};

}  // namespace torvik

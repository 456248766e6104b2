// The texts that a product gives its items; InsertVare puts them there.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

// The aliases turn the two texts round, and the session counts for the last OR alone: a product with either text goes
// whatever session its items were chosen by. Both are required.
constexpr Piece kProducts[] = {
    {R"(SELECT DISTINCT P_Id AS PI_ID, P_InfoIntern AS PI_INFOEKSTERN, P_InfoEkstern AS PI_INFOINTERN, P_InfoRegel AS PI_INFOREGEL
FROM Produkt (NOLOCK) JOIN VARE ON P_ID = Va_P_ID JOIN VAREEKSPORT ON Va_ID = Ve_Va_ID
WHERE P_InfoEkstern IS NOT NULL OR P_InfoIntern IS NOT NULL OR P_InfoRegel IS NOT NULL
And Ve_SesjonID = '%s')",
     kAlways,
     {Arg::SessionID}}};

constexpr Action kSend[] = {LoadTable{"Produkt", "ProduktImport", kProducts}};

}  // namespace

constinit const Actions kSendProducts{kSend};

}  // namespace torvik

#include "inbound/vouchers/voucher_kind.h"

namespace torvik {

const VoucherKind kGavekort{
    .markKind = TillMark::Kind::GiftCard,
    .prefix = "GA_",
    .changed = "SELECT * FROM gavekort WHERE GA_SYNKTIDSPUNKT IS NULL",
    .log = "Importerer gavekort %1",
    .dropped = "Gavekort i gruppen som feilet: %1",
    .issuedBy = "OL_ID",
    .insert =
        "INSERT INTO POSGAVEKORT (GA_ID,GA_AVDNR,GA_KASSENR,GA_AN_ID,GA_OL_ID,GA_BELOP,GA_GYLDIGTIL,GA_BET_AVDNR,GA_BET_KASSENR,GA_BET_AN_ID,GA_BT_ID,GA_SYNKTIDSPUNKT) SELECT %1",
    .unlessThere =
        "WHERE NOT EXISTS ( SELECT 1 FROM POSGAVEKORT WHERE GA_ID='%1' AND GA_AVDNR='%2' AND GA_KASSENR='%3')",
    .update = "UPDATE POSGAVEKORT set %1",
    .thisOne = "WHERE Ga_ID='%1' AND Ga_AvdNr='%2' AND Ga_Kassenr = '%3'",
    .mark = "UPDATE gavekort SET GA_SYNKTIDSPUNKT=GETDATE() WHERE GA_SYNKTIDSPUNKT IS NULL",
    .markedSince = R"(SELECT *, CONVERT(varchar(23), GA_SYNKTIDSPUNKT, 121) Merket FROM gavekort
WHERE GA_SYNKTIDSPUNKT >= CONVERT(datetime, :Fra, 121) AND GA_SYNKTIDSPUNKT <= GETDATE())",
    .redeemed =
        R"(SELECT GA_ID, GA_AVDNR, GA_KASSENR, GA_BET_AVDNR, GA_BET_KASSENR, GA_BET_AN_ID, GA_BT_ID FROM POSGAVEKORT
WHERE (GA_BET_AVDNR IS NOT NULL OR GA_BET_KASSENR IS NOT NULL OR GA_BET_AN_ID IS NOT NULL OR GA_BT_ID IS NOT NULL)
AND (%1))",
};

const VoucherKind kTilgodelapp{
    .markKind = TillMark::Kind::CreditNote,
    .prefix = "TG_",
    .changed = "SELECT * FROM Tilgodelapp WHERE TG_SYNKTIDSPUNKT IS NULL",
    .log = "Importerer tilgodelapp %1",
    .dropped = "Tilgodelapper i gruppen som feilet: %1",
    .issuedBy = "OR_ID",
    .insert =
        "INSERT INTO POSTilgodelapp (TG_ID,TG_AVDNR,TG_KASSENR,TG_AN_ID,TG_OR_ID,TG_BELOP,TG_GYLDIGTIL,TG_BET_AVDNR,TG_BET_KASSENR,TG_BET_AN_ID,TG_BT_ID,TG_SYNKTIDSPUNKT) SELECT %1",
    .unlessThere =
        "WHERE NOT EXISTS ( SELECT 1 FROM POSTilgodelapp WHERE TG_ID='%1' AND TG_AVDNR='%2' AND TG_KASSENR='%3')",
    .update = "UPDATE POSTilgodelapp set %1",
    .thisOne = "WHERE TG_ID='%1' AND TG_AvdNr='%2' AND TG_Kassenr = '%3'",
    .mark = "UPDATE Tilgodelapp SET TG_SYNKTIDSPUNKT=GETDATE() WHERE TG_SYNKTIDSPUNKT IS NULL",
    .markedSince = R"(SELECT *, CONVERT(varchar(23), TG_SYNKTIDSPUNKT, 121) Merket FROM Tilgodelapp
WHERE TG_SYNKTIDSPUNKT >= CONVERT(datetime, :Fra, 121) AND TG_SYNKTIDSPUNKT <= GETDATE())",
    .redeemed =
        R"(SELECT TG_ID, TG_AVDNR, TG_KASSENR, TG_BET_AVDNR, TG_BET_KASSENR, TG_BET_AN_ID, TG_BT_ID FROM POSTilgodelapp
WHERE (TG_BET_AVDNR IS NOT NULL OR TG_BET_KASSENR IS NOT NULL OR TG_BET_AN_ID IS NOT NULL OR TG_BT_ID IS NOT NULL)
AND (%1))",
};

}  // namespace torvik

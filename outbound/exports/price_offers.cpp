// Price offers and their lines: those that hold now for the department, finally approved, of the kinds that a till can
// reckon with. The till loses the others, but for an offer that one of its coupons points to.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kOfferTable{"PRISTILBUD_IMPORT", R"(create table PRISTILBUD_IMPORT (
  PR_ID int null,
  PR_FRADATO datetime null,
  PR_TILDATO datetime null,
  PR_TYPE int null,
  PR_BEREGNINGSMETODE int null,
  PR_FAST_RABATT float null
))"};

constexpr WorkTable kOfferLineTable{"PRISTILBUDLINJE_IMPORT", R"(create table PRISTILBUDLINJE_IMPORT (
  PL_VA_ID char(20) null,
  PL_PR_ID int null,
  PL_PRIS float null
))"};

constexpr const WorkTable* kTables[] = {&kOfferTable, &kOfferLineTable};

constexpr Action kCreate[] = {SetTransformation{"Opprette Pristilbud tabeller"}, CreateTables{kTables}};

constexpr Piece kOffersThatHold{
    R"(WHERE GETDATE() BETWEEN Pr_FraDato AND Pr_TilDato AND ( Pr_Type IN (4,5) OR ( Pr_Type IN (0,1,2,3) AND Pr_Beregningsmetode IN (0,4))) AND ( Pr_GjelderAlleAvd=1 OR EXISTS ( SELECT 1 FROM PristilbudInternKunde WHERE Pb_Pr_Id=Pr_Id AND Pb_Ik_Ku_Id=%d ))
and pr_pst_id=2 -- Endelig godkjent)",
    kAlways,
    {Arg::Ik_Ku_ID}};

constexpr Piece kOffers[] = {
    {R"(SELECT PR_ID, PR_FRADATO, PR_TILDATO, PR_TYPE, PR_BEREGNINGSMETODE, PR_FAST_RABATT
FROM Pristilbud)"},
    kOffersThatHold,
};

constexpr Piece kOfferLines[] = {
    {R"(SELECT PL_Va_ID, PL_Pr_ID, PL_PRIS
FROM Pristilbud JOIN Pristilbudlinje ON PL_Pr_ID=Pr_Id)"},
    kOffersThatHold,
};

constexpr char kCoupons[] = "KUPONG";

constexpr Piece kMerge[] = {
    {"DELETE PRISTILBUDLINJE WHERE NOT EXISTS ( SELECT 1 FROM PRISTILBUDLINJE_IMPORT WHERE PRISTILBUDLINJE.PL_PR_ID=PRISTILBUDLINJE_IMPORT.PL_PR_ID AND PRISTILBUDLINJE.PL_VA_ID = PRISTILBUDLINJE_IMPORT.PL_VA_ID )"},
    {"DELETE PRISTILBUD WHERE NOT EXISTS ( SELECT 1 FROM PRISTILBUD_IMPORT WHERE PRISTILBUD.PR_ID=PRISTILBUD_IMPORT.PR_ID ) AND NOT EXISTS ( SELECT 1 FROM PRISTILBUDLINJE WHERE PL_PR_ID=PRISTILBUD.PR_ID )"},
    {"AND NOT EXISTS ( select 1 from kupong where kup_pr_id=pr_id)", tillHas(kCoupons)},
    {R"(INSERT INTO PRISTILBUD (PR_ID, PR_FRADATO, PR_TILDATO, PR_TYPE, PR_BEREGNINGSMETODE, PR_FAST_RABATT)
SELECT PR_ID, PR_FRADATO, PR_TILDATO, PR_TYPE, PR_BEREGNINGSMETODE, PR_FAST_RABATT FROM PRISTILBUD_IMPORT WHERE NOT EXISTS ( SELECT 1 FROM PRISTILBUD WHERE PRISTILBUD.PR_ID=PRISTILBUD_IMPORT.PR_ID ))"},
    {R"(INSERT INTO PRISTILBUDLINJE (PL_VA_ID, PL_PR_ID, PL_PRIS) SELECT PL_VA_ID, PL_PR_ID, PL_PRIS FROM PRISTILBUDLINJE_IMPORT JOIN Vare ON Pl_Va_Id=Va_Id COLLATE DATABASE_DEFAULT 
JOIN PRISTILBUD ON PR_ID=PL_PR_ID WHERE NOT EXISTS (SELECT 1 FROM PRISTILBUDLINJE WHERE PRISTILBUDLINJE.PL_PR_ID=PRISTILBUDLINJE_IMPORT.PL_PR_ID AND PRISTILBUDLINJE.PL_VA_ID=PRISTILBUDLINJE_IMPORT.PL_VA_ID ))"},
    {R"(UPDATE PRISTILBUD SET  PR_FRADATO=PRISTILBUD_IMPORT.PR_FRADATO, PR_TILDATO=PRISTILBUD_IMPORT.PR_TILDATO, PR_TYPE=PRISTILBUD_IMPORT.PR_TYPE, PR_BEREGNINGSMETODE=PRISTILBUD_IMPORT.PR_BEREGNINGSMETODE, PR_FAST_RABATT=PRISTILBUD_IMPORT.PR_FAST_RABATT
FROM PRISTILBUD_IMPORT WHERE PRISTILBUD.PR_ID=PRISTILBUD_IMPORT.PR_ID)"},
    {"UPDATE PRISTILBUDLINJE SET PL_PRIS = PRISTILBUDLINJE_IMPORT.PL_PRIS FROM PRISTILBUDLINJE_IMPORT WHERE PRISTILBUDLINJE.PL_PR_ID=PRISTILBUDLINJE_IMPORT.PL_PR_ID AND PRISTILBUDLINJE.PL_VA_ID = PRISTILBUDLINJE_IMPORT.PL_VA_ID"},
};

constexpr Action kSend[] = {
    AskForTable{kCoupons},
    LoadTable{
        .caption = "PRISTILBUD", .table = "PRISTILBUD_IMPORT", .query = kOffers, .readWith = ReadWith::OtherRegisters},
    LoadTable{.caption = "PRISTILBUDLINJE",
              .table = "PRISTILBUDLINJE_IMPORT",
              .query = kOfferLines,
              .readWith = ReadWith::OtherRegisters},
    TillBatch{kMerge},
};

}  // namespace

constinit const Actions kCreateOfferTables{kCreate};
constinit const Actions kSendOffers{kSend};

}  // namespace torvik

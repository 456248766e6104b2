// Currencies, where the back office's settings ask for them. The back office's ratio is the till's unit. None is
// deleted.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr WorkTable kValutaImport{"VALUTAIMPORT", R"(create table VALUTAIMPORT (
  VUI_ID char(3),
  VUI_NAVN char(50),
  VUI_KURS float,
  VUI_FORHOLD int
))"};

constexpr const WorkTable* kTables[] = {&kValutaImport};

constexpr CopiedColumn kColumns[] = {
    {"Vu_ID", "Vui_ID"},
    {"Vu_Navn", "Vui_Navn"},
    {"Vu_Kurs", "Vui_Kurs"},
    {"Vu_Forhold", "Vui_Forhold"},
};

constexpr Piece kMerge[] = {
    {R"(INSERT INTO VALUTA SELECT VUI_ID, VUI_NAVN, VUI_KURS, VUI_FORHOLD FROM VALUTAIMPORT
WHERE VUI_ID NOT IN (SELECT VU_ID FROM VALUTA))"},
    {R"(UPDATE VALUTA SET VU_NAVN = VUI_NAVN, VU_KURS = VUI_KURS, VU_ENHET = VUI_FORHOLD
FROM VALUTAIMPORT WHERE VUI_ID = VU_ID)"},
};

constexpr Action kSend[] = {
    CreateTables{kTables},
    StartClock{},
    SetTransformation{"Valuta"},
    CopyRows{.progress = "Overfører Valuta",
             .name = "Valuta",
             .query = "SELECT * FROM Valuta",
             .table = "VALUTAIMPORT",
             .columns = kColumns,
             .readWith = ReadWith::OtherRegisters},
    SetTransformation{"Valuta"},
    TillBatch{kMerge},
};

}  // namespace

constinit const Actions kSendCurrencies{kSend};

}  // namespace torvik

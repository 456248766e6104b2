// Vouchers used on the lines of the fetched settlements.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kKupongColumns[] = {
    {"Kup_Id", "tki_Kup_Id"},
    {kRunIkKuId, "tki_Kup_Ik_Ku_ID"},
    {kRunKasseNr, "tki_Kup_Kassenr"},
    {"Kup_Pr_Id", "tki_Kup_Pr_ID"},
    {"Kup_Aktivert", "tki_Kup_Aktivert"},
    {"Kup_Oppr_Antall", "tki_Kup_Oppr_Antall"},
    {"Kup_Brukt_Antall", "tki_Kup_Brukt_Antall"},
    {"Kup_Merket_Brukt", "tki_Kup_Merket_Brukt"},
    {kNow, "tki_inserted"},
    {kRunUnId, "tki_unid"},
};

constexpr char kKupongSource[] =
    R"(SELECT KUP_ID, KUP_PR_ID, KUP_AKTIVERT, KUP_OPPR_ANTALL, KUP_BRUKT_ANTALL, KUP_MERKET_BRUKT
FROM KUPONGORDRELINJE
JOIN ORDRELINJE ON KOL_OL_ID=OL_ID
JOIN ORDRE ON OR_ID=OL_OR_ID
JOIN OPPGJOR ON OR_OP_ID=OP_ID
JOIN KUPONG ON KOL_KUP_ID=KUP_ID
WHERE OP_ID >= %d
GROUP BY KUP_ID, KUP_PR_ID, KUP_AKTIVERT, KUP_OPPR_ANTALL, KUP_BRUKT_ANTALL, KUP_MERKET_BRUKT)";

constexpr ColumnRule kKupongOrdrelinjeColumns[] = {
    {"Kol_Kup_Id", "tkol_Kol_Kup_Id"},
    {kRunIkKuId, "tkol_Kol_Kup_Ik_Ku_ID"},
    {kRunKasseNr, "tkol_Kol_Kup_Kassenr"},
    {"Kol_Ol_Id", "tkol_Kup_Ol_Id"},
    {kRunIkKuId, "tkol_Kup_Ol_Or_Ik_Ku_ID"},
    {kRunKasseNr, "tkol_Kup_Ol_Or_KasseNr"},
    {kNow, "tkol_inserted"},
    {kRunUnId, "tkol_unid"},
};

constexpr char kKupongOrdrelinjeSource[] = R"(SELECT KUPONGORDRELINJE.* FROM KUPONGORDRELINJE
JOIN ORDRELINJE ON KOL_OL_ID=OL_ID
JOIN ORDRE ON OR_ID=OL_OR_ID
JOIN OPPGJOR ON OR_OP_ID=OP_ID
JOIN KUPONG ON KOL_KUP_ID=KUP_ID
WHERE OP_ID >= %d)";

}  // namespace

const TableMap kKupongMap{
    .step = "Kupong",
    .component = "tblGeneral",
    .target = "Temp_Kupong_Import",
    .source = kKupongSource,
    .rowProgress = "Overfører Kupong",
    .columns = kKupongColumns,
    .requiredTable = "KUPONG",
};

const TableMap kKupongOrdrelinjeMap{
    .step = "KupongOrdrelinje",
    .component = "tblGeneral",
    .target = "Temp_KupongOrdrelinje_Import",
    .source = kKupongOrdrelinjeSource,
    .rowProgress = "Overfører KupongOrdrelinje",
    .columns = kKupongOrdrelinjeColumns,
    .requiredTable = "KUPONGORDRELINJE",
};

}  // namespace torvik

// Orders with their lines, reasons, texts and returns.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kOrdreColumns[] = {
    {"OR_ID", "toi_or_id"},
    {kRunIkKuId, "toi_ik_ku_id"},
    {kRunKasseNr, "toi_kassenr"},
    {"OR_KU_ID", "toi_ku_id"},
    {"OR_OP_ID", "toi_op_id"},
    {"OR_AN_ID", "toi_ika_id"},
    {"OR_RA_ID", "toi_ra_id"},
    {"OR_RABATT_AN_ID", "toi_rabatt_ika_id"},
    {"OR_TIDSPUNKT", "toi_tidspunkt"},
    {"OR_TIDSPUNKTFERDIG", "toi_tidspunktferdig"},
    {"OR_STATUS", "toi_status"},
    {"OR_REKVISISJONSNUMMER", "toi_rekvisisjonsnummer"},
    {"OR_POSTNR", "toi_postnr"},
    {"OR_TELEFON", "toi_telefon"},
    {kStockCount, "toi_varetelling"},
    {"Or_Torvik_Or_Id", "toi_Or_Torvik_Or_Id", When::BothHave},
    {"Or_EAN13", "toi_Or_EAN13", When::BothHave},
    {"OR_STATISTIKK_AN_ID", "toi_statistikk_ika_id", When::SourceHas},
    {kNow, "toi_inserted"},
    {kRunUnId, "toi_unid"},
};

constexpr char kOrdreSource[] =
    R"(SELECT Ordre.*, op_type FROM Ordre join Oppgjor on or_op_id = op_id WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kOrdrelinjeColumns[] = {
    {"OL_ID", "toli_ol_id"},
    {kRunIkKuId, "toli_ik_ku_id"},
    {kRunKasseNr, "toli_kassenr"},
    {"OL_OR_ID", "toli_or_id"},
    {"OL_VA_ID", "toli_va_id"},
    {"OL_ANTALL", "toli_antall"},
    {"OL_RABATT", "toli_rabatt"},
    {"OL_SALGSPRIS", "toli_salgspris"},
    {"OL_MVASATS", "toli_mvasats"},
    {fixed(-1), "toli_kostpris"},
    {"OL_SLETTET", "toli_slettet"},
    {"OL_MERSALG", "toli_mersalg"},
    {"OL_STATUS", "toli_status"},
    {"OL_TORVIK_OR_ID", "toli_torvik_or_id", When::TillAbove149},
    {"OL_TORVIK_KU_ID", "toli_torvik_ku_id", When::TillAbove149},
    {kDisplayItem, "toli_visningsvare", When::TillFrom194},
    {"OL_GJELDENDEPRIS", "toli_GjeldendePris", When::SourceHas},
    {kNow, "toli_inserted"},
    {kRunUnId, "toli_unid"},
};

constexpr char kOrdrelinjeSource[] = R"(SELECT OL_ID,OL_OR_ID,OL_VA_ID,OL_ANTALL,OL_RABATT,
case when ol_salgspris > 1E+18 then convert(decimal(18,4),99999999999999+.99)
     when ol_salgspris < -1E+18 then convert(decimal(18,4),-99999999999999+.99)
else convert(decimal(18,4),ol_salgspris) end OL_SALGSPRIS,
OL_MVASATS,OL_SLETTET,OL_MERSALG,OL_STATUS,OL_KOSTPRIS,OL_TORVIK_OR_ID,OL_TORVIK_KU_ID,OL_VISNINGSVARE,OL_KORREKSJON,OL_GJELDENDEPRIS
FROM ORDRE,ORDRELINJE WHERE OL_OR_ID = OR_ID AND OR_OP_ID >= %d)";

constexpr ColumnRule kOrdregrunnColumns[] = {
    {"OG_GR_ID", "tog_gr_id"},    {"OG_OR_ID", "tog_or_id"}, {kRunIkKuId, "tog_ik_ku_id"},
    {kRunKasseNr, "tog_kassenr"}, {kNow, "tog_inserted"},    {kRunUnId, "tog_unid"},
};

constexpr char kOrdregrunnSource[] =
    R"(SELECT ORDREGRUNN.* FROM ORDRE JOIN ORDREGRUNN ON OG_OR_ID = OR_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kOrdrelinjegrunnColumns[] = {
    {"OLG_GR_ID", "tolg_gr_id"},   {"OLG_OL_ID", "tolg_ol_id"}, {kRunIkKuId, "tolg_ik_ku_id"},
    {kRunKasseNr, "tolg_kassenr"}, {kNow, "tolg_inserted"},     {kRunUnId, "tolg_unid"},
};

constexpr char kOrdrelinjegrunnSource[] =
    R"(SELECT ORDRELINJEGRUNN.* FROM ORDRE JOIN ORDRELINJE ON OR_ID = OL_OR_ID JOIN ORDRELINJEGRUNN ON OLG_OL_ID = OL_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kOrdrelinjetekstColumns[] = {
    {"OLT_OL_ID", "tot_ol_id"}, {kRunIkKuId, "tot_ik_ku_id"}, {kRunKasseNr, "tot_kassenr"},
    {"OLT_NAVN", "tot_navn"},   {kNow, "tot_inserted"},       {kRunUnId, "tot_unid"},
};

constexpr char kOrdrelinjetekstSource[] =
    R"(SELECT ORDRELINJETEKST.* FROM ORDRE JOIN ORDRELINJE ON OL_OR_ID = OR_ID JOIN ORDRELINJETEKST ON OLT_OL_ID = OL_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kOrdrereturColumns[] = {
    {"ORE_ID", "ti_ORE_ID"},
    {"ORE_OR_ID", "ti_ORE_OR_ID"},
    {kRunIkKuId, "ti_ORE_OR_IK_KU_ID"},
    {kRunKasseNr, "ti_ORE_OR_KASSENR"},
    {"ORE_RETUR_OR_ID", "ti_ORE_RETUR_OR_ID"},
    {"ORE_RETUR_AVDNR", "ti_ORE_RETUR_AVDNR"},
    {"ORE_RETUR_KASSENR", "ti_ORE_RETUR_KASSENR"},
    {kNow, "ti_inserted"},
    {kRunUnId, "ti_unid"},
};

constexpr char kOrdrereturSource[] = R"(SELECT ORE_ID, ORE_OR_ID, ORE_RETUR_OR_ID, ORE_RETUR_AVDNR, ORE_RETUR_KASSENR
FROM ORDRERETUR JOIN Ordre ON ORE_OR_ID=Or_Id WHERE Or_Op_ID >= %d)";

}  // namespace

const TableMap kOrdreMap{
    .step = "Ordre",
    .component = "tblOrdre",
    .target = "Temp_Ordre_Import",
    .source = kOrdreSource,
    .rowProgress = "Overfører Ordre",
    .columns = kOrdreColumns,
    .openedEvent = "Henter {Antall_ordre} ordrer fra avdelingsnummer {Avdelingsnummer} kassenummer {Kassenummer}",
};

const TableMap kOrdrelinjeMap{
    .step = "Ordrelinje",
    .component = "tblOrdrelinje",
    .target = "Temp_Ordrelinje_Import",
    .source = kOrdrelinjeSource,
    .rowProgress = "Overfører Ordrelinje",
    .columns = kOrdrelinjeColumns,
};

const TableMap kOrdregrunnMap{
    .step = "Ordregrunn",
    .component = "tblOrdregrunn",
    .target = "Temp_Ordregrunn_Import",
    .source = kOrdregrunnSource,
    .rowProgress = "Overfører Ordregrunn",
    .columns = kOrdregrunnColumns,
};

const TableMap kOrdrelinjegrunnMap{
    .step = "Ordrelinjegrunn",
    .component = "tblOrdrelinjegrunn",
    .target = "Temp_Ordrelinjegrunn_Import",
    .source = kOrdrelinjegrunnSource,
    .rowProgress = "Overfører Ordrelinjegrunn",
    .columns = kOrdrelinjegrunnColumns,
};

const TableMap kOrdrelinjetekstMap{
    .step = "Ordrelinjetekst",
    .component = "tblOrdrelinjetekst",
    .target = "Temp_Ordrelinjetekst_Import",
    .source = kOrdrelinjetekstSource,
    .rowProgress = "Overfører Ordrelinjetekst",
    .columns = kOrdrelinjetekstColumns,
};

const TableMap kOrdrereturMap{
    .step = "Ordreretur",
    .component = "tblGeneral",
    .target = "Temp_PosOrdreRetur_Import",
    .source = kOrdrereturSource,
    .rowProgress = "Overfører OrdreRetur",
    .columns = kOrdrereturColumns,
    .fromVersion = 188,
};

}  // namespace torvik

// Payments, what the card terminal and the telephone payment said of them, and pay-outs.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kBetalingColumns[] = {
    {"BT_ID", "tbi_bt_id"},    {kRunIkKuId, "tbi_ik_ku_id"}, {kRunKasseNr, "tbi_kassenr"},
    {"BT_BF_ID", "tbi_bf_id"}, {"BT_OR_ID", "tbi_or_id"},    {"BT_BELOP", "tbi_belop"},
    {kNow, "tbi_inserted"},    {kRunUnId, "tbi_unid"},       {"BT_VU_KURS", "tbi_vu_kurs"},
};

constexpr char kBetalingSource[] =
    R"(SELECT BETALING.* FROM BETALING JOIN ORDRE ON BT_OR_ID = OR_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kBetalingBankinfoColumns[] = {
    {"BBI_ID", "tbbi_bbi_id"},
    {kRunIkKuId, "tbbi_ik_ku_id"},
    {kRunKasseNr, "tbbi_kassenr"},
    {"BBI_BT_ID", "tbbi_bt_id"},
    {"BBI_KO_ID", "tbbi_ko_id"},
    {"BBI_KORTDATA", "tbbi_kortdata"},
    {"BBI_TIDSSTEMPEL", "tbbi_tidsstempel"},
    {"BBI_LOJALITETSINFO", "tbbi_lojalitetsinfo"},
    {"BBI_AVSTEM_SESJONSNUMMER", "tbbi_avstem_sesjonsnummer"},
    {kNow, "tbbi_inserted"},
    {kRunUnId, "tbbi_unid"},
    {"BBI_TRANID", "tbbi_tranid", When::BothHave},
    {"BBI_AUTH", "tbbi_auth", When::BothHave},
};

constexpr char kBetalingBankinfoSource[] =
    R"(SELECT BETALINGBANKINFO.* FROM BETALINGBANKINFO JOIN BETALING ON BBI_BT_ID = BT_ID JOIN ORDRE ON BT_OR_ID = OR_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kVippsBetalingColumns[] = {
    {kRunIkKuId, "tvib_Bt_Or_Ik_Ku_Id"}, {kRunKasseNr, "tvib_Bt_Or_KasseNr"},     {"VIB_BT_ID", "tvib_BT_ID"},
    {"VIB_REFERANSE", "tvib_REFERANSE"}, {"VIB_ORDRENUMMER", "tvib_ORDRENUMMER"}, {kRunUnId, "tvib_unid"},
};

constexpr char kVippsBetalingSource[] =
    R"(SELECT VippsBetaling.* FROM VippsBetaling JOIN BETALING ON VIB_BT_ID = BT_ID JOIN ORDRE ON BT_OR_ID = OR_ID WHERE OR_OP_ID >= %d)";

constexpr ColumnRule kUtbetalingImportColumns[] = {
    {"UB_BT_ID", "tui_bt_id"},     {kRunIkKuId, "tui_ik_ku_id"},  {kRunKasseNr, "tui_kassenr"},
    {"UB_NAVN", "tui_kundenavn"},  {"UB_TELEFON", "tui_telefon"}, {"UB_EPOST", "tui_epost"},
    {"UB_ADRESSE", "tui_adresse"}, {"UB_KONTO", "tui_konto"},     {"UB_STATUS", "tui_status"},
    {kNow, "tui_inserted"},        {kRunUnId, "tui_unid"},
};

constexpr char kUtbetalingImportSource[] =
    R"(IF EXISTS (select 1 from sysobjects where name = 'UTBETALING' and type = 'U')
 select UB_BT_ID,UB_NAVN,UB_KONTO,UB_TELEFON,UB_EPOST,UB_ADRESSE, ISNULL(UB_STATUS,0) AS UB_STATUS from UTBETALING,BETALING,ORDRE
where ub_bt_id = bt_id and bt_or_id = or_id and or_op_id >=%d
else select UB_BT_ID = Null,UB_NAVN = NUll,UB_KONTO= NULL,UB_TELEFON=NUll,UB_EPOST=Null,UB_ADRESSE=NUll, UB_STATUS=NULL where 1=0)";

}  // namespace

const TableMap kBetalingMap{
    .step = "Betaling",
    .component = "tblBetaling",
    .target = "Temp_Betaling_Import",
    .source = kBetalingSource,
    .rowProgress = "Overfører Betaling",
    .columns = kBetalingColumns,
};

const TableMap kBetalingBankinfoMap{
    .step = "BetalingBankinfo",
    .component = "tblBetalingBankinfo",
    .target = "Temp_Betalingbankinfo_Import",
    .source = kBetalingBankinfoSource,
    .rowProgress = "Overfører Betaling bankinfo",
    .columns = kBetalingBankinfoColumns,
};

const TableMap kVippsBetalingMap{
    .step = "VippsBetaling",
    .component = "tblVippsBetaling",
    .target = "Temp_VippsBetaling_Import",
    .source = kVippsBetalingSource,
    .rowProgress = "Overfører VippsBetaling",
    .columns = kVippsBetalingColumns,
    .fromVersion = 198,
};

const TableMap kUtbetalingImportMap{
    .step = "UtbetalingImport",
    .component = "tblUtbetaling",
    .target = "Temp_Utbetaling_Import",
    .source = kUtbetalingImportSource,
    .rowProgress = "Overfører Utbetalingimport",
    .columns = kUtbetalingImportColumns,
};

}  // namespace torvik

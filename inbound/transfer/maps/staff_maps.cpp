// Staff that the back office does not know, and what staff did: settlements, log, time entries.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kAnsattColumns[] = {
    {"AN_ID", "tikai_id"},          {kRunIkKuId, "tikai_ik_ku_id"},
    {kRunKasseNr, "tikai_kassenr"}, {"AN_TP_ID", "tikai_pos_tp_id"},
    {"AN_NAVN", "tikai_navn"},      {"AN_AKTIV", "tikai_aktiv"},
    {"AN_RABATT", "tikai_rabatt"},  {"AN_RABKUNPAAORDPRIS", "tikai_rabattkunpaaordpris"},
    {"AN_NIVAA", "tikai_nivaa"},    {"AN_ANSATTDATO", "tikai_ansattdato"},
    {kNow, "tikai_inserted"},       {kRunUnId, "tikai_unid"},
};

constexpr char kAnsattSource[] =
    R"(select ANSATT.* from ansatt, INNSTILLINGER where ( An_Avdnr is null or an_avdnr = in_avdnr ) and
An_Id NOT IN (%s))";

constexpr ColumnRule kEkstraAnsattOppgjorColumns[] = {
    {"EAO_ID", "teaoi_eao_id"},    {kRunIkKuId, "teaoi_ik_ku_id"},       {kRunKasseNr, "teaoi_kassenr"},
    {"EAO_AN_ID", "teaoi_ika_id"}, {"EAO_OP_ID", "teaoi_op_id"},         {"EAO_UTLEVAV_AN_ID", "teaoi_utlev_ika_id"},
    {"EAO_NAVN", "teaoi_navn"},    {"EAO_TIDSPUNKT", "teaoi_tidspunkt"}, {kNow, "teaoi_inserted"},
    {kRunUnId, "teaoi_unid"},
};

constexpr char kEkstraAnsattOppgjorSource[] =
    R"(SELECT EKSTRAANSATTOPPGJOR.* FROM EKSTRAANSATTOPPGJOR WHERE EAO_OP_ID >= %d)";

constexpr ColumnRule kLoggColumns[] = {
    {"LO_ID", "tli_lo_id"},
    {kRunIkKuId, "tli_ik_ku_id"},
    {kRunKasseNr, "tli_kassenr"},
    {"LO_AN_ID", "tli_ika_id"},
    {"LO_LT_ID", "tli_lt_id"},
    {"LO_OP_ID", "tli_op_id"},
    {"LO_TIDSPUNKT", "tli_tidspunkt"},
    {"LO_MERKNADER", "tli_merknader"},
    {kNow, "tli_inserted"},
    {kRunUnId, "tli_unid"},
};

constexpr char kLoggSource[] = R"(SELECT LOGG.* FROM LOGG WHERE LO_OP_ID >= %d)";

constexpr char kTimerReleasedSource[] = R"(SELECT TIMER.* FROM TIMER,INNSTILLINGER WHERE Ti_Status IN (2,4,8) 
and IN_KLAR_HENT_TIMER is not null and coalesce(ti_korrigerttidinn,ti_tidinn)<=IN_KLAR_HENT_TIMER and in_id = 1)";

constexpr char kTimerSource[] = R"(SELECT TIMER.* FROM TIMER
WHERE Ti_Status IN (1,2,4,8) AND NOT COALESCE(ti_korrigerttidut, ti_tidut) IS NULL)";

constexpr ColumnRule kTimerColumns[] = {
    {"TI_ID", "tti_id"},
    {kRunIkKuId, "tti_ik_ku_id"},
    {kRunKasseNr, "tti_kassenr"},
    {"TI_AN_ID", "tti_ika_id"},
    {"TI_GODKJENN_GR_ID", "tti_godkjenn_gr_id"},
    {"TI_TIDINN", "tti_tidinn"},
    {"TI_TIDUT", "tti_tidut"},
    {"TI_TEKST", "tti_tekst"},
    {"TI_INNMETODE", "tti_innmetode"},
    {"TI_UTMETODE", "tti_utmetode"},
    {"TI_KORRIGERTTIDINN", "tti_korrigerttidinn"},
    {"TI_KORRIGERTTIDUT", "tti_korrigerttidut"},
    {"TI_STATUS", "tti_status"},
    {"TI_MANUELL_TK_ID", "tti_manuell_tk_id"},
    {"TI_TREKKPAUSE", "tti_trekkpause"},
    {"TI_SYK_GR_ID", "tti_syk_gr_id"},
    {kNow, "tti_inserted"},
    {kRunUnId, "tti_unid"},
};

constexpr char kTimerPrKodeReleasedSource[] =
    R"(SELECT TPK_TI_ID,TPK_TK_ID,TPK_TID FROM Timerprkode,Timer,innstillinger WHERE Tpk_Ti_Id = Ti_Id and Ti_Status in (2,4,8) and IN_KLAR_HENT_TIMER is not null and coalesce(ti_korrigerttidinn,ti_tidinn)<=IN_KLAR_HENT_TIMER and In_id = 1)";

constexpr char kTimerPrKodeSource[] =
    R"(SELECT TPK_TI_ID,TPK_TK_ID,TPK_TID FROM Timerprkode,Timer WHERE Tpk_Ti_Id = Ti_Id AND Ti_Status IN (1,2,4,8) AND NOT COALESCE(ti_korrigerttidut, ti_tidut) IS NULL)";

constexpr ColumnRule kTimerPrKodeColumns[] = {
    {"TPK_TI_ID", "ttpi_ti_id"}, {kRunIkKuId, "ttpi_ik_ku_id"}, {kRunKasseNr, "ttpi_kassenr"},
    {"TPK_TK_ID", "ttpi_tk_id"}, {"TPK_TID", "ttpi_tid"},       {kNow, "ttpi_inserted"},
    {kRunUnId, "ttpi_unid"},
};

}  // namespace

const TableMap kAnsattMap{
    .step = "Ansatt",
    .component = "tblAnsatt",
    .target = "Temp_InternkundeAnsatt_Import",
    .source = kAnsattSource,
    .rowProgress = "Overfører Ansatte",
    .columns = kAnsattColumns,
};

const TableMap kEkstraAnsattOppgjorMap{
    .step = "EkstraAnsattOppgjør",
    .component = "tblEkstraansattoppgjor",
    .target = "Temp_Ekstraansattoppgjor_Import",
    .source = kEkstraAnsattOppgjorSource,
    .rowProgress = "Overfører Ekstraansattoppgjør",
    .columns = kEkstraAnsattOppgjorColumns,
};

const TableMap kLoggMap{
    .step = "Logg",
    .component = "tblLogg",
    .target = "Temp_Logg_Import",
    .source = kLoggSource,
    .rowProgress = "Overfører Logg",
    .columns = kLoggColumns,
};

const TableMap kTimerMap{
    .step = "Timer",
    .component = "tblTimer",
    .target = "Temp_Timer_Import",
    .source = kTimerSource,
    .rowProgress = "Overfører Timer",
    .columns = kTimerColumns,
    .releasedSource = kTimerReleasedSource,
};

const TableMap kTimerPrKodeMap{
    .step = "TimerPrKode",
    .component = "tblTimerprkode",
    .target = "Temp_Timerprkode_Import",
    .source = kTimerPrKodeSource,
    .rowProgress = "Overfører Timerprkode",
    .columns = kTimerPrKodeColumns,
    .releasedSource = kTimerPrKodeReleasedSource,
};

}  // namespace torvik

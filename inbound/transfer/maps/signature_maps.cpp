// Signatures on payments, orders and settlements, and the files attached to settlements.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kSignaturColumns[] = {
    {kRunIkKuId, "imp_Pos_Si_Ik_Ku_ID"}, {kRunKasseNr, "imp_Pos_Si_Kassenummer"}, {"SI_ID", "imp_Pos_Si_ID"},
    {"SI_BILDE", "imp_Pos_Si_Bilde"},    {kNow, "imp_Pos_Si_Inserted"},           {kRunUnId, "imp_Pos_Si_unid"},
};

constexpr char kSignaturSource[] = R"(SELECT SI_ID, SI_BILDE FROM SIGNATUR
WHERE SI_ID IN (
 SELECT BTSI_SI_ID
FROM BETALINGSIGNATUR JOIN SIGNATUR ON BTSI_SI_ID=SI_ID JOIN BETALING ON BTSI_BT_ID=BT_ID JOIN ORDRE ON BT_OR_ID=OR_ID
WHERE OR_OP_ID>=%d 
UNION
SELECT ORSI_SI_ID
FROM ORDRESIGNATUR JOIN SIGNATUR ON ORSI_SI_ID=SI_ID JOIN ORDRE ON ORSI_OR_ID=OR_ID
WHERE OR_OP_ID>=%d
UNION
SELECT OPSI_SI_ID
FROM OPPGJORSIGNATUR JOIN SIGNATUR ON OPSI_SI_ID=SI_ID
WHERE OPSI_OP_ID>=%d))";

constexpr ColumnRule kBetalingSignaturColumns[] = {
    {"BTSI_BT_ID", "imp_Pos_Btsi_Bt_Id"},
    {kRunIkKuId, "imp_Pos_Btsi_Bt_Or_Ik_Ku_ID"},
    {kRunKasseNr, "imp_Pos_Btsi_Bt_Or_KasseNr"},
    {"BTSI_SI_ID", "imp_Pos_Btsi_Si_ID"},
    {"BTSI_SIT_ID", "imp_Pos_Btsi_Sit_ID"},
    {kNow, "imp_Pos_Btsi_Inserted"},
    {kRunUnId, "imp_Pos_Btsi_Unid"},
};

constexpr char kBetalingSignaturSource[] =
    R"(SELECT BTSI_BT_ID, BTSI_SI_ID, BTSI_SIT_ID FROM BETALINGSIGNATUR JOIN Betaling ON BTSI_BT_ID=Bt_Id JOIN Ordre ON BT_OR_ID=OR_ID
WHERE OR_OP_ID>=%d)";

constexpr ColumnRule kOrdreSignaturColumns[] = {
    {"ORSI_OR_ID", "imp_Pos_Orsi_Or_Id"},     {kRunIkKuId, "imp_Pos_Orsi_Or_Ik_Ku_ID"},
    {kRunKasseNr, "imp_Pos_Orsi_Or_KasseNr"}, {"ORSI_SI_ID", "imp_Pos_Orsi_Si_ID"},
    {"ORSI_SIT_ID", "imp_Pos_Orsi_Sit_ID"},   {kNow, "imp_Pos_Orsi_Inserted"},
    {kRunUnId, "imp_Pos_Orsi_unid"},
};

constexpr char kOrdreSignaturSource[] =
    R"(SELECT ORSI_OR_ID, ORSI_SI_ID, ORSI_SIT_ID FROM ORDRESIGNATUR JOIN ORDRE ON ORSI_OR_ID=OR_ID 
WHERE OR_OP_ID>=%d)";

constexpr ColumnRule kOppgjorSignaturColumns[] = {
    {"OPSI_OP_ID", "imp_Pos_Opsi_Op_Id"},     {kRunIkKuId, "imp_Pos_Opsi_Op_Ik_Ku_ID"},
    {kRunKasseNr, "imp_Pos_Opsi_Op_KasseNr"}, {"OPSI_SI_ID", "imp_Pos_Opsi_Si_ID"},
    {"OPSI_SIT_ID", "imp_Pos_Opsi_Sit_ID"},   {kNow, "imp_Pos_Opsi_Inserted"},
    {kRunUnId, "imp_Pos_Opsi_unid"},
};

constexpr char kOppgjorSignaturSource[] = R"(SELECT OPSI_OP_ID, OPSI_SI_ID, OPSI_SIT_ID
FROM OPPGJORSIGNATUR JOIN OPPGJOR ON OPSI_OP_ID=OP_ID WHERE OP_ID>=%d)";

constexpr ColumnRule kVedleggColumns[] = {
    {"VLG_ID", "imp_Pos_Vlg_ID"},
    {"VLG_OP_ID", "imp_Pos_Vlg_Op_Id"},
    {kRunIkKuId, "imp_Pos_Vlg_Op_Ik_Ku_ID"},
    {kRunKasseNr, "imp_Pos_Vlg_Op_KasseNr"},
    {"VLG_FILNAVN", "imp_Pos_Vlg_Filnavn"},
    {"VLG_INNHOLD", "imp_Pos_Vlg_Innhold"},
    {kNow, "imp_Pos_Vlg_Inserted"},
    {kRunUnId, "imp_Pos_Vlg__Unid"},
};

constexpr char kVedleggSource[] = R"(SELECT VLG_ID, VLG_OP_ID, VLG_FILNAVN, VLG_INNHOLD
FROM VEDLEGG WHERE VLG_OP_ID>=%d)";

}  // namespace

const TableMap kSignaturMap{
    .step = "Signatur",
    .component = "tblSignatur",
    .target = "temp_POSSIGNATUR_Import",
    .source = kSignaturSource,
    .rowProgress = "Overfører signatur",
    .columns = kSignaturColumns,
    .fromVersion = 158,
    .closesSource = true,
};

const TableMap kBetalingSignaturMap{
    .step = "BetalingSignatur",
    .component = "tblBetalingSignatur",
    .target = "temp_POSBETALINGSIGNATUR_Import",
    .source = kBetalingSignaturSource,
    .rowProgress = "Overfører signatur",
    .columns = kBetalingSignaturColumns,
    .fromVersion = 158,
    .closesSource = true,
};

const TableMap kOrdreSignaturMap{
    .step = "OrdreSignatur",
    .component = "tblOrdreSignatur",
    .target = "temp_POSORDRESIGNATUR_Import",
    .source = kOrdreSignaturSource,
    .rowProgress = nullptr,
    .columns = kOrdreSignaturColumns,
    .fromVersion = 158,
    .closesSource = true,
};

const TableMap kOppgjorSignaturMap{
    .step = "OppgjorSignatur",
    .component = "tblOppgjorSignatur",
    .target = "temp_POSOPPGJORSIGNATUR_Import",
    .source = kOppgjorSignaturSource,
    .rowProgress = nullptr,
    .columns = kOppgjorSignaturColumns,
    .fromVersion = 158,
    .closesSource = true,
};

const TableMap kVedleggMap{
    .step = "Vedlegg",
    .component = "tblVedlegg",
    .target = "temp_POSVEDLEGG_import",
    .source = kVedleggSource,
    .rowProgress = nullptr,
    .columns = kVedleggColumns,
    .fromVersion = 138,
    .closesSource = true,
    .streams = true,
};

}  // namespace torvik

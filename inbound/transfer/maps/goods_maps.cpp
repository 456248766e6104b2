// Goods received and goods ordered at the till.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kVaremottakColumns[] = {
    {"VM_ID", "tvi_vm_id"},
    {kRunIkKuId, "tvi_ik_ku_id"},
    {kRunKasseNr, "tvi_kassenr"},
    {"VM_AN_ID", "tvi_ika_id"},
    {"VM_OP_ID", "tvi_op_id"},
    {"VM_TIDSPUNKT", "tvi_tidspunkt"},
    {"VM_REFERANSE", "tvi_referanse"},
    {kNow, "tvi_inserted"},
    {kRunUnId, "tvi_unid"},
};

constexpr char kVaremottakSource[] = R"(SELECT VAREMOTTAK.* FROM VAREMOTTAK WHERE VM_OP_ID >= %d)";

constexpr ColumnRule kVaremottaklinjeColumns[] = {
    {"VML_ID", "tvmi_vml_id"},     {"VML_VM_ID", "tvmi_vm_id"},   {"VM_OP_ID", "tvmi_op_id"},
    {kRunIkKuId, "tvmi_ik_ku_id"}, {kRunKasseNr, "tvmi_kassenr"}, {"VML_VA_ID", "tvmi_va_id"},
    {"VML_ANTALL", "tvmi_antall"}, {"VML_PRIS", "tvmi_pris"},     {fixed(-1), "tvmi_helper"},
    {kNow, "tvmi_inserted"},       {kRunUnId, "tvmi_unid"},
};

constexpr char kVaremottaklinjeSource[] =
    R"(SELECT VAREMOTTAKLINJE.*,VM_OP_ID FROM VAREMOTTAK JOIN VAREMOTTAKLINJE ON VML_VM_ID = VM_ID WHERE VM_OP_ID >= %d)";

constexpr ColumnRule kVarebestillingColumns[] = {
    {"VB_ID", "tvi_id"},
    {kRunIkKuId, "tvi_ik_ku_id"},
    {kRunKasseNr, "tvi_kassenr"},
    {"VB_OP_ID", "tvi_op_id"},
    {"VB_AN_ID", "tvi_ika_id"},
    {"VB_TIDSPUNKT", "tvi_tidspunkt"},
    {"VB_REFERANSE", "tvi_referanse"},
    {"VB_STATUS", "tvi_status"},
    {kNow, "tvi_inserted"},
    {kRunUnId, "tvi_unid"},
};

constexpr char kVarebestillingSource[] = R"(SELECT * FROM VAREBESTILLING where VB_OP_ID >= %d)";

constexpr ColumnRule kVarebestillinglinjeColumns[] = {
    {"VBL_ID", "tvbi_id"},         {"VBL_VA_ID", "tvbi_va_id"},   {"VBL_VB_ID", "tvbi_vb_id"},
    {"VB_OP_ID", "tvbi_op_id"},    {kRunIkKuId, "tvbi_ik_ku_id"}, {kRunKasseNr, "tvbi_kassenr"},
    {"VBL_ANTALL", "tvbi_antall"}, {kNow, "tvbi_inserted"},       {kRunUnId, "tvbi_unid"},
};

constexpr char kVarebestillinglinjeSource[] =
    R"(SELECT VAREBESTILLINGLINJE.*, VB_OP_ID FROM VAREBESTILLING join VAREBESTILLINGLINJE on VB_ID = VBL_VB_ID where VB_OP_ID >= %d)";

}  // namespace

const TableMap kVaremottakMap{
    .step = "Varemottak",
    .component = "tblVaremottak",
    .target = "Temp_Varemottak_Import",
    .source = kVaremottakSource,
    .rowProgress = "Overfører varemottak",
    .columns = kVaremottakColumns,
};

const TableMap kVaremottaklinjeMap{
    .step = "Varemottaklinje",
    .component = "tblVaremottaklinje",
    .target = "Temp_Varemottaklinje_Import",
    .source = kVaremottaklinjeSource,
    .rowProgress = "Overfører varemottak",
    .columns = kVaremottaklinjeColumns,
};

const TableMap kVarebestillingMap{
    .step = "Varebestilling",
    .component = "tblVarebestilling",
    .target = "Temp_Varebestilling_Import",
    .source = kVarebestillingSource,
    .rowProgress = "Overfører Varebestilling",
    .columns = kVarebestillingColumns,
};

const TableMap kVarebestillinglinjeMap{
    .step = "Varebestillinglinje",
    .component = "tblVarebestillinglinje",
    .target = "Temp_Varebestillinglinje_Import",
    .source = kVarebestillinglinjeSource,
    .rowProgress = "Overfører Varebestillinglinje",
    .columns = kVarebestillinglinjeColumns,
};

}  // namespace torvik

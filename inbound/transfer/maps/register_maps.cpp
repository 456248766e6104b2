// The till's own registers, sent whole at every fetch.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kLoggtypeColumns[] = {
    {"LT_ID", "tlti_id"},     {kRunIkKuId, "tlti_ik_ku_id"}, {kRunKasseNr, "tlti_kassenr"},
    {"LT_NAVN", "tlti_navn"}, {kNow, "tlti_inserted"},       {kRunUnId, "tlti_unid"},
};

constexpr char kLoggtypeSource[] = R"(SELECT * FROM Loggtype)";

constexpr ColumnRule kGrunnTypeColumns[] = {
    {"GT_ID", "tgi_id"},    {kRunIkKuId, "tgi_ik_ku_id"}, {kRunKasseNr, "tgi_kassenr"},
    {kNow, "tgi_inserted"}, {kRunUnId, "tgi_unid"},       {"GT_NAVN", "tgi_navn"},
};

constexpr char kGrunnTypeSource[] = R"(SELECT * FROM GRUNNTYPE)";

constexpr ColumnRule kGrunnColumns[] = {
    {"GR_GT_ID", "tgi_gt_id"},    {"GR_ID", "tgi_id"},
    {kRunIkKuId, "tgi_ik_ku_id"}, {kNow, "tgi_inserted"},
    {kRunKasseNr, "tgi_kassenr"}, {"GR_NAVN", "tgi_navn"},
    {kRunUnId, "tgi_unid"},       {"GR_UTSKRIFTSFLAGG", "tgi_utskriftsflagg"},
};

constexpr char kGrunnSource[] = R"(SELECT * FROM GRUNN)";

constexpr ColumnRule kPengeenhetColumns[] = {
    {"PE_ID", "tpi_id"},     {kRunIkKuId, "tpi_ik_ku_id"}, {kRunKasseNr, "tpi_kassenr"}, {fixed("NOK"), "tpi_vu_id"},
    {"PE_NAVN", "tpi_navn"}, {"PE_VERDI", "tpi_verdi"},    {"PE_MYNT", "tpi_mynt"},      {"PE_BILDE", "tpi_bilde"},
    {kNow, "tpi_inserted"},  {kRunUnId, "tpi_unid"},
};

constexpr char kPengeenhetSource[] = R"(SELECT * FROM Pengeenhet)";

constexpr ColumnRule kBetalingformColumns[] = {
    {"BF_ID", "tbfi_id"},       {kRunIkKuId, "tbfi_ik_ku_id"}, {kRunKasseNr, "tbfi_kassenr"},
    {"BF_KO_ID", "tbfi_ko_id"}, {"BF_NAVN", "tbfi_navn"},      {"BF_AKTIV", "tbfi_aktiv"},
    {"BF_SKUFF", "tbfi_skuff"}, {"BF_SYNLIG", "tbfi_synlig"},  {"BF_PAAVIRKERSALG", "tbfi_paavirkersalg"},
    {"BF_VU_ID", "tbfi_vu_id"}, {kNow, "tbfi_inserted"},       {kRunUnId, "tbfi_unid"},
};

constexpr char kBetalingformSource[] = R"(SELECT * FROM Betalingform)";

constexpr ColumnRule kKortutstederColumns[] = {
    {"KO_ID", "tki_id"},     {kRunIkKuId, "tki_ik_ku_id"}, {kRunKasseNr, "tki_kassenr"},
    {"KO_NAVN", "tki_navn"}, {kNow, "tki_inserted"},       {kRunUnId, "tki_unid"},
};

constexpr char kKortutstederSource[] = R"(SELECT * FROM Kortutsteder)";

}  // namespace

const TableMap kLoggtypeMap{
    .step = "Loggtype",
    .component = "tblLoggType",
    .target = "Temp_Loggtype_Import",
    .source = kLoggtypeSource,
    .rowProgress = "Overfører Loggtype",
    .columns = kLoggtypeColumns,
};

const TableMap kGrunnTypeMap{
    .step = "GrunnType",
    .component = "tblGrunnType",
    .target = "Temp_Grunntype_Import",
    .source = kGrunnTypeSource,
    .rowProgress = "Overfører Grunntype",
    .columns = kGrunnTypeColumns,
};

const TableMap kGrunnMap{
    .step = "Grunn",
    .component = "tblGrunn",
    .target = "Temp_Grunn_Import",
    .source = kGrunnSource,
    .rowProgress = "Overfører Grunn",
    .columns = kGrunnColumns,
};

const TableMap kPengeenhetMap{
    .step = "Pengeenhet",
    .component = "tblPengeenhet",
    .target = "Temp_Pengeenhet_Import",
    .source = kPengeenhetSource,
    .rowProgress = "Overfører Pengeenhet",
    .columns = kPengeenhetColumns,
};

const TableMap kBetalingformMap{
    .step = "Betalingform",
    .component = "tblBetalingForm",
    .target = "Temp_Betalingform_Import",
    .source = kBetalingformSource,
    .rowProgress = "Overfører Betalingform",
    .columns = kBetalingformColumns,
};

const TableMap kKortutstederMap{
    .step = "Kortutsteder",
    .component = "tblKortutsteder",
    .target = "Temp_Kortutsteder_Import",
    .source = kKortutstederSource,
    .rowProgress = "Overfører Kortutsteder",
    .columns = kKortutstederColumns,
};

}  // namespace torvik

// Settlements with their counted cash and settled payments.
// The column maps of these tables: what is read on the till, and where it goes.
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr ColumnRule kOppgjorColumns[] = {
    {"OP_ID", "toi_op_id"},
    {kRunIkKuId, "toi_ik_ku_id"},
    {kRunKasseNr, "toi_kassenr"},
    {"OP_AN_ID", "toi_ika_id"},
    {"OP_TIDSPUNKT", "toi_tidspunkt"},
    {"OP_OPPDATERTTIDSPUNKT", "toi_oppdaterttidspunkt"},
    {"OP_TYPE", "toi_type"},
    {fixed(0), "toi_status"},
    {"OP_TIDSPUNKTFERDIG", "toi_tidspunktferdig"},
    {"OP_ANTKUNDERINNOM", "toi_antkunderinnom"},
    {"OP_NATTSAFE_INNKASTNR", "toi_nattsafe_innkastnr"},
    {kNow, "toi_inserted"},
    {kRunUnId, "toi_unid"},
    {"OP_KOMMENTAR", "toi_Kommentar", When::SourceHas},
};

constexpr char kOppgjorSource[] = R"(SELECT * FROM Oppgjor WHERE OP_ID >= %d)";

constexpr ColumnRule kOppgjorlinjeColumns[] = {
    {"OPL_ID", "toli_opl_id"},       {kRunIkKuId, "toli_ik_ku_id"},   {kRunKasseNr, "toli_kassenr"},
    {"OPL_OP_ID", "toli_op_id"},     {"OPL_PE_ID", "toli_pe_id"},     {"OPL_VEKSLEPENGER", "toli_vekslepenger"},
    {"OPL_OPPTALT", "toli_opptalt"}, {"OPL_FAKTISK", "toli_faktisk"}, {kNow, "toli_inserted"},
    {kRunUnId, "toli_unid"},
};

constexpr char kOppgjorlinjeSource[] = R"(SELECT * FROM Oppgjorlinje WHERE OPL_OP_ID >= %d)";

constexpr ColumnRule kOppgjorBetalingColumns[] = {
    {"OB_OP_ID", "tobi_op_id"},    {kRunIkKuId, "tobi_ik_ku_id"},
    {kRunKasseNr, "tobi_kassenr"}, {"OB_BF_ID", "tobi_bf_id"},
    {"OB_BELOP", "tobi_belop"},    {"OB_OPPTALT", "tobi_opptalt"},
    {kNow, "tobi_inserted"},       {kNow, "tobi_tidspunktferdig", When::TargetHas},
    {kRunUnId, "tobi_unid"},
};

constexpr char kOppgjorBetalingSource[] = R"(SELECT * FROM Oppgjorbetaling WHERE OB_OP_ID >= %d)";

}  // namespace

const TableMap kOppgjorMap{
    .step = "Oppgjør",
    .component = "tblOppgjor",
    .target = "Temp_Oppgjor_Import",
    .source = kOppgjorSource,
    .rowProgress = "Overfærer Oppgjør",
    .columns = kOppgjorColumns,
    .openedEvent = "Henter {Antall_oppgjor} oppgjør fra avdelingsnummer {Avdelingsnummer} kassenummer {Kassenummer}",
};

const TableMap kOppgjorlinjeMap{
    .step = "Oppgjørlinje",
    .component = "tblOppgjorlinje",
    .target = "Temp_Oppgjorlinje_Import",
    .source = kOppgjorlinjeSource,
    .rowProgress = "Overfører Oppgjørslinjer",
    .columns = kOppgjorlinjeColumns,
};

const TableMap kOppgjorBetalingMap{
    .step = "OppgjørBetaling",
    .component = "tblOppgjorBetaling",
    .target = "Temp_Oppgjorbetaling_Import",
    .source = kOppgjorBetalingSource,
    .rowProgress = "Overfører Oppgjør betaling",
    .columns = kOppgjorBetalingColumns,
};

}  // namespace torvik

// The table of what each version brought, and looking things up in it.
#include "sandbox/chain/till_versions.h"

#include <algorithm>

namespace sandbox::chain {

namespace {

constexpr SchemaGain kGains[] = {
    {72, "BINARYOBJECT", "BO_TYPE"},
    {72, "BINARYOBJECT", "BO_DATETIME"},
    {72, "BINARYOBJECT", "BO_DIRECTION"},
    {72, "BINARYOBJECT", "BO_STATUS"},
    {110, "MELDING", ""},
    {110, "MELDINGVEDLEGG", ""},
    {111, "ORDRELINJE", "OL_STATUS"},
    {117, "ORDRELINJESONER", ""},
    {137, "TIMER", ""},
    {137, "TIMERPRKODE", ""},
    {137, "ORDRE", "OR_STATISTIKK_AN_ID"},
    {137, "ORDRELINJE", "OL_TORVIK_OR_ID"},
    {137, "ORDRELINJE", "OL_TORVIK_KU_ID"},
    {137, "ORDRELINJE", "OL_VISNINGSVARE"},
    {137, "ORDRELINJE", "OL_KORREKSJON"},
    {137, "ORDRELINJE", "OL_GJELDENDEPRIS"},
    {137, "INNSTILLINGER", "IN_KLAR_HENT_TIMER"},
    {137, "INNSTILLINGER", "IN_NUMMERSERIER_SYNKRONISERT"},
    {138, "VEDLEGG", ""},
    {149, "UTBETALING", ""},
    {149, "MELDING", "ME_PRIORITET"},
    {149, "MELDING", "ME_UTLOPER"},
    {149, "MELDING", "ME_STARTSKJERM"},
    {158, "SIGNATUR", ""},
    {158, "BETALINGSIGNATUR", ""},
    {158, "ORDRESIGNATUR", ""},
    {158, "OPPGJORSIGNATUR", ""},
    {158, "GENERELLSIGNATUR", ""},
    {158, "OPPGJOR", "OP_KOMMENTAR"},
    {178, "PRISTILBUD", ""},
    {178, "PRISTILBUDLINJE", ""},
    {178, "KUPONG", ""},
    {178, "KUPONGORDRELINJE", ""},
    {178, "BETALINGBANKINFO", "BBI_TRANID"},
    {178, "BETALINGBANKINFO", "BBI_AUTH"},
    {188, "ORDRERETUR", ""},
    {192, "DELVARE", "DV_UTSKRIFTSREGEL"},
    {192, "VARE", "VA_SLETTET"},
    {198, "VippsBetaling", ""},
    {211, "VAREGRP", "VGR_HOVED_VGR_ID"},
    {211, "VAREGRP", "VGR_ROOT_VGR_ID"},
    {213, "ORDRE", "OR_VARETELLING"},
    {213, "ORDRE", "OR_EAN13"},
    {213, "BETALINGFORM", "BF_MIN_BELOP"},
    {213, "BETALINGFORM", "BF_MAKS_BELOP"},
    {213, "BETALINGFORM", "BF_ER_KONTANT"},
    {213, "INNSTILLINGER", "IN_APIPASSORD"},
    {225, "VARE", "VA_P_NAVN"},
    {225, "VARE", "VA_FARGENAVN"},
    {225, "VARE", "VA_STORRELSENAVN"},
    {229, "ORDRE", "OR_TORVIK_OR_ID"},
};

}  // namespace

std::span<const SchemaGain> schemaGains() {
    return kGains;
}

bool tillHasTable(int version, std::string_view table) {
    return std::none_of(std::begin(kGains), std::end(kGains), [&](const SchemaGain& gain) {
        return gain.version > version && gain.table == table && gain.column.empty();
    });
}

bool tillHasColumn(int version, std::string_view table, std::string_view column) {
    return std::none_of(std::begin(kGains), std::end(kGains), [&](const SchemaGain& gain) {
        return gain.version > version && gain.table == table && (gain.column.empty() || gain.column == column);
    });
}

std::vector<TableData> onlyWhatATillHas(int version, std::vector<TableData> tables) {
    std::erase_if(tables, [&](const TableData& data) { return !tillHasTable(version, data.table); });
    for (TableData& data : tables)
        for (std::size_t i = data.columns.size(); i-- > 0;) {
            if (tillHasColumn(version, data.table, data.columns[i])) continue;
            data.columns.erase(data.columns.begin() + static_cast<std::ptrdiff_t>(i));
            for (auto& row : data.rows) row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
        }
    return tables;
}

}  // namespace sandbox::chain

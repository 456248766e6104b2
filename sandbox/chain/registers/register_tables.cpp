// What tables there are, and their columns as kept_table.h spells them.
#include "sandbox/chain/registers/register_tables.h"

#include <algorithm>
#include <sstream>

#include "sandbox/chain/till_versions.h"

namespace sandbox::chain {

namespace {

struct Shape {
    const char* table;
    const char* columns;
};

constexpr Shape kOfficeShapes[] = {
    {"Land", "*La_Id La_Navn"},
    {"Poststed", "*Po_Id *Po_La_Id Po_Navn"},
    {"Valuta", "*Vu_ID Vu_Navn~ Vu_Kurs Vu_Forhold"},
    {"Priskategori", "*Pi_ID Pi_Navn Pi_InklMva"},
    {"KundeGruppe", "*Kg_Id Kg_Navn"},
    {"POSTIMEPROFIL", "*Pos_Tp_Id Pos_Tp_Navn Pos_Tp_Stemplingsregel"},
    {"PosGrunn", "*Pos_Gr_Id Pos_Gr_Gt_Id Pos_Gr_Navn Pos_Gr_Utskriftsflagg Pos_Gr_Synlig_Kasse"},
    {"PosBetalingform",
     "*Pos_Bf_Id Pos_Bf_Ko_Id Pos_Bf_Navn~ Pos_Bf_Aktiv Pos_Bf_Skuff Pos_Bf_Synlig Pos_Bf_Paavirkersalg "
     "Pos_Bf_Vu_Id~ Pos_Bf_Min_Belop# Pos_Bf_Maks_Belop# Pos_Bf_Er_Kontant"},
    {"Kunde",
     "*Ku_Id Ku_Navn Ku_Adresse1 Ku_Adresse2 Ku_Po_Id Ku_La_Id Ku_Telefon Ku_Telefax Ku_Type=0 Ku_Sperret=0 "
     "Ku_UpdDato Ku_Pi_Id Ku_FjernGebyr=0"},
    {"KundeKundegruppe", "*Kk_Ku_Id *Kk_Kg_Id"},
    {"Internkunde",
     "*Ik_Ku_Id Ik_Avdelingsnummer~ Ik_AntallKasser Ik_Butikktype Ik_Foretaksnummer Ik_KasseBong1 Ik_KasseBong2 "
     "Ik_KasseBong3 Ik_KasseBong4"},
    {"Internkundekasse",
     "*Ikk_Ik_Ku_Id *Ikk_Kassenummer~ Ikk_Kt_Id Ikk_Server Ikk_Database Ikk_Brukernavn Ikk_Passord "
     "Ikk_AutentiseringType Ikk_Provider"},
    {"InternKundeAnsatt",
     "*Ika_Id~ Ika_Ik_Ku_Id Ika_Navn Ika_Visningsnavn Ika_Kortnummer Ika_Aktiv=1 Ika_Rabatt=0 "
     "Ika_RabattKunPaaOrdPris=0 Ika_Nivaa=0 Ika_AnsattDato Ika_Pos_Tp_Id Ika_Pi_Id Ika_Maks_Rabatt#"},
    {"Leverandor", "*Le_Id Le_Navn Le_PostAdr Le_PostPostnr Le_PostSted Le_Post_La_Id Le_Telefon Le_Telefax Le_Email"},
    {"Varegruppe", "*Vg_Id Vg_Navn Vg_Hoved_Vg_ID Vg_Root_Vg_ID"},
    {"Produkt", "*P_Id P_Navn P_InfoIntern P_InfoEkstern P_InfoRegel"},
    {"Vare",
     "*Va_Id~ Va_Navn Va_Kostpris Va_Pris Va_VeilPris Va_Mvasats=25 Va_Utgaatt=0 Va_Slettet=0 Va_Nummertype Va_Vg_Id "
     "Va_Le_Id Va_P_ID Va_Fargenavn Va_Storrelsenavn Va_Minlager Va_Makslager Va_Prislapp Va_MaksRabatt "
     "Va_SendTilButikkKasser=0"},
    {"VareAlias", "*Vr_Id *Vr_Va_Id~ Vr_Navn"},
    {"Delvare", "*Dv_Hoved_Va_ID~ *Dv_Delvare_Va_ID~ Dv_Antall Dv_Pris Dv_Utskriftsregel"},
    {"Kundevare", "*Kv_Ik_Ku_Id *Kv_Va_Id~ *Kv_Kvt_Id *Kv_FraDato Kv_TilDato"},
    {"Pris", "*Ps_Va_Id~ *Ps_Pi_Id Ps_Prisen Ps_UpdDato"},
    {"Pristilbud",
     "*Pr_Id Pr_Navn Pr_FraDato Pr_TilDato Pr_Type Pr_Beregningsmetode Pr_Fast_Rabatt Pr_GjelderAlleAvd Pr_Pst_Id"},
    {"Pristilbudlinje", "*Pl_Pr_Id *Pl_Va_Id~ Pl_Pris"},
    {"PristilbudInternKunde", "*Pb_Pr_Id *Pb_Ik_Ku_Id"},
    {"POSRABATTKORT",
     "*Pos_Ra_ID~ Pos_Ra_Navn Pos_Ra_GyldigTil Pos_Ra_Rabatt Pos_Ra_Aktiv Pos_Ra_KunPaaOrdPris *Pos_Ra_Ku_ID "
     "Pos_Ra_Ku_Kreditt_Prosent Pos_Ra_UpdDato"},
    {"RabattMatrise", "*Rm_Kg_Id *Rm_Vg_ID *Rm_Fra *Rm_Til Rm_Rabatt"},
    {"Innstillinger", "*In_Id In_SendValutaTilkasse In_Slett_Va_ID~ In_Gavekort_Va_ID~"},
    {"POSGAVEKORT",
     "*GA_ID *GA_AVDNR~ *GA_KASSENR~ GA_AN_ID~ GA_OL_ID GA_BELOP GA_GYLDIGTIL GA_BET_AVDNR~ GA_BET_KASSENR~ "
     "GA_BET_AN_ID~ GA_BT_ID GA_SYNKTIDSPUNKT"},
    {"POSTilgodelapp",
     "*TG_ID *TG_AVDNR~ *TG_KASSENR~ TG_AN_ID~ TG_OR_ID TG_BELOP TG_GYLDIGTIL TG_BET_AVDNR~ TG_BET_KASSENR~ "
     "TG_BET_AN_ID~ TG_BT_ID TG_SYNKTIDSPUNKT"},
    {"InternKundeKasseOverfort",
     "*Ikko_Ikk_Ik_Ku_ID *Ikko_Ikk_Kassenummer~ *Ikko_Type *Ikko_Id Ikko_AvdNr~ Ikko_Kassenr~"},
};

constexpr Shape kTillShapes[] = {
    {"LEVERANDOR", "*LE_ID LE_NAVN LE_ADRESSE LE_POSTNR LE_POSTSTED LE_LAND LE_TELEFON LE_TELEFAX LE_EPOST"},
    {"VAREGRP", "*VGR_ID VGR_NAVN VGR_HOVED_VGR_ID VGR_ROOT_VGR_ID"},
    {"VARE",
     "*VA_ID~ VA_NAVN~ VA_PRIS VA_UTGAATT=0 VA_KATEGORI VA_VEILPRIS VA_MVASATS VA_LE_ID VA_KOSTPRIS VA_MINLAGER "
     "VA_MAKSLAGER VA_VGR_ID VA_PRISLAPP VA_MAKSRABATT VA_INFOEKSTERN VA_INFOINTERN VA_INFOREGEL VA_SLETTET VA_P_NAVN "
     "VA_FARGENAVN VA_STORRELSENAVN"},
    {"VAREALIAS", "*VR_VA_ID~ *VR_ID VR_NAVN"},
    {"DELVARE", "*DV_HOVED_VA_ID~ *DV_DELVARE_VA_ID~ DV_ANTALL DV_PRIS DV_UTSKRIFTSREGEL"},
    {"MERSALGVARE", "*MSV_VA_ID~"},
    {"GAVEKORTVARE", "*GAV_VA_ID~ GAV_AKTIV"},
    {"VAREGRUPPE", "*VG_VA_ID~ VG_HOVED_VG_VA_ID~"},
    {"PLUMEDLEM", "*PLM_PLU_ID *PLM_VA_ID~"},
    {"PRISKATEGORI", "*PI_ID PI_NAVN PI_INKLMVA"},
    {"PRIS", "*PS_VA_ID~ *PS_PI_ID PS_PRISEN"},
    {"KUNDEGRUPPE", "*KG_ID KG_NAVN"},
    {"KUNDE", "*KU_ID KU_NAVN KU_ADRESSE1 KU_ADRESSE2 KU_PO_ID KU_PO_NAVN KU_KG_ID KU_PI_ID KU_SPERRET"},
    {"RABATTKORT", "*RA_ID~ RA_NAVN RA_GYLDIGTIL RA_RABATT RA_AKTIV RA_KUNPAAORDPRIS"},
    {"RABATTKORTKUNDE", "*RAKU_RA_ID~ *RAKU_KU_ID RAKU_KREDITT_PROSENT"},
    {"RABATTMATRISE", "*RM_KG_ID *RM_VGR_ID *RM_FRA *RM_TIL RM_RABATT RM_KUNPAAORDPRIS"},
    {"TIMEPROFIL", "*TP_ID TP_NAVN TP_STEMPLINGSREGEL"},
    {"ANSATT",
     "*AN_ID~ AN_TP_ID AN_PI_ID AN_NAVN AN_AKTIV AN_RABATT AN_RABKUNPAAORDPRIS AN_NIVAA AN_ANSATTDATO AN_AVDNR~ "
     "AN_LONNSKONTO AN_PERSONNR AN_MAKS_RABATT#"},
    {"ADGANGSKORT", "*AK_ID AK_AN_ID~ AK_AKTIV"},
    {"GRUNN", "*GR_ID GR_GT_ID GR_NAVN GR_UTSKRIFTSFLAGG GR_AKTIV"},
    {"VALUTA", "*VU_ID VU_NAVN~ VU_KURS VU_ENHET"},
    {"BETALINGFORM",
     "*BF_ID BF_KO_ID BF_NAVN~ BF_AKTIV BF_SKUFF BF_SYNLIG BF_PAAVIRKERSALG BF_VU_ID BF_MIN_BELOP# BF_MAKS_BELOP# "
     "BF_ER_KONTANT"},
    {"INNSTILLINGER",
     "*IN_ID IN_DBVERSION IN_AVDNR~ IN_KASSENR~ IN_NAVN IN_ADR1 IN_ADR2 IN_ADR3 IN_TELEFON IN_TELEFAX IN_ORGNR "
     "IN_APIPASSORD"},
    {"PRISTILBUD", "*PR_ID PR_FRADATO PR_TILDATO PR_TYPE PR_BEREGNINGSMETODE PR_FAST_RABATT"},
    {"PRISTILBUDLINJE", "*PL_VA_ID~ *PL_PR_ID PL_PRIS"},
    {"KUPONG", "*KUP_ID KUP_PR_ID"},
    {"GAVEKORT",
     "*GA_ID *GA_AVDNR~ *GA_KASSENR~ GA_AN_ID~ GA_OL_ID GA_BELOP GA_GYLDIGTIL GA_BET_AVDNR~ GA_BET_KASSENR~ "
     "GA_BET_AN_ID~ GA_BT_ID GA_SYNKTIDSPUNKT"},
    {"TILGODELAPP",
     "*TG_ID *TG_AVDNR~ *TG_KASSENR~ TG_AN_ID~ TG_OR_ID TG_BELOP TG_GYLDIGTIL TG_BET_AVDNR~ TG_BET_KASSENR~ "
     "TG_BET_AN_ID~ TG_BT_ID TG_SYNKTIDSPUNKT"},
    {"ORDRELINJE", "*OL_ID OL_VA_ID~"},
    {"INTERNFLYTTINGLINJE", "*IFL_ID IFL_VA_ID~"},
    {"VAREBESTILLINGLINJE", "*VBL_ID VBL_VA_ID~"},
    {"VAREMOTTAKLINJE", "*VML_ID VML_VA_ID~"},
    {"VARETELLINGLINJE", "*VL_ID VL_VA_ID~"},
    {"BEHOLDNINGSTRANSAKSJONER", "*BHT_ID BHT_VA_ID~"},
    {"REKLAMASJONLINJE", "*REKL_ID REKL_VA_ID~"},
};

// The columns of a shape that a till of this version has.
std::string columnsAt(int version, const Shape& shape) {
    std::istringstream words{std::string(shape.columns)};
    std::string kept;
    for (std::string word; words >> word;) {
        std::string name = word.substr(word.starts_with('*') ? 1 : 0);
        name = name.substr(0, name.find_first_of("~#="));
        if (tillHasColumn(version, shape.table, name)) kept += (kept.empty() ? "" : " ") + word;
    }
    return kept;
}

void load(KeptTables& tables, const std::vector<TableData>& data) {
    for (const TableData& table : data)
        if (tables.has(table.table)) tables[table.table].put(table);
}

}  // namespace

KeptTables officeRegisters(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf) {
    KeptTables tables;
    for (const Shape& shape : kOfficeShapes) tables.add({shape.table, shape.columns});
    load(tables, backOfficeTables(chain, addressOf));
    return tables;
}

KeptTables tillRegistersBefore(const Chain& chain, const Till& till) {
    KeptTables tables;
    for (const Shape& shape : kTillShapes)
        if (tillHasTable(till.version, shape.table)) tables.add({shape.table, columnsAt(till.version, shape)});
    const Department& department = chain.departmentOf(till);
    load(tables,
         {{"INNSTILLINGER",
           {"IN_ID", "IN_DBVERSION", "IN_AVDNR", "IN_KASSENR", "IN_NAVN"},
           {{integer(1), std::to_string(till.version), department.number, till.number, department.name}}},
          {"TIMEPROFIL", {"TP_ID", "TP_NAVN", "TP_STEMPLINGSREGEL"}, {{integer(1), text("Fast ansatt"), integer(0)}}},
          {"VALUTA",
           {"VU_ID", "VU_NAVN", "VU_KURS", "VU_ENHET"},
           {{text("NOK"), text("Norske kroner"), 100.0, integer(100)}}},
          {"KUNDE", {"KU_ID", "KU_NAVN"}, {{integer(1), text("Kontantkunde")}}}});
    load(tables, tillRegisters(chain, till));
    load(tables, tillSales(chain, till));
    return tables;
}

}  // namespace sandbox::chain

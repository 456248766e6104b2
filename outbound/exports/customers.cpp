// Customers that buy in their own name. A send of changes takes those changed lately, any other all of them. Nobody is
// deleted, and a block reaches the till with a new customer alone.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Piece kCustomers[] = {
    {R"(SELECT DISTINCT ku_id as Kui_ID, substring(ku_navn,1,50) as Kui_Navn, substring(ku_adresse1,1,50) as Kui_Adresse1,substring(ku_adresse2,1,50) as Kui_Adresse2,
ku_po_id as Kui_Po_ID, po_navn as Kui_Po_Navn, ku_pi_id as Kui_Pi_ID,
(select min(Kk_Kg_Id) from KundeKundegruppe where Kk_Ku_Id = Ku_Id) as Kui_Kg_ID, Ku_FjernGebyr  as Kui_FjernGebyr, ku_sperret as Kui_Sperret
FROM kunde 
JOIN poststed ON (ku_po_id=po_id AND ku_la_id=po_la_id)
LEFT OUTER JOIN POSRABATTKORT ON (Pos_Ra_Ku_ID = Ku_ID) 
  WHERE ISNUMERIC(ku_po_id)= 1)"},
    {"and Ku_UpdDato  > getdate()-%d", kChangesOnly, {Arg::DagerSidenEndring}},
    {"  AND ku_type <> 0"},
};

constexpr Action kLoad[] = {LoadTable{"Kunder", "KUNDEIMPORT", kCustomers}};

// The version is compared on the till, in the type of the till's column. Customer 1, of cash sales, keeps its category.
constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into kunde (KU_ID,KU_NAVN,KU_ADRESSE1,KU_ADRESSE2,KU_PO_ID,KU_PO_NAVN,KU_KG_ID, KU_SPERRET)
select DISTINCT KUI_ID,KUI_NAVN,KUI_ADRESSE1,KUI_ADRESSE2,KUI_PO_ID,KUI_PO_NAVN,KG_ID, KUI_SPERRET from kundeimport i left outer join kunde k on i.kui_id = k.ku_id left outer join kundegruppe on kg_id=KUI_KG_ID
where k.ku_id is null)"},
    {R"(update k
SET k.ku_id=KUI_ID,k.ku_navn=KUI_NAVN,k.ku_adresse1=KUI_ADRESSE1,k.ku_adresse2=KUI_ADRESSE2,
k.ku_po_id=KUI_PO_ID,k.ku_po_navn=KUI_PO_NAVN,k.ku_kg_id=KG_ID
from kunde k join kundeimport i on k.ku_id = i.kui_id left outer join kundegruppe on kg_id=kui_kg_id)"},
    {R"(if (select in_dbversion from innstillinger) >= '119.0'
update kunde set ku_pi_id = pi_id
from kundeimport left outer join priskategori on kui_pi_id = pi_id where ku_id = kui_id
and ku_id <> 1)"},
    {"END"},
};

// Straight into the till's own table. No group is deleted.
constexpr CopiedColumn kGroupColumns[] = {{"Kg_Id", "KG_ID"}, {"Kg_Navn", "KG_NAVN"}};

constexpr Action kGroups[] = {
    SetTransformation{"KundeGruppe"},
    StartClock{},
    CopyRows{.progress = "Overfører KundeGruppe",
             .name = "KundeGruppe",
             .query = "SELECT * FROM KundeGruppe",
             .table = "KundeGruppe",
             .columns = kGroupColumns,
             .keyed = true,
             .readWith = ReadWith::OtherRegisters},
};

}  // namespace

constinit const Actions kSendCustomers{kLoad};
constinit const Actions kSendCustomerGroups{kGroups};
constinit const Procedure kInsertKunde{"InsertKunde", kBody};

}  // namespace torvik

// Suppliers: all of them go, none is deleted on the till.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Piece kSuppliers[] = {{R"(SELECT le_id AS LEI_ID,le_navn AS LEI_NAVN,Le_PostAdr AS LEI_ADRESSE, 
Le_PostPostnr AS LEI_PO_ID ,Le_PostSted AS LEI_PO_NAVN ,La_Navn AS LEI_PO_LAND ,Le_Telefon AS LEI_TELEFON ,Le_Telefax AS LEI_TELEFAX,Le_Email AS LEI_EPOST
FROM leverandor LEFT OUTER JOIN land ON (le_post_la_id=la_id)
ORDER BY le_id)"}};

constexpr Action kSend[] = {LoadTable{
    .caption = "LEVERANDOR", .table = "LEVERANDORIMPORT", .query = kSuppliers, .readWith = ReadWith::ItemRegisters}};

constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into Leverandor (LE_ID,LE_NAVN,LE_ADRESSE,LE_POSTNR,LE_POSTSTED,LE_LAND,LE_TELEFON,LE_TELEFAX,LE_EPOST)
select DISTINCT LEI_ID,LEI_NAVN,LEI_ADRESSE,LEI_PO_ID,LEI_PO_NAVN,LEI_PO_LAND,LEI_TELEFON,LEI_TELEFAX,LEI_EPOST
from leverandorimport i left outer join leverandor l on i.lei_id = l.le_id
where l.le_id is null)"},
    {R"(update l
SET LE_NAVN=i.LEI_NAVN,LE_ADRESSE=i.LEI_ADRESSE,LE_POSTNR=i.LEI_PO_ID,LE_POSTSTED=i.LEI_PO_NAVN,LE_LAND=i.LEI_PO_LAND,LE_TELEFON=i.LEI_TELEFON,LE_TELEFAX=i.LEI_TELEFAX,LE_EPOST=i.LEI_EPOST
from leverandor l join leverandorimport i on l.le_id = i.lei_id)"},
    {"DROP TABLE leverandorImport"},
    {"END"},
};

}  // namespace

constinit const Actions kSendSuppliers{kSend};
constinit const Procedure kInsertLeverandor{"InsertLeverandor", kBody};

}  // namespace torvik

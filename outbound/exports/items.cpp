// Items: those of the session's choice. Nothing is deleted on the till here (item_deletion.cpp).
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr int kItemsTellTheirProduct = 225;

constexpr Piece kItems[] = {
    {R"(SELECT VE_Va_ID AS Vai_ID, VE_Va_Navn AS Vai_Navn, VE_Pris AS Vai_Pris, VE_Va_Utgaatt AS Vai_Utgaatt,
VE_Nummertype AS Vai_Nummertype, VE_Varegruppe AS Vai_Varegruppe, isnull(VE_VeilPris,0) AS Vai_VeilPris,
VE_Mvasats AS Vai_Mvasats, VE_Kostpris AS Vai_Kostpris, VE_Le_Id AS Vai_Le_Id, VE_Minlager AS Vai_Minlager,
VE_Makslager AS Vai_Makslager, VE_Vg_Id AS Vai_Vg_Id, VE_Prislapp AS Vai_Prislapp, Va_P_ID AS Vai_P_ID,
VA_MaksRabatt AS Vai_MaksRabatt, Ve_Va_Slettet AS Vai_Slettet)"},
    {", Ve_P_Navn AS Vai_P_Navn, Ve_Fargenavn AS Vai_Fargenavn, Ve_Storrelsenavn AS Vai_Storrelsenavn",
     schemaFrom(kItemsTellTheirProduct)},
    {R"(FROM VareEksport (NOLOCK), Vare (NOLOCK) WHERE VE_SesjonID='%s' AND Ve_Va_Id = Va_Id
ORDER BY VE_Pris DESC)",
     kAlways,
     {Arg::SessionID}},
};

constexpr Action kSend[] = {LoadTable{"VARE", "VAREIMPORT", kItems}};

constexpr Piece kBody[] = {
    {"BEGIN"},
    {R"(insert into vare (va_id,va_navn,va_pris,va_utgaatt,va_kategori,va_veilpris,va_mvasats,va_le_id,va_kostpris,va_minlager,va_makslager,va_vgr_id,va_prislapp,Va_MaksRabatt)
select DISTINCT VAI_ID,VAI_NAVN,VAI_PRIS,VAI_UTGAATT,substring(VAI_VAREGRUPPE,1,50),VAI_VEILPRIS,VAI_MVASATS,VAI_LE_ID,VAI_KOSTPRIS,VAI_MINLAGER,VAI_MAKSLAGER,VAI_VG_ID,VAI_PRISLAPP,VAI_MAKSRABATT
from vareimport i left outer join vare v on i.vai_id = v.va_id where v.va_id is null)"},
    {R"(update v
set va_id=i.VAI_ID,va_navn=i.VAI_NAVN,va_pris=i.VAI_PRIS,va_utgaatt=i.VAI_UTGAATT,va_kategori=substring(VAI_VAREGRUPPE,1,50),va_veilpris=i.VAI_VEILPRIS,va_mvasats=i.VAI_MVASATS,va_le_id=i.VAI_LE_ID,va_kostpris=i.VAI_KOSTPRIS,va_minlager=i.VAI_MINLAGER,va_makslager=i.VAI_MAKSLAGER,va_vgr_id=i.VAI_VG_ID,va_prislapp=i.VAI_PRISLAPP,Va_MaksRabatt=i.VAI_MAKSRABATT
from vare v join vareimport i on v.va_id = i.vai_id)"},
    {R"(update Vare
set VA_INFOEKSTERN = PI_INFOEKSTERN, VA_INFOINTERN = PI_INFOINTERN, VA_INFOREGEL = PI_INFOREGEL
from VARE, VAREIMPORT, PRODUKTIMPORT
where VA_ID = VAI_ID and VAI_P_ID = PI_ID)"},
    {R"(update Vare
set VA_P_NAVN = VAI_P_NAVN, VA_FARGENAVN = VAI_FARGENAVN, VA_STORRELSENAVN = VAI_STORRELSENAVN
from VARE JOIN VAREIMPORT ON VA_ID = VAI_ID)",
     schemaFrom(kItemsTellTheirProduct)},
    // Whether the till has the column is asked there, as the procedure runs.
    {R"(IF EXISTS(SELECT * FROM syscolumns WHERE [name] = N'Va_Slettet' AND id = OBJECT_ID(N'Vare'))
BEGIN
DECLARE @SQL NVARCHAR(100)
SET @SQL = 'UPDATE VARE SET VA_SLETTET = VAI_SLETTET FROM VAREIMPORT WHERE VA_ID = VAI_ID;'
EXECUTE sp_executesql @SQL
END)"},
    {"DROP TABLE VAREIMPORT"},
    {"DROP TABLE PRODUKTIMPORT"},
    {"END"},
};

}  // namespace

constinit const Actions kSendItems{kSend};
constinit const Procedure kInsertVare{"InsertVare", kBody};

}  // namespace torvik

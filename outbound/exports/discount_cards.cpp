// Discount cards, and the customers that hold them. A card is not deleted: it goes inactive, and then loses all its
// customers. A send of changes takes the cards changed lately, any other all that have a name.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr WorkTable kRabattkortImport{"RabattkortImport", R"(create table RabattkortImport (
  RAI_ID char(20),
  RAI_NAVN varchar(30),
  RAI_GYLDIGTIL datetime,
  RAI_RABATT float,
  RAI_AKTIV tinyint,
  RAI_KUNPAAORDPRIS tinyint,
  RAI_KU_ID int,
  RAI_KU_KREDITT_PROSENT float
))"};

constexpr const WorkTable* kTables[] = {&kRabattkortImport};

constexpr Action kCreate[] = {
    SetTransformation{"Rabattkortimport"},
    Report{"Forbereder overføring av rabattkort", 1, true, 100},
    CreateTables{kTables},
};

constexpr Piece kCards[] = {
    {R"(SELECT Pos_Ra_ID AS Rai_ID, SUBSTRING(Pos_Ra_Navn,1,30) AS Rai_Navn, Pos_Ra_GyldigTil AS Rai_GyldigTil, Pos_Ra_Rabatt AS Rai_Rabatt,
Pos_Ra_Aktiv AS Rai_Aktiv, Pos_Ra_KunPaaOrdPris AS Rai_KunPaaOrdPris, Pos_Ra_Ku_ID AS Rai_Ku_ID, Pos_Ra_Ku_Kreditt_Prosent AS RAI_KU_KREDITT_PROSENT
FROM PosRabattkort where Pos_Ra_Navn is not null)"},
    {" AND Pos_Ra_UpdDato > getdate() - %d", kChangesOnly, {Arg::DagerSidenEndring}},
};

constexpr Action kLoad[] = {LoadTable{"Rabattkort", "RabattkortImport", kCards}};

constexpr Piece kMerge[] = {
    {R"(INSERT INTO Rabattkort (RA_ID,RA_NAVN,RA_GYLDIGTIL,RA_RABATT,RA_AKTIV,RA_KUNPAAORDPRIS)
SELECT DISTINCT RAI_ID,RAI_NAVN,RAI_GYLDIGTIL,RAI_RABATT,RAI_AKTIV,RAI_KUNPAAORDPRIS
FROM RabattkortImport
WHERE NOT EXISTS ( SELECT 1 FROM rabattkort WHERE ra_id=rai_id))"},
    {R"(UPDATE Rabattkort SET Ra_Navn=Rai_Navn, Ra_Gyldigtil=Rai_GyldigTil, Ra_Rabatt=Rai_Rabatt, Ra_Aktiv=Rai_Aktiv, Ra_KunPaaOrdPris=Rai_KunPaaOrdPris
FROM RabattKortimport
WHERE Ra_Id=Rai_Id)"},
    {"Delete RabattkortKunde from RabattkortImport where Rai_Aktiv=0 and Raku_Ra_ID=Rai_ID"},
    {R"(INSERT INTO RABATTKORTKUNDE (RAKU_RA_ID, RAKU_KU_ID, RAKU_KREDITT_PROSENT)
SELECT DISTINCT RAI_ID, RAI_KU_ID, RAI_KU_KREDITT_PROSENT FROM RabattkortImport JOIN KUNDE ON KU_ID=RAI_KU_ID
JOIN RABATTKORT ON RA_ID = RAI_ID
WHERE NOT EXISTS (SELECT 1 FROM RABATTKORTKUNDE WHERE RAKU_RA_ID = rai_id AND RAI_KU_ID = RAKU_KU_ID) AND RAI_KU_ID IS NOT NULL
AND RAI_AKTIV = 1)"},
    {R"(UPDATE RABATTKORTKUNDE SET RAKU_KREDITT_PROSENT = RAI_KU_KREDITT_PROSENT
FROM RabattkortImport
WHERE RAKU_KU_ID = RAI_KU_ID AND RAKU_RA_ID = RAI_ID)"},
};

// Cards follow their customers in one step: a card is held by customers that the till has.
constexpr Action kMergeBatch[] = {
    SetTransformation{"Kunde"},
    Install{&kInsertKunde},
    Run{&kInsertKunde},
    TillBatch{kMerge},
};

}  // namespace

constinit const Actions kCreateDiscountCardTable{kCreate};
constinit const Actions kSendDiscountCards{kLoad};
constinit const Actions kMergeCustomersAndCards{kMergeBatch};

}  // namespace torvik

// One item of the back office with all that hangs on it, every column with a value of its own, beside the made-up
// chain: a column that is left out or taken for another shows on the till.
#pragma once

#include <string>

namespace torvik::test {

inline constexpr const char* kOneItem = R"sql(
INSERT Land (La_Id, La_Navn) VALUES (77, 'Island')
INSERT Leverandor (Le_Id, Le_Navn, Le_PostAdr, Le_PostPostnr, Le_PostSted, Le_Post_La_Id, Le_Telefon, Le_Telefax, Le_Email)
VALUES (701, 'Garn AS', 'Postboks 1', '5003', 'Bergen', 77, '55000001', '55000002', 'post@garn.no')
INSERT Varegruppe (Vg_Id, Vg_Navn, Vg_Hoved_Vg_ID, Vg_Root_Vg_ID) VALUES ('R701', 'Alt', NULL, NULL),
  ('H701', 'Tekstil', 'R701', 'R701'), ('U701', 'Garn', 'H701', 'R701')
INSERT Produkt (P_Id, P_Navn, P_InfoIntern, P_InfoEkstern, P_InfoRegel)
VALUES ('P701', 'Ullgarn', 'intern tekst', 'ekstern tekst', 3)
INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris, Va_VeilPris, Va_Mvasats, Va_Utgaatt, Va_Slettet, Va_Nummertype,
  Va_Vg_Id, Va_Le_Id, Va_P_ID, Va_Fargenavn, Va_Storrelsenavn, Va_Minlager, Va_Makslager, Va_Prislapp, Va_MaksRabatt,
  Va_SendTilButikkKasser)
VALUES ('777001', 'Rødt garn', 11.5, 39.5, 49.5, 15, 1, 1, 'EAN', 'U701', 701, 'P701', 'Rød', '50 g', 2.5, 20.5, 4, 30, 1)
)sql";

// Everything about it changed, but for its numbers.
inline constexpr const char* kOneItemChanged = R"sql(
UPDATE Leverandor SET Le_Navn = 'Tråd AS', Le_PostAdr = 'Kaien 2', Le_PostPostnr = '0150', Le_PostSted = 'Oslo',
  Le_Post_La_Id = NULL, Le_Telefon = '22000001', Le_Telefax = NULL, Le_Email = 'post@traad.no'
WHERE Le_Id = 701
UPDATE Varegruppe SET Vg_Navn = 'Tråder', Vg_Hoved_Vg_ID = 'R701', Vg_Root_Vg_ID = 'H701' WHERE Vg_Id = 'U701'
UPDATE Produkt SET P_Navn = 'Bomull', P_InfoIntern = 'ny intern', P_InfoEkstern = 'ny ekstern', P_InfoRegel = 5
WHERE P_Id = 'P701'
UPDATE Vare SET Va_Navn = 'Blå tråd', Va_Kostpris = 12.5, Va_Pris = 40.5, Va_VeilPris = NULL, Va_Mvasats = 25,
  Va_Utgaatt = 0, Va_Slettet = 0, Va_Vg_Id = 'H701', Va_Le_Id = NULL, Va_Fargenavn = 'Blå', Va_Storrelsenavn = '100 m',
  Va_Minlager = 3.5, Va_Makslager = 30.5, Va_Prislapp = 6, Va_MaksRabatt = 40
WHERE Va_Id = '777001'
)sql";

// A further item that has nothing but its number, its name and a price.
inline std::string plainItem(const std::string& number) {
    return "INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris, Va_SendTilButikkKasser) VALUES ('" + number +
           "', 'Vare " + number + "', 1, 2, 1)";
}

}  // namespace torvik::test

// A till with one settlement of any size, open and never fetched.
#pragma once

#include <string>

#include "sandbox/chain/demo_chain.h"

namespace torvik::bench {

// Adds settlement 900 with `orders` orders of four lines and one payment each.
inline void addBigSettlement(sandbox::chain::DemoChain& chain, std::size_t till, int orders) {
    const std::string n = std::to_string(orders);
    chain.runInTill(till, R"(INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE)
SELECT 900, MIN(AN_ID), '20260320 21:00', 'NORMAL' FROM ANSATT
CREATE TABLE tall (n int NOT NULL PRIMARY KEY)
INSERT tall VALUES (1)
WHILE (SELECT COUNT(*) FROM tall) < )" +
                              n +
                              R"(
  INSERT tall SELECT n + (SELECT MAX(n) FROM tall) FROM tall)");
    chain.runInTill(till,
                    R"(INSERT ORDRE (OR_ID, OR_KU_ID, OR_OP_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS)
SELECT 100000 + n, 1, 900, (SELECT MIN(AN_ID) FROM ANSATT), DATEADD(second, n % 40000, '20260320 08:00'),
  DATEADD(second, n % 40000, '20260320 08:01'), 0 FROM tall WHERE n <= )" +
                        n);
    chain.runInTill(
        till,
        R"(INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_RABATT, OL_SALGSPRIS, OL_MVASATS, OL_KOSTPRIS,
  OL_MERSALG, OL_STATUS, OL_GJELDENDEPRIS)
SELECT 1000000 + 4 * n + k, 100000 + n, CONVERT(varchar(15), 100000 + (n + k) % 40), 1 + n % 3, 5 * (k % 2),
  19.9 + n % 300, 25, 12.5, 0, 1, 19.9 + n % 300
FROM tall, (SELECT 0 AS k UNION ALL SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3) AS four WHERE n <= )" +
            n);
    chain.runInTill(till, R"(INSERT BETALING (BT_ID, BT_BF_ID, BT_OR_ID, BT_BELOP)
SELECT 100000 + n, 1 + n % 2, 100000 + n, 99.5 FROM tall WHERE n <= )" +
                              n + "\nDROP TABLE tall");
}

}  // namespace torvik::bench

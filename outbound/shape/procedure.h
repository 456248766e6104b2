// A procedure that a send installs anew on the till and runs there, as data with the batches that do it. It stays in
// the till's database afterwards.
#pragma once

#include "outbound/shape/sql_text.h"

namespace torvik {

struct Procedure {
    const char* name;
    SqlText body;              // behind "create procedure NAME as"
    const char* comment = "";  // opens the batch that drops it
    SqlText call = {};         // what runs it; none: "exec NAME"
};

[[nodiscard]] QString dropProcedureSql(const Procedure& procedure);
[[nodiscard]] QString createProcedureSql(const Procedure& procedure, const SendFacts& facts);
[[nodiscard]] QString callSql(const Procedure& procedure, const SendFacts& facts);

}  // namespace torvik

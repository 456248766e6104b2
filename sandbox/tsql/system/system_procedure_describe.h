// sp_describe_first_result_set: what a text would give, without running it. Drivers ask before they fetch or load.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "sandbox/tsql/system/procedure_host.h"

namespace sandbox {

// One row for each column of the text's first SELECT; none where it has no SELECT of its own. What keeps the text from
// being bound is raised.
void describeFirstResultSet(ProcedureHost& host, std::string_view text, std::string_view declarations);

}  // namespace sandbox

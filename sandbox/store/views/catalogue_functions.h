// The functions about the catalogue: what T-SQL asks of a connection's FunctionContext. Connected once, by
// connectCatalogue().
#pragma once

#include "sandbox/store/databases/connection.h"

namespace sandbox::views {

void connectCatalogueFunctions(Connection& connection);

}  // namespace sandbox::views

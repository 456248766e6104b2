// The type of a computed column, for those who define one.
#pragma once

#include <string_view>

#include "sandbox/tsql/bind/bind.h"

namespace sandbox {

// A computed column's type and nullability, in the query's one column. table: without computed columns.
[[nodiscard]] BoundQuery bindComputed(const BindContext& context, const ResolvedObject& table,
                                      std::string_view expression);

}  // namespace sandbox

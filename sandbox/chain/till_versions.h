// Which tables and columns a till's schema gained at which version. The generator leaves out what a till lacks by it;
// the scripts are held against it.
#pragma once

#include <span>
#include <string_view>

#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

struct SchemaGain {
    int version;
    std::string_view table;
    std::string_view column;  // empty: the table itself
};

// In the order of versions. What stands here with no row has been there since the oldest version.
[[nodiscard]] std::span<const SchemaGain> schemaGains();

[[nodiscard]] bool tillHasTable(int version, std::string_view table);
[[nodiscard]] bool tillHasColumn(int version, std::string_view table, std::string_view column);

// The tables, and of each the columns, that a till of `version` has.
[[nodiscard]] std::vector<TableData> onlyWhatATillHas(int version, std::vector<TableData> tables);

}  // namespace sandbox::chain

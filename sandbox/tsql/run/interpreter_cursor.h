// A cursor of T-SQL: a query with the variables' values of its declaration, and from OPEN on its rows as they were
// then.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sandbox/tsql/bind/bind.h"

namespace sandbox {

struct Cursor {
    BoundQuery query;  // variables replaced by their values
    bool scroll = false;
    bool open = false;
    std::vector<std::vector<Value>> rows;
    std::int64_t at = 0;  // 1-based; 0: before the first row, rows.size() + 1: after the last

    // Where a FETCH goes, kept within before-the-first and after-the-last; whether there is a row.
    bool move(std::string_view direction, std::int64_t distance);
};

}  // namespace sandbox

// Rows of one table as the demo chain's model tells them: to be inserted, or to be compared with what a table holds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sandbox::chain {

struct Moment {
    std::int64_t milliseconds = 0;  // since 1970-01-01 00:00, without a zone
};

struct Blob {
    std::string bytes;
};

using Cell = std::variant<std::monostate, std::int64_t, double, std::string, Moment, Blob>;

struct TableData {
    std::string table;
    std::vector<std::string> columns;
    std::vector<std::vector<Cell>> rows;
    bool identity = false;  // one of the columns is the table's identity: it takes the rows' own numbers
};

// A cell as a T-SQL literal: NULL, 12, 1.5E0, 'text', '20260302 10:15:00.000', 0x00FF.
[[nodiscard]] std::string sqlLiteral(const Cell& cell);

// A cell as tests print it: "NULL", "12", "1.5", the text itself, "2026-03-02 10:15:00.000", "0x00FF".
[[nodiscard]] std::string cellText(const Cell& cell);

// INSERT batches of at most 500 rows each; none for a table without rows.
[[nodiscard]] std::vector<std::string> insertBatches(const TableData& data);

// Any whole number, bool included; NULL for an empty optional.
template <typename T>
[[nodiscard]] Cell integer(const T& value) {
    return Cell(static_cast<std::int64_t>(value));
}
template <typename T>
[[nodiscard]] Cell integer(const std::optional<T>& value) {
    return value ? integer(*value) : Cell(std::monostate{});
}

[[nodiscard]] inline Cell text(std::string_view value) {
    return Cell(std::string(value));
}

template <typename T>
[[nodiscard]] Cell orNull(const std::optional<T>& value) {
    if (value) return Cell(*value);
    return std::monostate{};
}

}  // namespace sandbox::chain

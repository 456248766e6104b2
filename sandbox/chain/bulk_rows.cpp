// The cells as the bulk load takes them: each column is announced by what its cells are, and the server converts.
#include "sandbox/chain/bulk_rows.h"

#include <stdexcept>

#include "sandbox/tsql/run/session.h"

namespace sandbox::chain {

namespace {

// Constraints are looked at and nulls kept, as by an INSERT statement.
constexpr const char* kAsInsert = ") WITH (CHECK_CONSTRAINTS, KEEP_NULLS)";

const char* announcedType(const TableData& table, std::size_t column) {
    static constexpr const char* kTypes[] = {nullptr,         "bigint",      "float",
                                             "nvarchar(max)", "varchar(30)", "varbinary(max)"};
    for (const auto& row : table.rows)
        if (const char* type = kTypes[row[column].index()]) return type;
    return "int";  // nulls alone
}

Value valueOf(const Cell& cell) {
    if (const auto* number = std::get_if<std::int64_t>(&cell)) return *number;
    if (const auto* real = std::get_if<double>(&cell)) return *real;
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    if (const auto* blob = std::get_if<Blob>(&cell)) return Bytes(blob->bytes.begin(), blob->bytes.end());
    if (std::holds_alternative<Moment>(cell)) {
        const std::string literal = sqlLiteral(cell);
        return literal.substr(1, literal.size() - 2);
    }
    return Null{};
}

}  // namespace

void loadRows(Session& session, const TableData& table) {
    if (table.rows.empty()) return;
    std::string statement = "INSERT BULK " + table.table + " (";
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        statement += (i ? ", " : "") + table.columns[i] + " " + announcedType(table, i);
    try {
        (void)session.beginBulk(statement + kAsInsert);
        std::vector<Value> values(table.columns.size());
        for (const auto& row : table.rows) {
            for (std::size_t i = 0; i < row.size(); ++i) values[i] = valueOf(row[i]);
            session.bulkRow(values);
        }
        (void)session.endBulk();
    } catch (const SqlError& error) {
        throw std::runtime_error(std::string(error.what()) + " in the rows of " + table.table);
    }
}

}  // namespace sandbox::chain

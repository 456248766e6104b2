// Tables held in memory, each row by its key: what the model of the back office's registers and that of a till are made
// of. A change is made here and then written to the database as the statements that make the difference.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

using Row = std::map<std::string, Cell, std::less<>>;  // by column

class KeptTable {
public:
    // The columns in the schema's order, in words: a leading * marks those of the key, a trailing ~ those of char(n),
    // which are held and compared without the blanks at their end, a trailing # decimals, which are held and compared
    // as float; =0 is what a row holds that does not tell the column.
    KeptTable(std::string name, std::string_view columns);
    // With columns that are sums of groups: what ends the SELECT.
    KeptTable(std::string name, std::string_view columns, std::string ending);

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] bool has(std::string_view column) const;

    // A row whose columns not told get their default, or NULL; takes the place of the one with its key. Raises
    // std::invalid_argument for a column that the table lacks.
    Row& put(Row row);
    void put(const TableData& data);  // all rows of it; columns that this table lacks are passed over

    // The row with this key, in the order of the key's columns; none: nullptr.
    template <typename... Part>
    [[nodiscard]] Row* find(const Part&... part) {
        const auto found = rows_.find(Key{std::string(part)...});
        return found == rows_.end() ? nullptr : &found->second;
    }
    template <typename... Part>
    [[nodiscard]] bool contains(const Part&... part) const {
        return rows_.contains(Key{std::string(part)...});
    }
    template <typename... Part>
    void erase(const Part&... part) {
        rows_.erase(Key{std::string(part)...});
    }
    void eraseIf(const std::function<bool(const Row&)>& condition);
    void clear() { rows_.clear(); }

    // The rows in the order of their keys, to be changed but for their keys.
    [[nodiscard]] std::vector<Row*> rows();
    [[nodiscard]] std::size_t size() const { return rows_.size(); }

    // As it is held against a database; the columns' spelling is an expression where blanks are to be cut.
    [[nodiscard]] TableData data() const;
    [[nodiscard]] bool isSummed() const { return !ending_.empty(); }

    // The rows as lines of text, sorted; and those of a database in the same form, whatever else its table holds.
    [[nodiscard]] std::vector<std::string> lines() const;
    [[nodiscard]] std::vector<std::string> linesOf(const std::vector<std::string>& columns,
                                                   const std::vector<std::vector<std::string>>& rows) const;

    // The statements that make `before` into this: what went, and what came or is another.
    [[nodiscard]] std::vector<std::string> deletesFrom(const KeptTable& before) const;
    [[nodiscard]] std::vector<std::string> changesTo(const KeptTable& before) const;

private:
    using Key = std::vector<std::string>;
    struct Column {
        std::string name;
        bool key = false;
        char kind = ' ';  // ~ or #
        Cell standard;
    };
    [[nodiscard]] Key keyOf(const Row& row) const;
    [[nodiscard]] std::string where(const Row& row) const;

    std::string name_;
    std::string ending_;
    std::vector<Column> columns_;
    std::map<Key, Row> rows_;
};

// Tables in the order of their foreign keys, parents first.
class KeptTables {
public:
    void add(KeptTable table) { tables_.push_back(std::move(table)); }
    KeptTable& replace(KeptTable table);  // the one of its name, if there is one
    [[nodiscard]] bool has(std::string_view name) const;
    [[nodiscard]] KeptTable& operator[](std::string_view name);  // raises std::invalid_argument for one not there
    [[nodiscard]] const std::deque<KeptTable>& all() const { return tables_; }

    // The batches that make a database that holds `before` hold this.
    [[nodiscard]] std::vector<std::string> changesTo(const KeptTables& before) const;

private:
    std::deque<KeptTable> tables_;  // whose elements stay where they are when one more comes
};

struct ColumnPair {
    const char* to;
    const char* from;
};
void copyColumns(Row& to, const Row& from, std::span<const ColumnPair> pairs);

[[nodiscard]] inline bool isNull(const Row& row, std::string_view column) {
    return std::holds_alternative<std::monostate>(row.at(std::string(column)));
}
// As text, empty for NULL.
[[nodiscard]] std::string textOf(const Row& row, std::string_view column);
[[nodiscard]] double numberOf(const Row& row, std::string_view column);  // 0 for NULL
[[nodiscard]] bool same(const Cell& one, const Cell& other);

}  // namespace sandbox::chain

// See kept_table.h.
#include "sandbox/chain/registers/kept_table.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>
#include <stdexcept>

namespace sandbox::chain {

namespace {

// "0" as a number, any other text as it stands.
Cell standardCell(const std::string& word) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error == std::errc() && end == word.data() + word.size()) return number;
    return word;
}

void cutBlanks(std::string& text) {
    text.erase(text.find_last_not_of(' ') + 1);
}

Cell withoutBlanks(Cell cell) {
    if (auto* text = std::get_if<std::string>(&cell)) cutBlanks(*text);
    return cell;
}

bool sameName(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

void addCell(std::string& line, const std::string& cell) {
    line += (line.empty() ? "" : " | ") + cell;
}

}  // namespace

KeptTable::KeptTable(std::string name, std::string_view columns) : name_(std::move(name)) {
    std::istringstream words{std::string(columns)};
    for (std::string word; words >> word;) {
        Column column;
        if (const std::size_t at = word.find('='); at != std::string::npos) {
            column.standard = standardCell(word.substr(at + 1));
            word.erase(at);
        }
        if (word.ends_with('~') || word.ends_with('#')) {
            column.kind = word.back();
            word.pop_back();
        }
        column.key = word.starts_with('*');
        column.name = word.substr(column.key ? 1 : 0);
        columns_.push_back(std::move(column));
    }
}

KeptTable::KeptTable(std::string name, std::string_view columns, std::string ending)
    : KeptTable(std::move(name), columns) {
    ending_ = std::move(ending);
}

bool KeptTable::has(std::string_view column) const {
    return std::any_of(columns_.begin(), columns_.end(), [&](const Column& c) { return sameName(c.name, column); });
}

Row& KeptTable::put(Row row) {
    for (const auto& [column, cell] : row)
        if (!has(column)) throw std::invalid_argument(name_ + " has no column " + column);
    for (const Column& c : columns_) {
        const auto cell = row.try_emplace(c.name, c.standard).first;
        if (c.kind == '~') cell->second = withoutBlanks(cell->second);
    }
    Key key = keyOf(row);
    return rows_.insert_or_assign(std::move(key), std::move(row)).first->second;
}

void KeptTable::put(const TableData& data) {
    for (const auto& cells : data.rows) {
        Row row;
        for (std::size_t i = 0; i < cells.size(); ++i)
            if (has(data.columns[i])) row[data.columns[i]] = cells[i];
        put(std::move(row));
    }
}

void KeptTable::eraseIf(const std::function<bool(const Row&)>& condition) {
    std::erase_if(rows_, [&](const auto& entry) { return condition(entry.second); });
}

std::vector<Row*> KeptTable::rows() {
    std::vector<Row*> all;
    for (auto& [key, row] : rows_) all.push_back(&row);
    return all;
}

TableData KeptTable::data() const {
    TableData data{name_ + ending_, {}, {}};
    for (const Column& c : columns_)
        data.columns.push_back(c.kind == '~'   ? "RTRIM(" + c.name + ")"
                               : c.kind == '#' ? "CONVERT(float, " + c.name + ")"
                                               : c.name);
    for (const auto& [key, row] : rows_) {
        std::vector<Cell>& cells = data.rows.emplace_back();
        for (const Column& c : columns_) cells.push_back(row.at(c.name));
    }
    return data;
}

std::vector<std::string> KeptTable::lines() const {
    std::vector<std::string> all;
    for (const auto& [key, row] : rows_) {
        std::string& line = all.emplace_back();
        for (const Column& c : columns_) addCell(line, cellText(row.at(c.name)));
    }
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<std::string> KeptTable::linesOf(const std::vector<std::string>& columns,
                                            const std::vector<std::vector<std::string>>& rows) const {
    std::vector<std::string> all(rows.size());
    for (const Column& c : columns_) {
        const auto found = std::find_if(columns.begin(), columns.end(),
                                        [&](const std::string& name) { return sameName(name, c.name); });
        if (found == columns.end()) throw std::invalid_argument("the database's " + name_ + " has no " + c.name);
        const auto at = static_cast<std::size_t>(found - columns.begin());
        for (std::size_t r = 0; r < rows.size(); ++r) {
            std::string cell = rows[r].at(at);
            if (c.kind == '~') cutBlanks(cell);
            if (c.kind == '#' && cell != "NULL") cell = cellText(std::stod(cell));
            addCell(all[r], cell);
        }
    }
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<std::string> KeptTable::deletesFrom(const KeptTable& before) const {
    std::vector<std::string> statements;
    for (auto old = before.rows_.rbegin(); old != before.rows_.rend(); ++old)
        if (!rows_.contains(old->first)) statements.push_back("DELETE FROM " + name_ + where(old->second));
    return statements;
}

std::vector<std::string> KeptTable::changesTo(const KeptTable& before) const {
    std::vector<std::string> statements;
    for (const auto& [key, row] : rows_) {
        std::string names;
        std::string values;
        std::string changes;
        const auto old = before.rows_.find(key);
        for (const Column& c : columns_) {
            const Cell& cell = row.at(c.name);
            names += (names.empty() ? "" : ", ") + c.name;
            values += (values.empty() ? "" : ", ") + sqlLiteral(cell);
            if (old != before.rows_.end() && !same(cell, old->second.at(c.name)))
                changes += (changes.empty() ? "" : ", ") + c.name + " = " + sqlLiteral(cell);
        }
        if (old == before.rows_.end())
            statements.push_back("INSERT INTO " + name_ + " (" + names + ") VALUES (" + values + ")");
        else if (!changes.empty())
            statements.push_back("UPDATE " + name_ + " SET " + changes + where(row));
    }
    return statements;
}

KeptTable::Key KeptTable::keyOf(const Row& row) const {
    Key key;
    for (const Column& c : columns_)
        if (c.key) key.push_back(cellText(row.at(c.name)));
    return key;
}

std::string KeptTable::where(const Row& row) const {
    std::string text;
    for (const Column& c : columns_) {
        if (!c.key) continue;
        const Cell& cell = row.at(c.name);
        text += (text.empty() ? " WHERE " : " AND ") + c.name +
                (std::holds_alternative<std::monostate>(cell) ? " IS NULL" : " = " + sqlLiteral(cell));
    }
    return text;
}

bool KeptTables::has(std::string_view name) const {
    return std::any_of(tables_.begin(), tables_.end(), [&](const KeptTable& t) { return t.name() == name; });
}

KeptTable& KeptTables::operator[](std::string_view name) {
    for (KeptTable& table : tables_)
        if (table.name() == name) return table;
    throw std::invalid_argument("no table " + std::string(name));
}

KeptTable& KeptTables::replace(KeptTable table) {
    if (has(table.name())) return (*this)[table.name()] = std::move(table);
    return tables_.emplace_back(std::move(table));
}

std::vector<std::string> KeptTables::changesTo(const KeptTables& before) const {
    std::vector<std::string> statements;
    for (std::size_t i = tables_.size(); i-- > 0;)
        for (std::string& text : tables_[i].deletesFrom(before.tables_.at(i))) statements.push_back(std::move(text));
    for (std::size_t i = 0; i < tables_.size(); ++i)
        for (std::string& text : tables_[i].changesTo(before.tables_.at(i))) statements.push_back(std::move(text));
    return statements;
}

void copyColumns(Row& to, const Row& from, std::span<const ColumnPair> pairs) {
    for (const ColumnPair& pair : pairs) to.at(pair.to) = from.at(pair.from);
}

std::string textOf(const Row& row, std::string_view column) {
    const Cell& cell = row.at(std::string(column));
    return std::holds_alternative<std::monostate>(cell) ? std::string() : cellText(cell);
}

double numberOf(const Row& row, std::string_view column) {
    const Cell& cell = row.at(std::string(column));
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&cell)) return *number;
    return 0;
}

bool same(const Cell& one, const Cell& other) {
    return one.index() == other.index()
               ? cellText(one) == cellText(other)
               : cellText(one) == cellText(other) && !std::holds_alternative<std::monostate>(one) &&
                     !std::holds_alternative<std::monostate>(other);
}

}  // namespace sandbox::chain

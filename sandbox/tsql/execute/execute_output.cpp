// The rows of an OUTPUT clause, sent to the client or written into its INTO table.
#include "sandbox/tsql/execute/execute_output.h"

#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {

namespace {

std::string rowText(const ResolvedObject& table) {
    std::string columns;
    for (const ColumnDef& column : table.object->columns) {
        if (column.computedText.empty()) columns += (columns.empty() ? "" : ", ") + quoteIdentifier(column.name);
    }
    return "SELECT " + columns + " FROM " + storageTable(table.attachedAs, *table.object) + " WHERE _rowid_ = ?1";
}

}  // namespace

RowOutput::RowOutput(const ExecuteContext& context, const ResolvedObject& target,
                     const std::shared_ptr<const BoundOutput>& output, Send send)
    : context_(context), output_(output), send_(std::move(send)), row_(context.connection.prepare(rowText(target))) {
    for (const ColumnDef& column : target.object->columns) {
        if (column.computedText.empty()) types_.push_back(column.type);
    }
}

std::vector<Typed> RowOutput::read(std::int64_t rowId) {
    std::vector<Typed> cells;
    sqlite3_bind_int64(row_.get(), 1, rowId);
    if (row_.step()) {
        for (std::size_t i = 0; i < types_.size(); ++i) {
            cells.push_back({types_[i], readColumn(row_.get(), static_cast<int>(i), types_[i])});
        }
    }
    row_.reset();
    return cells;
}

void RowOutput::removed(std::int64_t rowId) {
    std::vector<Typed> input;
    for (const Type& type : types_) input.push_back({type, Null{}});
    std::vector<Typed> old = read(rowId);
    std::move(old.begin(), old.end(), std::back_inserter(input));
    input_.push_back(std::move(input));
}

void RowOutput::written(std::int64_t rowId) {
    std::vector<Typed> now = read(rowId);
    if (next_ == input_.size()) {  // a new row: nothing was there before
        input_.push_back(now);
        for (const Type& type : types_) input_.back().push_back({type, Null{}});
    } else {
        std::move(now.begin(), now.end(), input_[next_].begin());
    }
    ++next_;
}

void RowOutput::finish() {
    const BoundQuery& query = output_->query;
    std::vector<std::vector<Typed>> rows;
    {
        Statement statement = context_.connection.prepare(query.sql);
        for (const std::vector<Typed>& input : input_) {
            context_.bindParameters(statement, query, input);
            std::vector<Typed>& row = rows.emplace_back();
            if (statement.step()) {
                for (std::size_t i = 0; i < query.columns.size(); ++i) {
                    const Type& type = query.columns[i].type;
                    row.push_back({type, readColumn(statement.get(), static_cast<int>(i), type)});
                }
            }
            statement.reset();
        }
    }
    if (output_->into) {
        (void)executeInsertRows(context_, *output_->into, rows);
    } else {
        send_(query, rows);
    }
}

}  // namespace sandbox

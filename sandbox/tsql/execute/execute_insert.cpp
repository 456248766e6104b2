// INSERT of all kinds: identity values, nulls and keys row by row, checks and foreign keys at the end.
#include "sandbox/tsql/execute/execute_insert.h"

#include <limits>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint_errors.h"
#include "sandbox/tsql/execute/execute_output.h"

namespace sandbox {

namespace {

std::string insertText(const FoundObject& table, const std::vector<BoundInsert::Column>& columns) {
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        names += (i == 0 ? "" : ", ") + quoteIdentifier(columns[i].column->name);
        values += (i == 0 ? "?" : ", ?") + std::to_string(i + 1);
    }
    return "INSERT INTO " + tableSql(table) + " (" + names + ") VALUES (" + values + ")";
}

std::int64_t highest(const Type& type) {
    switch (type.id) {
        case TypeId::TinyInt: return 255;
        case TypeId::SmallInt: return std::numeric_limits<std::int16_t>::max();
        case TypeId::Int: return std::numeric_limits<std::int32_t>::max();
        case TypeId::Decimal: {
            std::int64_t limit = 1;
            for (int i = 0; i < type.precision && i < 18; ++i) limit *= 10;
            return limit - 1;
        }
        default: return std::numeric_limits<std::int64_t>::max();
    }
}

std::int64_t lowest(const Type& type) {
    return type.id == TypeId::TinyInt ? 0 : -highest(type) - 1;
}

}  // namespace

// A column's default, evaluated anew for each row that needs it.
struct RowInserter::Default {
    BoundQuery query;
    Statement statement;
};

RowInserter::RowInserter(const ExecuteContext& context, const FoundObject& table, const BoundInsert& insert,
                         Options options)
    : context_(context),
      table_(table),
      columns_(insert.columns),
      options_(options),
      insert_(context.connection.prepare(insertText(table, insert.columns))) {
    defaults_.resize(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const ColumnDef& column = *columns_[i].column;
        if (column.identity) {
            identity_ = &column;
            identitySource_ = columns_[i].source;
        }
        hasRowVersion_ = hasRowVersion_ || (column.type.rowVersion && columns_[i].source < 0);
        if (options.defaultsForNulls && columns_[i].source >= 0 && !column.defaultText.empty()) {
            BoundQuery query = sandbox::bindDefault(context.bind, column);
            Statement statement = context.connection.prepare(query.sql);
            defaults_[i] = std::make_unique<Default>(Default{std::move(query), std::move(statement)});
        }
    }
    if (identity_ != nullptr) lastIdentity_ = table.database->lastIdentity(table.object->id);
    keepsRowIds_ = options.checkConstraints && (!table.object->checks.empty() || !table.object->foreignKeys.empty());
}

RowInserter::~RowInserter() {
    if (!given_) return;
    table_.database->setLastIdentity(table_.object->id, lastIdentity_);
}

void RowInserter::add(const RowView& source) {
    std::optional<std::int64_t> identity;
    if (identity_ != nullptr) {
        if (identitySource_ < 0) {
            identity = nextIdentity();
        } else {
            noteIdentity(source.integer(static_cast<std::size_t>(identitySource_)));
        }
    }
    if (hasRowVersion_) rowVersion_ = context_.connection.nextRowVersion(*table_.database);
    bindRow(insert_.get(), source, identity);
    try {
        insert_.step();
    } catch (const SqliteError& error) {
        if (!isDuplicate(error)) throw;
        insert_.reset();
        requireChecks(source, identity);
        throw duplicate(source, identity);
    }
    insert_.reset();
    ++count_;
    if (keepsRowIds_) rows_.push_back(sqlite3_last_insert_rowid(context_.connection.handle()));
}

void RowInserter::bindRow(sqlite3_stmt* to, const RowView& source, std::optional<std::int64_t> identity) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const BoundInsert::Column& column = columns_[i];
        const int parameter = static_cast<int>(i) + 1;
        if (column.source < 0 && column.column->type.rowVersion) {
            bindRowVersion(to, parameter);
        } else if (column.source < 0) {
            sqlite3_bind_int64(to, parameter, *identity);
        } else if (!source.isNull(static_cast<std::size_t>(column.source))) {
            source.bind(to, parameter, static_cast<std::size_t>(column.source));
        } else if (!defaults_[i] || !bindDefault(to, i)) {
            if (!column.column->nullable) throw nullNotAllowed(table_, column.column->name, "INSERT");
            sqlite3_bind_null(to, parameter);
        }
    }
}

void RowInserter::bindRowVersion(sqlite3_stmt* to, int parameter) const {
    sqlite3_bind_blob(to, parameter, rowVersion_.data(), static_cast<int>(rowVersion_.size()), SQLITE_TRANSIENT);
}

bool RowInserter::bindDefault(sqlite3_stmt* to, std::size_t column) {
    Default& value = *defaults_[column];
    context_.bindParameters(value.statement, value.query, {});
    bool given = false;
    if (value.statement.step()) {
        given = sqlite3_column_type(value.statement.get(), 0) != SQLITE_NULL;
        sqlite3_bind_value(to, static_cast<int>(column) + 1, sqlite3_column_value(value.statement.get(), 0));
    }
    value.statement.reset();
    return given;
}

// SQL Server looks at a row's checks before its keys: the row stands alone in a table of its own, which goes when the
// failed statement is undone.
void RowInserter::requireChecks(const RowView& source, std::optional<std::int64_t> identity) {
    if (!options_.checkConstraints || table_.object->checks.empty()) return;
    auto alone = std::make_shared<ObjectDef>(*table_.object);
    alone->storageName = "row_alone";
    const FoundObject table{alone, context_.connection.temporary()};
    context_.connection.run(createStorageSql(table.database->attachedAs(), *alone));
    Statement insert = context_.connection.prepare(insertText(table, columns_));
    bindRow(insert.get(), source, identity);
    insert.step();
    const RowIds row{sqlite3_last_insert_rowid(context_.connection.handle())};
    if (const CheckDef* broken = brokenCheck(context_, table, row)) throw checkBroken(table_, *broken, "INSERT");
}

SqlError RowInserter::duplicate(const RowView& source, std::optional<std::int64_t> identity) {
    const ObjectDef& object = *table_.object;
    std::string text;
    for (std::size_t i = 0; i < columns_.size(); ++i) text += (i == 0 ? "SELECT ?" : ", ?") + std::to_string(i + 1);
    Statement read = context_.connection.prepare(text);
    bindRow(read.get(), source, identity);
    std::vector<Value> values(object.columns.size());
    read.step();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const ColumnDef* column = object.findColumn(columns_[i].column->name);
        values[static_cast<std::size_t>(column - object.columns.data())] =
            readColumn(read.get(), static_cast<int>(i), column->type);
    }
    return duplicateError(context_, table_, values, std::nullopt);
}

std::int64_t RowInserter::finish() {
    if (keepsRowIds_) checkWrittenRows(context_, table_, {}, rows_, "INSERT");
    if (given_) {
        table_.database->setLastIdentity(table_.object->id, lastIdentity_);
        context_.connection.identityUsed(*table_.database, table_.object->id);
        context_.identityGiven(*given_);
        given_.reset();  // told; from the end of the write on, others draw numbers too
    }
    return count_;
}

// ---- identity

std::int64_t RowInserter::nextIdentity() {
    std::int64_t next = identity_->identitySeed;
    const bool over = lastIdentity_ && __builtin_add_overflow(*lastIdentity_, identity_->identityIncrement, &next);
    if (over || next > highest(identity_->type) || next < lowest(identity_->type)) {
        throw identityOverflow(identity_->type);
    }
    lastIdentity_ = next;
    given_ = next;
    return next;
}

// A value that the statement gave moves the table's own on, never back.
void RowInserter::noteIdentity(std::int64_t value) {
    given_ = value;
    const bool up = identity_->identityIncrement > 0;
    if (!lastIdentity_) {
        if (up ? value >= identity_->identitySeed : value <= identity_->identitySeed) lastIdentity_ = value;
    } else if (up ? value > *lastIdentity_ : value < *lastIdentity_) {
        lastIdentity_ = value;
    }
}

// ---- the statements

namespace {

// The target is among what the statement was bound against in any case, and once more where its rows are read.
bool readsTarget(const BoundInsert& insert, const FoundObject& table) {
    int target = 0;
    for (const ResolvedObject& read : insert.source.reads) {
        if (read.object->kind != ObjectKind::Table) return true;  // a view may hide any table
        if (read.object == table.object) ++target;
    }
    return target > 1;
}

}  // namespace

std::int64_t executeInsert(const ExecuteContext& context, const BoundInsert& insert) {
    return executeInsert(context, insert, nullptr);
}

std::int64_t executeInsert(const ExecuteContext& context, const BoundInsert& insert, RowOutput* output) {
    const FoundObject table = writeTarget(context, insert.target);
    Write write(context.connection, *table.database);
    requireUnchanged(context, table);
    RowInserter inserter(context, table, insert, {});
    const auto add = [&](const RowView& row) {
        inserter.add(row);
        if (output) output->written(sqlite3_last_insert_rowid(context.connection.handle()));
    };
    Statement source = context.connection.prepare(insert.source.sql);
    context.bindParameters(source, insert.source, {});
    if (readsTarget(insert, table)) {
        RowBuffer rows(static_cast<std::size_t>(sqlite3_column_count(source.get())));
        while (source.step()) rows.add(source.get());
        for (std::size_t i = 0; i < rows.size(); ++i) add(rows.row(i));
    } else {
        while (source.step()) add(StatementRow(source.get()));
    }
    const std::int64_t count = inserter.finish();
    source.reset();
    if (output) output->finish();
    write.done();
    return count;
}

std::int64_t executeInsertRows(const ExecuteContext& context, const BoundInsert& insert,
                               std::span<const std::vector<Typed>> rows) {
    const FoundObject table = writeTarget(context, insert.target);
    Write write(context.connection, *table.database);
    requireUnchanged(context, table);
    RowInserter inserter(context, table, insert, {});
    {
        Statement source = context.connection.prepare(insert.source.sql);
        for (const std::vector<Typed>& row : rows) {
            context.bindParameters(source, insert.source, row);
            while (source.step()) inserter.add(StatementRow(source.get()));
            source.reset();
        }
    }
    const std::int64_t count = inserter.finish();
    write.done();
    return count;
}

}  // namespace sandbox

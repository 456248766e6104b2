#include "sandbox/tsql/execute/execute_table.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "sandbox/store/values/collation.h"
#include "sandbox/tsql/bind/bind_computed.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/stored_expression.h"

namespace sandbox {

using definition::constraintError;
using definition::definitionError;
using definition::nameTaken;
using definition::unsupported;

namespace {

using Kind = ast::Constraint::Kind;

const ast::Constraint* findConstraint(const ast::ColumnDefinition& column, Kind kind) {
    for (const ast::Constraint& constraint : column.constraints) {
        if (constraint.kind == kind) return &constraint;
    }
    return nullptr;
}

bool inPrimaryKey(const ast::TableDefinition& definition, const ast::ColumnDefinition& column) {
    if (findConstraint(column, Kind::PrimaryKey) != nullptr) return true;
    return std::any_of(definition.constraints.begin(), definition.constraints.end(), [&](const ast::Constraint& c) {
        return c.kind == Kind::PrimaryKey &&
               std::any_of(c.columns.begin(), c.columns.end(),
                           [&](const ast::IndexColumn& key) { return sameName(key.name, column.name); });
    });
}

bool canBeIdentity(const Type& type) {
    return (isInteger(type.id) && type.id != TypeId::Bit) ||
           (type.id == TypeId::Decimal && type.scale == 0 && type.precision <= 18);
}

bool canBeKey(const Type& type) {
    return !isLob(type.id) && type.length != Type::kMax;
}

}  // namespace

std::shared_ptr<Database> placeOf(const ExecuteContext& context, const ast::ObjectName& name) {
    if (!name.schema.empty() && !sameName(name.schema, "dbo")) {
        throw definitionError(2760, 1,
                              "The specified schema name \"" + name.schema +
                                  "\" either does not exist or you do not have permission to use it.");
    }
    if (name.name.starts_with('@') || (name.name.starts_with('#') && !name.name.starts_with("##"))) {
        return context.connection.temporary();
    }
    auto database = context.connection.attach(name.name.starts_with("##") ? "tempdb" : name.database);
    if (!database) throw definitionError(2702, 2, "Database '" + name.database + "' does not exist.");
    return database;
}

std::string collationOf(const Database& database, const Type& type, const std::string& given) {
    std::string collation = columnCollation(given);
    const std::string& own = database.facts().collation;
    if (collation.empty() && isCharacter(type.id) && !sameName(own, kDefaultCollation)) collation = own;
    return collation;
}

int freeIndexId(const ObjectDef& table, bool clustered) {
    if (clustered) return 1;
    int id = 2;
    for (const IndexDef& index : table.indexes) id = std::max(id, index.indexId + 1);
    return id;
}

TableBuilder::TableBuilder(const ExecuteContext& context, std::shared_ptr<Database> database, ObjectDef table,
                           bool isNew)
    : context_(context), database_(std::move(database)), table_(std::move(table)), isNew_(isNew) {}

void TableBuilder::add(const ast::TableDefinition& definition) {
    for (const ast::ColumnDefinition& column : definition.columns) {
        addColumn(column);
        // A key's columns may not be null, whether or not that was said; NULL said aloud is an error below.
        if (isNew_ && !column.nullable && inPrimaryKey(definition, column)) table_.columns.back().nullable = false;
    }
    for (const ast::ColumnDefinition& column : definition.columns) {
        if (column.computed) typeComputed(*findColumn(column.name), *column.computed);
    }
    for (const ast::ColumnDefinition& column : definition.columns) {
        for (const ast::Constraint& constraint : column.constraints) {
            if (constraint.kind != Kind::Default) addConstraint(constraint, &column);
        }
    }
    for (const ast::Constraint& constraint : definition.constraints) addConstraint(constraint, nullptr);
    for (const auto& inlined : definition.indexes) {
        IndexDef index;
        index.name = inlined.name;
        index.unique = inlined.unique;
        index.clustered = inlined.clustered.value_or(false);
        index.keys = keysOf(inlined.columns, nullptr);
        addIndex(std::move(index));
    }
}

// ---- columns

void TableBuilder::addColumn(const ast::ColumnDefinition& from) {
    if (!from.computed && !from.type.known) {
        throw definitionError(2715, 6,
                              "Column, parameter, or variable #" + std::to_string(table_.columns.size() + 1) +
                                  ": Cannot find data type " + from.type.written + ".");
    }
    if (findColumn(from.name) != nullptr) {
        throw definitionError(2705, isNew_ ? 3 : 4,
                              "Column names in each table must be unique. Column name '" + from.name + "' in table '" +
                                  table_.name + "' is specified more than once.");
    }
    ColumnDef column;
    column.name = from.name;
    if (from.computed) {
        column.computedText = storedExpression(*from.computed, from.computedText);
        column.nullable = from.nullable.value_or(true);
        column.columnId = ++table_.lastColumnId;
        table_.columns.push_back(std::move(column));
        return;
    }
    column.type = from.type.type;
    const bool isName = sameName(from.type.written, "sysname");
    column.nullable = from.nullable.value_or(!from.identity.has_value() && !isName);
    column.collation = collationOf(*database_, column.type, from.collation);
    column.columnId = ++table_.lastColumnId;
    if (from.identity) {
        if (!canBeIdentity(column.type)) {
            throw definitionError(2749, 2,
                                  "Identity column '" + column.name +
                                      "' must be of data type int, bigint, smallint, tinyint, or decimal or numeric "
                                      "with a scale of 0, unencrypted, and constrained to be nonnullable.");
        }
        if (column.nullable) {
            throw definitionError(8147, 1,
                                  "Could not create IDENTITY attribute on nullable column '" + column.name +
                                      "', table '" + table_.name + "'.");
        }
        for (const ColumnDef& other : table_.columns) {
            if (other.identity) {
                throw definitionError(2744, 2,
                                      "Multiple identity columns specified for table '" + table_.name +
                                          "'. Only one identity column per table is allowed.");
            }
        }
        if (from.identity->increment == 0) {
            throw definitionError(2753, 2, "Identity column '" + column.name + "' contains invalid INCREMENT.");
        }
        column.identity = true;
        column.identitySeed = from.identity->seed;
        column.identityIncrement = from.identity->increment;
    }
    table_.columns.push_back(std::move(column));
    for (const ast::Constraint& constraint : from.constraints) {
        if (constraint.kind == Kind::Default) addConstraint(constraint, &from);
    }
}

void TableBuilder::typeComputed(ColumnDef& column, const ast::Expr& expression) {
    ast::forEachExpr(expression, [&](const ast::Expr& expr) {
        const auto* reference = ast::as<ast::ColumnRef>(expr);
        const ColumnDef* used = reference != nullptr ? findColumn(reference->name) : nullptr;
        if (used == nullptr || used->computedText.empty()) return;
        throw definitionError(1759, 0,
                              "Computed column '" + used->name + "' in table '" + table_.name +
                                  "' is not allowed to be used in another computed-column definition.");
    });
    ObjectDef stored = table_;
    std::erase_if(stored.columns, [](const ColumnDef& each) { return !each.computedText.empty(); });
    const ResolvedObject table{std::make_shared<const ObjectDef>(std::move(stored)), database_->name(),
                               database_->attachedAs()};
    const ResultColumn value = bindComputed(context_.bind, table, column.computedText).columns.front();
    column.type = value.type;
    column.nullable = column.nullable && value.nullable;
}

// ---- constraints

void TableBuilder::addConstraint(const ast::Constraint& constraint, const ast::ColumnDefinition* column) {
    switch (constraint.kind) {
        case Kind::PrimaryKey:
        case Kind::Unique: addKey(constraint, column); break;
        case Kind::ForeignKey: addForeignKey(constraint, column); break;
        case Kind::Check: addCheck(constraint, column); break;
        case Kind::Default: addDefault(constraint, column); break;
    }
}

void TableBuilder::addKey(const ast::Constraint& constraint, const ast::ColumnDefinition* column) {
    const bool primary = constraint.kind == Kind::PrimaryKey;
    for (const IndexDef& index : table_.indexes) {
        if (!primary || !index.primaryKey) continue;
        if (isNew_) {
            throw definitionError(8110, 0,
                                  "Cannot add multiple PRIMARY KEY constraints to table '" + table_.name + "'.");
        }
        throw constraintError(1779, 0, "Table '" + table_.name + "' already has a primary key defined on it.");
    }
    IndexDef index;
    index.unique = true;
    index.primaryKey = primary;
    index.uniqueConstraint = !primary;
    index.keys = keysOf(constraint.columns, column);
    for (const IndexDef::Key& key : index.keys) {
        const ColumnDef* keyColumn = findColumn(key.column);
        if (keyColumn == nullptr) {
            throw constraintError(1911, 1,
                                  "Column name '" + key.column + "' does not exist in the target table or view.");
        }
        if (!canBeKey(keyColumn->type)) throw constraintError(1919, 1, invalidKeyText(keyColumn->name));
        if (primary && keyColumn->nullable) {
            throw constraintError(
                8111, 1, "Cannot define PRIMARY KEY constraint on nullable column in table '" + table_.name + "'.");
        }
    }
    const bool hasClustered = std::any_of(table_.indexes.begin(), table_.indexes.end(),
                                          [](const IndexDef& other) { return other.clustered; });
    if (hasClustered && constraint.clustered.value_or(false)) {
        throw definitionError(
            8112, 0, "Cannot add more than one clustered index for constraints on table '" + table_.name + "'.");
    }
    index.clustered = constraint.clustered.value_or(primary && !hasClustered);
    index.constraintId = database_->newObjectId();
    index.name = constraintName(constraint.name, madeUpName(primary ? "PK" : "UQ", "", index.constraintId));
    addIndex(std::move(index));
}

std::string TableBuilder::invalidKeyText(const std::string& column) const {
    return "Column '" + column + "' in table '" + table_.name +
           "' is of a type that is invalid for use as a key column in an index.";
}

void TableBuilder::addIndex(IndexDef index) {
    for (std::size_t i = 0; i < index.keys.size(); ++i) {
        const ColumnDef* column = findColumn(index.keys[i].column);
        if (column == nullptr) {
            throw definitionError(
                1911, 1, "Column name '" + index.keys[i].column + "' does not exist in the target table or view.");
        }
        index.keys[i].column = column->name;
        if (!column->computedText.empty()) throw unsupported("index on a computed column");
        if (!canBeKey(column->type)) {
            throw definitionError(1919, 1, invalidKeyText(column->name));
        }
        for (std::size_t j = 0; j < i; ++j) {
            if (sameName(index.keys[j].column, column->name)) {
                throw definitionError(1909, 1,
                                      "Cannot use duplicate column names in index. Column name '" + column->name +
                                          "' listed more than once.");
            }
        }
    }
    for (std::string& included : index.included) {
        const ColumnDef* column = findColumn(included);
        if (column == nullptr) {
            throw definitionError(1911, 1,
                                  "Column name '" + included + "' does not exist in the target table or view.");
        }
        included = column->name;
    }
    for (const IndexDef& other : table_.indexes) {
        if (sameName(other.name, index.name)) {
            throw definitionError(1913, 1,
                                  "The operation failed because an index or statistics with name '" + index.name +
                                      "' already exists on table '" + table_.name + "'.");
        }
        if (index.clustered && other.clustered) {
            throw definitionError(1902, 3,
                                  "Cannot create more than one clustered index on table '" + table_.name +
                                      "'. Drop the existing clustered index '" + other.name +
                                      "' before creating another.");
        }
    }
    index.indexId = freeIndexId(table_, index.clustered);
    table_.indexes.push_back(std::move(index));
}

void TableBuilder::addCheck(const ast::Constraint& constraint, const ast::ColumnDefinition* column) {
    CheckDef check;
    check.id = database_->newObjectId();
    check.text = storedExpression(*constraint.expr, constraint.exprText);
    check.name = constraintName(constraint.name, madeUpName("CK", column != nullptr ? column->name : "", check.id));
    std::set<std::string> used;  // the table's columns
    ast::forEachExpr(*constraint.expr, [&](const ast::Expr& expr) {
        const auto* reference = ast::as<ast::ColumnRef>(expr);
        const ColumnDef* found = reference != nullptr ? findColumn(reference->name) : nullptr;
        if (found == nullptr) return;
        if (column != nullptr && !sameName(found->name, column->name)) {
            throw constraintError(8141, 0,
                                  "Column CHECK constraint for column '" + column->name +
                                      "' references another column, table '" + table_.name + "'.");
        }
        used.insert(found->name);
    });
    // A condition over one column is that column's, wherever it was written.
    if (used.size() == 1) check.column = *used.begin();
    table_.checks.push_back(std::move(check));
}

void TableBuilder::addDefault(const ast::Constraint& constraint, const ast::ColumnDefinition* from) {
    const std::string& name = from != nullptr ? from->name : constraint.forColumn;
    ColumnDef* column = findColumn(name);
    if (column == nullptr) {
        throw constraintError(
            1752, 0,
            "Column '" + name + "' in table '" + table_.name + "' is invalid for creating a default constraint.");
    }
    if (!column->defaultText.empty()) {
        if (from != nullptr) {
            throw definitionError(8148, 0,
                                  "More than one column DEFAULT constraint specified for column '" + name +
                                      "', table '" + table_.name + "'.");
        }
        throw constraintError(1781, 1, "Column already has a DEFAULT bound to it.");
    }
    if (column->identity) {
        throw constraintError(1754, 0,
                              "Defaults cannot be created on columns with an IDENTITY attribute. Table '" +
                                  table_.name + "', column '" + name + "'.");
    }
    column->defaultId = database_->newObjectId();
    column->defaultText = storedExpression(*constraint.expr, constraint.exprText);
    column->defaultName = constraintName(constraint.name, madeUpName("DF", name, column->defaultId));
    ast::forEachExpr(*constraint.expr, [](const ast::Expr& expr) {
        const auto* reference = ast::as<ast::ColumnRef>(expr);
        if (reference == nullptr) return;
        throw definitionError(128, 1,
                              "The name \"" + reference->written() +
                                  "\" is not permitted in this context. Valid expressions are constants, constant "
                                  "expressions, and (in some contexts) variables. Column names are not permitted.",
                              15);
    });
    (void)bindDefault(context_.bind, *column);
}

// ---- names

ColumnDef* TableBuilder::findColumn(std::string_view name) {
    return const_cast<ColumnDef*>(table_.findColumn(name));
}

std::vector<IndexDef::Key> TableBuilder::keysOf(const std::vector<ast::IndexColumn>& columns,
                                                const ast::ColumnDefinition* column) const {
    std::vector<IndexDef::Key> keys;
    for (const ast::IndexColumn& key : columns) keys.push_back({key.name, key.descending});
    if (keys.empty() && column != nullptr) keys.push_back({column->name, false});
    return keys;
}

std::string TableBuilder::constraintName(const std::string& given, const std::string& madeUp) {
    if (given.empty()) return madeUp;
    Catalog own;
    own.put(std::make_shared<const ObjectDef>(table_));
    if (own.nameTaken("dbo", given) ||
        (!database_->temporary() && context_.connection.catalog(*database_)->nameTaken("dbo", given))) {
        throw constraintError(2714, 5, "There is already an object named '" + given + "' in the database.");
    }
    return given;
}

// PK__orders__3213E83F0EA4C0E1, DF__orders__made__1B0907CE
std::string TableBuilder::madeUpName(std::string_view kind, std::string_view column, std::int32_t id) const {
    std::uint32_t hash = 2166136261u;
    for (const char c : table_.name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    char digits[17];
    std::string name = std::string(kind) + "__";
    if (column.empty()) {
        std::snprintf(digits, sizeof digits, "%08X%08X", hash, static_cast<std::uint32_t>(id));
        name += table_.name.substr(0, 8);
    } else {
        std::snprintf(digits, sizeof digits, "%08X", static_cast<std::uint32_t>(id));
        name += table_.name.substr(0, 9) + "__" + std::string(column.substr(0, 5));
    }
    return name + "__" + digits;
}

}  // namespace sandbox

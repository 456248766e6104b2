// The definition of a table made from its syntax tree, column by column and constraint by constraint.
#include "sandbox/tsql/execute/execute_table.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/bind_computed.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/stored_expression.h"

namespace sandbox {

using definition::constraintError;
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

ObjectPlace placeOf(const ExecuteContext& context, const ast::ObjectName& name) {
    const bool own = name.name.starts_with('@') || (name.name.starts_with('#') && !name.name.starts_with("##"));
    auto database =
        own ? context.connection.temporary() : context.connection.attach(name.isTemporary() ? "tempdb" : name.database);
    if (!database) throw SqlError(errorMessage<2702>(name.database));
    const auto schema = context.connection.catalog(*database)->findSchema(name.schema.empty() ? "dbo" : name.schema);
    if (!schema || sameName(schema->name, "sys") || sameName(schema->name, "INFORMATION_SCHEMA")) {
        throw SqlError(errorMessage<2760>(name.schema));
    }
    return {std::move(database), own ? "dbo" : schema->name};
}

std::string collationOf(const Database& database, const Type& type, const std::string& given) {
    std::string collation = columnCollation(given);
    const std::string& own = database.facts().collation;
    if (collation.empty() && isCharacter(type.id) && !sameName(own, kDefaultCollation)) collation = own;
    return collation;
}

void requireOneRowVersion(const ObjectDef& table, const ColumnDef& column) {
    if (!column.type.rowVersion || rowVersionColumn(table) == nullptr) return;
    throw SqlError(errorMessage<2738>(table.name, column.name));
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
        if (!column.nullable && inPrimaryKey(definition, column)) table_.columns.back().nullable = false;
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
        throw SqlError(errorMessage<2715, 6>(table_.columns.size() + 1, from.type.written));
    }
    if (findColumn(from.name) != nullptr) {
        throw SqlError(errorMessage<2705>(from.name, table_.name).withState(isNew_ ? 3 : 4));
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
    const bool neverNull = from.identity.has_value() || isName || column.type.rowVersion;
    column.nullable = from.nullable.value_or(context_.nullByDefault && !neverNull);
    column.collation = collationOf(*database_, column.type, from.collation);
    column.columnId = ++table_.lastColumnId;
    requireOneRowVersion(table_, column);
    if (from.identity) {
        if (!canBeIdentity(column.type)) {
            throw SqlError(errorMessage<2749>(" '" + column.name + "'"));
        }
        if (column.nullable) {
            throw SqlError(errorMessage<8147>(column.name, table_.name));
        }
        for (const ColumnDef& other : table_.columns) {
            if (other.identity) {
                throw SqlError(errorMessage<2744>(table_.name));
            }
        }
        if (from.identity->increment == 0) {
            throw SqlError(errorMessage<2753>(column.name));
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
        throw SqlError(errorMessage<1759>(used->name, table_.name));
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
            throw SqlError(errorMessage<8110>(table_.name));
        }
        throw constraintError(errorMessage<1779>(table_.name));
    }
    IndexDef index;
    index.unique = true;
    index.primaryKey = primary;
    index.uniqueConstraint = !primary;
    index.keys = keysOf(constraint.columns, column);
    for (const IndexDef::Key& key : index.keys) {
        const ColumnDef* keyColumn = findColumn(key.column);
        if (keyColumn == nullptr) {
            throw constraintError(errorMessage<1911>(key.column));
        }
        if (!canBeKey(keyColumn->type)) throw constraintError(invalidKey(keyColumn->name));
        if (primary && keyColumn->nullable) {
            throw constraintError(errorMessage<8111>(table_.name));
        }
    }
    const bool hasClustered = std::any_of(table_.indexes.begin(), table_.indexes.end(),
                                          [](const IndexDef& other) { return other.clustered; });
    if (hasClustered && constraint.clustered.value_or(false)) {
        throw SqlError(errorMessage<8112>(table_.name));
    }
    index.clustered = constraint.clustered.value_or(primary && !hasClustered);
    index.constraintId = database_->newObjectId();
    index.name = constraintName(constraint.name, madeUpName(primary ? "PK" : "UQ", "", index.constraintId));
    addIndex(std::move(index));
}

Message TableBuilder::invalidKey(const std::string& column) const {
    return errorMessage<1919>(column, table_.name);
}

void TableBuilder::addIndex(IndexDef index) {
    for (std::size_t i = 0; i < index.keys.size(); ++i) {
        const ColumnDef* column = findColumn(index.keys[i].column);
        if (column == nullptr) {
            throw SqlError(errorMessage<1911>(index.keys[i].column));
        }
        index.keys[i].column = column->name;
        if (!column->computedText.empty()) throw unsupported("index on a computed column");
        if (!canBeKey(column->type)) {
            throw SqlError(invalidKey(column->name));
        }
        for (std::size_t j = 0; j < i; ++j) {
            if (sameName(index.keys[j].column, column->name)) {
                throw SqlError(errorMessage<1909>(column->name));
            }
        }
    }
    for (std::string& included : index.included) {
        const ColumnDef* column = findColumn(included);
        if (column == nullptr) {
            throw SqlError(errorMessage<1911>(included));
        }
        included = column->name;
    }
    for (const IndexDef& other : table_.indexes) {
        if (sameName(other.name, index.name)) {
            throw SqlError(errorMessage<1913>(index.name, table_.name));
        }
        if (index.clustered && other.clustered) {
            throw SqlError(errorMessage<1902>(table_.name, other.name));
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
            throw constraintError(errorMessage<8141>(column->name, table_.name));
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
        throw constraintError(errorMessage<1752>(name, table_.name));
    }
    if (!column->defaultText.empty()) {
        if (from != nullptr) {
            throw SqlError(errorMessage<8148>(name, table_.name));
        }
        throw constraintError(errorMessage<1781>());
    }
    if (column->identity) {
        throw constraintError(errorMessage<1754>(table_.name, name));
    }
    if (column->type.rowVersion) throw constraintError(errorMessage<1755>(table_.name, name));
    column->defaultId = database_->newObjectId();
    column->defaultText = storedExpression(*constraint.expr, constraint.exprText);
    column->defaultName = constraintName(constraint.name, madeUpName("DF", name, column->defaultId));
    ast::forEachExpr(*constraint.expr, [](const ast::Expr& expr) {
        const auto* reference = ast::as<ast::ColumnRef>(expr);
        if (reference == nullptr) return;
        throw SqlError(errorMessage<128>(reference->written()));
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
    const std::string& schema = table_.schema;
    if (own.nameTaken(schema, given) ||
        (!database_->temporary() && context_.connection.catalog(*database_)->nameTaken(schema, given))) {
        throw constraintError(errorMessage<2714, 5>(given));
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

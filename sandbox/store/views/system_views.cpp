// The views as virtual tables of SQLite: finding them, making them, reading their rows.
#include "sandbox/store/views/system_views.h"

#include <sqlite3.h>

#include <algorithm>
#include <unordered_map>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/store/views/catalogue_functions.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox {

namespace {

const std::vector<SystemView>& allViews() {
    static const std::vector<SystemView> kViews = [] {
        std::vector<SystemView> all;
        for (auto list :
             {views::objectViews(), views::columnViews(), views::indexViews(), views::informationSchemaViews(),
              views::constraintViews(), views::serverViews(), views::principalViews(), views::emptyViews()}) {
            std::move(list.begin(), list.end(), std::back_inserter(all));
        }
        return all;
    }();
    return kViews;
}

std::int32_t idOf(const SystemView& view) {
    return -static_cast<std::int32_t>(&view - allViews().data()) - 1;
}

// The rows of one view at one moment, with the places of the rows by an integer column's value, made when asked for.
class Rows {
public:
    explicit Rows(std::unique_ptr<const SystemRows> rows) : rows_(std::move(rows)) {}

    [[nodiscard]] std::size_t size() const { return rows_->size(); }
    [[nodiscard]] Value value(std::size_t row, std::size_t column) const { return rows_->value(row, column); }

    [[nodiscard]] std::vector<std::size_t> having(int column, std::int64_t value) {
        auto& places = byValue_[column];
        if (places.empty()) {
            for (std::size_t i = 0; i < size(); ++i) {
                const Value found = this->value(i, static_cast<std::size_t>(column));
                if (const auto* v = std::get_if<std::int64_t>(&found)) places[*v].push_back(i);
            }
        }
        const auto found = places.find(value);
        return found == places.end() ? std::vector<std::size_t>{} : found->second;
    }

private:
    std::unique_ptr<const SystemRows> rows_;
    std::unordered_map<int, std::unordered_map<std::int64_t, std::vector<std::size_t>>> byValue_;
};

struct Source {
    Connection* connection;
    std::shared_ptr<Database> database;
    const SystemView* view;
};

struct Table : sqlite3_vtab {
    const Source* source;
    std::shared_ptr<Rows> rows;
    std::shared_ptr<const Catalog> madeOf;  // the catalogue that rows show

    std::shared_ptr<Rows> current() {
        std::shared_ptr<const Catalog> now = source->connection->catalog(*source->database);
        const bool kept = rows && now == madeOf && !source->view->live;
        if (!kept || source->connection->showsTemporary(*source->database)) {
            rows = std::make_shared<Rows>(source->view->rows(*source->connection, *source->database));
            madeOf = std::move(now);
        }
        return rows;
    }
};

struct Cursor : sqlite3_vtab_cursor {
    std::shared_ptr<Rows> rows;
    std::optional<std::vector<std::size_t>> chosen;
    std::size_t at = 0;

    [[nodiscard]] std::size_t count() const { return chosen ? chosen->size() : rows->size(); }
    [[nodiscard]] std::size_t place() const { return chosen ? (*chosen)[at] : at; }
};

Table& tableOf(sqlite3_vtab* table) {
    return *static_cast<Table*>(table);
}
Cursor& cursorOf(sqlite3_vtab_cursor* cursor) {
    return *static_cast<Cursor*>(cursor);
}

int connectTable(sqlite3* sqlite, void* source, int, const char* const*, sqlite3_vtab** made, char**) {
    const auto* from = static_cast<const Source*>(source);
    std::string columns;
    for (const SystemView::Column& column : from->view->columns) {
        columns += (columns.empty() ? "" : ", ") + quoteIdentifier(column.name) + " " +
                   sqliteDeclaration(column.type, from->database->facts().collation);
    }
    const int code = sqlite3_declare_vtab(sqlite, ("CREATE TABLE x (" + columns + ")").c_str());
    if (code != SQLITE_OK) return code;
    auto* table = new Table{};
    table->source = from;
    *made = table;
    return SQLITE_OK;
}

int disconnectTable(sqlite3_vtab* table) {
    delete &tableOf(table);
    return SQLITE_OK;
}

// Equality with an integer column goes through a map; everything else is a scan.
int bestIndex(sqlite3_vtab* table, sqlite3_index_info* plan) {
    const auto& columns = tableOf(table).source->view->columns;
    for (int i = 0; i < plan->nConstraint; ++i) {
        const auto& constraint = plan->aConstraint[i];
        if (constraint.usable == 0 || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ || constraint.iColumn < 0 ||
            !isInteger(columns[static_cast<std::size_t>(constraint.iColumn)].type.id)) {
            continue;
        }
        plan->aConstraintUsage[i].argvIndex = 1;
        plan->idxNum = constraint.iColumn + 1;
        plan->estimatedCost = 5;
        plan->estimatedRows = 5;
        return SQLITE_OK;
    }
    plan->estimatedCost = 1000;
    plan->estimatedRows = 500;
    return SQLITE_OK;
}

int openCursor(sqlite3_vtab*, sqlite3_vtab_cursor** made) {
    *made = new Cursor{};
    return SQLITE_OK;
}

int closeCursor(sqlite3_vtab_cursor* cursor) {
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* base, int indexNumber, const char*, int, sqlite3_value** arguments) {
    Cursor& cursor = cursorOf(base);
    cursor.rows = tableOf(base->pVtab).current();
    cursor.at = 0;
    cursor.chosen.reset();
    if (indexNumber > 0 && sqlite3_value_type(arguments[0]) == SQLITE_INTEGER) {
        cursor.chosen = cursor.rows->having(indexNumber - 1, sqlite3_value_int64(arguments[0]));
    }
    return SQLITE_OK;
}

int next(sqlite3_vtab_cursor* cursor) {
    ++cursorOf(cursor).at;
    return SQLITE_OK;
}

int atEnd(sqlite3_vtab_cursor* base) {
    const Cursor& cursor = cursorOf(base);
    return cursor.at >= cursor.count() ? 1 : 0;
}

int column(sqlite3_vtab_cursor* base, sqlite3_context* context, int number) {
    const Cursor& cursor = cursorOf(base);
    const auto n = static_cast<std::size_t>(number);
    setResult(context, tableOf(base->pVtab).source->view->columns[n].type, cursor.rows->value(cursor.place(), n));
    return SQLITE_OK;
}

int rowId(sqlite3_vtab_cursor* cursor, sqlite3_int64* id) {
    *id = static_cast<sqlite3_int64>(cursorOf(cursor).place());
    return SQLITE_OK;
}

const sqlite3_module& viewModule() {
    static const sqlite3_module kModule = [] {
        sqlite3_module m{};
        m.xConnect = connectTable;  // no xCreate: the table is there under the module's name
        m.xDisconnect = disconnectTable;
        m.xBestIndex = bestIndex;
        m.xOpen = openCursor;
        m.xClose = closeCursor;
        m.xFilter = filter;
        m.xNext = next;
        m.xEof = atEnd;
        m.xColumn = column;
        m.xRowid = rowId;
        return m;
    }();
    return kModule;
}

}  // namespace

std::vector<views::SystemViewRow> views::systemViewList() {
    std::vector<SystemViewRow> rows;
    for (const SystemView& view : allViews()) rows.push_back({view.schema, view.name, idOf(view), view.bare});
    return rows;
}

namespace {

// nullptr when there is none.
const SystemView* findSystemView(std::string_view schema, std::string_view name) {
    const bool bare = schema.empty() || sameName(schema, "dbo");
    for (const SystemView& view : allViews()) {
        if ((bare ? view.bare : sameName(view.schema, schema)) && sameName(view.name, name)) return &view;
    }
    return nullptr;
}

// Its table's name in SQLite, for one database.
std::string systemViewStorage(const Database& database, const SystemView& view) {
    return database.attachedAs() + "_" + std::string(view.schema) + "_" + std::string(view.name);
}

// Makes the virtual table on the connection.
std::shared_ptr<const ObjectDef> registerSystemView(Connection& connection, const std::shared_ptr<Database>& database,
                                                    const SystemView& view) {
    auto object = std::make_shared<ObjectDef>();
    object->id = idOf(view);
    object->name = view.name;
    object->schema = view.schema;
    object->system = true;
    object->storageName = systemViewStorage(*database, view);
    for (const SystemView::Column& column : view.columns) {
        ColumnDef& def = object->columns.emplace_back();
        def.name = column.name;
        def.type = column.type;
        def.columnId = ++object->lastColumnId;
    }
    const auto free = [](void* source) { delete static_cast<Source*>(source); };
    sqlite3_create_module_v2(connection.handle(), object->storageName.c_str(), &viewModule(),
                             new Source{&connection, database, &view}, free);
    return object;
}

}  // namespace

void connectCatalogue(Connection& connection) {
    using Made = std::unordered_map<std::string, std::shared_ptr<const ObjectDef>>;  // by "db5_sys_objects"
    const auto made = std::make_shared<Made>();
    connection.setViewFinder([&connection, made](const std::shared_ptr<Database>& database, std::string_view schema,
                                                 std::string_view name) -> std::shared_ptr<const ObjectDef> {
        const SystemView* view = findSystemView(schema, name);
        if (view == nullptr) return nullptr;
        std::shared_ptr<const ObjectDef>& known = (*made)[systemViewStorage(*database, *view)];
        if (!known) known = registerSystemView(connection, database, *view);
        return known;
    });
    views::connectCatalogueFunctions(connection);
}

}  // namespace sandbox

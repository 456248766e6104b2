// What a catalogue view is made of: a list of rows of one C++ type, and a table of columns that each read one value out
// of such a row. The system_views_*.cpp files define the views with it.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/database.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

// The rows of a view at one moment. A value is made when it is asked for: a view of the objects has hundreds of rows
// of twenty columns, of which a query reads two.
class SystemRows {
public:
    virtual ~SystemRows() = default;
    [[nodiscard]] virtual std::size_t size() const = 0;
    [[nodiscard]] virtual Value value(std::size_t row, std::size_t column) const = 0;
};

struct SystemView {
    std::string_view schema;  // "sys" or "INFORMATION_SCHEMA"
    std::string_view name;
    bool bare = false;  // found without a schema and as dbo.name too (sysobjects)
    bool live = false;  // its rows change without a change of the catalogue
    struct Column {
        std::string_view name;
        Type type;
    };
    std::vector<Column> columns;
    std::function<std::unique_ptr<const SystemRows>(Connection&, Database&)> rows;
};

namespace views {

inline constexpr Type kBit{.id = TypeId::Bit};
inline constexpr Type kTinyInt{.id = TypeId::TinyInt};
inline constexpr Type kSmallInt{.id = TypeId::SmallInt};
inline constexpr Type kInt{.id = TypeId::Int};
inline constexpr Type kBigInt{.id = TypeId::BigInt};
inline constexpr Type kName{.id = TypeId::NVarChar, .length = 128};
inline constexpr Type kDescription{.id = TypeId::NVarChar, .length = 60};
inline constexpr Type kText{.id = TypeId::NVarChar, .length = 4000};
inline constexpr Type kLongText{.id = TypeId::NVarChar, .length = Type::kMax};
inline constexpr Type kKind{.id = TypeId::Char, .length = 2};
inline constexpr Type kDateTime{.id = TypeId::DateTime};

[[nodiscard]] constexpr Type charType(int length) {
    return Type{.id = TypeId::Char, .length = length};
}
[[nodiscard]] constexpr Type ncharType(int length) {
    return Type{.id = TypeId::NChar, .length = length};
}
[[nodiscard]] constexpr Type varcharType(int length) {
    return Type{.id = TypeId::VarChar, .length = length};
}

[[nodiscard]] inline Value number(std::int64_t value) {
    return value;
}
[[nodiscard]] inline Value text(std::string_view value) {
    return std::string(value);
}
[[nodiscard]] inline Value textOrNull(std::string_view value) {
    return value.empty() ? Value{} : text(value);
}
[[nodiscard]] inline Value padded(std::string_view value, std::size_t length) {
    std::string s(value);
    s.resize(std::max(length, s.size()), ' ');
    return s;
}

template <typename Row>
struct Field {
    std::string_view name;
    Type type;
    Value (*get)(const Row&);
};

template <typename Row>
class RowsOf : public SystemRows {
public:
    RowsOf(std::vector<Row> rows, const std::vector<Field<Row>>& fields) : rows_(std::move(rows)), fields_(fields) {}

    [[nodiscard]] std::size_t size() const override { return rows_.size(); }
    [[nodiscard]] Value value(std::size_t row, std::size_t column) const override {
        return fields_[column].get(rows_[row]);
    }

private:
    std::vector<Row> rows_;
    const std::vector<Field<Row>>& fields_;  // the view's own
};

// Views live as long as the program, and so do their fields.
template <typename Row>
SystemView makeView(std::string_view schema, std::string_view name, std::vector<Row> (*list)(Connection&, Database&),
                    std::vector<Field<Row>> fields) {
    SystemView view;
    view.schema = schema;
    view.name = name;
    for (const Field<Row>& field : fields) view.columns.push_back({field.name, field.type});
    const auto kept = std::make_shared<const std::vector<Field<Row>>>(std::move(fields));
    view.rows = [list, kept](Connection& connection, Database& database) {
        return std::make_unique<RowsOf<Row>>(list(connection, database), *kept);
    };
    return view;
}

// The numbers and sizes under which the catalogue shows a type.
struct TypeFacts {
    int systemId = 0;  // xtype, system_type_id
    int userId = 0;    // xusertype, user_type_id
    int bytes = 0;     // max_length; -1 for (max)
    int precision = 0;
    int scale = 0;
};
[[nodiscard]] TypeFacts typeFacts(const Type& type);

// An object or a constraint as sys.objects lists them.
struct ObjectRow {
    std::string_view name{};  // the object's, or its part's
    std::int32_t id = 0;
    std::string_view type{};  // "U ", "PK"
    std::string_view description{};
    std::int32_t parent = 0;
    std::int32_t schemaId = 1;
    std::shared_ptr<const ObjectDef> object{};  // the constraint's table
    const IndexDef* index = nullptr;
    const ColumnDef* column = nullptr;  // of a default
    const ForeignKeyDef* foreignKey = nullptr;
    const CheckDef* check = nullptr;
};
// The objects of a database; of tempdb also the session's temporary tables.
[[nodiscard]] std::vector<std::shared_ptr<const ObjectDef>> visibleObjects(Connection& connection, Database& database);
[[nodiscard]] std::vector<ObjectRow> allObjects(Connection& connection, Database& database);
[[nodiscard]] std::optional<ObjectRow> objectById(Connection& connection, Database& database, std::int32_t id);

// A catalogue view as sys.system_views lists it.
struct SystemViewRow {
    std::string_view schema;
    std::string_view name;
    std::int32_t id = 0;
    bool bare = false;  // found without a schema, as the system tables of old are
};
[[nodiscard]] std::vector<SystemViewRow> systemViewList();

[[nodiscard]] std::vector<SystemView> objectViews();
[[nodiscard]] std::vector<SystemView> columnViews();
[[nodiscard]] std::vector<SystemView> indexViews();
[[nodiscard]] std::vector<SystemView> informationSchemaViews();
[[nodiscard]] std::vector<SystemView> constraintViews();
[[nodiscard]] std::vector<SystemView> serverViews();
[[nodiscard]] std::vector<SystemView> principalViews();
[[nodiscard]] std::vector<SystemView> emptyViews();

}  // namespace views

}  // namespace sandbox

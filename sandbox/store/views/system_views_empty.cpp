// The views of what cannot be made here: they are there for clients that look, and never have a row.
#include <array>

#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

constexpr std::size_t kMostColumns = 14;

struct Empty {
    std::string_view schema;
    std::string_view name;
    std::array<SystemView::Column, kMostColumns> columns;  // the first without a name ends them
};

constexpr auto kEmpty = std::to_array<Empty>({
    {"sys",
     "extended_properties",
     {{{"class", kTinyInt},
       {"class_desc", kDescription},
       {"major_id", kInt},
       {"minor_id", kInt},
       {"name", kName},
       {"value", kText}}}},
    {"sys",
     "triggers",
     {{{"name", kName},
       {"object_id", kInt},
       {"parent_class", kTinyInt},
       {"parent_class_desc", kDescription},
       {"parent_id", kInt},
       {"type", kKind},
       {"type_desc", kDescription},
       {"create_date", kDateTime},
       {"modify_date", kDateTime},
       {"is_ms_shipped", kBit},
       {"is_disabled", kBit},
       {"is_not_for_replication", kBit},
       {"is_instead_of_trigger", kBit}}}},
    {"sys",
     "sequences",
     {{{"name", kName},
       {"object_id", kInt},
       {"schema_id", kInt},
       {"start_value", kBigInt},
       {"increment", kBigInt},
       {"minimum_value", kBigInt},
       {"maximum_value", kBigInt},
       {"is_cycling", kBit},
       {"is_cached", kBit},
       {"cache_size", kInt},
       {"system_type_id", kTinyInt},
       {"user_type_id", kInt},
       {"precision", kTinyInt},
       {"current_value", kBigInt}}}},
    {"sys",
     "synonyms",
     {{{"name", kName},
       {"object_id", kInt},
       {"schema_id", kInt},
       {"type", kKind},
       {"type_desc", kDescription},
       {"base_object_name", Type{.id = TypeId::NVarChar, .length = 1035}}}}},
    {"sys",
     "table_types",
     {{{"name", kName},
       {"system_type_id", kTinyInt},
       {"user_type_id", kInt},
       {"schema_id", kInt},
       {"is_user_defined", kBit},
       {"is_table_type", kBit},
       {"type_table_object_id", kInt}}}},
    {"sys", "assemblies", {{{"name", kName}, {"principal_id", kInt}, {"assembly_id", kInt}, {"is_visible", kBit}}}},
    {"sys", "assembly_types", {{{"name", kName}, {"user_type_id", kInt}, {"schema_id", kInt}, {"assembly_id", kInt}}}},
    {"sys", "servers", {{{"server_id", kInt}, {"name", kName}, {"product", kName}, {"is_linked", kBit}}}},
    {"sys",
     "xml_schema_collections",
     {{{"xml_collection_id", kInt}, {"schema_id", kInt}, {"principal_id", kInt}, {"name", kName}}}},
    {"sys",
     "fulltext_indexes",
     {{{"object_id", kInt}, {"unique_index_id", kInt}, {"fulltext_catalog_id", kInt}, {"is_enabled", kBit}}}},
    {"sys", "fulltext_catalogs", {{{"fulltext_catalog_id", kInt}, {"name", kName}, {"is_default", kBit}}}},
    {"INFORMATION_SCHEMA",
     "DOMAINS",
     {{{"DOMAIN_CATALOG", kName}, {"DOMAIN_SCHEMA", kName}, {"DOMAIN_NAME", kName}, {"DATA_TYPE", kName}}}},
    {"INFORMATION_SCHEMA",
     "SEQUENCES",
     {{{"SEQUENCE_CATALOG", kName}, {"SEQUENCE_SCHEMA", kName}, {"SEQUENCE_NAME", kName}, {"DATA_TYPE", kName}}}},
    {"INFORMATION_SCHEMA",
     "TABLE_PRIVILEGES",
     {{{"GRANTOR", kName},
       {"GRANTEE", kName},
       {"TABLE_CATALOG", kName},
       {"TABLE_SCHEMA", kName},
       {"TABLE_NAME", kName},
       {"PRIVILEGE_TYPE", varcharType(10)},
       {"IS_GRANTABLE", varcharType(3)}}}},
});

class NoRows : public SystemRows {
public:
    [[nodiscard]] std::size_t size() const override { return 0; }
    [[nodiscard]] Value value(std::size_t, std::size_t) const override { return {}; }
};

}  // namespace

std::vector<SystemView> emptyViews() {
    std::vector<SystemView> all;
    for (const Empty& empty : kEmpty) {
        SystemView& view = all.emplace_back();
        view.schema = empty.schema;
        view.name = empty.name;
        for (const SystemView::Column& column : empty.columns) {
            if (!column.name.empty()) view.columns.push_back(column);
        }
        view.rows = [](Connection&, Database&) { return std::make_unique<NoRows>(); };
    }
    return all;
}

}  // namespace sandbox::views

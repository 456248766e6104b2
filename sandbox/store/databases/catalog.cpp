// Finding in a catalogue. Names are kept folded, so that case does not count.
#include "sandbox/store/databases/catalog.h"

#include <algorithm>
#include <array>

#include "sandbox/store/values/collation.h"

namespace sandbox {

const ColumnDef* ObjectDef::findColumn(std::string_view columnName) const {
    for (const ColumnDef& column : columns) {
        if (column.name == columnName) return &column;
    }
    const std::string folded = foldName(columnName);
    for (const ColumnDef& column : columns) {
        if (foldName(column.name) == folded) return &column;
    }
    return nullptr;
}

namespace {
std::string keyOf(std::string_view schema, std::string_view name) {
    return foldName(schema) + '.' + foldName(name);
}

std::shared_ptr<const ObjectDef> ownSchema(std::int32_t id, std::string_view name) {
    ObjectDef schema;
    schema.id = id;
    schema.name = name;
    schema.kind = ObjectKind::Schema;
    return std::make_shared<const ObjectDef>(std::move(schema));
}
}  // namespace

Catalog::Catalog() {
    static const std::array kOwn = {ownSchema(1, "dbo"), ownSchema(2, "guest"), ownSchema(3, "INFORMATION_SCHEMA"),
                                    ownSchema(4, "sys")};
    for (const auto& schema : kOwn) put(schema);
}

std::shared_ptr<const ObjectDef> Catalog::find(std::string_view schema, std::string_view name) const {
    const auto found = objects_.find(keyOf(schema, name));
    return found == objects_.end() ? nullptr : found->second;
}

void Catalog::put(std::shared_ptr<const ObjectDef> object) {
    const bool schema = object->kind == ObjectKind::Schema;
    std::string key = schema ? foldName(object->name) : keyOf(object->schema, object->name);
    (schema ? schemas_ : objects_).insert_or_assign(std::move(key), std::move(object));
}

void Catalog::erase(const ObjectDef& object) {
    if (object.kind == ObjectKind::Schema) {
        schemas_.erase(foldName(object.name));
    } else {
        objects_.erase(keyOf(object.schema, object.name));
    }
}

std::shared_ptr<const ObjectDef> Catalog::findSchema(std::string_view name) const {
    const auto found = schemas_.find(foldName(name));
    return found == schemas_.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<const ObjectDef>> Catalog::schemas() const {
    std::vector<std::shared_ptr<const ObjectDef>> list;
    for (const auto& [key, schema] : schemas_) list.push_back(schema);
    std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) { return a->id < b->id; });
    return list;
}

std::vector<std::shared_ptr<const ObjectDef>> Catalog::all() const {
    std::vector<std::shared_ptr<const ObjectDef>> list;
    list.reserve(objects_.size());
    for (const auto& [key, object] : objects_) list.push_back(object);
    return list;
}

std::shared_ptr<const ObjectDef> Catalog::findById(std::int32_t id) const {
    for (const auto& [key, object] : objects_) {
        if (object->id == id) return object;
    }
    return nullptr;
}

bool Catalog::nameTaken(std::string_view schema, std::string_view name) const {
    if (find(schema, name)) return true;
    const std::string folded = foldName(name);
    const std::string foldedSchema = foldName(schema);
    const auto is = [&](const std::string& other) { return !other.empty() && foldName(other) == folded; };
    for (const auto& [key, object] : objects_) {
        if (object->kind != ObjectKind::Table || foldName(object->schema) != foldedSchema) continue;
        for (const ColumnDef& column : object->columns) {
            if (is(column.defaultName)) return true;
        }
        for (const IndexDef& index : object->indexes) {
            if ((index.primaryKey || index.uniqueConstraint) && is(index.name)) return true;
        }
        const auto named = [&](const auto& constraint) { return is(constraint.name); };
        if (std::any_of(object->foreignKeys.begin(), object->foreignKeys.end(), named) ||
            std::any_of(object->checks.begin(), object->checks.end(), named)) {
            return true;
        }
    }
    return false;
}

std::vector<std::shared_ptr<const ObjectDef>> Catalog::childrenOf(const ObjectDef& parent) const {
    std::vector<std::shared_ptr<const ObjectDef>> children;
    for (const auto& [key, object] : objects_) {
        const bool refers = std::any_of(object->foreignKeys.begin(), object->foreignKeys.end(),
                                        [&](const ForeignKeyDef& f) { return f.parentId == parent.id; });
        if (refers) children.push_back(object);
    }
    return children;
}

}  // namespace sandbox

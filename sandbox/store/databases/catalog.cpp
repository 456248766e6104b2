// Finding in a catalogue. Names are kept folded, so that case does not count.
#include "sandbox/store/databases/catalog.h"

#include <algorithm>

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
}  // namespace

std::shared_ptr<const ObjectDef> Catalog::find(std::string_view schema, std::string_view name) const {
    const auto found = objects_.find(keyOf(schema, name));
    return found == objects_.end() ? nullptr : found->second;
}

void Catalog::put(std::shared_ptr<const ObjectDef> object) {
    std::string key = keyOf(object->schema, object->name);
    objects_.insert_or_assign(std::move(key), std::move(object));
}

void Catalog::erase(std::string_view schema, std::string_view name) {
    objects_.erase(keyOf(schema, name));
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

// The JSON of a catalogue entry: what is missing from an older record has its default.
#include "sandbox/store/databases/catalog_record.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace sandbox {

using Json = nlohmann::json;

static void to_json(Json& j, const Type& t) {
    Type bare;
    bare.id = t.id;
    j = Json{{"name", typeName(bare)}, {"length", t.length}, {"precision", t.precision}, {"scale", t.scale}};
    if (t.numericName) j["numeric"] = true;
    if (t.rowVersion) j["rowVersion"] = true;
}

static void from_json(const Json& j, Type& t) {
    const std::string name = j.at("name");
    for (int id = static_cast<int>(TypeId::Null); id <= static_cast<int>(TypeId::DateTime2); ++id) {
        Type bare;
        bare.id = static_cast<TypeId>(id);
        if (typeName(bare) == name) t.id = bare.id;
    }
    if (t.id == TypeId::Null) throw std::runtime_error("catalogue record with unknown type " + name);
    t.length = j.at("length");
    t.precision = j.at("precision");
    t.scale = j.at("scale");
    t.numericName = j.value("numeric", false);
    t.rowVersion = j.value("rowVersion", false);
}

static void to_json(Json& j, const ColumnDef& c) {
    j = Json{{"name", c.name},
             {"type", c.type},
             {"nullable", c.nullable},
             {"identity", c.identity},
             {"seed", c.identitySeed},
             {"increment", c.identityIncrement},
             {"collation", c.collation},
             {"default", c.defaultText},
             {"defaultName", c.defaultName},
             {"defaultId", c.defaultId},
             {"computed", c.computedText},
             {"id", c.columnId}};
}

static void from_json(const Json& j, ColumnDef& c) {
    c.name = j.at("name");
    c.type = j.at("type");
    c.nullable = j.at("nullable");
    c.identity = j.at("identity");
    c.identitySeed = j.at("seed");
    c.identityIncrement = j.at("increment");
    c.collation = j.at("collation");
    c.defaultText = j.at("default");
    c.defaultName = j.at("defaultName");
    c.defaultId = j.at("defaultId");
    c.computedText = j.at("computed");
    c.columnId = j.at("id");
}

static void to_json(Json& j, const IndexDef::Key& k) {
    j = Json{{"column", k.column}, {"descending", k.descending}};
}

static void from_json(const Json& j, IndexDef::Key& k) {
    k.column = j.at("column");
    k.descending = j.at("descending");
}

static void to_json(Json& j, const IndexDef::Condition& c) {
    j = Json{{"column", c.column}, {"null", c.null}};
}

static void from_json(const Json& j, IndexDef::Condition& c) {
    c.column = j.at("column");
    c.null = j.at("null");
}

static void to_json(Json& j, const IndexDef& i) {
    j = Json{{"name", i.name},
             {"unique", i.unique},
             {"primaryKey", i.primaryKey},
             {"uniqueConstraint", i.uniqueConstraint},
             {"clustered", i.clustered},
             {"keys", i.keys},
             {"included", i.included},
             {"filter", i.filter},
             {"id", i.indexId},
             {"constraintId", i.constraintId}};
}

static void from_json(const Json& j, IndexDef& i) {
    i.name = j.at("name");
    i.unique = j.at("unique");
    i.primaryKey = j.at("primaryKey");
    i.uniqueConstraint = j.at("uniqueConstraint");
    i.clustered = j.at("clustered");
    i.keys = j.at("keys");
    i.included = j.at("included");
    i.filter = j.value("filter", std::vector<IndexDef::Condition>{});  // files of before have none
    i.indexId = j.at("id");
    i.constraintId = j.at("constraintId");
}

static void to_json(Json& j, const ForeignKeyDef& f) {
    j = Json{{"name", f.name},
             {"columns", f.columns},
             {"parentId", f.parentId},
             {"parentSchema", f.parentSchema},
             {"parentTable", f.parentTable},
             {"parentColumns", f.parentColumns},
             {"cascadeDelete", f.cascadeDelete},
             {"cascadeUpdate", f.cascadeUpdate},
             {"id", f.id},
             {"disabled", f.disabled}};
}

static void from_json(const Json& j, ForeignKeyDef& f) {
    f.name = j.at("name");
    f.columns = j.at("columns");
    f.parentId = j.at("parentId");
    f.parentSchema = j.at("parentSchema");
    f.parentTable = j.at("parentTable");
    f.parentColumns = j.at("parentColumns");
    f.cascadeDelete = j.at("cascadeDelete");
    f.cascadeUpdate = j.at("cascadeUpdate");
    f.id = j.at("id");
    f.disabled = j.at("disabled");
}

static void to_json(Json& j, const CheckDef& c) {
    j = Json{{"name", c.name}, {"text", c.text}, {"column", c.column}, {"id", c.id}, {"disabled", c.disabled}};
}

static void from_json(const Json& j, CheckDef& c) {
    c.name = j.at("name");
    c.text = j.at("text");
    c.column = j.at("column");
    c.id = j.at("id");
    c.disabled = j.at("disabled");
}

static void to_json(Json& j, const ParameterDef& p) {
    j = Json{{"name", p.name}, {"type", p.type}, {"output", p.output}, {"hasDefault", p.hasDefault}};
}

static void from_json(const Json& j, ParameterDef& p) {
    p.name = j.at("name");
    p.type = j.at("type");
    p.output = j.at("output");
    p.hasDefault = j.at("hasDefault");
}

std::string toRecord(const ObjectDef& o) {
    Json j{{"id", o.id},           {"name", o.name},        {"schema", o.schema}, {"kind", static_cast<int>(o.kind)},
           {"created", o.created}, {"modified", o.modified}};
    j["columns"] = o.columns;
    if (o.kind == ObjectKind::Table) {
        j["indexes"] = o.indexes;
        j["foreignKeys"] = o.foreignKeys;
        j["checks"] = o.checks;
        j["storage"] = o.storageName;
        j["lastColumnId"] = o.lastColumnId;
    } else {
        j["text"] = o.text;
        j["parameters"] = o.parameters;
    }
    // Half a character, which UTF-16 can hold, is kept as the replacement character.
    return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

ObjectDef fromRecord(std::string_view record) {
    const Json j = Json::parse(record);
    ObjectDef o;
    o.id = j.at("id");
    o.name = j.at("name");
    o.schema = j.at("schema");
    o.kind = static_cast<ObjectKind>(j.at("kind").get<int>());
    o.created = j.at("created");
    o.modified = j.at("modified");
    o.columns = j.at("columns");
    if (o.kind == ObjectKind::Table) {
        o.indexes = j.at("indexes");
        o.foreignKeys = j.at("foreignKeys");
        o.checks = j.at("checks");
        o.storageName = j.at("storage");
        o.lastColumnId = j.at("lastColumnId");
    } else {
        o.text = j.at("text");
        o.parameters = j.at("parameters");
    }
    return o;
}

}  // namespace sandbox

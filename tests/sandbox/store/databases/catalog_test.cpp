// What a catalogue finds, and the record that a database keeps of an object.
#include "sandbox/store/databases/catalog.h"

#include <gtest/gtest.h>

#include "sandbox/store/databases/catalog_record.h"
#include "tests/sandbox/support/order_table.h"

namespace sandbox {
namespace {

using test::orders;

TEST(Catalog, FindsWithoutCase) {
    Catalog catalog;
    catalog.put(std::make_shared<const ObjectDef>(orders()));
    EXPECT_NE(catalog.find("DBO", "ORDRE"), nullptr);
    EXPECT_EQ(catalog.find("sys", "ordre"), nullptr);
    EXPECT_EQ(catalog.find("dbo", "ordre")->findColumn("BELØP")->columnId, 4);
    EXPECT_EQ(catalog.find("dbo", "ordre")->findColumn("none"), nullptr);
    EXPECT_EQ(catalog.findById(100)->name, "Ordre");
}

TEST(Catalog, ConstraintsShareTheNamesOfObjects) {
    Catalog catalog;
    catalog.put(std::make_shared<const ObjectDef>(orders()));
    for (const char* taken : {"ordre", "pk_ordre", "df_kunde", "fk_selv", "ck"}) {
        EXPECT_TRUE(catalog.nameTaken("dbo", taken)) << taken;
    }
    EXPECT_FALSE(catalog.nameTaken("dbo", "ix")) << "an index is its table's own";
    EXPECT_FALSE(catalog.nameTaken("dbo", "kunde"));
    EXPECT_EQ(catalog.childrenOf(orders()).size(), 1u);
    catalog.erase(orders());
    EXPECT_TRUE(catalog.all().empty());
}

TEST(Catalog, HoldsSchemasBesideTheObjects) {
    ObjectDef schema;
    schema.id = 5;
    schema.name = "Ordre";
    schema.kind = ObjectKind::Schema;
    Catalog catalog;
    catalog.put(std::make_shared<const ObjectDef>(fromRecord(toRecord(schema))));
    catalog.put(std::make_shared<const ObjectDef>(orders()));
    EXPECT_EQ(catalog.findSchema("ORDRE")->id, 5);
    EXPECT_EQ(catalog.findSchema("DBO")->id, 1);
    EXPECT_EQ(catalog.schemas().size(), 5u);
    EXPECT_EQ(catalog.schemas().back()->name, "Ordre");
    EXPECT_EQ(catalog.all().size(), 1u);
    catalog.erase(schema);
    EXPECT_EQ(catalog.findSchema("Ordre"), nullptr);
    EXPECT_NE(catalog.find("dbo", "Ordre"), nullptr);
}

TEST(CatalogRecord, KeepsEverythingOfATable) {
    const ObjectDef before = orders();
    const ObjectDef after = fromRecord(toRecord(before));
    EXPECT_EQ(toRecord(after), toRecord(before));
    EXPECT_EQ(after.columns[1].type, before.columns[1].type);
    EXPECT_TRUE(after.columns[2].type.numericName);
    EXPECT_EQ(after.indexes[1].included, before.indexes[1].included);
    EXPECT_TRUE(after.checks[0].disabled);
    EXPECT_TRUE(after.foreignKeys[0].cascadeDelete);
}

TEST(CatalogRecord, KeepsATimestampApartFromOtherBinaryColumns) {
    ObjectDef table;
    table.columns = {{.name = "a", .type = {.id = TypeId::Binary, .length = 8}},
                     {.name = "b", .type = {.id = TypeId::Binary, .length = 8, .rowVersion = true}}};
    const ObjectDef after = fromRecord(toRecord(table));
    EXPECT_EQ(after.columns.at(0).type, table.columns[0].type);
    EXPECT_EQ(after.columns.at(1).type, table.columns[1].type);
}

TEST(CatalogRecord, KeepsProcedures) {
    ObjectDef before;
    before.id = 7;
    before.name = "p";
    before.kind = ObjectKind::Procedure;
    before.text = "CREATE PROCEDURE p @a int OUTPUT AS SELECT 'æ'";
    before.parameters = {ParameterDef{.name = "@a", .type = Type{.id = TypeId::Int}, .output = true}};
    const ObjectDef after = fromRecord(toRecord(before));
    EXPECT_EQ(after.text, before.text);
    EXPECT_EQ(after.kind, ObjectKind::Procedure);
    EXPECT_TRUE(after.parameters.at(0).output);
}

TEST(CatalogRecord, OtherTextIsRefused) {
    EXPECT_ANY_THROW((void)fromRecord("{}"));
    EXPECT_ANY_THROW((void)fromRecord("no record"));
}

}  // namespace
}  // namespace sandbox

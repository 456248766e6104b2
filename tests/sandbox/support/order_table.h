// A table with one of everything that a catalogue keeps: keys, defaults, checks, indexes. For tests of the catalogue
// and of its views.
#pragma once

#include "sandbox/store/databases/catalog.h"

namespace sandbox::test {

inline ObjectDef orders() {
    ObjectDef def;
    def.id = 100;
    def.name = "Ordre";
    def.storageName = "t100";
    def.columns = {
        ColumnDef{.name = "id", .type = Type{.id = TypeId::Int}, .nullable = false, .identity = true, .columnId = 1},
        ColumnDef{.name = "Kunde",
                  .type = Type{.id = TypeId::NVarChar, .length = 30},
                  .collation = "Latin1_General_CI_AS",
                  .defaultText = "(N'ukjent')",
                  .defaultName = "DF_kunde",
                  .defaultId = 101,
                  .columnId = 2},
        ColumnDef{.name = "beløp",
                  .type = Type{.id = TypeId::Decimal, .precision = 9, .scale = 3, .numericName = true},
                  .columnId = 4},
    };
    def.lastColumnId = 4;
    def.indexes = {IndexDef{.name = "PK_ordre",
                            .unique = true,
                            .primaryKey = true,
                            .clustered = true,
                            .keys = {{"id", true}},
                            .indexId = 1,
                            .constraintId = 102},
                   IndexDef{.name = "ix", .keys = {{"Kunde"}, {"beløp"}}, .included = {"id"}, .indexId = 2}};
    def.foreignKeys = {ForeignKeyDef{.name = "FK_selv",
                                     .columns = {"id"},
                                     .parentId = 100,
                                     .parentTable = "Ordre",
                                     .parentColumns = {"id"},
                                     .cascadeDelete = true,
                                     .id = 103}};
    def.checks = {CheckDef{.name = "CK", .text = "([id]>(0))", .column = "id", .id = 104, .disabled = true}};
    return def;
}

}  // namespace sandbox::test

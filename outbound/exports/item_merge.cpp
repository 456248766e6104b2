// The merge of the item register on the till: five procedures, installed in one order and run in another.
#include "outbound/exports/procedures.h"

namespace torvik {

namespace {

constexpr Action kMerge[] = {
    SetTransformation{"Vare"},   Install{&kInsertVare},    Install{&kInsertVareAlias}, Install{&kInsertLeverandor},
    Install{&kInsertVaregruppe}, Install{&kInsertDelvare}, Run{&kInsertVaregruppe},    Run{&kInsertLeverandor},
    Run{&kInsertVare},           Run{&kInsertVareAlias},   Run{&kInsertDelvare},
};

}  // namespace

constinit const Actions kMergeItems{kMerge};

}  // namespace torvik

// What the steps of a send are made of. An export is a list of these actions, in the order in which they are done; no
// export has code of its own. TdmTorvikToPOS carries them out.
#pragma once

#include <span>
#include <variant>

#include "outbound/shape/procedure.h"
#include "outbound/shape/sql_text.h"
#include "outbound/shape/work_table.h"

namespace torvik {

// CurrentTransformation := name.
struct SetTransformation {
    const char* name;
};

// TransferStartTime := now.
struct StartClock {};

// DoProgress with these values.
struct Report {
    const char* text;
    int value;
    bool forced;
    int total;
};

// Makes work tables on the till, in one batch, unless the first action of this kind has made those of the whole send.
struct CreateTables {
    std::span<const WorkTable* const> tables;
};

// Drops a work table on the till. Several that follow each other are one request.
struct DropTable {
    const char* name;
};

// Small registers that are read from the back office in one round trip, at the first of them. What others refer to is
// read no earlier than those are.
enum class ReadWith { Nothing, ItemRegisters, OtherRegisters };

// Loads the rows of a query on the back office into a table on the till, by column name, through the bulk loader.
// CurrentTransformation becomes the caption.
struct LoadTable {
    const char* caption;
    const char* table;
    SqlText query;
    // How many rows the query has is asked first, so that progress can be told in percent: for a single SELECT only.
    bool counted = true;
    // A table that the till has before the send, and whose columns no step changes.
    bool tillsOwn = false;
    ReadWith readWith = ReadWith::Nothing;
};

// A column of a row that is copied as it is, by name.
struct CopiedColumn {
    const char* source;
    const char* target;
    enum class As { Variant, String } as = As::Variant;  // as a string, null is the empty text
    bool ifTargetHas = false;                            // left out where the till's table has no such column
};

// Copies the rows of a query on the back office into a table on the till one by one. With a key column, the first of
// `columns`, a row that the table has is edited, and only others are inserted.
struct CopyRows {
    const char* progress;  // the text of the row progress
    const char* name;      // the name in the line that tells the end
    const char* query;
    const char* table;
    std::span<const CopiedColumn> columns;
    bool keyed = false;
    ReadWith readWith = ReadWith::Nothing;
};

// Edits the one row of a table on the till from the one row of a query; without a row on either side, does nothing.
struct EditOneRow {
    SqlText query;
    const char* table;
    std::span<const CopiedColumn> columns;
    ReadWith readWith = ReadWith::Nothing;
};

// One batch on the till.
struct TillBatch {
    SqlText sql;
};

// One batch on the till whose text is made of a table of data.
struct BuiltTillBatch {
    QString (*sql)();
};

// One batch on the back office.
struct BackOfficeBatch {
    SqlText sql;
};

// Drops a procedure on the till if it is there, and makes it for this till's schema: two batches. They may wait for
// what follows: other procedures, or the run of this one.
struct Install {
    const Procedure* procedure;
};

// Runs a procedure that has been installed: one batch.
struct Run {
    const Procedure* procedure;
};

// Notes whether the till has a table, for pieces of SQL that tell it by tillHas().
struct AskForTable {
    const char* table;
};

// What the driver does of its own.
enum class DriverTask { GetGlobalVariables, DrawSessionID, ReadTillVersion, KasseVareAlle, AskBackOffice };

using Action =
    std::variant<SetTransformation, StartClock, Report, CreateTables, DropTable, LoadTable, CopyRows, EditOneRow,
                 TillBatch, BuiltTillBatch, BackOfficeBatch, Install, Run, AskForTable, DriverTask>;
using Actions = std::span<const Action>;

}  // namespace torvik

// Files on their way to a till through its own database: a row of BINARYOBJECT, which the till's software picks up by
// itself. Program upgrades and changes of the ini file go this way.
#pragma once

#include <QString>

namespace torvik {

namespace db {
class Session;
}
struct Seams;

// Adds those of the table's columns that a till of an older schema lacks; BO_OBJECT is never added.
void EnsureBinaryObjectColumns(db::Session& till);

struct BinaryObject {
    QString file;   // the local file
    QString type;   // BO_TYPE
    QString query;  // the statements whose rows tell which columns the table has
};

// Writes one row with the file's bytes, towards the till. The file goes in pieces into a temporary table of the session
// and from there by one statement into the row, so that the till never sees a part of it, and neither side holds it
// whole. Raises what the server objects to, and EngineError for a file that cannot be read or changes meanwhile.
void writeBinaryObject(db::Session& till, const Seams& seam, const BinaryObject& object);

}  // namespace torvik

// Copies rows of a query into a table on the till one by one, as a CopyRows or an EditOneRow tells. Used by
// TdmTorvikToPOS.
#pragma once

#include <functional>

#include "outbound/shape/action.h"

namespace torvik {

namespace db {
class DataSet;
class Session;
class TableShapes;
}  // namespace db

// Called at each row with its number, from 1; what it raises ends the copy.
using RowDone = std::function<void(int row)>;

// The source is open and stands on its first row. The rows stand in the table when it returns. The till's session has
// no transaction. shapes: where the table's columns are known, for fewer round trips; null: nowhere.
void copyRows(const CopyRows& copy, db::DataSet& source, db::Session& till, db::TableShapes* shapes,
              const RowDone& rowDone);

// The source is open. Gives whether there was a row on both sides.
bool editOneRow(const EditOneRow& edit, db::DataSet& source, db::Session& till);

}  // namespace torvik

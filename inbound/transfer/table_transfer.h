// Copies the rows of one source query into one staging table, as a TableMap tells. Used by TdmPOStoTorvik for each of
// its table steps.
#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>
#include <functional>

#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace db {
class DataSet;
class Table;
}  // namespace db

// What is the same for all rows of one run.
struct TransferRun {
    int Ik_Ku_ID = 0;
    QString KasseNr;
    QUuid UnID;
    int tillVersion = 0;
    std::function<QDateTime()> now;  // the local clock
};

// Called before each row with the row's number, from 1, and the number of rows; what it raises ends the transfer.
using RowProgress = std::function<void(int row, int rows)>;

// When the staging table is opened: in any case, or only for a row.
enum class StagingOpens { Always, ForRows };

// The source is open; the staging table is opened and closed here. What fails leaves the staging table closed, and is
// raised as it came.
void transferTable(const TableMap& map, const TransferRun& run, db::DataSet& source, db::Table& staging,
                   StagingOpens opens, const RowProgress& progress);

}  // namespace torvik

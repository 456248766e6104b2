// The rows that one till's script gave, or those of all tills together, on a page of the window.
#pragma once

#include <QObject>
#include <memory>

#include "engine/db/mem_table.h"

class QWidget;

namespace torvik {

class Grid;
class TableModel;

class TSqlScriptResult : public QObject {
    Q_OBJECT

public:
    // Puts an empty grid on the page, which owns this.
    explicit TSqlScriptResult(QWidget* page);

    // Takes structure and rows of an open data set; of a closed one nothing.
    void LoadData(const db::DataSet& Data);
    // Shows the rows of the sources, one below the other, under the first one's columns; they are shared. Raises
    // EngineError, and shows nothing, when they do not fit together.
    void CopyDataFromSqlScriptResult(const std::vector<const TSqlScriptResult*>& Sources);

    Grid* FGrid;                             // on the page
    std::shared_ptr<db::MemTable> FMemData;  // closed until it is loaded
    TableModel* FDataSource;                 // what the grid shows
};

}  // namespace torvik

// Rows in memory as a view shows them: those of one table, or of several one below the other under the first one's
// columns. The tables are shared, never copied: a cell is read when it is shown. Used by the results of scripts and by
// the health lists.
#pragma once

#include <QAbstractTableModel>
#include <memory>
#include <vector>

#include "engine/db/mem_table.h"

namespace torvik {

class TableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using Table = std::shared_ptr<const db::MemTable>;
    // What a cell is for a program that sorts or exports: a db::Value.
    enum Role { ValueRole = Qt::UserRole };

    explicit TableModel(QObject* parent = nullptr);

    // The rows of these tables from now on. A value goes by its place: raises EngineError, and shows what it showed,
    // when a table has more columns than the first, or a value that the first one's column cannot hold.
    void setTables(std::vector<Table> tables);
    [[nodiscard]] const std::vector<Table>& tables() const { return tables_; }

    // Null where the row's table has no such column.
    [[nodiscard]] db::Value value(int row, int column) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<Table> tables_;
    std::vector<int> ends_;  // of each table's rows, counted through
    int columns_ = 0;
};

// What a cell of the value shows: one line, cut where it is long; bytes in hexadecimal.
[[nodiscard]] QString cellText(const db::Value& value);

}  // namespace torvik

Q_DECLARE_METATYPE(torvik::db::Value)

// The run status as one tree: a row for each till in the master grid's order, and under it that till's log lines. Made
// of the engine's two status tables, which it follows. docs/run-status.md tells the columns.
#pragma once

#include <QAbstractItemModel>
#include <vector>

namespace torvik {

class TfraOppgjorStatus;

class StatusTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    // The columns of a till's row; a log line shows its icon, time and text in the first, over all of them.
    enum Column {
        Status,
        Avdeling,
        Navn,
        Kasse,
        Hentet,
        Sendt,
        SisteOppgjor,
        IkkeOppgjort,
        Backup,
        TidBrukt,
        Opplast,
        ColumnCount
    };

    explicit StatusTreeModel(TfraOppgjorStatus& status, QObject* parent = nullptr);

    // Takes over what has changed in the tables now; otherwise it is done once a turn of the message loop.
    void follow();

    // The row of memOppgjorStatus behind an index of either level.
    [[nodiscard]] int statusRow(const QModelIndex& index) const;

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    struct Till {
        int statusRow = 0;
        std::vector<int> logRows;
    };
    void changed();
    void rebuild();
    [[nodiscard]] QVariant tillData(int statusRow, int column, int role) const;
    [[nodiscard]] QVariant logData(int logRow, int column, int role) const;

    TfraOppgjorStatus& status_;
    std::vector<Till> tills_;
    bool stale_ = false;  // the tables have changed since: their row numbers may be gone
};

}  // namespace torvik

// The run status as one tree: a row for each till in the master grid's order, and under it that till's log lines that
// the filter lets through. Follows the engine's two status tables row by row, so that a long run over many tills costs
// no more at its end than at its start. docs/run-status.md tells the columns.
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

    // The status must outlive the model.
    explicit StatusTreeModel(TfraOppgjorStatus& status, QObject* parent = nullptr);

    // The row of memOppgjorStatus behind an index of either level, -1 for none.
    [[nodiscard]] int statusRow(const QModelIndex& index) const;
    // The till's index for a row of memOppgjorStatus.
    [[nodiscard]] QModelIndex indexOf(int statusRow) const { return index(positionOf(statusRow), 0); }

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
        int ikKuId = 0;   // with the till number what its log lines go by
        QString kassenr;  // trimmed
        std::vector<int> logRows;
    };

    [[nodiscard]] Till tillOf(int statusRow) const;
    [[nodiscard]] bool comesBefore(const Till& a, const Till& b) const;
    [[nodiscard]] int positionOf(int statusRow) const { return positions_[static_cast<std::size_t>(statusRow)]; }
    void listAnew();
    void numberPositions(std::size_t from);
    void tillsAdded(int first, int last);
    void tillsChanged(int first, int last);
    void linesAdded(int first, int last);
    [[nodiscard]] QVariant tillData(int statusRow, int column, int role) const;
    [[nodiscard]] QVariant logData(int logRow, int column, int role) const;

    TfraOppgjorStatus& status_;
    std::vector<Till> tills_;     // in the order shown
    std::vector<int> positions_;  // of each row of memOppgjorStatus in tills_
};

}  // namespace torvik

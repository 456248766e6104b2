// The run status as one tree: a row for each till, arranged as the operator wants it, under it that till's log lines
// that the filter lets through, and over it a group where the tills are grouped. Follows the engine's two status tables
// row by row, so that a long run over many tills costs no more at its end than at its start. docs/run-status.md tells
// the columns.
#pragma once

#include <QAbstractItemModel>
#include <memory>
#include <vector>

#include "shell/status/status_arrangement.h"

namespace torvik {

class TfraOppgjorStatus;

class StatusTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    // The columns of a till's row; a log line shows its icon, time and text in the first, over all of them. A group
    // shows its caption in the first, and its sums under the columns they are of.
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
    enum class Kind { Group, Till, Line };

    // The status must outlive the model.
    explicit StatusTreeModel(TfraOppgjorStatus& status, QObject* parent = nullptr);
    ~StatusTreeModel() override;

    [[nodiscard]] const StatusArrangement& arrangement() const { return arrangement_; }
    void setArrangement(const StatusArrangement& arrangement);

    [[nodiscard]] Kind kindOf(const QModelIndex& index) const;
    // The row of memOppgjorStatus behind a till or a line, -1 for a group and for none.
    [[nodiscard]] int statusRow(const QModelIndex& index) const;
    // The till's index for a row of memOppgjorStatus; invalid where it is not shown.
    [[nodiscard]] QModelIndex indexOf(int statusRow) const;
    // All tills shown, from top to bottom.
    [[nodiscard]] std::vector<int> statusRows() const;
    // The column of memOppgjorStatus that a column shows.
    [[nodiscard]] static OppgjorStatusTable::Column sourceColumn(int column);

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    struct Node;

    void listAnew();
    void tillsAdded(int first, int last);
    void tillsChanged(int first, int last);
    void linesAdded(int first, int last);
    [[nodiscard]] std::unique_ptr<Node> newTill(int statusRow) const;
    // Where the till stands now, as the arrangement wants it: shown, moved, or hidden.
    void arrange(Node& till);
    void insertTill(Node& till);
    void removeTill(Node& till);
    void moveTill(Node& till, Node& home);
    [[nodiscard]] Node& homeOf(const Node& till, bool tellViews);
    [[nodiscard]] int placeIn(const Node& home, const Node& till) const;
    void dropGroupIfEmpty(Node& group);
    void tellGroup(Node& home);

    [[nodiscard]] Node* nodeOf(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOfNode(const Node& node, int column = 0) const;
    [[nodiscard]] QVariant groupData(const Node& group, int column, int role) const;
    [[nodiscard]] QVariant tillData(int statusRow, int column, int role) const;
    [[nodiscard]] QVariant logData(int logRow, int column, int role) const;

    TfraOppgjorStatus& status_;
    StatusArrangement arrangement_;
    std::unique_ptr<Node> root_;
    std::vector<std::unique_ptr<Node>> tills_;  // by their rows of memOppgjorStatus, shown or not
    std::vector<std::unique_ptr<Node>> groups_;
};

}  // namespace torvik

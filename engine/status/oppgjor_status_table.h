// memOppgjorStatus: the in-memory table of a run's tills, one row each, and the sums that the grid's footers show.
// TfraOppgjorStatus writes it; views read it as a model. See docs/run-status.md.
#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <QString>
#include <QTime>
#include <optional>
#include <utility>
#include <vector>

#include "engine/db/date_time.h"

namespace torvik {

struct OppgjorStatusRow {
    int RecId = 0;
    QString Avdnr;
    QString AvdNavn;
    QString Kassenr;
    std::optional<bool> Hentet;
    std::optional<bool> Sendt;
    QString Melding;
    std::optional<QTime> TidBrukt;
    std::optional<int> DagerSidenBackup;
    int StatusIcon = 0;  // a TKasseLogSeverity value
    std::optional<int> Ik_Ku_Id;
    std::optional<db::DateTime> SisteOppgjor;
    std::optional<int> AntSalgIkkeOppgjort;
    std::optional<int> AvdnrSort;
    std::optional<double> Opplast_mbps;
};

// What a footer shows of a set of rows.
struct OppgjorStatusSums {
    qint64 TidBruktMs = 0;
    int Count = 0;
    qint64 AntSalgIkkeOppgjort = 0;

    // "hh:nn:ss" of the time used; the hours run past 24.
    [[nodiscard]] QString TidBruktText() const;
    // The summary of a group: time used and number of rows, separated by ", ".
    [[nodiscard]] QString GroupText() const;
};

class OppgjorStatusTable : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Avdnr,
        AvdNavn,
        Kassenr,
        Hentet,
        Sendt,
        Melding,
        TidBrukt,
        DagerSidenBackup,
        StatusIcon,
        Ik_Ku_Id,
        SisteOppgjor,
        AntSalgIkkeOppgjort,
        AvdnrSort,
        Opplast_mbps,
        ColumnCount
    };
    // The value as it is, null as an invalid QVariant; the display role gives the text a grid shows.
    static constexpr int RawValue = Qt::EditRole;

    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] bool Active() const { return active_; }
    void Open();
    // Empties the table.
    void Close();

    [[nodiscard]] int RecordCount() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] const OppgjorStatusRow& Row(int row) const { return rows_[static_cast<size_t>(row)]; }
    // The row with exactly this key, or -1.
    [[nodiscard]] int Locate(const QString& avdnr, const QString& kassenr) const;
    // Adds the row with a RecId of its own, text cut to its column's width, and gives its number.
    int Append(OppgjorStatusRow row);
    // Writes a whole row back.
    void Post(int row, OppgjorStatusRow value);
    // Sets the icons of all rows, one for each; views hear of it once, and not at all when none has changed.
    void PostIcons(const std::vector<int>& icons);

    [[nodiscard]] OppgjorStatusSums Sums() const;
    [[nodiscard]] OppgjorStatusSums Sums(const std::vector<int>& rows) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    // Columns that a grid leaves out: Melding (it has its memo), Ik_Ku_Id and AvdnrSort.
    [[nodiscard]] static bool IsHidden(int column);

private:
    using Key = std::pair<QString, QString>;
    static void fit(OppgjorStatusRow& row);

    bool active_ = false;
    int lastRecId_ = 0;
    std::vector<OppgjorStatusRow> rows_;
    QHash<Key, int> rowOfKey_;
};

}  // namespace torvik

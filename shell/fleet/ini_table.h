// The tills' ini files side by side, memKasse: one row a till with the settings that matter and the whole text. The
// viewer shows and exports it.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

namespace torvik {

class IniTable : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    enum Column {
        AvdNr,
        Kassenr,
        Navn,
        CEDeviceEnabled,
        LabelPrinterName,
        TerminalType,
        TerminalActive,
        Ini,
        ColumnCount
    };

    void clear();
    // Appends a till's row, made of the lines of its file.
    void append(const QString& avdNr, const QString& kassenr, const QString& navn, const QStringList& lines);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    // Truth values as check marks; DisplayRole of the whole text is its first line, EditRole all of it.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    // "Ingen" to "Verifone"; "Ukjent" for any other number.
    [[nodiscard]] static QString terminalName(int type);

private:
    struct Row {
        QString AvdNr, Kassenr, Navn;
        bool CEDeviceEnabled = false;
        QString LabelPrinterName, TerminalType;
        bool TerminalActive = false;
        QString Ini;
    };
    std::vector<Row> rows_;
};

}  // namespace torvik

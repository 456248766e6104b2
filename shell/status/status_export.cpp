// Both forms read the model as it is arranged, not the tables.
#include "shell/status/status_export.h"

#include <QStringList>

#include "engine/status/oppgjor_status.h"
#include "shell/sheet/workbook.h"
#include "shell/status/status_tree_model.h"

namespace torvik {

namespace {

// What a cell of a till says; its icon as the state's name.
QString cellText(const StatusTreeModel& model, const QModelIndex& till, int column) {
    const QVariant value =
        model.data(till.siblingAtColumn(column), column == StatusTreeModel::Status ? Qt::ToolTipRole : Qt::DisplayRole);
    return value.toString();
}

bool isNumber(int column) {
    return column == StatusTreeModel::IkkeOppgjort || column == StatusTreeModel::Backup ||
           column == StatusTreeModel::Opplast;
}

QStringList captionsOf(const StatusTreeModel& model) {
    QStringList captions;
    for (int column = 0; column < StatusTreeModel::ColumnCount; ++column)
        captions << model.headerData(column, Qt::Horizontal).toString();
    return captions;
}

}  // namespace

QString statusAsText(const StatusTreeModel& model) {
    QStringList lines{captionsOf(model).join(u'\t')};
    for (const int row : model.statusRows()) {
        QStringList cells;
        for (int column = 0; column < StatusTreeModel::ColumnCount; ++column)
            cells << cellText(model, model.indexOf(row), column).simplified();
        lines << cells.join(u'\t');
    }
    return lines.join(u'\n') + u'\n';
}

void writeStatusSpreadsheet(const StatusTreeModel& model, const TfraOppgjorStatus& status, const QString& file) {
    Workbook book(file);
    book.sheet("Status", captionsOf(model) + QStringList{QStringLiteral("Melding")});
    for (const int row : model.statusRows()) {
        book.nextRow();
        for (int column = 0; column < StatusTreeModel::ColumnCount; ++column) {
            const QString text = cellText(model, model.indexOf(row), column);
            bool numeric = false;
            const double number = text.toDouble(&numeric);
            if (isNumber(column) && numeric) {
                book.number(column, number);
            } else {
                book.text(column, text);
            }
        }
        book.text(StatusTreeModel::ColumnCount, status.memOppgjorStatus.Row(row).Melding);
    }
    book.sheet("Logg", {QStringLiteral("Avdnr"), QStringLiteral("Kassenr"), QStringLiteral("Type"),
                        QStringLiteral("Tidspunkt"), QStringLiteral("Melding")});
    for (const int row : model.statusRows()) {
        const OppgjorStatusRow& till = status.memOppgjorStatus.Row(row);
        for (const int line : status.memLogEntries.RowsOf(till.Ik_Ku_Id.value_or(-1), till.Kassenr.trimmed())) {
            const LogEntryRow& entry = status.memLogEntries.Row(line);
            book.nextRow();
            book.text(0, till.Avdnr);
            book.text(1, till.Kassenr);
            book.text(2, SeverityText(entry.Severity));
            book.text(3, entry.DateAndTime.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")));
            book.text(4, entry.Msg);
        }
    }
    book.close();
}

}  // namespace torvik

// Both forms read the model as it is arranged, not the tables.
#include "shell/status/status_export.h"

#include <xlsxwriter.h>

#include <QFile>
#include <QStringList>

#include "engine/base/abort.h"
#include "engine/status/oppgjor_status.h"
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

class Workbook {
public:
    explicit Workbook(const QString& file) : book_(workbook_new(QFile::encodeName(file).constData())) {
        bold_ = workbook_add_format(book_);
        format_set_bold(bold_);
    }
    ~Workbook() {
        if (book_) workbook_close(book_);
    }
    Workbook(const Workbook&) = delete;
    Workbook& operator=(const Workbook&) = delete;

    void sheet(const char* name, const QStringList& captions) {
        sheet_ = workbook_add_worksheet(book_, name);
        row_ = 0;
        for (qsizetype column = 0; column < captions.size(); ++column)
            worksheet_write_string(sheet_, 0, static_cast<lxw_col_t>(column), captions[column].toUtf8().constData(),
                                   bold_);
        worksheet_freeze_panes(sheet_, 1, 0);
        worksheet_set_column(sheet_, 0, static_cast<lxw_col_t>(captions.size() - 1), kColumnWidth, nullptr);
    }
    void nextRow() { ++row_; }
    void text(int column, const QString& value) {
        if (!value.isEmpty())
            worksheet_write_string(sheet_, row_, static_cast<lxw_col_t>(column), value.toUtf8().constData(), nullptr);
    }
    void number(int column, double value) {
        worksheet_write_number(sheet_, row_, static_cast<lxw_col_t>(column), value, nullptr);
    }
    [[nodiscard]] lxw_error close() { return workbook_close(std::exchange(book_, nullptr)); }

private:
    static constexpr double kColumnWidth = 18;

    lxw_workbook* book_;
    lxw_worksheet* sheet_ = nullptr;
    lxw_format* bold_ = nullptr;
    lxw_row_t row_ = 0;
};

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
    if (const lxw_error error = book.close(); error != LXW_NO_ERROR)
        throw EngineError(
            QStringLiteral("Klarte ikke å skrive %1: %2").arg(file, QString::fromUtf8(lxw_strerror(error))));
}

}  // namespace torvik

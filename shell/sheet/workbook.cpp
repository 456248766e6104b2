#include "shell/sheet/workbook.h"

#include <QFile>

#include <utility>

#include "engine/base/abort.h"

namespace torvik {

namespace {

constexpr double kColumnWidth = 18;
constexpr qsizetype kCell = 32767;  // characters that a cell holds
const QString kCut = QStringLiteral("...");

lxw_col_t at(qsizetype column) {
    return static_cast<lxw_col_t>(column);
}

}  // namespace

Workbook::Workbook(QString file)
    : file_(std::move(file)),
      book_(workbook_new(QFile::encodeName(file_).constData())),
      bold_(workbook_add_format(book_)) {
    format_set_bold(bold_);
}

Workbook::~Workbook() {
    if (book_) workbook_close(book_);
}

void Workbook::sheet(const char* name, const QStringList& captions) {
    sheet_ = workbook_add_worksheet(book_, name);
    row_ = 0;
    for (qsizetype column = 0; column < captions.size(); ++column)
        worksheet_write_string(sheet_, 0, at(column), captions[column].toUtf8().constData(), bold_);
    worksheet_freeze_panes(sheet_, 1, 0);
    worksheet_set_column(sheet_, 0, at(captions.size() - 1), kColumnWidth, nullptr);
}

void Workbook::text(int column, const QString& value) {
    if (value.isEmpty()) return;
    const QString fits = value.size() <= kCell ? value : value.left(kCell - kCut.size()) + kCut;
    worksheet_write_string(sheet_, row_, at(column), fits.toUtf8().constData(), nullptr);
}

void Workbook::number(int column, double value) {
    worksheet_write_number(sheet_, row_, at(column), value, nullptr);
}

void Workbook::boolean(int column, bool value) {
    worksheet_write_boolean(sheet_, row_, at(column), value ? 1 : 0, nullptr);
}

void Workbook::close() {
    const lxw_error error = workbook_close(std::exchange(book_, nullptr));
    if (error != LXW_NO_ERROR)
        throw EngineError(
            QStringLiteral("Klarte ikke å skrive %1: %2").arg(file_, QString::fromUtf8(lxw_strerror(error))));
}

}  // namespace torvik

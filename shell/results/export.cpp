#include "shell/results/export.h"

#include <QAbstractItemModel>
#include <QSaveFile>
#include <cmath>

#include "engine/base/abort.h"
#include "shell/results/table_model.h"
#include "shell/sheet/xls_workbook.h"

namespace torvik {

namespace {

constexpr int kRowsASheet = XlsWorkbook::kRows - 1;  // under the captions
constexpr int kDigits = 15;                          // of a number in a spreadsheet

const QDate kFirstDay(1900, 3, 1);
const QDate kLastDay(9999, 12, 31);

db::Value valueOf(const QAbstractItemModel& model, int row, int column) {
    return model.index(row, column).data(TableModel::ValueRole).value<db::Value>();
}

QString captionOf(const QAbstractItemModel& model, int column) {
    return model.headerData(column, Qt::Horizontal).toString();
}

QString wholeText(const db::Value& value) {
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant()))
        return QStringLiteral("0x") + QString::fromLatin1(bytes->toHex().toUpper());
    return value.toQString();
}

bool staysExact(const QString& number) {
    int digits = 0;
    for (const QChar c : number) digits += c.isDigit() ? 1 : 0;
    return digits <= kDigits;
}

class SpreadsheetExport {
public:
    explicit SpreadsheetExport(const QAbstractItemModel& model) : model_(model) { note_.rows = model.rowCount(); }

    SpreadsheetNote write(const QString& file) {
        if (model_.columnCount() > XlsWorkbook::kColumns)
            throw EngineError(QStringLiteral("Resultatet har %1 kolonner, og et ark har plass til %2")
                                  .arg(model_.columnCount())
                                  .arg(XlsWorkbook::kColumns));
        note_.sheets = qMax(1, (note_.rows + kRowsASheet - 1) / kRowsASheet);
        for (int sheet = 0; sheet < note_.sheets; ++sheet) writeSheet(sheet);
        book_.write(file);
        return note_;
    }

private:
    void writeSheet(int sheet) {
        book_.beginSheet(QStringLiteral("Ark%1").arg(sheet + 1));
        for (int column = 0; column < model_.columnCount(); ++column)
            book_.text(0, column, captionOf(model_, column), true);
        const int first = sheet * kRowsASheet;
        const int count = qMin(kRowsASheet, note_.rows - first);
        for (int row = 0; row < count; ++row)
            for (int column = 0; column < model_.columnCount(); ++column)
                writeCell(row + 1, column, valueOf(model_, first + row, column));
    }

    void writeCell(int row, int column, const db::Value& value) {
        if (value.isNull()) return;
        const auto& held = value.variant();
        if (const auto* yes = std::get_if<bool>(&held)) return book_.boolean(row, column, *yes);
        if (const auto* number = std::get_if<double>(&held); number && std::isfinite(*number))
            return book_.number(row, column, *number);
        if (const auto* time = std::get_if<db::DateTime>(&held);
            time && time->date() >= kFirstDay && time->date() <= kLastDay)
            return book_.dateTime(row, column, time->date(), time->time());
        const QString text = wholeText(value);
        if ((std::holds_alternative<qint64>(held) || std::holds_alternative<db::Decimal>(held)) && staysExact(text))
            return book_.number(row, column, text.toDouble());
        if (text.size() > XlsWorkbook::kLetters) ++note_.cutTexts;
        book_.text(row, column, text);
    }

    const QAbstractItemModel& model_;
    XlsWorkbook book_;
    SpreadsheetNote note_;
};

QByteArray textLine(const QStringList& cells) {
    return u'|' + cells.join(u'\t').toUtf8() + "|\n";
}

QString oneLine(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& c : text)
        if (c == u'\n' || c == u'\r' || c == u'\t') c = u' ';
    return text;
}

}  // namespace

QString SpreadsheetNote::text() const {
    QStringList told;
    if (sheets > 1)
        told << QStringLiteral("Resultatet har %1 rader. Et ark har plass til %2, så radene står på %3 ark.")
                    .arg(rows)
                    .arg(kRowsASheet)
                    .arg(sheets);
    if (cutTexts > 0)
        told << QStringLiteral("%1 tekster er lengre enn de %2 tegnene en celle har plass til, og er kortet ned.")
                    .arg(cutTexts)
                    .arg(XlsWorkbook::kLetters);
    return told.join(u'\n');
}

SpreadsheetNote writeSpreadsheet(const QAbstractItemModel& model, const QString& file) {
    return SpreadsheetExport(model).write(file);
}

void writeText(const QAbstractItemModel& model, const QString& file) {
    QSaveFile out(file);
    bool written = out.open(QIODevice::WriteOnly | QIODevice::Text);
    const auto line = [&](const auto& cell) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column) cells << oneLine(cell(column));
        const QByteArray bytes = textLine(cells);
        written = written && out.write(bytes) == bytes.size();
    };
    line([&](int column) { return captionOf(model, column); });
    for (int row = 0; written && row < model.rowCount(); ++row)
        line([&](int column) { return wholeText(valueOf(model, row, column)); });
    if (!written || !out.commit())
        throw EngineError(QStringLiteral("Klarte ikke å skrive %1: %2").arg(file, out.errorString()));
}

}  // namespace torvik

// Records of a kind, a length and a content: those of the whole workbook, then those of each sheet.
#include "shell/sheet/xls_workbook.h"

#include <algorithm>
#include <utility>

#include "shell/sheet/compound_file.h"
#include "shell/sheet/little_endian.h"

namespace torvik {

namespace {

// The kinds of record.
constexpr int kBof = 0x0809;
constexpr int kEof = 0x000A;
constexpr int kCodePage = 0x0042;
constexpr int kWindow1 = 0x003D;
constexpr int kWindow2 = 0x023E;
constexpr int kPane = 0x0041;
constexpr int kFont = 0x0031;
constexpr int kNumberFormat = 0x041E;
constexpr int kCellFormat = 0x00E0;
constexpr int kStyle = 0x0293;
constexpr int kBoundSheet = 0x0085;
constexpr int kSharedTexts = 0x00FC;
constexpr int kContinue = 0x003C;
constexpr int kDimensions = 0x0200;
constexpr int kNumberCell = 0x0203;
constexpr int kBooleanCell = 0x0205;
constexpr int kTextCell = 0x00FD;

constexpr int kOfWorkbook = 0x0005;
constexpr int kOfSheet = 0x0010;

constexpr qsizetype kLongest = 8224;  // bytes of a record

// Places in the list of cell formats: the first fifteen are of styles.
constexpr int kStyleFormats = 15;
constexpr int kPlain = kStyleFormats;
constexpr int kBold = kStyleFormats + 1;
constexpr int kDateTime = kStyleFormats + 2;

constexpr int kDateTimeFormat = 164;  // the first number that is free for one's own
constexpr int kBoldFont = 5;          // number 4 is left out by the format

void appendRecord(QByteArray& to, int kind, const QByteArray& content) {
    append16(to, kind);
    append16(to, static_cast<int>(content.size()));
    to += content;
}

QByteArray bof(int of) {
    QByteArray content;
    append16(content, 0x0600);
    append16(content, of);
    append16(content, 0x0DBB);  // of the program that writes so, and its year
    append16(content, 0x07CC);
    append32(content, 0);
    append32(content, 6);
    return content;
}

QByteArray window1() {
    QByteArray content;
    for (const int value : {0, 0, 0x4000, 0x2000, 0x0038, 0, 0, 1, 0x0258}) append16(content, value);
    return content;
}

// The first sheet is the one in sight; the captions stay above the rows that scroll.
QByteArray window2(bool first) {
    constexpr int kUsual = 0x00B6;  // grid lines, headers, zeros, default colours
    constexpr int kFrozen = 0x0108;
    constexpr int kSelected = 0x0600;
    QByteArray content;
    append16(content, kUsual | kFrozen | (first ? kSelected : 0));
    for (const int value : {0, 0, 0x0040, 0, 0, 0, 0, 0}) append16(content, value);
    return content;
}

QByteArray paneUnderCaptions() {
    QByteArray content;
    for (const int value : {0, 1, 1, 0}) append16(content, value);
    append8(content, 2);  // the lower pane is the active one
    append8(content, 0);
    return content;
}

QByteArray font(bool bold) {
    QByteArray content;
    append16(content, 200);  // twentieths of a point
    append16(content, bold ? 1 : 0);
    append16(content, 0x7FFF);  // the window's colour
    append16(content, bold ? 700 : 400);
    append16(content, 0);
    append32(content, 0);
    append8(content, 5);
    append8(content, 0);
    content += "Arial";
    return content;
}

QByteArray numberFormat() {
    const QByteArray text("dd\\.mm\\.yyyy\\ hh:mm:ss");
    QByteArray content;
    append16(content, kDateTimeFormat);
    append16(content, static_cast<int>(text.size()));
    append8(content, 0);
    return content + text;
}

QByteArray cellFormat(int fontNumber, int format, bool style) {
    QByteArray content;
    append16(content, fontNumber);
    append16(content, format);
    append16(content, style ? 0xFFF5 : 0x0001);  // locked; of a style, or a child of the first
    append16(content, 0x0020);                   // at the bottom
    append16(content, style ? 0xF400 : 0x7800);  // which of its sides are its own
    append32(content, 0);
    append32(content, 0);
    append16(content, 0x20C0);
    return content;
}

QByteArray normalStyle() {
    QByteArray content;
    append16(content, 0x8000);
    append8(content, 0);
    append8(content, 0xFF);
    return content;
}

QByteArray looks() {
    QByteArray records;
    for (int i = 0; i < kBoldFont - 1; ++i) appendRecord(records, kFont, font(false));
    appendRecord(records, kFont, font(true));
    appendRecord(records, kNumberFormat, numberFormat());
    for (int i = 0; i < kStyleFormats; ++i) appendRecord(records, kCellFormat, cellFormat(0, 0, true));
    appendRecord(records, kCellFormat, cellFormat(0, 0, false));
    appendRecord(records, kCellFormat, cellFormat(kBoldFont, 0, false));
    appendRecord(records, kCellFormat, cellFormat(0, kDateTimeFormat, false));
    appendRecord(records, kStyle, normalStyle());
    return records;
}

bool isNarrow(const QString& text) {
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x100; });
}

// The shared texts, over as many records as they take. A text may break off between two letters; what goes on in the
// next record begins with the width of the letters anew. Its head may not break.
class SharedTexts {
public:
    SharedTexts(quint32 cells, quint32 texts) {
        append32(content_, cells);
        append32(content_, texts);
    }
    void add(const QString& text) {
        constexpr qsizetype kHead = 3;
        const int width = isNarrow(text) ? 1 : 2;
        if (kLongest - content_.size() < kHead + width) flush();
        append16(content_, static_cast<int>(text.size()));
        append8(content_, width - 1);
        for (qsizetype at = 0; at < text.size();) {
            const qsizetype room = (kLongest - content_.size()) / width;
            if (room == 0) {
                flush();
                append8(content_, width - 1);
                continue;
            }
            const QStringView piece = QStringView(text).mid(at, room);
            if (width == 1) {
                content_ += piece.toLatin1();
            } else {
                appendUtf16(content_, piece);
            }
            at += piece.size();
        }
    }
    [[nodiscard]] QByteArray records() {
        flush();
        return records_;
    }

private:
    void flush() { appendRecord(records_, std::exchange(kind_, kContinue), std::exchange(content_, {})); }

    int kind_ = kSharedTexts;
    QByteArray content_;
    QByteArray records_;
};

QByteArray boundSheet(const QString& name, quint32 place) {
    QByteArray content;
    append32(content, place);
    append16(content, 0);  // a sheet in sight
    append8(content, static_cast<int>(name.size()));
    append8(content, 1);
    appendUtf16(content, name);
    return content;
}

QByteArray dimensions(int rows, int columns) {
    QByteArray content;
    append32(content, 0);
    append32(content, static_cast<quint32>(rows));
    append16(content, 0);
    append16(content, columns);
    append16(content, 0);
    return content;
}

}  // namespace

void XlsWorkbook::beginSheet(const QString& name) {
    sheets_.push_back({name, {}, 0, 0});
}

void XlsWorkbook::cell(int record, int row, int column, int format, const QByteArray& content) {
    Sheet& sheet = sheets_.back();
    append16(sheet.cells, record);
    append16(sheet.cells, static_cast<int>(6 + content.size()));
    append16(sheet.cells, row);
    append16(sheet.cells, column);
    append16(sheet.cells, format);
    sheet.cells += content;
    sheet.rows = qMax(sheet.rows, row + 1);
    sheet.columns = qMax(sheet.columns, column + 1);
}

quint32 XlsWorkbook::sharedText(const QString& value) {
    const auto known = placeOf_.constFind(value);
    if (known != placeOf_.constEnd()) return *known;
    const auto place = static_cast<quint32>(texts_.size());
    placeOf_.insert(value, place);
    texts_.push_back(value);
    return place;
}

void XlsWorkbook::text(int row, int column, const QString& value, bool bold) {
    QByteArray content;
    append32(content, sharedText(value.size() > kLetters ? value.left(kLetters) : value));
    ++textCells_;
    cell(kTextCell, row, column, bold ? kBold : kPlain, content);
}

void XlsWorkbook::number(int row, int column, double value) {
    QByteArray content;
    appendDouble(content, value);
    cell(kNumberCell, row, column, kPlain, content);
}

void XlsWorkbook::boolean(int row, int column, bool value) {
    QByteArray content;
    append8(content, value ? 1 : 0);
    append8(content, 0);  // a truth value, not an error
    cell(kBooleanCell, row, column, kPlain, content);
}

// Days from 30.12.1899, which is right from 01.03.1900 on.
void XlsWorkbook::dateTime(int row, int column, const QDate& date, const QTime& time) {
    constexpr double kMillisecondsADay = 86'400'000;
    QByteArray content;
    appendDouble(content, static_cast<double>(QDate(1899, 12, 30).daysTo(date)) +
                              time.msecsSinceStartOfDay() / kMillisecondsADay);
    cell(kNumberCell, row, column, kDateTime, content);
}

void XlsWorkbook::write(const QString& file) const {
    QByteArray start;
    appendRecord(start, kBof, bof(kOfWorkbook));
    appendRecord(start, kCodePage, QByteArray("\xB0\x04", 2));
    appendRecord(start, kWindow1, window1());
    start += looks();

    SharedTexts shared(textCells_, static_cast<quint32>(texts_.size()));
    for (const QString& text : texts_) shared.add(text);
    QByteArray rest = shared.records();
    appendRecord(rest, kEof, {});

    QByteArray contents;
    std::vector<qsizetype> begins;
    for (const Sheet& sheet : sheets_) {
        begins.push_back(contents.size());
        appendRecord(contents, kBof, bof(kOfSheet));
        appendRecord(contents, kDimensions, dimensions(sheet.rows, sheet.columns));
        contents += sheet.cells;
        appendRecord(contents, kWindow2, window2(begins.size() == 1));
        appendRecord(contents, kPane, paneUnderCaptions());
        appendRecord(contents, kEof, {});
    }

    // The directory of sheets tells where in the stream each begins, and is part of what stands before them.
    const auto directory = [&](qsizetype first) {
        QByteArray records;
        for (std::size_t i = 0; i < sheets_.size(); ++i)
            appendRecord(records, kBoundSheet, boundSheet(sheets_[i].name, static_cast<quint32>(first + begins[i])));
        return records;
    };
    const qsizetype first = start.size() + directory(0).size() + rest.size();
    start += directory(first);
    start += rest;
    start += contents;
    writeCompoundFile(file, QStringLiteral("Workbook"), std::move(start));
}

}  // namespace torvik

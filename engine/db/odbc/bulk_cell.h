// One column's value in the form in which bulk copy takes it: a length, then the bytes. It takes a value only where
// the server would make of it what INSERT makes of it; all else is left to INSERT and to the server's own error.
// Internal; used by BulkCopy.
#pragma once

#include <QByteArray>
#include <optional>

#include "engine/db/table_shape.h"

namespace torvik::db::odbc {

class BulkCell {
public:
    // In which form the driver wants texts.
    enum class TextForm { Utf8, Utf16 };

    // Nothing when bulk copy cannot carry such a column.
    static std::optional<BulkCell> of(const TableColumn& column, TextForm form);

    // False: the value is one for INSERT.
    [[nodiscard]] bool put(const Value& value);

    // Where the value stands, and what the driver is to take it for (BCP_TYPE_...). Good until the cell moves.
    [[nodiscard]] const unsigned char* address() const;
    [[nodiscard]] int bindType() const { return bindType_; }
    static constexpr int kPrefix = 4;  // bytes of the length before the value; -1 in it: null

private:
    enum class Kind { Bit, Integer, Float, Real, Money, Decimal, DateTime, SmallDateTime, Text, Bytes, Guid };
    struct Carried;  // a row of the table of what is carried
    static const Carried* carried(int serverType);

    BulkCell(const TableColumn& column, const Carried& how, TextForm form);
    template <typename T>
    bool keep(const T& value);
    bool keepBytes(const void* data, qsizetype size);
    bool putInteger(qint64 value);
    bool putMoney(const Decimal& value);
    bool putDecimal(const Decimal& value);
    bool putDateTime(const DateTime& value);
    bool putSmallDateTime(const DateTime& value);
    bool putText(const QString& value);
    [[nodiscard]] bool hasRoomFor(qsizetype bytes) const;  // as the server holds them
    bool putBytes(const QByteArray& value);
    bool pad(char with, qsizetype length, qsizetype full);

    TableColumn column_;
    Kind kind_;
    int bindType_;
    int width_;  // bytes of a fixed value
    TextForm form_;
    bool unicode_;
    bool fixed_;  // char, nchar, binary: sent in full length
    QByteArray buffer_;
};

}  // namespace torvik::db::odbc

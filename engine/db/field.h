// A column of an open data set: its name and type, the current row's value, and the value to post while a row is being
// edited or appended. Owned by its DataSet; a reference holds until that data set is closed.
#pragma once

#include "engine/db/value.h"

namespace torvik::db {

class DataSet;

// What is known of a column.
struct FieldInfo {
    QString Name;
    FieldType Type = FieldType::Text;
    qint64 Size = 0;     // characters or bytes; digits of a decimal; 0 when unlimited
    int Scale = 0;       // decimals of a Decimal
    bool Fixed = false;  // char, nchar, binary
    bool Long = false;   // (max), text, ntext, image
    bool Nullable = true;
    bool Single = false;  // a Float column of 24 bits (real)
    bool Identity = false;
    bool Computed = false;  // also rowversion: the server fills it
    bool Unicode = true;    // nchar, nvarchar, ntext
    bool Legacy = false;    // datetime, smalldatetime: 1/300 s and coarser
};

class Field {
public:
    Field(DataSet& owner, int index, FieldInfo info) : owner_(owner), index_(index), info_(std::move(info)) {}
    Field(const Field&) = delete;
    Field& operator=(const Field&) = delete;

    [[nodiscard]] const QString& Name() const { return info_.Name; }
    [[nodiscard]] FieldType Type() const { return info_.Type; }
    [[nodiscard]] qint64 Size() const { return info_.Size; }
    [[nodiscard]] const FieldInfo& Info() const { return info_; }
    [[nodiscard]] int Index() const { return index_; }

    // The current row's value, or the one being edited. Null gives "", 0, an invalid date. Reading from a closed data
    // set raises UsageError, as does a value that cannot be read so (named with its column); an open data set with no
    // row gives null.
    [[nodiscard]] Value AsValue() const;
    [[nodiscard]] Value AsVariant() const { return AsValue(); }
    [[nodiscard]] QString AsString() const { return AsValue().toQString(); }
    [[nodiscard]] qint64 AsInteger() const;
    [[nodiscard]] double AsFloat() const;
    [[nodiscard]] bool AsBoolean() const;
    [[nodiscard]] DateTime AsDateTime() const;
    [[nodiscard]] QByteArray AsBytes() const { return AsValue().toBytes(); }
    [[nodiscard]] bool IsNull() const;

    // Sets the value to post; raises UsageError unless the data set is in Edit or Append.
    void SetValue(const Value& value);
    Field& operator=(const Value& value) {
        SetValue(value);
        return *this;
    }
    void Clear() { SetValue(Value{}); }

private:
    template <typename Read>
    [[nodiscard]] auto readAs(const Read& read) const;

    DataSet& owner_;
    int index_;
    FieldInfo info_;
};

}  // namespace torvik::db

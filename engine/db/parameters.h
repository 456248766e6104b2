// Named parameters: where ":name" stands in a statement's text, and the values that callers give them. Used by Query
// and StoredProc.
#pragma once

#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

#include "engine/db/value.h"

namespace torvik::db {

class Parameter {
public:
    explicit Parameter(QString name) : name_(std::move(name)) {}

    [[nodiscard]] const QString& Name() const { return name_; }
    [[nodiscard]] const Value& AsValue() const { return value_; }
    [[nodiscard]] QString AsString() const { return value_.toQString(); }
    [[nodiscard]] qint64 AsInteger() const { return value_.toInt(); }
    [[nodiscard]] bool IsNull() const { return value_.isNull(); }
    void SetValue(const Value& value) { value_ = value; }
    Parameter& operator=(const Value& value) {
        value_ = value;
        return *this;
    }
    void Clear() { value_ = Value{}; }
    // The type to send; unless set, the value's own.
    void SetType(FieldType type) { type_ = type; }
    [[nodiscard]] std::optional<FieldType> Type() const { return type_; }
    // A stored procedure's parameter that the server writes.
    void SetOutput(bool output) { output_ = output; }
    [[nodiscard]] bool Output() const { return output_; }

private:
    QString name_;
    Value value_;
    std::optional<FieldType> type_;
    bool output_ = false;
};

// The parameters of one statement, found by name without regard to case, in the order of their first occurrence.
class Parameters {
public:
    // Raises UsageError "Parameter 'X' not found".
    [[nodiscard]] Parameter& ByName(const QString& name) const;
    [[nodiscard]] Parameter* Find(const QString& name) const;
    Parameter& Add(const QString& name);
    // Makes the list that of names, keeping the parameters that were there under the same name.
    void Reset(const QStringList& names);
    [[nodiscard]] const std::vector<std::unique_ptr<Parameter>>& All() const { return list_; }

private:
    std::vector<std::unique_ptr<Parameter>> list_;
};

// A statement's text with each ":name" made "?", and the name for each "?". Literals, quoted names, comments and "::"
// are left alone.
struct ScannedText {
    QString Text;
    QStringList Names;  // one an occurrence
};
[[nodiscard]] ScannedText scanParameters(const QString& text);

}  // namespace torvik::db

// See data_set.h.
#include "engine/db/data_set.h"

#include <QSet>
#include <algorithm>

#include "engine/db/errors.h"
#include "engine/db/locate_index.h"
#include "engine/db/row_store.h"

namespace torvik::db {

DataSet::DataSet(QObject* parent) : QObject(parent) {}

DataSet::~DataSet() = default;

void DataSet::Close() {
    active_ = false;
    mode_ = Mode::Browse;
    buffer_ = {};
    index_.reset();
    fields_.clear();
    placeOf_.clear();
    rows_.reset();
    row_ = -1;
    dropped_ = 0;
    expected_ = -1;
    eof_ = bof_ = true;
}

void DataSet::activate(std::vector<FieldInfo> columns) {
    rows_ = std::make_unique<RowStore>(columns);
    fields_.clear();
    placeOf_.clear();
    for (FieldInfo& info : columns)
        fields_.push_back(std::make_unique<Field>(*this, int(fields_.size()), std::move(info)));
    QSet<QString> names;
    for (const auto& field : fields_) names.insert(field->Name().toCaseFolded());
    namesDiffer_ = names.size() == qsizetype(fields_.size());
    nextAsked_ = 0;
    active_ = true;
    row_ = -1;
    dropped_ = 0;
    expected_ = -1;
    eof_ = bof_ = true;
}

void DataSet::requireActive() const {
    if (!active_) throw UsageError(QStringLiteral("Cannot perform this operation on a closed dataset"));
}

void DataSet::dropRows() {
    std::vector<FieldInfo> columns;
    for (const auto& field : fields_) columns.push_back(field->Info());
    dropped_ += int(rows_->rowCount());
    rows_ = std::make_unique<RowStore>(columns);
    rowsChanged();
}

void DataSet::rowsChanged() {
    index_.reset();
}

void DataSet::moveTo(int row) {
    row_ = row;
    bof_ = eof_ = row < 0;
}

void DataSet::finishEdit() {
    requireActive();
    if (mode_ != Mode::Browse) Post();
}

void DataSet::First() {
    finishEdit();
    if (dropped_ > 0) throw UsageError(QStringLiteral("Cannot go back to the first row of a unidirectional query"));
    if (rows_->rowCount() == 0) readOn();
    moveTo(rows_->rowCount() > 0 ? 0 : -1);
    bof_ = true;
}

void DataSet::Next() {
    finishEdit();
    bof_ = RecordCount() == 0;
    if (row_ + 1 < int(rows_->rowCount())) {
        ++row_;
        return;
    }
    const int heldBefore = int(rows_->rowCount());
    if (heldBefore > 0 && readOn()) {
        row_ = int(rows_->rowCount()) > heldBefore ? row_ + 1 : 0;
        return;
    }
    eof_ = true;
}

void DataSet::Prior() {
    finishEdit();
    if (row_ > 0) {
        --row_;
        eof_ = false;
    } else {
        bof_ = true;
        eof_ = RecordCount() == 0;
    }
}

void DataSet::Last() {
    finishEdit();
    while (readOn()) {
    }
    moveTo(int(rows_->rowCount()) - 1);
    eof_ = true;
}

bool DataSet::Eof() const {
    requireActive();
    return eof_;
}

bool DataSet::Bof() const {
    requireActive();
    return bof_;
}

int DataSet::rowsRead() const {
    requireActive();
    return dropped_ + int(rows_->rowCount());
}

int DataSet::RecordCount() const {
    return std::max(rowsRead(), expected_);
}

int DataSet::RecNo() const {
    requireActive();
    return row_ < 0 ? 0 : dropped_ + row_ + 1;
}

Bookmark DataSet::GetBookmark() const {
    requireActive();
    return {row_ < 0 ? -1 : dropped_ + row_};
}

void DataSet::GotoBookmark(const Bookmark& bookmark) {
    finishEdit();
    if (bookmark.Row < 0) return;
    if (bookmark.Row < dropped_ || bookmark.Row >= rowsRead())
        throw UsageError(QStringLiteral("The bookmark's row is not held any more"));
    moveTo(bookmark.Row - dropped_);
}

bool DataSet::Locate(const QString& names, const QList<Value>& values, LocateOptions options) {
    finishEdit();
    if (!index_) index_ = std::make_unique<LocateIndex>();
    std::vector<LocateIndex::Key>& keys = index_->keys(names, [this](const QString& name) {
        const Field& field = FieldByName(name);
        return LocateIndex::Key{field.Index(), field.Type(), {}};
    });
    if (qsizetype(keys.size()) != values.size() || keys.empty())
        throw UsageError(QStringLiteral("Locate on '%1' was given %2 values").arg(names).arg(values.size()));
    for (size_t i = 0; i < keys.size(); ++i) keys[i].Sought = values[qsizetype(i)];
    const int row = index_->find(*rows_, options);
    if (row < 0) return false;
    moveTo(row);
    return true;
}

// Callers ask for the same names row after row, mostly in the columns' order: each spelling is looked for once.
const Field* DataSet::FindField(const QString& name) const {
    requireActive();
    if (namesDiffer_ && nextAsked_ < fields_.size() && fields_[nextAsked_]->Name() == name)
        return fields_[nextAsked_++].get();
    auto found = placeOf_.constFind(name);
    if (found == placeOf_.constEnd()) {
        const auto field = std::ranges::find_if(
            fields_, [&](const auto& each) { return each->Name().compare(name, Qt::CaseInsensitive) == 0; });
        if (field == fields_.end()) return nullptr;
        found = placeOf_.insert(name, size_t(field - fields_.begin()));
    }
    nextAsked_ = *found + 1;
    return fields_[*found].get();
}

Field* DataSet::FindField(const QString& name) {
    return const_cast<Field*>(std::as_const(*this).FindField(name));
}

const Field& DataSet::FieldByName(const QString& name) const {
    if (const Field* field = FindField(name)) return *field;
    throw UsageError(QStringLiteral("Field '%1' not found").arg(name));
}

Field& DataSet::FieldByName(const QString& name) {
    return const_cast<Field&>(std::as_const(*this).FieldByName(name));
}

QString DataSet::text(const char* column) const {
    return FieldByName(QString::fromUtf8(column)).AsString().trimmed();
}

int DataSet::integer(const char* column) const {
    const Field& field = FieldByName(QString::fromUtf8(column));
    const qint64 value = field.AsInteger();
    if (value != int(value))
        throw UsageError(
            QStringLiteral("'%1' is not a valid integer value for field '%2'").arg(value).arg(field.Name()));
    return int(value);
}

DateTime DataSet::dateTime(const char* column) const {
    const Field& field = FieldByName(QString::fromUtf8(column));
    const DateTime value = field.AsDateTime();
    if (!value.isValid())
        throw UsageError(QStringLiteral("Row %1 has no date and time for field '%2'").arg(RecNo()).arg(field.Name()));
    return value;
}

const Field& DataSet::Fields(int index) const {
    requireActive();
    if (index < 0 || index >= FieldCount())
        throw UsageError(QStringLiteral("There is no field number %1 among %2").arg(index).arg(FieldCount()));
    return *fields_[size_t(index)];
}

Field& DataSet::Fields(int index) {
    return const_cast<Field&>(std::as_const(*this).Fields(index));
}

QStringList DataSet::FieldNames() const {
    QStringList names;
    for (const auto& field : fields_) names += field->Name();
    return names;
}

Value DataSet::ValueAt(int row, int field) const {
    requireActive();
    if (row < dropped_ || row >= rowsRead() || field < 0 || field >= FieldCount())
        throw UsageError(QStringLiteral("There is no cell %1, %2").arg(row).arg(field));
    return rows_->value(row - dropped_, field);
}

void DataSet::Edit() {
    requireActive();
    if (mode_ != Mode::Browse) return;
    if (row_ < 0) return Append();
    buffer_.Values.clear();
    for (int i = 0; i < FieldCount(); ++i) buffer_.Values.push_back(rows_->value(row_, i));
    buffer_.Set.assign(size_t(FieldCount()), false);
    mode_ = Mode::Edit;
}

void DataSet::Append() {
    finishEdit();
    buffer_.Values.assign(size_t(FieldCount()), Value());
    buffer_.Set.assign(size_t(FieldCount()), false);
    mode_ = Mode::Append;
}

void DataSet::Post() {
    requireActive();
    if (mode_ == Mode::Browse) throw UsageError(QStringLiteral("Dataset not in edit or insert mode"));
    store(mode_, buffer_);
    const Mode posted = std::exchange(mode_, Mode::Browse);
    if (!keepsRows()) return;
    if (posted == Mode::Append) {
        rows_->appendRow(buffer_.Values);
        moveTo(int(rows_->rowCount()) - 1);
    } else {
        for (int i = 0; i < FieldCount(); ++i) rows_->setValue(row_, i, buffer_.Values[size_t(i)]);
    }
    rowsChanged();
}

void DataSet::Cancel() {
    requireActive();
    mode_ = Mode::Browse;
}

void DataSet::Delete() {
    requireActive();
    if (std::exchange(mode_, Mode::Browse) == Mode::Append) return;
    if (row_ < 0) throw UsageError(QStringLiteral("Cannot delete: the dataset has no rows"));
    rows_->eraseRow(row_);
    moveTo(row_ < int(rows_->rowCount()) ? row_ : int(rows_->rowCount()) - 1);
    rowsChanged();
}

Value DataSet::currentValue(int field) const {
    requireActive();
    if (mode_ != Mode::Browse) return buffer_.Values[size_t(field)];
    return row_ < 0 ? Value() : rows_->value(row_, field);
}

void DataSet::setValue(int field, const Value& value) {
    requireActive();
    if (mode_ == Mode::Browse) throw UsageError(QStringLiteral("Dataset not in edit or insert mode"));
    const Field& target = *fields_[size_t(field)];
    try {
        buffer_.Values[size_t(field)] = convertTo(value, target.Type());
    } catch (const UsageError& e) {
        throw UsageError(QStringLiteral("%1 for field '%2'").arg(e.text(), target.Name()));
    }
    buffer_.Set[size_t(field)] = true;
}

}  // namespace torvik::db

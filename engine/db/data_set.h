// Rows held on the client, with a current row: walking, bookmarks, Locate, fields, and the edit buffer. The base of
// Query, Table and MemTable; a DataSet itself cannot be opened. Not shared between threads.
#pragma once

#include <QHash>
#include <QObject>
#include <memory>
#include <vector>

#include "engine/db/field.h"

namespace torvik::db {

class RowStore;
class LocateIndex;

enum class LocateOption { CaseInsensitive = 1, PartialKey = 2 };
Q_DECLARE_FLAGS(LocateOptions, LocateOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(LocateOptions)

// A place in one data set, good until that data set is closed. Bookmark of an empty set leads nowhere.
struct Bookmark {
    int Row = -1;
};

class DataSet : public QObject {
public:
    ~DataSet() override;

    [[nodiscard]] bool Active() const { return active_; }
    // Drops the rows and fields; closing a closed one does nothing.
    virtual void Close();

    // On an empty set all of these leave Eof and Bof true.
    void First();
    void Next();
    void Prior();
    void Last();
    [[nodiscard]] bool Eof() const;  // Next was called on the last row, or there is none
    [[nodiscard]] bool Bof() const;
    [[nodiscard]] bool IsEmpty() const { return RecordCount() == 0; }
    // The rows held, and those read before; also those still to be read where their number is known.
    [[nodiscard]] int RecordCount() const;
    [[nodiscard]] int RecNo() const;  // of the current row, from 1; 0 when there is none

    [[nodiscard]] Bookmark GetBookmark() const;
    void GotoBookmark(const Bookmark& bookmark);
    static void FreeBookmark(Bookmark& bookmark) { bookmark.Row = -1; }

    // Goes to the first row whose columns (names joined with ";") equal the values, and says whether there is one; if
    // not, the current row stays. Values are compared as the column's type; trailing blanks never count.
    bool Locate(const QString& names, const QList<Value>& values, LocateOptions options = {});
    bool Locate(const QString& name, const Value& value, LocateOptions options = {}) {
        return Locate(name, QList<Value>{value}, options);
    }

    // By name, without regard to case; of several the first. FieldByName raises UsageError "Field 'X' not found",
    // FindField gives nullptr.
    [[nodiscard]] Field& FieldByName(const QString& name);
    [[nodiscard]] const Field& FieldByName(const QString& name) const;
    [[nodiscard]] Field* FindField(const QString& name);
    [[nodiscard]] const Field* FindField(const QString& name) const;
    // The current row's value of a column: a text without blanks around it; a whole number, 0 for null, that raises
    // UsageError naming the column when it is none or needs more than 32 bits.
    [[nodiscard]] QString text(const char* column) const;
    [[nodiscard]] int integer(const char* column) const;
    // Raises UsageError naming the column and the row when it holds no date and time.
    [[nodiscard]] DateTime dateTime(const char* column) const;
    [[nodiscard]] Field& Fields(int index);
    [[nodiscard]] const Field& Fields(int index) const;
    [[nodiscard]] int FieldCount() const { return int(fields_.size()); }
    [[nodiscard]] QStringList FieldNames() const;

    // Any row's value, row from 0, without moving: what a view's model reads.
    [[nodiscard]] Value ValueAt(int row, int field) const;

    // Edit the current row, or a new one; Post stores it, Cancel forgets it. Moving away posts, closing cancels.
    virtual void Edit();
    virtual void Append();
    void Insert() { Append(); }
    void Post();
    void Cancel();
    virtual void Delete();
    enum class Mode { Browse, Edit, Append };
    [[nodiscard]] Mode State() const { return mode_; }

protected:
    explicit DataSet(QObject* parent);
    friend class Field;

    // The row being edited: a value a field, and which of them the caller set.
    struct EditBuffer {
        std::vector<Value> Values;
        std::vector<bool> Set;
    };

    void activate(std::vector<FieldInfo> columns);  // opens with these columns, no rows, before the first row
    void requireActive() const;
    void moveTo(int row);
    [[nodiscard]] int row() const { return row_; }  // the current one among rows(); -1 when there is none
    // Called by Post with the buffer before the rows change: writes it where it belongs and may fill in values.
    virtual void store(Mode mode, EditBuffer& buffer) = 0;
    // Whether Post of an appended row keeps it among the rows (a table object keeps none).
    [[nodiscard]] virtual bool keepsRows() const { return true; }
    // Called when a move needs rows behind the last one held; gives whether there are more. Those held may be dropped
    // (dropRows) first.
    virtual bool readOn() { return false; }
    void dropRows();
    void expectRows(int count) { expected_ = count; }  // so many in all, those to be read counted in; -1: not known
    [[nodiscard]] bool rowsExpected() const { return expected_ >= 0; }

    [[nodiscard]] RowStore& rows() { return *rows_; }
    [[nodiscard]] const RowStore& rows() const { return *rows_; }
    void rowsChanged();  // forgets what Locate knows
    void finishEdit();   // posts when a row is being edited: every move calls it
    EditBuffer buffer_;

private:
    [[nodiscard]] int rowsRead() const;
    [[nodiscard]] Value currentValue(int field) const;
    void setValue(int field, const Value& value);

    std::vector<std::unique_ptr<Field>> fields_;
    mutable QHash<QString, size_t> placeOf_;  // of the spellings asked for so far
    mutable size_t nextAsked_ = 0;            // the field behind the last one asked for
    bool namesDiffer_ = true;
    std::unique_ptr<RowStore> rows_;
    std::unique_ptr<LocateIndex> index_;
    int row_ = -1;
    int dropped_ = 0;  // rows read and no longer held
    int expected_ = -1;
    bool active_ = false;
    bool eof_ = true;
    bool bof_ = true;
    Mode mode_ = Mode::Browse;
};

}  // namespace torvik::db

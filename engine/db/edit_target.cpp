// See edit_target.h.
#include "engine/db/edit_target.h"

#include <QRegularExpression>
#include <algorithm>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/reply.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

struct KeyColumn {
    int index;
    QString name;
};

// What the catalogue says of a table's rows, asked for in one round trip.
struct Keys {
    std::vector<KeyColumn> unique;  // the columns of its unique indexes, primary key first
    QString identity;               // its identity column; empty for none
};

Keys keysOf(Connection& connection, const QString& table, int timeout) {
    const QString text = QStringLiteral(
        "SELECT i.index_id, c.name FROM sys.indexes i"
        " JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id"
        " JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id"
        " WHERE i.object_id = OBJECT_ID(?) AND i.is_unique = 1 AND k.is_included_column = 0"
        " ORDER BY i.is_primary_key DESC, i.index_id, k.key_ordinal "
        "SELECT name FROM sys.columns WHERE object_id = OBJECT_ID(?) AND is_identity = 1");
    Keys keys;
    Reply reply(connection, {text, {{table, {}}, {table, {}}}, timeout});
    const RowStore unique = reply.takeRowSet();
    const RowStore identity = reply.takeRowSet();
    reply.finish();
    for (qsizetype row = 0; row < unique.rowCount(); ++row)
        keys.unique.push_back({int(unique.value(row, 0).toInt()), unique.value(row, 1).toQString()});
    if (identity.rowCount() > 0) keys.identity = identity.value(0, 0).toQString();
    return keys;
}

// Whether more tables than one are read by what stands behind the first one's name.
bool joinsMore(const QString& rest) {
    static const QRegularExpression more(
        QStringLiteral("\\b(?:JOIN|APPLY|UNION|EXCEPT|INTERSECT|PIVOT|UNPIVOT|GROUP\\s+BY)\\b"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression endOfFrom(QStringLiteral("^(?:WHERE|ORDER|OPTION|FOR)\\b"),
                                              QRegularExpression::CaseInsensitiveOption);
    const QString bare = withoutNames(rest);
    if (more.match(bare).hasMatch()) return true;
    int depth = 0;  // a comma among hints parts no tables
    for (qsizetype i = 0; i < bare.size(); ++i) {
        if (bare[i] == u'(') ++depth;
        if (bare[i] == u')') --depth;
        if (depth > 0) continue;
        if (bare[i] == u',') return true;
        const bool startsWord = i == 0 || !bare[i - 1].isLetterOrNumber();
        if (startsWord && endOfFrom.match(QStringView(bare).mid(i)).hasMatch()) return false;
    }
    return false;
}

}  // namespace

QString tableOfSelect(const QString& text) {
    static const QRegularExpression shape(
        QStringLiteral("^\\s*SELECT\\b.*?\\bFROM\\s+((?:(?:\\[[^\\]]+\\]|\"[^\"]+\"|[\\w#$@]*)\\s*\\.\\s*)*"
                       "(?:\\[[^\\]]+\\]|\"[^\"]+\"|[\\w#$@]+))(.*)$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const auto match = shape.match(withoutLiterals(text));
    if (!match.hasMatch() || joinsMore(match.captured(2)))
        throw UsageError(QStringLiteral("The rows cannot be edited: the statement does not select from one table"));
    return match.captured(1).trimmed();
}

EditTarget::EditTarget(Connection& connection, const QString& selectText, const std::vector<FieldInfo>& columns,
                       int timeout)
    : table_(tableOfSelect(selectText)), columns_(columns) {
    const auto place = [&](const QString& name) {
        const auto found = std::ranges::find_if(
            columns_, [&](const FieldInfo& c) { return c.Name.compare(name, Qt::CaseInsensitive) == 0; });
        return found == columns_.end() ? -1 : int(found - columns_.begin());
    };
    const Keys keys = keysOf(connection, table_, timeout);
    const std::vector<KeyColumn>& candidates = keys.unique;
    for (size_t i = 0; i < candidates.size() && !unique_;) {
        const int index = candidates[i].index;
        key_.clear();
        bool all = true;
        for (; i < candidates.size() && candidates[i].index == index; ++i) {
            key_.push_back(place(candidates[i].name));
            all = all && key_.back() >= 0;
        }
        unique_ = all;
    }
    if (!unique_) {
        key_.clear();
        for (size_t i = 0; i < columns_.size(); ++i)
            if (!columns_[i].Long) key_.push_back(int(i));
    }
    const int identity = place(keys.identity);
    if (identity >= 0) columns_[size_t(identity)].Identity = true;
}

QString EditTarget::where(const std::vector<Value>& before, std::vector<Argument>& arguments) const {
    QStringList tests;
    for (const int column : key_) {
        const FieldInfo& info = columns_[size_t(column)];
        const Value& value = before[size_t(column)];
        // A driver sends datetime2, which equals a datetime's 1/300 s only once it has been made one.
        const QString mark = info.Legacy ? QStringLiteral(" = CAST(? AS datetime)") : QStringLiteral(" = ?");
        tests += bracketed(info.Name) + (value.isNull() ? QStringLiteral(" IS NULL") : mark);
        if (!value.isNull()) arguments.push_back({value, info});
    }
    return QStringLiteral(" WHERE ") + tests.join(QStringLiteral(" AND "));
}

// The save point takes the change back when it met several rows, and leaves the caller's transaction as it was.
void EditTarget::changeOne(Connection& connection, const QString& statement, std::vector<Argument> arguments,
                           int timeout) const {
    const QString batch =
        unique_
            ? statement + QStringLiteral(" SELECT @@ROWCOUNT")
            : QStringLiteral("DECLARE @torvik_rows int BEGIN TRANSACTION SAVE TRANSACTION torvik_edit ") + statement +
                  QStringLiteral(
                      " SET @torvik_rows = @@ROWCOUNT IF @torvik_rows > 1 ROLLBACK TRANSACTION torvik_edit"
                      " COMMIT TRANSACTION SELECT @torvik_rows");
    const RowStore answer = lastRows(connection, {batch, std::move(arguments), timeout});
    const qint64 rows = answer.rowCount() == 0 ? 0 : answer.value(0, 0).toInt();
    if (rows == 1) return;
    throw StatementError(
        rows == 0 ? QStringLiteral("The row of table %1 has been changed or deleted by another user").arg(table_)
                  : QStringLiteral("Table %1 has %2 rows that are the same").arg(table_).arg(rows),
        statement);
}

void EditTarget::update(Connection& connection, const std::vector<Value>& before, const std::vector<Value>& after,
                        const std::vector<bool>& set, int timeout) const {
    QStringList assignments;
    std::vector<Argument> arguments;
    for (size_t i = 0; i < columns_.size(); ++i) {
        if (!set[i] || before[i] == after[i]) continue;
        assignments += bracketed(columns_[i].Name) + QStringLiteral(" = ?");
        arguments.push_back({after[i], columns_[i]});
    }
    if (assignments.isEmpty()) return;
    const QString tests = where(before, arguments);
    changeOne(
        connection,
        QStringLiteral("UPDATE ") + table_ + QStringLiteral(" SET ") + assignments.join(QStringLiteral(", ")) + tests,
        std::move(arguments), timeout);
}

void EditTarget::erase(Connection& connection, const std::vector<Value>& before, int timeout) const {
    std::vector<Argument> arguments;
    const QString tests = where(before, arguments);
    changeOne(connection, QStringLiteral("DELETE FROM ") + table_ + tests, std::move(arguments), timeout);
}

void EditTarget::insert(Connection& connection, std::vector<Value>& values, const std::vector<bool>& set,
                        int timeout) const {
    QStringList names;
    QStringList marks;
    std::vector<Argument> arguments;
    for (size_t i = 0; i < columns_.size(); ++i) {
        if (!set[i]) continue;
        names += bracketed(columns_[i].Name);
        marks += QStringLiteral("?");
        arguments.push_back({values[i], columns_[i]});
    }
    QString statement = QStringLiteral("INSERT INTO ") + table_;
    if (names.isEmpty())
        statement += QStringLiteral(" DEFAULT VALUES");
    else
        statement +=
            QStringLiteral(" (%1) VALUES (%2)").arg(names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    const RowStore answer =
        lastRows(connection, {statement + QStringLiteral(" SELECT SCOPE_IDENTITY()"), std::move(arguments), timeout});
    for (size_t i = 0; i < columns_.size(); ++i)
        if (columns_[i].Identity && !set[i] && answer.rowCount() > 0)
            values[i] = convertTo(answer.value(0, 0), columns_[i].Type);
}

}  // namespace torvik::db

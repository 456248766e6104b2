// See table.h.
#include "engine/db/table.h"

#include <algorithm>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

// The server takes 2100 parameters a call and 1000 rows an INSERT; beyond some hundred parameters a longer statement
// costs more to compile than the round trips that it saves.
constexpr int kMaxParameters = 1000;
constexpr int kMaxRows = 1000;
// A block is sent before it holds more than this in texts and bytes.
constexpr qsizetype kBlockBytes = 4 * 1024 * 1024;

qsizetype weight(const Value& value) {
    if (const auto* text = std::get_if<QString>(&value.variant())) return text->size() * 2;
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant())) return bytes->size();
    return 0;
}

bool hasInsertTrigger(Connection& connection, const QString& table) {
    const QString text =
        QStringLiteral("SELECT COUNT(*) FROM sysobjects WHERE xtype = 'TR' AND parent_obj = OBJECT_ID(?)");
    Reply reply(connection, {text, {{table, {}}}, 0});
    RowStore rows(reply.columns());
    while (reply.fetch(rows)) {
    }
    reply.finish();
    return rows.value(0, 0).toInt() > 0;
}

}  // namespace

struct Table::Block {
    std::vector<FieldInfo> columns;  // those that every row of the block sets
    std::vector<bool> set;
    std::vector<std::vector<Value>> rows;
    qsizetype bytes = 0;

    [[nodiscard]] Request insert(const QString& table, size_t first, size_t count, int timeout) const {
        Request request;
        request.Timeout = timeout;
        QStringList names;
        for (const FieldInfo& column : columns) names += bracketed(column.Name);
        const QString row = u'(' + QStringList(qsizetype(columns.size()), QStringLiteral("?")).join(u',') + u')';
        request.Text = QStringLiteral("INSERT INTO ") + table;
        if (columns.empty())
            request.Text += QStringLiteral(" DEFAULT VALUES");
        else
            request.Text += QStringLiteral(" (") + names.join(u',') + QStringLiteral(") VALUES ") +
                            QStringList(qsizetype(count), row).join(u',');
        request.Text += QStringLiteral(" SELECT @@ROWCOUNT");
        for (size_t i = first; i < first + count; ++i)
            for (size_t c = 0; c < columns.size(); ++c) request.Arguments.push_back({rows[i][c], columns[c]});
        return request;
    }
};

Table::Table(Session* session, QObject* parent) : DataSet(parent), session_(session) {}

Table::~Table() {
    try {
        if (Active() && session_ && session_->Connected()) Flush();
    } catch (const std::exception&) {
        // A destructor has nobody to tell: Close is where errors are raised.
    }
    if (session_) session_->remove(this);
}

void Table::SetTableName(const QString& name) {
    if (Active()) throw UsageError(QStringLiteral("TableName cannot be changed while the table is open"));
    name_ = name;
}

void Table::SetConnection(Session* session) {
    if (session == session_) return;
    if (Active()) throw UsageError(QStringLiteral("The connection cannot be changed while the table is open"));
    session_ = session;
}

Session& Table::session() const {
    if (!session_) throw UsageError(QStringLiteral("The table has no connection"));
    return *session_;
}

void Table::Open() {
    if (Active()) return;
    if (name_.isEmpty()) throw UsageError(QStringLiteral("The table has no name"));
    auto& connection = session().use(this);
    Reply reply(connection, {QStringLiteral("SELECT * FROM %1 WHERE 1 = 0").arg(name_), {}, CommandTimeout});
    std::vector<FieldInfo> columns = reply.columns();
    reply.finish();
    rowByRow_ = hasInsertTrigger(connection, name_);
    posted_ = sent_ = 0;
    activate(std::move(columns));
}

void Table::Close() {
    if (!Active()) return;
    if (State() != Mode::Browse) Cancel();
    try {
        Flush();
    } catch (...) {
        DataSet::Close();
        throw;
    }
    DataSet::Close();
}

void Table::Edit() {
    throw UsageError(QStringLiteral("A table object only appends rows"));
}

void Table::Delete() {
    throw UsageError(QStringLiteral("A table object only appends rows"));
}

void Table::store(Mode, EditBuffer& buffer) {
    if (block_ && block_->set != buffer.Set) Flush();
    if (!block_) {
        static_cast<void>(session().use(this));  // what others left unsent goes first
        block_ = std::make_unique<Block>();
        block_->set = buffer.Set;
        for (int i = 0; i < FieldCount(); ++i)
            if (buffer.Set[size_t(i)]) block_->columns.push_back(Fields(i).Info());
        session().add(this);
    }
    std::vector<Value>& row = block_->rows.emplace_back();
    row.reserve(block_->columns.size());
    for (size_t i = 0; i < buffer.Values.size(); ++i) {
        if (!buffer.Set[i]) continue;
        block_->bytes += weight(buffer.Values[i]);
        row.push_back(std::move(buffer.Values[i]));
    }
    ++posted_;
    const int columns = std::max(1, int(block_->columns.size()));
    const int limit = rowByRow_ || block_->columns.empty()
                          ? 1
                          : std::clamp(std::min(Options.BlockRows, kMaxParameters / columns), 1, kMaxRows);
    if (int(block_->rows.size()) >= limit || block_->bytes >= kBlockBytes) Flush();
}

void Table::Discard() {
    block_.reset();
    if (session_) session_->remove(this);
}

void Table::connectionGone() noexcept {
    block_.reset();
}

void Table::Flush() {
    if (block_) sendBlock();
}

// The block leaves this object before it is sent, so that a failure leaves nothing behind to be sent again.
void Table::sendBlock() {
    const std::unique_ptr<Block> block = std::move(block_);
    session().remove(this);
    auto& connection = session().use(this);
    const bool inTransaction = session().InTransaction();
    const auto send = [&](size_t first, size_t count) {
        Reply reply(connection, block->insert(name_, first, count, CommandTimeout));
        qint64 confirmed = 0;
        while (reply.hasRows()) {  // the last one is the count; an INSERT trigger's may come before it
            RowStore rows(reply.columns());
            while (reply.fetch(rows)) {
            }
            confirmed = rows.rowCount() > 0 ? rows.value(0, 0).toInt() : 0;
            reply.nextRowSet();
        }
        sent_ += confirmed;
        session().transactionUnchanged();
    };
    const size_t count = block->rows.size();
    try {
        send(0, count);
    } catch (const TimeoutError&) {
        throw;
    } catch (const StatementError&) {
        // One INSERT of many rows leaves none of them. Where the transaction is gone, so are the rows before the bad
        // one; else they are sent again one by one, up to it.
        if (count == 1 || session().InTransaction() != inTransaction) throw;
        for (size_t row = 0; row < count; ++row) send(row, 1);
    }
}

}  // namespace torvik::db

// See table.h.
#include "engine/db/table.h"

#include <algorithm>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/row_sender.h"
#include "engine/db/table_shapes.h"

namespace torvik::db {

namespace {

// A block is sent before it holds more than this in texts and bytes.
constexpr qsizetype kBlockBytes = 4 * 1024 * 1024;

qsizetype weight(const Value& value) {
    if (const auto* text = std::get_if<QString>(&value.variant())) return text->size() * 2;
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant())) return bytes->size();
    return 0;
}

}  // namespace

struct Table::Block {
    RowBlock rows;
    qsizetype bytes = 0;
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
    shape_ = shapes_ ? shapes_->Of(connection, name_, CommandTimeout)
                     : std::make_shared<TableShape>(tableShape(connection, name_, CommandTimeout));
    sender_.reset();
    posted_ = sentBefore_ = 0;
    activate(shape_->Fields);
}

qint64 Table::SentRows() const {
    return sentBefore_ + (sender_ ? sender_->confirmed() : 0);
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

// Rows with the same columns set make a block, and have the same sender.
void Table::startBlock(const std::vector<bool>& set) {
    auto& connection = session().use(this);  // what others left unsent goes first
    if (!sender_ || set_ != set) {
        std::vector<int> places;
        for (int i = 0; i < FieldCount(); ++i)
            if (set[size_t(i)]) places.push_back(i);
        sentBefore_ = SentRows();
        sender_ = std::make_unique<RowSender>(session(), connection, *shape_, std::move(places), CommandTimeout);
        set_ = set;
    }
    // Asked while nothing waits: the question could find the transaction gone, and its caller then would not roll back
    // the rows that wait.
    if (!Options.FewRoundTrips) static_cast<void>(session().InTransaction());
    block_ = std::make_unique<Block>();
    session().add(this);
}

void Table::store(Mode, EditBuffer& buffer) {
    if (block_ && set_ != buffer.Set) Flush();
    if (!block_) startBlock(buffer.Set);
    for (const int place : sender_->places()) {
        Value& value = buffer.Values[size_t(place)];
        block_->bytes += weight(value);
        block_->rows.Values.push_back(std::move(value));
    }
    ++block_->rows.Rows;
    ++posted_;
    const int limit = std::clamp(Options.BlockRows, 1, sender_->bestBlock());
    if (int(block_->rows.Rows) >= limit || block_->bytes >= kBlockBytes) Flush();
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
    if (Options.FewRoundTrips && sender_->sendAlone(connection, block->rows)) return;
    sender_->send(connection, block->rows);
}

}  // namespace torvik::db

// Tokens of a reply, in order, with their DONEs.
#include "sandbox/server/reply_writer.h"

namespace sandbox::server {
namespace {

constexpr std::size_t kSendFrom = 32768;  // bytes of a message that are worth a system call

}  // namespace

tds::TokenWriter ReplyWriter::tokens() {
    flushDone(true);
    return {message_, version_, serverName_};
}

void ReplyWriter::describe(std::span<const ResultColumn> columns, bool lastIsHidden) {
    if (discarding_) return;
    columns_.clear();
    for (const ResultColumn& c : columns) {
        columns_.push_back(
            {c.name, tds::wireType(c.type, c.nullable, version_), c.nullable, c.identity, c.updatable, false});
    }
    if (lastIsHidden && !columns_.empty()) columns_.back().hidden = true;
    tokens().columns(columns_);
    if (lastIsHidden) tokens().columnOrigins(columns_);
    described_ = true;
}

void ReplyWriter::row(std::span<const Value> cells) {
    if (!discarding_ && interrupted && interrupted()) discarding_ = true;
    if (discarding_) return;
    tds::TokenWriter writer = tokens();
    const std::size_t before = message_.size();
    try {
        writer.row(columns_, cells);
    } catch (...) {
        message_.buffer().resize(before);  // so that the message still ends as a whole
        throw;
    }
    if (message_.size() >= kSendFrom) sendFull();
}

void ReplyWriter::statementDone(std::optional<std::int64_t> count, bool inProcedure) {
    if (!discarding_) {
        tds::DoneToken done;
        done.token = inProcedure ? tds::Token::DoneInProc : tds::Token::Done;
        if (count) {
            done.status = tds::kDoneCount;
            done.count = static_cast<std::uint64_t>(*count);
        }
        // Which of the statements that change rows it was, no client asks.
        done.command = described_ ? tds::kCommandSelect : count ? tds::kCommandInsert : std::uint16_t{0};
        put(done);
    }
    described_ = false;
    if (onStatement && !onStatement()) discarding_ = true;
}

void ReplyWriter::error(const Message& message) {
    ++errors_;
    if (discarding_) return;
    tokens().error(message);
    failed_ = true;
}

void ReplyWriter::info(const Message& message) {
    if (!discarding_) tokens().info(message);
}

void ReplyWriter::databaseChanged(const std::string& from, const std::string& to) {
    if (!discarding_) tokens().databaseChange(to, from);
}

// The descriptors are told even when all else is dropped: a client that has cancelled still has to know its
// transaction.
void ReplyWriter::transactionBegan(std::uint64_t descriptor) {
    tokens().transactionBegan(descriptor);
}

void ReplyWriter::transactionCommitted(std::uint64_t descriptor) {
    tokens().transactionCommitted(descriptor);
}

void ReplyWriter::transactionRolledBack(std::uint64_t descriptor) {
    tokens().transactionRolledBack(descriptor);
}

void ReplyWriter::returnStatus(std::int32_t status) {
    if (!discarding_) tokens().returnStatus(status);
}

void ReplyWriter::outputParameter(int ordinal, const std::string& name, const Typed& value) {
    if (!discarding_) tokens().returnValue(static_cast<std::uint16_t>(ordinal), name, value);
}

void ReplyWriter::procedureDone() {
    if (discarding_) return;
    tds::DoneToken done;
    done.token = tds::Token::DoneProc;
    put(done);
}

void ReplyWriter::finish(bool cutShort) {
    failed_ = failed_ || cutShort;
    // Either nothing ended, or an error came after the last end.
    if (!held_ || failed_) put({});
    flushDone(false);
    channel_.send(packets_.packLast(tds::PacketType::Reply, message_.buffer()));
    drop();
}

void ReplyWriter::acknowledgeAttention() {
    tds::DoneToken end;
    end.status = tds::kDoneAttention;
    held_ = end;
    finish();
}

void ReplyWriter::drop() {
    message_.clear();
    held_.reset();
    described_ = failed_ = discarding_ = false;
}

void ReplyWriter::put(const tds::DoneToken& done) {
    flushDone(true);
    held_ = done;
    if (failed_) held_->status |= tds::kDoneError;
    failed_ = false;
}

void ReplyWriter::flushDone(bool more) {
    if (!held_) return;
    if (more) held_->status |= tds::kDoneMore;
    tds::TokenWriter(message_, version_, serverName_).done(*held_);
    held_.reset();
}

void ReplyWriter::sendFull() {
    const std::vector<std::uint8_t> packed = packets_.packFull(message_.buffer());
    if (!packed.empty()) channel_.send(packed);
}

}  // namespace sandbox::server

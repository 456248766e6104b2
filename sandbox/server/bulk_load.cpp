// Bulk rows into a session.
#include "sandbox/server/bulk_load.h"

#include <algorithm>

#include "sandbox/server/names.h"
#include "sandbox/store/databases/locks.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

// Takes blanks and comments off the front.
void skipBlanks(std::string_view& text) {
    while (!text.empty()) {
        if (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r')) {
            text.remove_prefix(1);
        } else if (text.starts_with("--")) {
            text.remove_prefix(std::min(text.find('\n'), text.size()));
        } else if (text.starts_with("/*")) {
            const std::size_t end = text.find("*/", 2);
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
        } else {
            return;
        }
    }
}

bool takeWord(std::string_view& text, std::string_view word) {
    skipBlanks(text);
    if (text.size() <= word.size() || !sameName(text.substr(0, word.size()), word)) return false;
    const char next = text[word.size()];
    if (next != ' ' && next != '/' && next != '-' && next != '[' && next != '"' && !(next >= '\t' && next <= '\r')) {
        return false;
    }
    text.remove_prefix(word.size());
    return true;
}

// Types whose values have the same form inside the server, and of which the column takes what the client announced.
bool takes(const Type& column, const Type& sent) {
    if (isCharacter(column.id) && isCharacter(sent.id)) return true;
    if (isBinary(column.id) && isBinary(sent.id)) return true;
    if (column.id == TypeId::Decimal && sent.id == TypeId::Decimal) return column.scale == sent.scale;
    return column.id == sent.id;
}

[[noreturn]] void refuse(Message message) {
    throw SqlError(std::move(message).atLine(1), Effect::Batch);
}

}  // namespace

bool BulkLoad::announces(std::string_view batch) {
    return takeWord(batch, "insert") && takeWord(batch, "bulk");
}

bool BulkLoad::begin(std::string_view statement, ReplyWriter& reply) {
    forget();
    try {
        target_ = session_.beginBulk(statement);
        statement_ = statement;
        reply.statementDone(std::nullopt, false);
    } catch (const SqlError& e) {
        tell(e, reply);
    } catch (const StatementCancelled&) {
        return false;
    }
    return true;
}

void BulkLoad::forget() {
    statement_.clear();
    if (!target_) return;
    target_.reset();
    session_.abortBulk();
}

BulkLoad::End BulkLoad::receive(tds::Packet packet, ReplyWriter& reply) {
    if (!target_) throw tds::StreamError("bulk rows that no statement announced");
    tds::BulkReader rows(reply.version(), maxRow_);
    bool failed = false;
    bool cancelled = false;
    ended_ = false;
    while (true) {
        if (packet.type == tds::PacketType::Attention) {
            forget();
            return End::Attention;
        }
        if (packet.type != tds::PacketType::BulkLoad) throw tds::StreamError("a request within another");
        const bool last = packet.last();
        if (last && (packet.status & tds::kIgnoreMessage) != 0) {
            forget();
            return End::Done;
        }
        // What comes after an error is read over: the client sends its message to the end.
        if (!failed && !ended_) {
            rows.feed(packet.body);
            if (last) rows.endOfMessage();
            try {
                store(rows);
                if (last) {
                    const std::int64_t count = session_.endBulk();
                    target_.reset();
                    reply.statementDone(count, false);
                }
            } catch (const SqlError& e) {
                failed = true;
                forget();
                tell(e, reply);
            } catch (const StatementCancelled&) {  // the attention itself is still to come
                failed = cancelled = true;
                forget();
            }
        }
        if (last) return cancelled ? End::Cancelled : End::Done;
        std::optional<tds::Packet> next = inbox_.take();
        if (!next) {
            forget();
            return End::Lost;
        }
        packet = std::move(*next);
    }
}

BulkLoad::End BulkLoad::readOver(tds::Packet packet) {
    forget();
    while (packet.type == tds::PacketType::BulkLoad && !packet.last()) {
        std::optional<tds::Packet> next = inbox_.take();
        if (!next) return End::Lost;
        packet = std::move(*next);
    }
    return packet.type == tds::PacketType::Attention ? End::Attention : End::Done;
}

void BulkLoad::store(tds::BulkReader& rows) {
    while (!ended_) {
        tds::BulkReader::State state{};
        try {
            state = rows.next();
        } catch (const tds::InvalidValue&) {
            refuse(errorMessage<4895>());
        } catch (const tds::UnsupportedType& e) {
            refuse(errorMessage<4816>(": " + std::string(e.what())));
        }
        switch (state) {
            case tds::BulkReader::State::NeedsMore: return;
            case tds::BulkReader::State::Columns: check(rows.columns()); break;
            case tds::BulkReader::State::Row: session_.bulkRow(rows.cells()); break;
            case tds::BulkReader::State::End: ended_ = true; break;
        }
    }
}

void BulkLoad::check(const std::vector<tds::BulkColumn>& columns) const {
    if (columns.size() != target_->columns.size()) {
        refuse(errorMessage<4804>(columns.size(), target_->columns.size()));
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!takes(target_->columns[i].type, columns[i].type.type)) {
            refuse(errorMessage<4816>(" for colid " + std::to_string(i + 1)));
        }
    }
}

void BulkLoad::tell(const SqlError& error, ReplyWriter& reply) {
    for (Message m : error.messages) {
        if (m.line == 0) m.line = 1;
        reply.error(m);
    }
    reply.statementDone(std::nullopt, false);
}

}  // namespace sandbox::server

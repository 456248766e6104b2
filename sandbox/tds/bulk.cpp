// Bulk rows from a client.
#include "sandbox/tds/bulk.h"

#include "sandbox/tds/protocol.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {
namespace {

constexpr std::uint16_t kNoColumns = 0xFFFF;
constexpr std::size_t kMostColumns = 1024;

bool hasTableName(std::uint8_t code) {
    return code == wire::kText || code == wire::kNText || code == wire::kImage;
}

}  // namespace

void BulkReader::feed(ByteSpan bytes) {
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

// A row that is not whole yet is read again from its start when at least twice as much of it has come, so that a long
// one costs no more than twice its length.
BulkReader::State BulkReader::next() {
    if (done_) return State::End;
    const ByteSpan rest = ByteSpan(buffer_).subspan(start_);
    if (!ended_ && rest.size() < enough_) return State::NeedsMore;
    Reader in(rest);
    try {
        const State state = parse(in);
        start_ += in.position();
        enough_ = 0;
        return state;
    } catch (const Truncated&) {
        if (ended_) throw;
        if (rest.size() > maxRow_) throw StreamError("a bulk row is too long");
        enough_ = rest.size() * 2;
        return State::NeedsMore;
    }
}

BulkReader::State BulkReader::parse(Reader& in) {
    if (ended_ && in.atEnd()) return State::End;  // some clients leave the DONE away
    const auto token = static_cast<Token>(in.u8());
    if (token == Token::ColMetadata && !described_) {
        readColumns(in);
        described_ = true;
        return State::Columns;
    }
    if (!described_) throw StreamError("bulk rows without a description");
    // Clients differ in how much of a DONE they send; nothing in it matters.
    if (token == Token::Done) {
        done_ = true;
        return State::End;
    }
    std::vector<Value> cells;
    cells.reserve(columns_.size());
    if (token == Token::Row) {
        for (const BulkColumn& c : columns_) cells.push_back(readValue(in, c.type, Place::Row));
    } else if (token == Token::NbcRow) {
        const ByteSpan nulls = in.take((columns_.size() + 7) / 8);
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const bool null = (nulls[i / 8] >> (i % 8) & 1) != 0;
            cells.push_back(null ? Value{Null{}} : readValue(in, columns_[i].type, Place::Row));
        }
    } else {
        throw StreamError("an unknown token among bulk rows");
    }
    cells_ = std::move(cells);
    return State::Row;
}

void BulkReader::readColumns(Reader& in) {
    const std::uint16_t count = in.u16();
    if (count == kNoColumns || count == 0 || count > kMostColumns) throw StreamError("bulk rows of no columns");
    std::vector<BulkColumn> columns;
    for (std::uint16_t i = 0; i < count; ++i) {
        in.skip(version_ >= Version::V72 ? 4 : 2);  // user type
        in.skip(2);                                 // flags
        BulkColumn c;
        c.type = readTypeInfo(in);
        // In one piece in every version, unlike in a server's own description of columns: so clients send it.
        if (hasTableName(c.type.code)) (void)in.longText();
        c.name = in.shortText();
        columns.push_back(std::move(c));
    }
    columns_ = std::move(columns);
}

}  // namespace sandbox::tds

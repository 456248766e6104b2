// Packet framing.
#include "sandbox/tds/packet.h"

#include <algorithm>

namespace sandbox::tds {
namespace {

bool isClientType(std::uint8_t type) {
    switch (static_cast<PacketType>(type)) {
        case PacketType::SqlBatch:
        case PacketType::Rpc:
        case PacketType::Attention:
        case PacketType::BulkLoad:
        case PacketType::TransactionManager:
        case PacketType::Login7:
        case PacketType::Prelogin: return true;
        default: return false;
    }
}

}  // namespace

void PacketReader::feed(ByteSpan bytes) {
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

std::optional<Packet> PacketReader::next() {
    if (buffer_.size() - start_ < kHeaderSize) return std::nullopt;
    Reader header(ByteSpan(buffer_).subspan(start_, kHeaderSize));
    const std::uint8_t type = header.u8();
    const std::uint8_t status = header.u8();
    const std::size_t length = header.u16be();
    if (!isClientType(type)) throw StreamError("a packet of a type that no client sends");
    if (length < kHeaderSize || length > largest_) throw StreamError("a packet of a wrong length");
    if (buffer_.size() - start_ < length) return std::nullopt;
    Packet packet{static_cast<PacketType>(type), status, {}};
    const auto begin = buffer_.begin() + static_cast<std::ptrdiff_t>(start_);
    packet.body.assign(begin + kHeaderSize, begin + static_cast<std::ptrdiff_t>(length));
    start_ += length;
    return packet;
}

std::size_t PacketReader::missing() const {
    const std::size_t have = buffer_.size() - start_;
    if (have < kHeaderSize) return kHeaderSize - have;
    const auto length = static_cast<std::size_t>(buffer_[start_ + 2] << 8 | buffer_[start_ + 3]);
    return length > have ? length - have : 1;
}

std::vector<std::uint8_t> PacketWriter::packFull(std::vector<std::uint8_t>& message) {
    const std::size_t room = size_ - kHeaderSize;
    std::vector<std::uint8_t> out;
    std::size_t at = 0;
    for (; message.size() - at > room; at += room)
        pack(out, PacketType::Reply, ByteSpan(message).subspan(at, room), false);
    message.erase(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(at));
    return out;
}

std::vector<std::uint8_t> PacketWriter::packLast(PacketType type, std::vector<std::uint8_t>& message) {
    const std::size_t room = size_ - kHeaderSize;
    std::vector<std::uint8_t> out;
    std::size_t at = 0;
    do {
        const std::size_t length = std::min(room, message.size() - at);
        pack(out, type, ByteSpan(message).subspan(at, length), at + length == message.size());
        at += length;
    } while (at < message.size());
    message.clear();
    number_ = 1;
    return out;
}

void PacketWriter::pack(std::vector<std::uint8_t>& out, PacketType type, ByteSpan body, bool last) {
    Writer header;
    header.u8(static_cast<std::uint8_t>(type));
    header.u8(last ? kEndOfMessage : 0);
    header.u16be(static_cast<std::uint16_t>(body.size() + kHeaderSize));
    header.u16be(spid_);
    header.u8(number_++);
    header.u8(0);
    out.insert(out.end(), header.view().begin(), header.view().end());
    out.insert(out.end(), body.begin(), body.end());
}

}  // namespace sandbox::tds

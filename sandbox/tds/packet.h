// Packets ([MS-TDS] 2.2.3.1): a byte stream cut into them on the way in, messages packed into them on the way out.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "sandbox/tds/bytes.h"
#include "sandbox/tds/protocol.h"

namespace sandbox::tds {

struct Packet {
    PacketType type{};
    std::uint8_t status = 0;
    std::vector<std::uint8_t> body;

    [[nodiscard]] bool last() const { return (status & kEndOfMessage) != 0; }
};

// Finds the packets in bytes that come in pieces of any size.
class PacketReader {
public:
    // Longest packet that is taken, its header counted.
    void setLargest(std::size_t bytes) { largest_ = bytes; }
    void feed(ByteSpan bytes);

    // The next whole packet; none until more bytes are fed. Raises StreamError for a length below the header's or
    // above the largest, and for a type that no client sends.
    [[nodiscard]] std::optional<Packet> next();
    // How many bytes the next packet's header, or then its body, still lacks.
    [[nodiscard]] std::size_t missing() const;

private:
    std::vector<std::uint8_t> buffer_;
    std::size_t start_ = 0;
    std::size_t largest_ = kLargestPacket;
};

// Packs the replies of one connection.
class PacketWriter {
public:
    void setSize(std::size_t bytes) { size_ = bytes; }
    void setSpid(std::uint16_t spid) { spid_ = spid; }
    [[nodiscard]] std::size_t size() const { return size_; }

    // Packs as many full packets as the message has so far, takes their bytes off its front, and gives the packets.
    // Something is always left for the end of the message.
    [[nodiscard]] std::vector<std::uint8_t> packFull(std::vector<std::uint8_t>& message);
    // Packs all of the message, ends it, and leaves it empty.
    [[nodiscard]] std::vector<std::uint8_t> packLast(PacketType type, std::vector<std::uint8_t>& message);

private:
    void pack(std::vector<std::uint8_t>& out, PacketType type, ByteSpan body, bool last);

    std::size_t size_ = kDefaultPacket;
    std::uint16_t spid_ = 0;
    std::uint8_t number_ = 1;
};

}  // namespace sandbox::tds

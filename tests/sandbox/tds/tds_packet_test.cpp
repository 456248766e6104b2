// Packets cut from bytes in any pieces, and messages packed into packets of any size.
#include <gtest/gtest.h>

#include "sandbox/tds/packet.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;

Buffer packet(std::uint8_t type, std::uint8_t status, const Buffer& body) {
    Buffer out = {type,
                  status,
                  static_cast<std::uint8_t>((body.size() + 8) >> 8),
                  static_cast<std::uint8_t>(body.size() + 8),
                  0,
                  0,
                  1,
                  0};
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

// The bodies of server packets put together again.
Buffer unpack(const Buffer& packets, std::size_t* count, std::size_t* largest) {
    Buffer body;
    *count = *largest = 0;
    for (std::size_t at = 0; at < packets.size();) {
        const std::size_t length = static_cast<std::size_t>(packets[at + 2] << 8 | packets[at + 3]);
        const bool last = at + length == packets.size();
        EXPECT_EQ(packets[at + 1] & kEndOfMessage, last ? 1 : 0);
        body.insert(body.end(), packets.begin() + static_cast<std::ptrdiff_t>(at + 8),
                    packets.begin() + static_cast<std::ptrdiff_t>(at + length));
        at += length;
        ++*count;
        *largest = std::max(*largest, length);
    }
    return body;
}

TEST(TdsPacket, IsFoundWhateverPiecesItComesIn) {
    Buffer bytes = packet(1, 0, {'a', 'b'});
    const Buffer second = packet(6, 1, {});
    bytes.insert(bytes.end(), second.begin(), second.end());
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
        PacketReader reader;
        std::vector<Packet> found;
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            reader.feed(ByteSpan(bytes).subspan(at, std::min(piece, bytes.size() - at)));
            while (auto p = reader.next()) found.push_back(*p);
        }
        ASSERT_EQ(found.size(), 2U) << piece;
        EXPECT_EQ(found[0].body, (Buffer{'a', 'b'}));
        EXPECT_FALSE(found[0].last());
        EXPECT_EQ(found[1].type, PacketType::Attention);
        EXPECT_TRUE(found[1].last());
    }
}

TEST(TdsPacket, MissingSaysHowMuchToReadAndNoMore) {
    const Buffer bytes = packet(0x12, 1, Buffer(20, 'x'));
    PacketReader reader;
    EXPECT_EQ(reader.missing(), 8U);
    reader.feed(ByteSpan(bytes).first(8));
    EXPECT_EQ(reader.next(), std::nullopt);
    EXPECT_EQ(reader.missing(), 20U);
    reader.feed(ByteSpan(bytes).subspan(8));
    EXPECT_TRUE(reader.next());
}

TEST(TdsPacket, WrongLengthOrTypeIsRefused) {
    struct {
        const char* what;
        Buffer header;
    } cases[] = {
        {"shorter than its header", {1, 1, 0, 7, 0, 0, 1, 0}}, {"longer than the largest", {1, 1, 0x10, 1, 0, 0, 1, 0}},
        {"a server's type", {4, 1, 0, 8, 0, 0, 1, 0}},         {"a TLS record", {0x16, 3, 1, 2, 0, 1, 0, 1}},
        {"text", {'G', 'E', 'T', ' ', '/', ' ', 'H', 'T'}},
    };
    for (const auto& c : cases) {
        PacketReader reader;
        reader.setLargest(4096);
        reader.feed(c.header);
        EXPECT_THROW((void)reader.next(), StreamError) << c.what;
    }
}

TEST(TdsPacket, MessageIsPackedInPacketsOfTheSettledSize) {
    for (const std::size_t size : {512U, 4096U, 32767U}) {
        for (const std::size_t length : {std::size_t{1}, size - 8, size - 7, 3 * (size - 8), std::size_t{100000}}) {
            PacketWriter writer;
            writer.setSize(size);
            Buffer message(length);
            for (std::size_t i = 0; i < length; ++i) message[i] = static_cast<std::uint8_t>(i * 7);
            const Buffer wanted = message;
            Buffer packed = writer.packFull(message);
            EXPECT_FALSE(message.empty());
            const Buffer rest = writer.packLast(PacketType::Reply, message);
            packed.insert(packed.end(), rest.begin(), rest.end());
            std::size_t count = 0, largest = 0;
            EXPECT_EQ(unpack(packed, &count, &largest), wanted);
            EXPECT_EQ(count, (length + size - 9) / (size - 8));
            EXPECT_LE(largest, size);
        }
    }
}

TEST(TdsPacket, EmptyMessageIsOneEmptyPacket) {
    PacketWriter writer;
    Buffer message;
    EXPECT_EQ(writer.packLast(PacketType::Reply, message), (Buffer{4, 1, 0, 8, 0, 0, 1, 0}));
}

}  // namespace
}  // namespace sandbox::tds

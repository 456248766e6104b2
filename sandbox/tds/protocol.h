// The protocol's numbers, as [MS-TDS] 2.2.3.1 (packets), 2.2.4 (tokens) and 2.2.5.4 (types) give them, and the versions
// that a connection may speak.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sandbox::tds {

enum class PacketType : std::uint8_t {
    SqlBatch = 0x01,
    OldLogin = 0x02,
    Rpc = 0x03,
    Reply = 0x04,
    Attention = 0x06,
    BulkLoad = 0x07,
    TransactionManager = 0x0E,
    Login7 = 0x10,
    Sspi = 0x11,
    Prelogin = 0x12,
};

// Bits of a packet's status.
inline constexpr std::uint8_t kEndOfMessage = 0x01;
inline constexpr std::uint8_t kIgnoreMessage = 0x02;
inline constexpr std::uint8_t kResetConnection = 0x08;
inline constexpr std::uint8_t kResetKeepingTransaction = 0x10;

inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::size_t kSmallestPacket = 512;
inline constexpr std::size_t kDefaultPacket = 4096;
inline constexpr std::size_t kLargestPacket = 32767;

enum class Version : std::uint8_t { V71, V72, V73, V74 };

enum class Token : std::uint8_t {
    ReturnStatus = 0x79,
    ColMetadata = 0x81,
    ColInfo = 0xA5,
    Order = 0xA9,
    Error = 0xAA,
    Info = 0xAB,
    ReturnValue = 0xAC,
    LoginAck = 0xAD,
    FeatureExtAck = 0xAE,
    Row = 0xD1,
    NbcRow = 0xD2,
    EnvChange = 0xE3,
    Done = 0xFD,
    DoneProc = 0xFE,
    DoneInProc = 0xFF,
};

// Bits of a DONE token's status, and the commands that it can name.
inline constexpr std::uint16_t kDoneMore = 0x01;
inline constexpr std::uint16_t kDoneError = 0x02;
inline constexpr std::uint16_t kDoneCount = 0x10;
inline constexpr std::uint16_t kDoneAttention = 0x20;
inline constexpr std::uint16_t kCommandSelect = 0xC1;
inline constexpr std::uint16_t kCommandInsert = 0xC3;

// The codes of TYPE_INFO.
namespace wire {
inline constexpr std::uint8_t kNull = 0x1F, kImage = 0x22, kText = 0x23, kGuid = 0x24, kOldVarBinary = 0x25,
                              kIntN = 0x26, kOldVarChar = 0x27, kDateN = 0x28, kTimeN = 0x29, kDateTime2N = 0x2A,
                              kDateTimeOffsetN = 0x2B, kOldBinary = 0x2D, kOldChar = 0x2F, kInt1 = 0x30, kBit = 0x32,
                              kInt2 = 0x34, kOldDecimal = 0x37, kInt4 = 0x38, kDateTime4 = 0x3A, kFloat4 = 0x3B,
                              kMoney = 0x3C, kDateTime = 0x3D, kFloat8 = 0x3E, kOldNumeric = 0x3F, kVariant = 0x62,
                              kNText = 0x63, kBitN = 0x68, kDecimalN = 0x6A, kNumericN = 0x6C, kFloatN = 0x6D,
                              kMoneyN = 0x6E, kDateTimeN = 0x6F, kMoney4 = 0x7A, kInt8 = 0x7F, kVarBinary = 0xA5,
                              kVarChar = 0xA7, kBinary = 0xAD, kChar = 0xAF, kNVarChar = 0xE7, kNChar = 0xEF,
                              kUdt = 0xF0, kXml = 0xF1, kTable = 0xF3;
}

// Danish_Norwegian_CI_AS as [MS-TDS] 2.2.5.1.2 packs it: LCID 0x0406, ignoring case, width and kana; no sort id.
inline constexpr std::array<std::uint8_t, 5> kCollation = {0x06, 0x04, 0xD0, 0x00, 0x00};

}  // namespace sandbox::tds

// LOGIN7 from a client.
#include "sandbox/tds/login.h"

#include "sandbox/tds/text.h"

namespace sandbox::tds {
namespace {

constexpr std::uint8_t kIntegratedBit = 0x80;  // OptionFlags2
constexpr std::uint8_t kOdbcBit = 0x02;
constexpr std::uint8_t kReadOnlyBit = 0x20;   // TypeFlags
constexpr std::uint8_t kExtensionBit = 0x10;  // OptionFlags3
constexpr std::uint8_t kChangePasswordBit = 0x01;
constexpr std::uint8_t kFeatureFedAuth = 0x02;
constexpr std::uint8_t kFeatureEnd = 0xFF;
constexpr std::size_t kLongestName = 128;

Version versionOf(std::uint32_t word) {
    switch (word >> 24) {
        case 0x71: return Version::V71;
        case 0x72: return Version::V72;
        case 0x73: return Version::V73;
        case 0x74: return Version::V74;
        default: throw StreamError("a version of the protocol that is not spoken here");
    }
}

// The bytes of one variable field, whose offset and length stand next in the fixed part.
ByteSpan field(Reader& fixed, ByteSpan message, std::size_t unit) {
    const std::size_t offset = fixed.u16();
    const std::size_t length = fixed.u16() * unit;
    if (length == 0) return {};
    if (offset > message.size() || length > message.size() - offset) throw Truncated();
    return message.subspan(offset, length);
}

std::string name(Reader& fixed, ByteSpan message) {
    const ByteSpan bytes = field(fixed, message, 2);
    if (bytes.size() > kLongestName * 2) throw StreamError("a name of the login is too long");
    return utf8FromUtf16(bytes);
}

std::string password(Reader& fixed, ByteSpan message) {
    const ByteSpan hidden = field(fixed, message, 2);
    if (hidden.size() > kLongestName * 2) throw StreamError("the login's password is too long");
    std::vector<std::uint8_t> plain(hidden.begin(), hidden.end());
    for (std::uint8_t& b : plain) {
        b ^= 0xA5;
        b = static_cast<std::uint8_t>(b << 4 | b >> 4);
    }
    return utf8FromUtf16(plain);
}

// The extension field points to the place of the features' offset; each feature is its id, its length and its data.
bool asksForFedAuth(ByteSpan extension, ByteSpan message) {
    Reader pointer(extension);
    const std::size_t offset = pointer.u32();
    if (offset > message.size()) throw Truncated();
    Reader features(message.subspan(offset));
    bool found = false;
    while (true) {
        const std::uint8_t id = features.u8();
        if (id == kFeatureEnd) return found;
        found = found || id == kFeatureFedAuth;
        features.skip(features.u32());
    }
}

}  // namespace

Login readLogin(ByteSpan message) {
    Reader fixed(message);
    if (fixed.u32() != message.size()) throw StreamError("a login's length is not its packets'");
    Login out;
    out.versionWord = fixed.u32();
    out.version = versionOf(out.versionWord);
    out.packetSize = fixed.u32();
    fixed.skip(4 + 4 + 4 + 1);  // the client's version, process and connection; OptionFlags1
    const std::uint8_t flags = fixed.u8();
    out.integrated = (flags & kIntegratedBit) != 0;
    out.odbc = (flags & kOdbcBit) != 0;
    out.readOnlyIntent = (fixed.u8() & kReadOnlyBit) != 0;
    const std::uint8_t options = fixed.u8();
    const bool extended = (options & kExtensionBit) != 0;
    out.changesPassword = (options & kChangePasswordBit) != 0;
    fixed.skip(4 + 4);  // time zone, LCID
    out.host = name(fixed, message);
    out.user = name(fixed, message);
    out.password = password(fixed, message);
    out.program = name(fixed, message);
    out.server = name(fixed, message);
    const ByteSpan extension = field(fixed, message, 1);
    out.library = name(fixed, message);
    out.language = name(fixed, message);
    out.database = name(fixed, message);
    if (extended && !extension.empty()) out.fedAuth = asksForFedAuth(extension, message);
    return out;
}

std::uint32_t acknowledgedVersion(Version version) {
    switch (version) {
        case Version::V71: return 0x71000001;
        case Version::V72: return 0x72090002;
        case Version::V73: return 0x730B0003;
        default: return 0x74000004;
    }
}

}  // namespace sandbox::tds

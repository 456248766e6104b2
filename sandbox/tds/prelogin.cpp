// PRELOGIN both ways.
#include "sandbox/tds/prelogin.h"

#include <array>

#include "sandbox/tds/tokens.h"

namespace sandbox::tds {
namespace {

enum Option : std::uint8_t {
    kVersion = 0,
    kEncryption = 1,
    kInstance = 2,
    kThread = 3,
    kMars = 4,
    kFedAuth = 6,
    kEnd = 0xFF,
};

}  // namespace

Prelogin readPrelogin(ByteSpan message) {
    Prelogin out;
    Reader in(message);
    while (true) {
        const std::uint8_t option = in.u8();
        if (option == kEnd) return out;
        const std::size_t offset = in.u16be();
        const std::size_t length = in.u16be();
        if (offset > message.size() || length > message.size() - offset) throw Truncated();
        if (option == kEncryption) {
            if (length != 1) throw StreamError("the encryption option has one byte");
            // The high bit offers a client certificate, which nothing here asks for.
            const std::uint8_t wanted = message[offset] & 0x7F;
            if (wanted > static_cast<std::uint8_t>(Encryption::Required)) throw StreamError("an unknown encryption");
            out.encryption = static_cast<Encryption>(wanted);
        } else if (option == kFedAuth) {
            out.fedAuth = true;
        }
    }
}

std::vector<std::uint8_t> writePrelogin(Encryption encryption, bool fedAuth) {
    struct Entry {
        std::uint8_t option;
        std::vector<std::uint8_t> data;
    };
    std::vector<Entry> entries = {
        {kVersion, {kServerVersion[0], kServerVersion[1], kServerVersion[2], kServerVersion[3], 0, 0}},
        {kEncryption, {static_cast<std::uint8_t>(encryption)}},
        {kInstance, {0}},
        {kThread, {}},
        {kMars, {0}},
    };
    if (fedAuth) entries.push_back({kFedAuth, {0}});
    Writer head;
    Writer data;
    const std::size_t headSize = entries.size() * 5 + 1;
    for (const Entry& e : entries) {
        head.u8(e.option);
        head.u16be(static_cast<std::uint16_t>(headSize + data.size()));
        head.u16be(static_cast<std::uint16_t>(e.data.size()));
        data.bytes(e.data);
    }
    head.u8(kEnd);
    head.bytes(data.view());
    return head.buffer();
}

}  // namespace sandbox::tds

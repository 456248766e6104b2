// The decoders of what clients send.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "sandbox/tds/bulk.h"
#include "sandbox/tds/login.h"
#include "sandbox/tds/packet.h"
#include "sandbox/tds/prelogin.h"
#include "sandbox/tds/requests.h"
#include "sandbox/tds/type_info.h"
#include "sandbox/tds/values.h"
#include "tests/fuzz/targets/targets.h"

namespace sandbox::fuzz {

namespace {

// Runs a decoder; a refusal is what it owes to most inputs.
template <typename Decode>
void refusing(Decode&& decode) {
    try {
        decode();
    } catch (const tds::StreamError&) {
    } catch (const tds::RefusedParameter&) {
    } catch (const tds::UnsupportedType&) {
    } catch (const tds::InvalidValue&) {
    }
}

void readBulk(Bytes input, tds::Version version) {
    tds::BulkReader rows(version, 1U << 20);
    constexpr std::size_t kPiece = 61;
    while (true) {
        const std::size_t piece = std::min(kPiece, input.size());
        rows.feed(input.first(piece));
        input = input.subspan(piece);
        if (input.empty()) rows.endOfMessage();
        while (true) {
            const tds::BulkReader::State state = rows.next();
            if (state == tds::BulkReader::State::End) return;
            if (state == tds::BulkReader::State::NeedsMore) break;
        }
    }
}

}  // namespace

// Cut into pieces of a size that the first byte tells; the packets must be those of the whole stream.
void packets(Bytes input) {
    if (input.empty()) return;
    const std::size_t piece = input[0] + 1U;
    const Bytes stream = input.subspan(1);
    const auto cut = [&](std::size_t size) {
        tds::PacketReader reader;
        reader.setLargest(tds::kDefaultPacket);
        std::vector<std::uint8_t> found;
        bool refused = false;
        try {
            for (std::size_t at = 0; at < stream.size(); at += size) {
                reader.feed(stream.subspan(at, std::min(size, stream.size() - at)));
                while (const auto packet = reader.next()) {
                    found.push_back(static_cast<std::uint8_t>(packet->type));
                    found.push_back(packet->status);
                    found.insert(found.end(), packet->body.begin(), packet->body.end());
                }
                if (reader.missing() == 0) std::abort();
            }
        } catch (const tds::StreamError&) {
            refused = true;
        }
        return std::pair(found, refused);
    };
    if (cut(piece) != cut(std::max<std::size_t>(stream.size(), 1))) std::abort();
}

void login(Bytes input) {
    refusing([&] { (void)tds::readPrelogin(input); });
    refusing([&] { (void)tds::readLogin(input); });
}

void requests(Bytes input) {
    if (input.empty()) return;
    const auto version = static_cast<tds::Version>(input[0] % 4);
    const Bytes message = input.subspan(1);
    switch (input[0] / 4 % 4) {
        case 0: return refusing([&] { (void)tds::readBatch(message, version); });
        case 1: return refusing([&] { (void)tds::readCalls(message, version); });
        case 2: return refusing([&] { (void)tds::readTransaction(message); });
        default: return refusing([&] { readBulk(message, version); });
    }
}

}  // namespace sandbox::fuzz

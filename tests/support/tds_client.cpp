// The bare client.
#include "tests/support/tds_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <stdexcept>

#include "sandbox/tds/prelogin.h"
#include "sandbox/tds/text.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {
namespace {

Version versionOfWord(std::uint32_t word) {
    switch (word >> 24) {
        case 0x71: return Version::V71;
        case 0x72: return Version::V72;
        case 0x73: return Version::V73;
        default: return Version::V74;
    }
}

std::string integerText(Decimal v) {
    const bool negative = v.unscaled < 0;
    std::string digits;
    for (auto rest = negative ? -v.unscaled : v.unscaled; rest != 0 || digits.size() <= v.scale; rest /= 10) {
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    }
    if (v.scale > 0) digits.insert(digits.size() - v.scale, ".");
    return (negative ? "-" : "") + digits;
}

class TokenReader {
public:
    TokenReader(ByteSpan message, Version version) : in_(message), version_(version) {}

    std::vector<std::string> all() {
        std::vector<std::string> lines;
        while (!in_.atEnd()) lines.push_back(next());
        return lines;
    }

private:
    std::string next() {
        const auto token = static_cast<Token>(in_.u8());
        switch (token) {
            case Token::ColMetadata: return columns();
            case Token::ColInfo: return columnOrigins();
            case Token::Row: return row();
            case Token::Done: return "done" + done();
            case Token::DoneProc: return "doneproc" + done();
            case Token::DoneInProc: return "doneinproc" + done();
            case Token::Error: return "error " + message();
            case Token::Info: return "info " + message();
            case Token::EnvChange: return environment();
            case Token::LoginAck: return loginAck();
            case Token::ReturnStatus: return "return " + std::to_string(in_.i32());
            case Token::ReturnValue: return output();
            default: throw std::runtime_error("unknown token " + std::to_string(static_cast<int>(token)));
        }
    }

    std::string columnOrigins() {
        constexpr std::uint8_t kHidden = 0x10;
        std::string line = "colinfo";
        for (std::size_t left = in_.u16(); left > 0; left -= 3) {
            line += " " + std::to_string(in_.u8());
            in_.skip(1);
            if ((in_.u8() & kHidden) != 0) line += " hidden";
        }
        return line;
    }

    std::string columns() {
        columns_.clear();
        std::string line = "cols ";
        const int count = in_.u16();
        for (int i = 0; i < count; ++i) {
            in_.skip(version_ >= Version::V72 ? 4 : 2);
            const std::uint16_t flags = in_.u16();
            columns_.push_back(readTypeInfo(in_));
            const std::uint8_t code = columns_.back().code;
            if (code == wire::kText || code == wire::kNText || code == wire::kImage) {
                const int parts = version_ >= Version::V72 ? in_.u8() : 1;
                for (int p = 0; p < parts; ++p) (void)in_.longText();
            }
            line += (i > 0 ? ", " : "") + in_.shortText() + " " + typeDeclaration(columns_.back().type) +
                    ((flags & 1) != 0 ? "" : " not null") + ((flags & 0x2000) != 0 ? " hidden" : "");
        }
        return line;
    }

    std::string row() {
        std::string line = "row ";
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const Value value = readValue(in_, columns_[i], Place::Row);
            line += (i > 0 ? "|" : "") + showValue(value, columns_[i].type);
        }
        return line;
    }

    std::string done() {
        const std::uint16_t status = in_.u16();
        in_.skip(2);
        const std::uint64_t count = in_.number(version_ >= Version::V72 ? 8 : 4);
        std::string out;
        if ((status & kDoneCount) != 0) out += " " + std::to_string(count);
        if ((status & kDoneMore) != 0) out += " more";
        if ((status & kDoneError) != 0) out += " error";
        if ((status & kDoneAttention) != 0) out += " attention";
        return out;
    }

    std::string message() {
        const std::size_t length = in_.u16();
        const std::size_t end = in_.position() + length;
        const std::int32_t number = in_.i32();
        const int state = in_.u8();
        const int severity = in_.u8();
        const std::string text = in_.longText();
        (void)in_.shortText();
        const std::string procedure = in_.shortText();
        const std::uint64_t line = in_.number(version_ >= Version::V72 ? 4 : 2);
        if (in_.position() != end) throw std::runtime_error("a message token's length is wrong");
        return std::to_string(number) + " " + std::to_string(severity) + " " + std::to_string(state) + " " +
               std::to_string(line) + (procedure.empty() ? "" : " " + procedure) + " " + text;
    }

    std::string environment() {
        Reader part(in_.take(in_.u16()));
        const int kind = part.u8();
        std::string line = "env " + std::to_string(kind);
        if (kind == 7 || kind >= 8) {
            for (int i = 0; i < 2; ++i) {
                const std::uint8_t length = part.u8();
                line += " ";
                for (const std::uint8_t b : part.take(length)) {
                    std::array<char, 4> hex{};
                    std::snprintf(hex.data(), hex.size(), "%02X", b);
                    line += hex.data();
                }
            }
        } else {
            const std::string now = part.shortText();
            line += " '" + now + "' '" + part.shortText() + "'";
        }
        if (!part.atEnd()) throw std::runtime_error("an environment token's length is wrong");
        return line;
    }

    std::string loginAck() {
        Reader part(in_.take(in_.u16()));
        part.skip(1);
        std::uint32_t version = part.u16be();
        version = version << 16 | part.u16be();
        std::array<char, 12> hex{};
        std::snprintf(hex.data(), hex.size(), "%08X", version);
        return std::string("loginack ") + hex.data() + " " + part.shortText();
    }

    std::string output() {
        const int ordinal = in_.u16();
        const std::string name = in_.shortText();
        in_.skip(1 + (version_ >= Version::V72 ? 4 : 2) + 2);
        const WireType type = readTypeInfo(in_);
        return "output " + std::to_string(ordinal) + " " + name + " " + typeDeclaration(type.type) + " " +
               showValue(readValue(in_, type, Place::Parameter), type.type);
    }

    Reader in_;
    Version version_;
    std::vector<WireType> columns_;
};

}  // namespace

std::vector<std::uint8_t> loginMessage(const LoginFields& f) {
    const bool v71 = versionOfWord(f.version) < Version::V72;
    const std::size_t fixedSize = v71 ? 86 : 94;
    Writer fixed, data;
    fixed.u32(0);
    fixed.u32(f.version);
    fixed.u32(f.packetSize);
    fixed.fill(0, 12);
    fixed.u8(0xE0);
    fixed.u8(static_cast<std::uint8_t>(0x03 | (f.integrated ? 0x80 : 0)));
    fixed.u8(0);
    fixed.u8(static_cast<std::uint8_t>((f.features.empty() ? 0 : 0x10) | (f.changesPassword ? 0x01 : 0)));
    fixed.fill(0, 8);
    const auto place = [&](std::size_t length) {
        fixed.u16(static_cast<std::uint16_t>(fixedSize + data.size()));
        fixed.u16(static_cast<std::uint16_t>(length));
    };
    const auto text = [&](const std::string& value, bool hidden) {
        std::vector<std::uint8_t> bytes;
        appendUtf16(bytes, value);
        if (hidden) {
            for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>((b << 4 | b >> 4) ^ 0xA5);
        }
        place(bytes.size() / 2);
        data.bytes(bytes);
    };
    text(f.host, false);
    text(f.user, false);
    text(f.password, true);
    text(f.program, false);
    text(f.server, false);
    const std::size_t extensionAt = data.size();
    place(f.features.empty() ? 0 : 4);
    if (!f.features.empty()) data.u32(0);
    text(f.library, false);
    text(f.language, false);
    text(f.database, false);
    fixed.fill(0, 6);
    place(0);
    place(0);
    if (!v71) {
        place(0);
        fixed.u32(0);
    }
    if (!f.features.empty()) {
        data.patch(extensionAt, fixedSize + data.size(), 4);
        data.bytes(f.features);
    }
    fixed.bytes(data.view());
    fixed.patch(0, fixed.size(), 4);
    return fixed.buffer();
}

void appendHeaders(Writer& out, std::uint64_t transaction) {
    out.u32(22);
    out.u32(18);
    out.u16(2);
    out.u64(transaction);
    out.u32(1);
}

std::vector<std::uint8_t> callMessage(std::uint16_t procedure, const std::vector<RawParameter>& parameters,
                                      Version version) {
    Writer out;
    if (version >= Version::V72) appendHeaders(out);
    out.u16(0xFFFF);
    out.u16(procedure);
    out.u16(0);
    for (const RawParameter& p : parameters) {
        out.shortText(p.name);
        out.u8(p.output ? 1 : 0);
        const WireType type = wireType(p.type, true, version);
        writeTypeInfo(out, type);
        writeValue(out, type, p.value, Place::Parameter);
    }
    return out.buffer();
}

std::vector<std::string> showTokens(ByteSpan message, Version version) {
    return TokenReader(message, version).all();
}

std::string showValue(const Value& value, const Type& type) {
    if (isNull(value)) return "NULL";
    if (const auto* v = std::get_if<std::int64_t>(&value)) return std::to_string(*v);
    if (const auto* v = std::get_if<double>(&value)) {
        std::array<char, 40> text{};
        std::snprintf(text.data(), text.size(), type.id == TypeId::Real ? "%.7g" : "%.15g", *v);
        return text.data();
    }
    if (const auto* v = std::get_if<Decimal>(&value)) return integerText(*v);
    if (const auto* v = std::get_if<std::string>(&value)) return "'" + *v + "'";
    std::string hex = "0x";
    const auto append = [&](std::uint8_t b) {
        std::array<char, 4> two{};
        std::snprintf(two.data(), two.size(), "%02X", b);
        hex += two.data();
    };
    if (const auto* v = std::get_if<Bytes>(&value)) {
        for (const std::uint8_t b : *v) append(b);
    } else {
        for (const std::uint8_t b : std::get<Guid>(value)) append(b);
    }
    return hex;
}

TdsClient::TdsClient(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("cannot connect");
    }
    const int one = 1;
    ::setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    socket_.setReceiveTimeout(std::chrono::seconds(30));
}

std::vector<std::string> TdsClient::login(const LoginFields& fields) {
    version_ = versionOfWord(fields.version);
    send(PacketType::Prelogin, writePrelogin(Encryption::NotSupported, false));
    if (!receive()) return {"closed"};
    send(PacketType::Login7, loginMessage(fields));
    return reply();
}

void TdsClient::sendBytes(ByteSpan bytes) {
    (void)socket_.send(bytes);
}

void TdsClient::send(PacketType type, ByteSpan message, std::size_t packetSize, std::uint8_t lastStatus) {
    do {
        const std::size_t length = std::min(message.size(), packetSize - kHeaderSize);
        Writer packet;
        packet.u8(static_cast<std::uint8_t>(type));
        packet.u8(length == message.size() ? lastStatus : 0);
        packet.u16be(static_cast<std::uint16_t>(length + kHeaderSize));
        packet.fill(0, 4);
        packet.bytes(message.first(length));
        sendBytes(packet.view());
        message = message.subspan(length);
    } while (!message.empty());
}

void TdsClient::sendBatch(const std::string& text) {
    Writer out;
    if (version_ >= Version::V72) appendHeaders(out);
    out.text(text);
    send(PacketType::SqlBatch, out.view());
}

std::optional<std::vector<std::uint8_t>> TdsClient::receive() {
    std::vector<std::uint8_t> message;
    while (true) {
        std::array<std::uint8_t, kHeaderSize> header{};
        if (!readExactly(header)) return std::nullopt;
        const std::size_t length = static_cast<std::size_t>(header[2] << 8 | header[3]);
        largest_ = std::max(largest_, length);
        std::vector<std::uint8_t> body(length - kHeaderSize);
        if (!readExactly(body)) return std::nullopt;
        message.insert(message.end(), body.begin(), body.end());
        if ((header[1] & kEndOfMessage) != 0) return message;
    }
}

std::vector<std::string> TdsClient::reply() {
    const auto message = receive();
    if (!message) return {"closed"};
    return showTokens(*message, version_);
}

std::vector<std::string> TdsClient::batch(const std::string& text) {
    sendBatch(text);
    return reply();
}

std::vector<std::string> TdsClient::call(std::uint16_t procedure, const std::vector<RawParameter>& parameters) {
    send(PacketType::Rpc, callMessage(procedure, parameters, version_));
    return reply();
}

bool TdsClient::closes(std::chrono::milliseconds within) {
    const auto end = std::chrono::steady_clock::now() + within;
    std::array<std::uint8_t, 4096> rest{};
    while (std::chrono::steady_clock::now() < end) {
        if (!socket_.readable(std::chrono::milliseconds(100))) continue;
        if (socket_.receive(rest) == 0) return true;
    }
    return false;
}

bool TdsClient::readExactly(std::span<std::uint8_t> into) {
    while (!into.empty()) {
        const std::size_t count = socket_.receive(into);
        if (count == 0) return false;
        into = into.subspan(count);
    }
    return true;
}

}  // namespace sandbox::tds

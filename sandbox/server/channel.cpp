// Receiving and sending, plain or through TLS.
#include "sandbox/server/channel.h"

#include <array>

namespace sandbox::server {

std::vector<std::uint8_t> Channel::receive(std::size_t most) {
    if (!tls_) {
        std::vector<std::uint8_t> bytes(most);
        bytes.resize(socket_.receive(bytes));
        return bytes;
    }
    // Record by record, so that nothing behind the login is swallowed where encryption ends with it.
    constexpr std::size_t kRecordHeader = 5;
    constexpr std::size_t kLongestRecord = 16384 + 2048;
    while (true) {
        std::vector<std::uint8_t> record(kRecordHeader);
        if (!receiveExactly(record)) return {};
        const std::size_t length = static_cast<std::size_t>(record[3] << 8 | record[4]);
        if (length > kLongestRecord) return {};
        record.resize(kRecordHeader + length);
        if (!receiveExactly(std::span(record).subspan(kRecordHeader))) return {};
        constexpr std::uint8_t kAlert = 21;
        const bool ends = record[0] == kAlert;
        try {
            std::vector<std::uint8_t> plain = tls_->decrypt(record);
            if (ends || !plain.empty()) return plain;
        } catch (const TlsError&) {
            return {};  // a broken stream is a lost connection
        }
    }
}

bool Channel::send(tds::ByteSpan bytes) {
    if (cut_) return false;
    std::vector<std::uint8_t> encrypted;
    if (tls_) {
        try {
            encrypted = tls_->encrypt(bytes);
        } catch (const TlsError&) {
            cut();
            return false;
        }
        bytes = encrypted;
    }
    if (const auto allowed = faults_.sending(bytes.size(), program_)) {
        (void)socket_.send(bytes.first(*allowed));
        cut();
        return false;
    }
    if (socket_.send(bytes)) return true;
    cut();
    return false;
}

void Channel::cut() {
    cut_ = true;
    socket_.shutdown();
}

// Closing with unread bytes in the socket would reset the connection, and the peer might lose the message.
void Channel::closeGently() {
    if (cut_) return;
    socket_.shutdownSending();
    socket_.setReceiveTimeout(std::chrono::seconds(1));
    std::array<std::uint8_t, 4096> rest{};
    for (int i = 0; i < 64 && socket_.receive(rest) > 0;) ++i;
    cut();
}

bool Channel::receiveExactly(std::span<std::uint8_t> into) const {
    while (!into.empty()) {
        const std::size_t count = socket_.receive(into);
        if (count == 0) return false;
        into = into.subspan(count);
    }
    return true;
}

}  // namespace sandbox::server

// Little-endian reading and writing, within bounds.
#include "sandbox/tds/bytes.h"

#include <algorithm>
#include <bit>

#include "sandbox/tds/text.h"

namespace sandbox::tds {

std::uint64_t Reader::number(std::size_t bytes) {
    std::uint64_t value = 0;
    const ByteSpan from = take(bytes);
    for (std::size_t i = bytes; i-- > 0;) value = value << 8 | from[i];
    return value;
}

ByteSpan Reader::take(std::size_t bytes) {
    if (bytes > left()) throw Truncated();
    const ByteSpan out = data_.subspan(position_, bytes);
    position_ += bytes;
    return out;
}

std::uint16_t Reader::u16be() {
    const ByteSpan from = take(2);
    return static_cast<std::uint16_t>(from[0] << 8 | from[1]);
}

float Reader::f32() {
    return std::bit_cast<float>(u32());
}

double Reader::f64() {
    return std::bit_cast<double>(u64());
}

std::string Reader::text(std::size_t characters) {
    if (characters > left() / 2) throw Truncated();
    return utf8FromUtf16(take(characters * 2));
}

std::uint8_t Reader::peek() const {
    if (atEnd()) throw Truncated();
    return data_[position_];
}

void Writer::number(std::uint64_t v, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i, v >>= 8) data_.push_back(static_cast<std::uint8_t>(v));
}

void Writer::u16be(std::uint16_t v) {
    data_.push_back(static_cast<std::uint8_t>(v >> 8));
    data_.push_back(static_cast<std::uint8_t>(v));
}

void Writer::f32(float v) {
    u32(std::bit_cast<std::uint32_t>(v));
}

void Writer::f64(double v) {
    u64(std::bit_cast<std::uint64_t>(v));
}

void Writer::text(std::string_view utf8) {
    appendUtf16(data_, utf8);
}

void Writer::shortText(std::string_view utf8) {
    const std::size_t at = size();
    u8(0);
    text(utf8);
    const std::size_t characters = std::min<std::size_t>((size() - at - 1) / 2, 0xFF);
    data_.resize(at + 1 + characters * 2);
    patch(at, characters, 1);
}

void Writer::longText(std::string_view utf8) {
    const std::size_t at = size();
    u16(0);
    text(utf8);
    // A token's own length has two bytes as well and counts this text, so the text keeps well below that.
    const std::size_t characters = std::min<std::size_t>((size() - at - 2) / 2, 0x7000);
    data_.resize(at + 2 + characters * 2);
    patch(at, characters, 2);
}

void Writer::patchLength16(std::size_t at) {
    patch(at, size() - at - 2, 2);
}

void Writer::patch(std::size_t at, std::uint64_t v, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i, v >>= 8) data_[at + i] = static_cast<std::uint8_t>(v);
}

}  // namespace sandbox::tds

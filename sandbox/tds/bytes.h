// The primitives of the wire: a bounded reader and a growing writer of little-endian values. Every decoder of this box
// stands on Reader, so that no byte sequence can make one read past its message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox::tds {

using ByteSpan = std::span<const std::uint8_t>;

// What the peer sent is no valid stream. The connection that it came from cannot go on.
class StreamError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The stream ends within a value; more bytes may complete it.
class Truncated : public StreamError {
public:
    Truncated() : StreamError("the stream ends within a value") {}
};

// Reads a span that must outlive it. Each call raises Truncated, and moves nothing, when too few bytes are left.
class Reader {
public:
    explicit Reader(ByteSpan data) : data_(data) {}

    [[nodiscard]] std::uint8_t u8() { return take(1)[0]; }
    [[nodiscard]] std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    [[nodiscard]] std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    [[nodiscard]] std::uint64_t u64() { return number(8); }
    [[nodiscard]] std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    [[nodiscard]] std::uint16_t u16be();
    [[nodiscard]] float f32();
    [[nodiscard]] double f64();

    // An unsigned number of 1 to 8 bytes.
    [[nodiscard]] std::uint64_t number(std::size_t bytes);
    [[nodiscard]] ByteSpan take(std::size_t bytes);
    void skip(std::size_t bytes) { (void)take(bytes); }

    // UTF-16 text as UTF-8: by its count of characters, and with that count in front as one byte or two.
    [[nodiscard]] std::string text(std::size_t characters);
    [[nodiscard]] std::string shortText() { return text(u8()); }
    [[nodiscard]] std::string longText() { return text(u16()); }

    [[nodiscard]] std::uint8_t peek() const;
    [[nodiscard]] bool atEnd() const { return position_ == data_.size(); }
    [[nodiscard]] std::size_t left() const { return data_.size() - position_; }
    [[nodiscard]] std::size_t position() const { return position_; }

private:
    ByteSpan data_;
    std::size_t position_ = 0;
};

class Writer {
public:
    void u8(std::uint8_t v) { data_.push_back(v); }
    void u16(std::uint16_t v) { number(v, 2); }
    void u32(std::uint32_t v) { number(v, 4); }
    void u64(std::uint64_t v) { number(v, 8); }
    void i32(std::int32_t v) { number(static_cast<std::uint32_t>(v), 4); }
    void u16be(std::uint16_t v);
    void f32(float v);
    void f64(double v);

    // The lowest bytes of a number, 1 to 8 of them.
    void number(std::uint64_t v, std::size_t bytes);
    void bytes(ByteSpan v) { data_.insert(data_.end(), v.begin(), v.end()); }
    void fill(std::uint8_t v, std::size_t count) { data_.insert(data_.end(), count, v); }

    // UTF-8 text as UTF-16: bare, and with its count of characters in front as one byte or two. Text too long for its
    // count is cut.
    void text(std::string_view utf8);
    void shortText(std::string_view utf8);
    void longText(std::string_view utf8);

    // Puts the count of bytes written after `at` + 2 into the two bytes at `at`.
    void patchLength16(std::size_t at);
    void patch(std::size_t at, std::uint64_t v, std::size_t bytes);

    [[nodiscard]] std::size_t size() const { return data_.size(); }
    [[nodiscard]] ByteSpan view() const { return data_; }
    [[nodiscard]] std::vector<std::uint8_t>& buffer() { return data_; }
    void clear() { data_.clear(); }

private:
    std::vector<std::uint8_t> data_;
};

}  // namespace sandbox::tds

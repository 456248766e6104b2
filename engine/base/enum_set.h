// A set of the values of a small enumeration, kept as bits: the form of TTasks, TOppgjorStatus and their like.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace torvik {

template <typename E>
class EnumSet {
public:
    constexpr EnumSet() = default;
    constexpr EnumSet(std::initializer_list<E> values) {
        for (E value : values) insert(value);
    }

    [[nodiscard]] constexpr bool contains(E value) const { return (_bits & bit(value)) != 0; }
    [[nodiscard]] constexpr bool empty() const { return _bits == 0; }
    constexpr void insert(E value) { _bits |= bit(value); }
    constexpr void remove(E value) { _bits &= ~bit(value); }
    constexpr bool operator==(const EnumSet&) const = default;

private:
    static constexpr std::uint32_t bit(E value) { return std::uint32_t{1} << static_cast<unsigned>(value); }

    std::uint32_t _bits = 0;
};

}  // namespace torvik

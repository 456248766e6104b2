// RAISERROR's formatting follows C's printf for the conversions that it knows; a missing argument is "(null)".
#include "sandbox/tsql/run/interpreter_raiserror.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace {

constexpr std::size_t kMostCharacters = 2047;

struct Conversion {
    bool left = false, plus = false, zero = false, alternate = false, blank = false;
    int width = 0;
    int precision = -1;
    char type = 0;
};

class Arguments {
public:
    explicit Arguments(std::span<const Typed> all) : all_(all) {}

    const Typed* next() { return at_ < all_.size() ? &all_[at_++] : nullptr; }
    [[nodiscard]] std::size_t place() const { return at_; }

private:
    std::span<const Typed> all_;
    std::size_t at_ = 0;
};

[[noreturn]] void raiseMismatch(std::size_t place) {
    throw SqlError(errorMessage<2786>(place));
}

int takeStar(Arguments& arguments) {
    const Typed* a = arguments.next();
    const auto* n = a ? std::get_if<std::int64_t>(&a->value) : nullptr;
    if (!n) raiseMismatch(arguments.place());
    return static_cast<int>(*n);
}

int takeNumber(std::string_view text, std::size_t& at) {
    int n = 0;
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) n = n * 10 + (text[at++] - '0');
    return n;
}

Conversion takeConversion(std::string_view text, std::size_t& at, Arguments& arguments) {
    const std::size_t start = at++;
    Conversion s;
    for (; at < text.size(); ++at) {
        if (text[at] == '-')
            s.left = true;
        else if (text[at] == '+')
            s.plus = true;
        else if (text[at] == '0')
            s.zero = true;
        else if (text[at] == '#')
            s.alternate = true;
        else if (text[at] == ' ')
            s.blank = true;
        else
            break;
    }
    if (at < text.size() && text[at] == '*') {
        s.width = takeStar(arguments);
        ++at;
    } else {
        s.width = takeNumber(text, at);
    }
    if (at < text.size() && text[at] == '.') {
        ++at;
        if (at < text.size() && text[at] == '*') {
            s.precision = takeStar(arguments);
            ++at;
        } else {
            s.precision = takeNumber(text, at);
        }
    }
    while (at < text.size() && (text[at] == 'h' || text[at] == 'l')) ++at;
    if (text.substr(at, 3) == "I64") at += 3;
    if (at == text.size() || std::string_view("diuoxXs").find(text[at]) == std::string_view::npos) {
        throw SqlError(errorMessage<2787>(text.substr(start)));
    }
    s.type = text[at++];
    return s;
}

std::string padded(std::string text, const Conversion& s, bool zeros) {
    const auto characters = static_cast<int>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
    if (characters >= s.width) return text;
    const auto missing = static_cast<std::size_t>(s.width - characters);
    if (s.left) return text + std::string(missing, ' ');
    if (!zeros) return std::string(missing, ' ') + text;
    const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    return text.insert(sign, missing, '0');
}

std::string withBase(std::uint64_t n, unsigned base, bool upper) {
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string out;
    do {
        out.insert(out.begin(), digits[n % base]);
        n /= base;
    } while (n);
    return out;
}

std::string formatNumber(std::int64_t value, bool wide, const Conversion& s) {
    std::string digits;
    std::string sign;
    if (s.type == 'd' || s.type == 'i') {
        const bool negative = value < 0;
        digits =
            withBase(negative ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value), 10, false);
        sign = negative ? "-" : s.plus ? "+" : s.blank ? " " : "";
    } else {
        const auto bits = wide ? static_cast<std::uint64_t>(value) : static_cast<std::uint32_t>(value);
        digits = withBase(bits, s.type == 'u' ? 10 : s.type == 'o' ? 8 : 16, s.type == 'X');
        if (s.alternate && bits != 0 && s.type == 'o') digits = "0" + digits;
        if (s.alternate && bits != 0 && (s.type == 'x' || s.type == 'X')) sign = s.type == 'x' ? "0x" : "0X";
    }
    if (s.precision > static_cast<int>(digits.size())) {
        digits.insert(0, static_cast<std::size_t>(s.precision) - digits.size(), '0');
    }
    return padded(sign + digits, s, s.zero && s.precision < 0);
}

std::string firstCharacters(const std::string& text, int most) {
    std::size_t at = 0;
    for (int n = 0; at < text.size(); ++at) {
        if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80 && n++ == most) break;
    }
    return text.substr(0, at);
}

std::string formatOne(const Conversion& s, Arguments& arguments) {
    const Typed* a = arguments.next();
    if (!a || isNull(a->value)) return padded("(null)", s, false);
    if (s.type == 's') {
        const auto* text = std::get_if<std::string>(&a->value);
        if (!text) raiseMismatch(arguments.place());
        return padded(s.precision >= 0 ? firstCharacters(*text, s.precision) : *text, s, false);
    }
    const auto* number = std::get_if<std::int64_t>(&a->value);
    if (!number || !isInteger(a->type.id)) raiseMismatch(arguments.place());
    return formatNumber(*number, a->type.id == TypeId::BigInt, s);
}

}  // namespace

std::string formatRaiserror(std::string_view format, std::span<const Typed> all) {
    constexpr std::size_t kMostArguments = 20;
    if (all.size() > kMostArguments) throw SqlError(errorMessage<2747>());
    Arguments arguments(all);
    std::string out;
    for (std::size_t at = 0; at < format.size();) {
        if (format[at] != '%') {
            out += format[at++];
        } else if (at + 1 < format.size() && format[at + 1] == '%') {
            out += '%';
            at += 2;
        } else {
            const Conversion s = takeConversion(format, at, arguments);
            out += formatOne(s, arguments);
        }
    }
    std::string shortened = firstCharacters(out, kMostCharacters);
    if (shortened.size() < out.size()) shortened = firstCharacters(out, kMostCharacters - 3) + "...";
    return shortened;
}

}  // namespace sandbox

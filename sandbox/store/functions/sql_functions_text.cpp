// Functions on text: cutting, joining, writing. Places and lengths are UTF-16 units; binary values count bytes.
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/convert_text.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/text.h"

namespace sandbox::functions {
namespace {

constexpr std::int64_t kMostUnits = 8000;

// The part of a text that begins at unit `from` and is `count` units long.
std::string_view units(std::string_view text, std::int64_t from, std::int64_t count) {
    const std::string_view head = leftUnits(text, static_cast<std::size_t>(from));
    return leftUnits(text.substr(head.size()), static_cast<std::size_t>(count));
}

void length(Call& call) {
    const Type type = call.type(1);
    if (isBinary(type.id)) {
        call.integer64(sqlite3_value_bytes(call.raw(0)));
    } else {
        call.integer64(static_cast<std::int64_t>(utf16Length(trimTrailingBlanks(call.text(0)))));
    }
}

void dataLength(Call& call) {
    const Type type = call.type(1);
    if (isCharacter(type.id)) {
        const auto count = static_cast<std::int64_t>(utf16Length(call.text(0)));
        call.integer64(isUnicode(type.id) ? 2 * count : count);
        return;
    }
    if (isBinary(type.id)) return call.integer64(sqlite3_value_bytes(call.raw(0)));
    switch (type.id) {
        case TypeId::UniqueIdentifier: return call.integer64(16);
        case TypeId::SmallMoney:
        case TypeId::Real:
        case TypeId::SmallDateTime: return call.integer64(4);
        case TypeId::Date: return call.integer64(3);
        case TypeId::Time: return call.integer64(type.scale <= 2 ? 3 : type.scale <= 4 ? 4 : 5);
        case TypeId::DateTime2: return call.integer64(type.scale <= 2 ? 6 : type.scale <= 4 ? 7 : 8);
        case TypeId::Decimal:
            return call.integer64(type.precision <= 9 ? 5 : type.precision <= 19 ? 9 : type.precision <= 28 ? 13 : 17);
        default: break;
    }
    call.integer64(isInteger(type.id) ? static_cast<std::int64_t>(conversion::integerWidth(type.id)) : 8);
}

void substring(Call& call) {
    std::int64_t from = call.integer(1) - 1, count = call.integer(2);
    if (count < 0) throw SqlError(errorMessage<537, 3>());
    if (from < 0) {  // what lies before the text counts as well
        count = std::max<std::int64_t>(0, count + from);
        from = 0;
    }
    if (!call.isBlob(0)) return call.string(units(call.text(0), from, count));
    const Bytes bytes = call.bytes(0);
    const auto begin = std::min<std::size_t>(static_cast<std::size_t>(from), bytes.size());
    const auto end = begin + std::min<std::size_t>(static_cast<std::size_t>(count), bytes.size() - begin);
    call.blob(
        Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.begin() + static_cast<std::ptrdiff_t>(end)));
}

void left(Call& call) {
    if (call.integer(1) < 0) throw SqlError(errorMessage<537, 2>());
    call.string(leftUnits(call.text(0), static_cast<std::size_t>(call.integer(1))));
}

void right(Call& call) {
    if (call.integer(1) < 0) throw SqlError(errorMessage<536>());
    const std::string_view text = call.text(0);
    const auto all = static_cast<std::int64_t>(utf16Length(text));
    const std::int64_t from = std::max<std::int64_t>(0, all - call.integer(1));
    call.string(units(text, from, all));
}

void leftTrim(Call& call) {
    const std::string_view text = call.text(0);
    const auto first = text.find_first_not_of(' ');
    call.string(first == std::string_view::npos ? std::string_view{} : text.substr(first));
}
void rightTrim(Call& call) {
    call.string(trimTrailingBlanks(call.text(0)));
}
void trim(Call& call) {
    call.string(trimBlanks(call.text(0)));
}
void upper(Call& call) {
    call.string(upperCase(call.text(0)));
}
void lower(Call& call) {
    call.string(lowerCase(call.text(0)));
}

void replicate(Call& call) {
    const std::string_view text = call.text(0);
    const std::int64_t times = call.integer(1);
    const Type type = call.type(2);
    if (times < 0) return call.null();
    const auto width = static_cast<std::int64_t>(utf16Length(text));
    const std::int64_t most = type.length == Type::kMax ? (1LL << 30)
                              : isUnicode(type.id)      ? kMostUnits / 2
                                                        : kMostUnits;
    if (width == 0) return call.string("");
    const std::int64_t whole = std::min(times, most / width + 1);
    std::string out;
    out.reserve(static_cast<std::size_t>(whole) * text.size());
    for (std::int64_t i = 0; i < whole; ++i) out += text;
    call.string(times * width > most ? leftUnits(out, static_cast<std::size_t>(most)) : std::string_view(out));
}

void space(Call& call) {
    const std::int64_t n = call.integer(0);
    if (n < 0) return call.null();
    call.string(std::string(static_cast<std::size_t>(std::min(n, kMostUnits)), ' '));
}

void reverse(Call& call) {
    std::u16string text = toUtf16(call.text(0));
    std::reverse(text.begin(), text.end());
    // A pair that stands for one character keeps its order.
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] >= 0xDC00 && text[i] < 0xE000 && text[i + 1] >= 0xD800 && text[i + 1] < 0xDC00)
            std::swap(text[i], text[i + 1]);
    }
    call.string(toUtf8(text));
}

void stuff(Call& call) {
    const std::string_view text = call.text(0);
    const std::int64_t from = call.integer(1), count = call.integer(2);
    const auto all = static_cast<std::int64_t>(utf16Length(text));
    if (call.isNull(1) || call.isNull(2) || from < 1 || from > all || count < 0) return call.null();
    std::string out(leftUnits(text, static_cast<std::size_t>(from - 1)));
    if (!call.isNull(3)) out += call.text(3);
    out += units(text, std::min(all, from - 1 + count), all);
    call.string(out);
}

void ascii(Call& call) {
    const std::string_view text = call.text(0);
    if (text.empty()) return call.null();
    call.integer64(toCodePage1252(leftUnits(text, 1)).front());
}

void unicode(Call& call) {
    const std::u16string text = toUtf16(leftUnits(call.text(0), 2));
    if (text.empty()) return call.null();
    call.integer64(text[0]);
}

void character(Call& call) {
    const std::int64_t n = call.integer(0);
    if (n < 0 || n > 255) return call.null();
    const auto byte = static_cast<std::uint8_t>(n);
    call.string(fromCodePage1252(std::span(&byte, 1)));
}

void wideCharacter(Call& call) {
    const std::int64_t n = call.integer(0);
    if (n < 0 || n > 0xFFFF) return call.null();
    const auto unit = static_cast<char16_t>(n);
    call.string(toUtf8({&unit, 1}));
}

// STR(number, length 10, decimals 0): right-aligned, stars where the whole digits do not fit.
void numberText(Call& call) {
    const std::int64_t width = call.count() > 1 ? call.integer(1) : 10;
    const std::int64_t decimals = call.count() > 2 ? std::min<std::int64_t>(call.integer(2), 16) : 0;
    if (width < 0 || width > kMostUnits || decimals < 0) return call.null();
    std::array<char, 512> text{};
    const auto write = [&](std::int64_t places) {
        const double rounded = std::round(call.real(0) * std::pow(10.0, static_cast<double>(places)));
        const bool exact = std::fabs(rounded) < 1e15;
        const double value = exact ? rounded / std::pow(10.0, static_cast<double>(places)) : call.real(0);
        std::snprintf(text.data(), text.size(), "%.*f", static_cast<int>(places), value);
        return std::string(text.data());
    };
    std::string out = write(decimals);
    for (std::int64_t places = decimals; static_cast<std::int64_t>(out.size()) > width && places > 0;)
        out = write(--places);
    if (static_cast<std::int64_t>(out.size()) > width) out.assign(static_cast<std::size_t>(width), '*');
    call.string(std::string(static_cast<std::size_t>(width) - out.size(), ' ') + out);
}

// CONCAT(values..., their types...): NULL is an empty text.
void concat(Call& call) {
    const int values = call.count() / 2;
    const Type text{.id = TypeId::NVarChar, .length = Type::kMax};
    std::string out;
    for (int i = 0; i < values; ++i) {
        if (call.isNull(i)) continue;
        const Type type = call.type(values + i);
        out += conversion::textOf(call.value(i, type), type, text, call.session().convert, 0);
    }
    call.string(out);
}

void concatWithSeparator(Call& call) {
    const int values = call.count() / 2;
    const Type text{.id = TypeId::NVarChar, .length = Type::kMax};
    std::string out;
    bool first = true;
    for (int i = 1; i < values; ++i) {
        if (call.isNull(i)) continue;
        if (!first && !call.isNull(0)) out += call.text(0);
        first = false;
        const Type type = call.type(values + i);
        out += conversion::textOf(call.value(i, type), type, text, call.session().convert, 0);
    }
    call.string(out);
}

void quoteName(Call& call) {
    const std::string_view text = call.text(0);
    const std::string_view quote = call.count() > 1 ? call.text(1) : "[";
    constexpr std::array<std::string_view, 6> kPairs = {"[]", "''", "\"\"", "()", "<>", "{}"};
    const auto pair = std::find_if(kPairs.begin(), kPairs.end(), [&](std::string_view p) {
        return !quote.empty() && (p[0] == quote[0] || p[1] == quote[0]);
    });
    if (pair == kPairs.end() || utf16Length(text) > 128) return call.null();
    std::string out(1, (*pair)[0]);
    for (const char c : text) {
        out += c;
        if (c == (*pair)[1]) out += c;
    }
    call.string(out + (*pair)[1]);
}

// CHOOSE(place, values...)
void choose(Call& call) {
    if (call.isNull(0) || call.integer(0) < 1 || call.integer(0) >= call.count()) return call.null();
    call.same(static_cast<int>(call.integer(0)));
}

std::string soundexOf(std::string_view text) {
    constexpr std::string_view kCodes = "01230120022455012623010202";  // a to z
    std::string out;
    char last = '0';
    for (const char raw : text) {
        const char c = static_cast<char>(raw >= 'a' && raw <= 'z' ? raw - 32 : raw);
        if (c < 'A' || c > 'Z') {
            if (out.empty()) return "0000";
            break;
        }
        const char digit = kCodes[static_cast<std::size_t>(c - 'A')];
        if (out.empty()) {
            out += c;
        } else if (digit != '0' && digit != last) {
            out += digit;
        }
        if (c != 'H' && c != 'W') last = digit;
        if (out.size() == 4) break;
    }
    out.resize(4, '0');
    return out;
}

// Of the value's bytes as its type stores them; NULL for an algorithm that there is not.
void hashBytes(Call& call) {
    const struct {
        std::string_view name;
        const EVP_MD* digest;
    } algorithms[] = {{"MD5", EVP_md5()},
                      {"SHA", EVP_sha1()},
                      {"SHA1", EVP_sha1()},
                      {"SHA2_256", EVP_sha256()},
                      {"SHA2_512", EVP_sha512()}};
    const Type type = call.type(2);
    Bytes data;
    if (isBinary(type.id)) {
        data = call.bytes(1);
    } else if (isUnicode(type.id)) {
        for (const char16_t unit : toUtf16(call.text(1))) {
            data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
            data.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
    } else {
        data = toCodePage1252(call.text(1));
    }
    for (const auto& algorithm : algorithms) {
        if (!sameName(algorithm.name, trimBlanks(call.text(0)))) continue;
        Bytes hash(EVP_MAX_MD_SIZE);
        unsigned int size = 0;
        EVP_Digest(data.data(), data.size(), hash.data(), &size, algorithm.digest, nullptr);
        hash.resize(size);
        return call.blob(hash);
    }
    call.null();
}

void soundex(Call& call) {
    call.string(soundexOf(trimBlanks(call.text(0))));
}

void difference(Call& call) {
    const std::string a = soundexOf(trimBlanks(call.text(0))), b = soundexOf(trimBlanks(call.text(1)));
    std::int64_t same = 0;
    for (std::size_t i = 0; i < 4; ++i) same += a[i] == b[i] ? 1 : 0;
    call.integer64(same);
}

constexpr Registration kText[] = {
    {"t_len", 2, strict<length>},
    {"t_datalength", 2, strict<dataLength>},
    {"t_substring", 3, strict<substring>},
    {"t_left", 2, strict<left>},
    {"t_right", 2, strict<right>},
    {"t_ltrim", 1, strict<leftTrim>},
    {"t_rtrim", 1, strict<rightTrim>},
    {"t_trim", 1, strict<trim>},
    {"t_upper", 1, strict<upper>},
    {"t_lower", 1, strict<lower>},
    {"t_replicate", 3, strict<replicate>},
    {"t_space", 1, strict<space>},
    {"t_reverse", 1, strict<reverse>},
    {"t_stuff", 4, always<stuff>},
    {"t_ascii", 1, strict<ascii>},
    {"t_unicode", 1, strict<unicode>},
    {"t_char", 1, strict<character>},
    {"t_nchar", 1, strict<wideCharacter>},
    {"t_str", -1, strict<numberText>},
    {"t_concat_all", -1, always<concat>},
    {"t_concat_ws", -1, always<concatWithSeparator>},
    {"t_quotename", -1, strict<quoteName>},
    {"t_choose", -1, always<choose>},
    {"t_hashbytes", 3, strict<hashBytes>},
    {"t_soundex", 1, strict<soundex>},
    {"t_difference", 2, strict<difference>},
};

}  // namespace

std::span<const Registration> textFunctions() {
    return kText;
}

}  // namespace sandbox::functions

// Collations on ICU, with a shorter way for plain ASCII that gives ICU's order.
#include "sandbox/store/values/collation.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

constexpr int kCaseSensitive = 1;
constexpr int kAccentInsensitive = 2;
constexpr int kBinary = 4;
constexpr int kFlags = 8;

// Danish_Norwegian sorts æ, ø, å and aa last. ICU's Norwegian rules tell aa from å as Windows does; its Danish rules
// would take them for equal.
struct Locale {
    std::string_view name;  // how T-SQL's names begin
    std::string_view icu;
    std::string_view sqlite;
    bool doubleA;  // "aa" is a letter of its own
};
constexpr std::array<Locale, 3> kLocales = {{
    {"danish_norwegian", "nb", "da", true},
    {"latin1_general", "root", "latin1", false},
    {"sql_latin1_general", "root", "sql1", false},
}};

// A collator with the ranks that it gives to the printable ASCII characters.
class Order {
public:
    Order(const Locale& locale, int flags) : doubleA_(locale.doubleA), caseSensitive_((flags & kCaseSensitive) != 0) {
        if (flags & kBinary) return;
        UErrorCode status = U_ZERO_ERROR;
        collator_ = ucol_open(std::string(locale.icu).c_str(), &status);
        if (U_FAILURE(status)) throw std::runtime_error("ICU has no collation rules for " + std::string(locale.icu));
        const bool accents = (flags & kAccentInsensitive) == 0;
        ucol_setStrength(collator_, !accents ? UCOL_PRIMARY : caseSensitive_ ? UCOL_TERTIARY : UCOL_SECONDARY);
        if (!accents && caseSensitive_) ucol_setAttribute(collator_, UCOL_CASE_LEVEL, UCOL_ON, &status);
        rankAscii();
    }
    ~Order() {
        if (collator_) ucol_close(collator_);
    }
    Order(const Order&) = delete;
    Order& operator=(const Order&) = delete;

    int compare(std::string_view a, std::string_view b) const {
        a = trimTrailingBlanks(a);
        b = trimTrailingBlanks(b);
        if (!collator_) return a.compare(b);
        if (const auto quick = compareAscii(a, b)) return *quick;
        UErrorCode status = U_ZERO_ERROR;
        return ucol_strcollUTF8(collator_, a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                                static_cast<std::int32_t>(b.size()), &status);
    }

private:
    // ICU's own answer for each character decides; case is below the rank, so upper and lower case get the same one.
    void rankAscii() {
        std::vector<char> printable(0x7F - 0x20);
        std::iota(printable.begin(), printable.end(), ' ');
        const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        const auto icu = [&](char a, char b) {
            UErrorCode status = U_ZERO_ERROR;
            return ucol_strcollUTF8(collator_, &a, 1, &b, 1, &status);
        };
        std::sort(printable.begin(), printable.end(), [&](char a, char b) { return icu(folded(a), folded(b)) < 0; });
        std::uint8_t rank = 1;
        for (std::size_t i = 0; i < printable.size(); ++i) {
            if (i > 0 && icu(folded(printable[i - 1]), folded(printable[i])) != 0) ++rank;
            ranks_[static_cast<unsigned char>(printable[i])] = rank;
        }
    }

    bool inDoubleA(std::string_view text, std::size_t i) const {
        const auto isA = [&](std::size_t at) { return at < text.size() && (text[at] | 0x20) == 'a'; };
        return isA(i) && (isA(i + 1) || (i > 0 && isA(i - 1)));
    }

    // Empty where only ICU can tell: other characters than printable ASCII, or "aa" at the place that decides.
    std::optional<int> compareAscii(std::string_view a, std::string_view b) const {
        const std::size_t both = std::min(a.size(), b.size());
        int caseOrder = 0;
        for (std::size_t i = 0; i < both; ++i) {
            const auto x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[i]);
            const std::uint8_t rankX = ranks_[x], rankY = ranks_[y];
            if (rankX == 0 || rankY == 0) return std::nullopt;
            if (x == y) continue;
            if (doubleA_ && (inDoubleA(a, i) || inDoubleA(b, i))) return std::nullopt;
            if (rankX != rankY) {
                if (!restIsPlain(a, i) || !restIsPlain(b, i)) return std::nullopt;
                return rankX < rankY ? -1 : 1;
            }
            if (caseOrder == 0) caseOrder = x > y ? -1 : 1;  // lower case comes first
        }
        if (!restIsPlain(a, both) || !restIsPlain(b, both)) return std::nullopt;
        if (doubleA_ && both > 0 && (inDoubleA(a, both - 1) || inDoubleA(b, both - 1))) {
            if (a.size() != b.size()) return std::nullopt;
        }
        if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
        return caseSensitive_ ? caseOrder : 0;
    }

    // A combining mark behind the deciding place may belong to its character.
    bool restIsPlain(std::string_view text, std::size_t from) const {
        return from + 1 > text.size() ||
               (ranks_[static_cast<unsigned char>(text[from])] != 0 &&
                (from + 1 == text.size() || ranks_[static_cast<unsigned char>(text[from + 1])] != 0));
    }

    UCollator* collator_ = nullptr;
    bool doubleA_;
    bool caseSensitive_;
    std::array<std::uint8_t, 256> ranks_{};  // 0: not printable ASCII
};

// The usable combinations of flags: CI_AS, CS_AS, CI_AI, CS_AI, BIN.
constexpr std::array<int, 5> kKinds = {0, kCaseSensitive, kAccentInsensitive, kCaseSensitive | kAccentInsensitive,
                                       kBinary};

// Made once; collators are only read afterwards, which ICU allows from any thread.
const Order& order(int code) {
    static const auto* all = [] {
        auto* table = new std::array<std::array<Order*, kFlags>, kLocales.size()>{};
        for (std::size_t l = 0; l < kLocales.size(); ++l) {
            for (const int kind : kKinds) (*table)[l][static_cast<std::size_t>(kind)] = new Order(kLocales[l], kind);
        }
        return table;
    }();
    return *(*all)[static_cast<std::size_t>(code / kFlags)][static_cast<std::size_t>(code % kFlags)];
}

[[noreturn]] void raiseInvalid(std::string_view name) {
    throw SqlError(errorMessage<448>(name));
}

std::string sqliteName(int code) {
    const int flags = code % kFlags;
    std::string name = "t_" + std::string(kLocales[static_cast<std::size_t>(code / kFlags)].sqlite);
    if (flags & kBinary) return name + "_bin";
    name += flags & kCaseSensitive ? "_cs" : "_ci";
    return name + (flags & kAccentInsensitive ? "_ai" : "_as");
}

int compareForSqlite(void* data, int lengthA, const void* a, int lengthB, const void* b) {
    return static_cast<const Order*>(data)->compare({static_cast<const char*>(a), static_cast<std::size_t>(lengthA)},
                                                    {static_cast<const char*>(b), static_cast<std::size_t>(lengthB)});
}

// The base letter of a letter with a mark: "e" for "é". Letters that Unicode does not take apart (ø) stay.
char16_t withoutAccent(char16_t unit) {
    if (unit < 0x80) return unit;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfd = unorm2_getNFDInstance(&status);
    UChar parts[8];
    const std::int32_t length = U_SUCCESS(status) ? unorm2_getDecomposition(nfd, unit, parts, 8, &status) : -1;
    return U_SUCCESS(status) && length > 1 ? parts[0] : unit;
}

}  // namespace

std::string columnCollation(std::string_view name) {
    if (name.empty() || sameName(name, "database_default")) return {};
    (void)collationCode(name);
    return std::string(name);
}

int collationCode(std::string_view name) {
    std::string folded = foldName(name);
    if (folded.empty() || folded == "database_default") folded = foldName(kDefaultCollation);
    for (std::size_t l = 0; l < kLocales.size(); ++l) {
        if (!folded.starts_with(kLocales[l].name) || folded.size() <= kLocales[l].name.size()) continue;
        // The rest: version or code page, then the sensitivities, each after an underscore.
        int flags = 0;
        bool sensitivity = false, valid = true;
        for (std::size_t at = kLocales[l].name.size(); at < folded.size() && valid;) {
            const std::size_t end = std::min(folded.find('_', at + 1), folded.size());
            const std::string_view word = std::string_view(folded).substr(at, end - at);
            at = end;
            if (word == "_bin" || word == "_bin2")
                flags = kBinary, sensitivity = true;
            else if (word == "_ci" || word == "_cs")
                flags |= word == "_cs" ? kCaseSensitive : 0, sensitivity = true;
            else if (word == "_as" || word == "_ai")
                flags |= word == "_ai" ? kAccentInsensitive : 0;
            else
                valid = word == "_cp1" || word == "_90" || word == "_100" || word == "_ks" || word == "_ws" ||
                        word == "_sc";
        }
        if (valid && sensitivity) return static_cast<int>(l) * kFlags + flags;
    }
    raiseInvalid(name);
}

std::string sqliteCollation(std::string_view name) {
    return sqliteName(collationCode(name));
}

void registerCollations(sqlite3* database) {
    for (int l = 0; l < static_cast<int>(kLocales.size()); ++l) {
        for (const int kind : kKinds) {
            const int code = l * kFlags + kind;
            auto* data = const_cast<Order*>(&order(code));
            sqlite3_create_collation_v2(database, sqliteName(code).c_str(), SQLITE_UTF8, data, compareForSqlite,
                                        nullptr);
        }
    }
}

int compare(int collation, std::string_view a, std::string_view b) {
    return order(collation).compare(a, b);
}

bool isCaseSensitive(int collation) {
    return (collation & (kCaseSensitive | kBinary)) != 0;
}
bool isAccentSensitive(int collation) {
    return (collation & kAccentInsensitive) == 0;
}

char16_t foldUnit(int collation, char16_t unit) {
    if (!isAccentSensitive(collation)) unit = withoutAccent(unit);
    if (isCaseSensitive(collation)) return unit;
    if (unit < 0x80) return unit >= 'A' && unit <= 'Z' ? static_cast<char16_t>(unit + 32) : unit;
    return static_cast<char16_t>(u_foldCase(unit, U_FOLD_CASE_DEFAULT));
}

std::string foldName(std::string_view name) {
    return lowerCase(name);
}

bool sameName(std::string_view a, std::string_view b) {
    if (isAscii(a) && isAscii(b)) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
            const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
            return lower(x) == lower(y);
        });
    }
    return foldName(a) == foldName(b);
}

}  // namespace sandbox

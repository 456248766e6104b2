// Searching in text under a collation: LIKE, PATINDEX, CHARINDEX, REPLACE.
#include <algorithm>
#include <memory>
#include <vector>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/text.h"

namespace sandbox::functions {
namespace {

constexpr std::int64_t kMostUnits = 8000;

// A pattern of LIKE, taken apart.
class Pattern {
public:
    Pattern(std::string_view text, std::optional<char16_t> escape, int collation) : collation_(collation) {
        const std::u16string p = toUtf16(text);
        for (std::size_t i = 0; i < p.size(); ++i) {
            if (escape && p[i] == *escape && i + 1 < p.size()) {
                addLiteral(p[++i]);
            } else if (p[i] == u'%') {
                if (steps_.empty() || steps_.back().kind != Kind::AnyText)
                    steps_.push_back({Kind::AnyText, 0, false, {}});
            } else if (p[i] == u'_') {
                steps_.push_back({Kind::AnyUnit, 0, false, {}});
            } else if (p[i] == u'[') {
                i = addSet(p, i + 1, escape);
            } else {
                addLiteral(p[i]);
            }
        }
    }

    // Whether the text from `begin` on matches whole. trailingBlanks: those beyond the pattern are left out of account.
    bool matches(std::u16string_view text, std::size_t begin, bool ignoreTrailingBlanks) const {
        std::size_t at = begin, step = 0;
        std::size_t starStep = steps_.size(), starAt = 0;
        const bool haveSteps = !steps_.empty();
        for (;;) {
            if (step < steps_.size() && steps_[step].kind == Kind::AnyText) {
                starStep = step++;
                starAt = at;
                if (step == steps_.size()) return true;
                continue;
            }
            if (step == steps_.size()) {
                if (at == text.size() || (ignoreTrailingBlanks && onlyBlanks(text, at))) return true;
            } else if (at < text.size() && fits(steps_[step], text[at])) {
                ++at;
                ++step;
                continue;
            }
            // Wrong: let the last % take one more.
            if (!haveSteps || starStep == steps_.size() || starAt >= text.size()) return false;
            at = ++starAt;
            step = starStep + 1;
        }
    }

    bool beginsWithAnyText() const { return !steps_.empty() && steps_.front().kind == Kind::AnyText; }
    Pattern withoutFirst() const {
        Pattern rest(*this);
        rest.steps_.erase(rest.steps_.begin());
        return rest;
    }

private:
    enum class Kind { Unit, AnyUnit, AnyText, Set };
    struct Interval {
        char16_t low;
        char16_t high;
    };
    struct Step {
        Kind kind;
        char16_t unit;  // folded
        bool negated;
        std::vector<Interval> set;
    };

    void addLiteral(char16_t unit) { steps_.push_back({Kind::Unit, foldUnit(collation_, unit), false, {}}); }

    // Behind the "[" at `at`; gives the place of the "]". A set that does not end matches nothing.
    std::size_t addSet(const std::u16string& p, std::size_t at, std::optional<char16_t> escape) {
        Step set{Kind::Set, 0, false, {}};
        if (at < p.size() && p[at] == u'^') {
            set.negated = true;
            ++at;
        }
        const std::size_t first = at;
        for (; at < p.size() && (p[at] != u']' || at == first); ++at) {
            if (escape && p[at] == *escape && at + 1 < p.size()) ++at;
            const char16_t low = p[at];
            if (at + 2 < p.size() && p[at + 1] == u'-' && p[at + 2] != u']') {
                set.set.push_back({low, p[at + 2]});
                at += 2;
            } else {
                set.set.push_back({low, low});
            }
        }
        if (at >= p.size()) {
            set.negated = false;
            set.set.clear();
        }
        steps_.push_back(std::move(set));
        return at;
    }

    bool fits(const Step& step, char16_t unit) const {
        switch (step.kind) {
            case Kind::Unit: return step.unit == unit || step.unit == foldUnit(collation_, unit);
            case Kind::Set: {
                const bool inside = std::any_of(step.set.begin(), step.set.end(),
                                                [&](const Interval& interval) { return contains(interval, unit); });
                return inside != step.negated && !(step.set.empty() && !step.negated);
            }
            default: return true;
        }
    }

    bool contains(const Interval& interval, char16_t unit) const {
        const char16_t folded = foldUnit(collation_, unit);
        const char16_t low = foldUnit(collation_, interval.low), high = foldUnit(collation_, interval.high);
        if (folded == low || folded == high) return true;
        if (interval.low == interval.high) return false;
        const auto digit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
        if (digit(low) && digit(high) && folded < 0x80) return folded >= low && folded <= high;
        const std::string x = toUtf8({&unit, 1});
        return compare(collation_, toUtf8({&interval.low, 1}), x) <= 0 &&
               compare(collation_, x, toUtf8({&interval.high, 1})) <= 0;
    }

    static bool onlyBlanks(std::u16string_view text, std::size_t from) {
        return text.find_first_not_of(u' ', from) == std::u16string_view::npos;
    }

    std::vector<Step> steps_;
    int collation_;
};

std::optional<char16_t> escapeOf(Call& call, int i) {
    if (call.isNull(i)) return std::nullopt;
    const std::u16string text = toUtf16(call.text(i));
    if (text.size() != 1) {
        throw SqlError(errorMessage<506>(call.text(i)));
    }
    return text[0];
}

// The pattern, kept by SQLite between the rows where it is a constant.
const Pattern& patternOf(Call& call, int i, std::optional<char16_t> escape, int collation,
                         std::unique_ptr<Pattern>& own) {
    if (const auto* kept = static_cast<const Pattern*>(sqlite3_get_auxdata(call.context(), i))) return *kept;
    auto made = std::make_unique<Pattern>(call.text(i), escape, collation);
    sqlite3_set_auxdata(call.context(), i, made.release(), [](void* p) { delete static_cast<Pattern*>(p); });
    if (const auto* kept = static_cast<const Pattern*>(sqlite3_get_auxdata(call.context(), i))) return *kept;
    own = std::make_unique<Pattern>(call.text(i), escape, collation);
    return *own;
}

void like(Call& call) {
    if (call.isNull(0) || call.isNull(1)) return call.null();
    const auto collation = static_cast<int>(call.integer(3));
    std::unique_ptr<Pattern> own;
    const Pattern& pattern = patternOf(call, 1, escapeOf(call, 2), collation, own);
    call.integer64(pattern.matches(toUtf16(call.text(0)), 0, call.integer(4) == 0) ? 1 : 0);
}

void patternIndex(Call& call) {
    const auto collation = static_cast<int>(call.integer(2));
    const std::u16string text = toUtf16(call.text(1));
    const Pattern pattern(call.text(0), std::nullopt, collation);
    if (!pattern.beginsWithAnyText()) return call.integer64(pattern.matches(text, 0, true) ? 1 : 0);
    const Pattern rest = pattern.withoutFirst();
    for (std::size_t at = 0; at < std::max<std::size_t>(1, text.size()); ++at) {
        if (rest.matches(text, at, true)) return call.integer64(static_cast<std::int64_t>(at) + 1);
    }
    call.integer64(0);
}

std::u16string folded(int collation, std::u16string text) {
    for (char16_t& unit : text) unit = foldUnit(collation, unit);
    return text;
}

// CHARINDEX(what, text [, start], collation)
void charIndex(Call& call) {
    const auto collation = static_cast<int>(call.integer(call.count() - 1));
    const std::u16string what = folded(collation, toUtf16(call.text(0)));
    const std::u16string text = folded(collation, toUtf16(call.text(1)));
    const std::int64_t start = call.count() > 3 ? std::max<std::int64_t>(1, call.integer(2)) : 1;
    if (what.empty() || start > static_cast<std::int64_t>(text.size())) return call.integer64(0);
    const auto found = text.find(what, static_cast<std::size_t>(start - 1));
    call.integer64(found == std::u16string::npos ? 0 : static_cast<std::int64_t>(found) + 1);
}

// REPLACE(text, what, by, collation, result type)
void replace(Call& call) {
    const auto collation = static_cast<int>(call.integer(3));
    const Type result = call.type(4);
    const std::u16string text = toUtf16(call.text(0)), search = folded(collation, text);
    const std::u16string what = folded(collation, toUtf16(call.text(1))), by = toUtf16(call.text(2));
    if (what.empty()) return call.same(0);
    std::u16string out;
    std::size_t at = 0;
    for (auto found = search.find(what); found != std::u16string::npos; found = search.find(what, at)) {
        out.append(text, at, found - at);
        out += by;
        at = found + what.size();
    }
    out.append(text, at);
    const std::int64_t most = isUnicode(result.id) ? kMostUnits / 2 : kMostUnits;
    if (result.length != Type::kMax && static_cast<std::int64_t>(out.size()) > most)
        out.resize(static_cast<std::size_t>(most));
    call.string(toUtf8(out));
}

constexpr Registration kSearch[] = {
    {"t_like", 5, always<like>},           {"t_patindex", 3, strict<patternIndex>},
    {"t_charindex", 3, strict<charIndex>}, {"t_charindex", 4, strict<charIndex>},
    {"t_replace", 5, strict<replace>},
};

}  // namespace

std::span<const Registration> textSearchFunctions() {
    return kSearch;
}

}  // namespace sandbox::functions

namespace sandbox {

bool matchesLike(std::string_view text, std::string_view pattern, std::optional<char16_t> escape, int collation,
                 bool unicode) {
    return functions::Pattern(pattern, escape, collation).matches(toUtf16(text), 0, !unicode);
}

}  // namespace sandbox

// Cells as T-SQL literals and as text, and rows as INSERT statements.
#include "sandbox/chain/table_data.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace sandbox::chain {

namespace {

template <typename... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <typename... F>
Overloaded(F...) -> Overloaded<F...>;

constexpr std::size_t kRowsABatch = 500;

std::string digits(unsigned value, std::size_t width) {
    const std::string text = std::to_string(value);
    return std::string(width - std::min(width, text.size()), '0') + text;
}

// The date with `dash` between its parts, then " hh:mm:ss.fff".
std::string momentText(const Moment& moment, const std::string& dash) {
    using namespace std::chrono;
    const sys_time<milliseconds> time{milliseconds(moment.milliseconds)};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    return digits(static_cast<unsigned>(static_cast<int>(date.year())), 4) + dash +
           digits(static_cast<unsigned>(date.month()), 2) + dash + digits(static_cast<unsigned>(date.day()), 2) + " " +
           digits(static_cast<unsigned>(clock.hours().count()), 2) + ":" +
           digits(static_cast<unsigned>(clock.minutes().count()), 2) + ":" +
           digits(static_cast<unsigned>(clock.seconds().count()), 2) + "." +
           digits(static_cast<unsigned>(clock.subseconds().count()), 3);
}

std::string shortest(double value) {
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

// Without an exponent, as clients of the databases print it.
std::string plain(double value) {
    char text[400];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return {text, end.ptr};
}

std::string hex(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        text += kDigits[b >> 4];
        text += kDigits[b & 15];
    }
    return text;
}

std::string quoted(const std::string& value) {
    std::string text = "'";
    for (const char c : value) text += c == '\'' ? std::string("''") : std::string(1, c);
    return text + "'";
}

}  // namespace

std::string sqlLiteral(const Cell& cell) {
    return std::visit(
        Overloaded{[](std::monostate) { return std::string("NULL"); }, [](std::int64_t v) { return std::to_string(v); },
                   [](double v) {
                       std::string text = shortest(v);
                       if (text.find('e') == std::string::npos) text += "E0";
                       return text;
                   },
                   [](const std::string& v) { return quoted(v); },
                   [](const Moment& v) { return quoted(momentText(v, "")); },
                   [](const Blob& v) { return hex(v.bytes); }},
        cell);
}

std::string cellText(const Cell& cell) {
    return std::visit(
        Overloaded{[](std::monostate) { return std::string("NULL"); }, [](std::int64_t v) { return std::to_string(v); },
                   [](double v) { return plain(v); }, [](const std::string& v) { return v; },
                   [](const Moment& v) { return momentText(v, "-"); }, [](const Blob& v) { return hex(v.bytes); }},
        cell);
}

std::vector<std::string> insertBatches(const TableData& data) {
    const auto identityInsert = [&](const char* state) {
        return data.identity ? "SET IDENTITY_INSERT " + data.table + state : std::string();
    };
    std::string head = identityInsert(" ON\n") + "INSERT INTO " + data.table + " (";
    for (std::size_t i = 0; i < data.columns.size(); ++i) head += (i ? ", " : "") + data.columns[i];
    head += ") VALUES";

    std::vector<std::string> batches;
    for (std::size_t r = 0; r < data.rows.size(); ++r) {
        if (r % kRowsABatch == 0) batches.push_back(head);
        std::string& batch = batches.back();
        batch += r % kRowsABatch == 0 ? "\n(" : ",\n(";
        for (std::size_t i = 0; i < data.rows[r].size(); ++i) batch += (i ? ", " : "") + sqlLiteral(data.rows[r][i]);
        batch += ")";
    }
    for (std::string& batch : batches) batch += identityInsert(" OFF").insert(0, data.identity ? "\n" : "");
    return batches;
}

}  // namespace sandbox::chain

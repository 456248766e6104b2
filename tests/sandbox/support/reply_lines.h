// A Reply that writes what it is told as the lines of a case file: "cols", "row", "count", "error", "info", "return",
// "output", so that a test compares a session's whole answer as text.
#pragma once

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "sandbox/store/values/decimal.h"
#include "sandbox/tsql/run/reply.h"

namespace sandbox::test {

inline std::string dayText(std::int64_t daysSinceYearOne) {
    using namespace std::chrono;
    const year_month_day day{sys_days{year{1} / 1 / 1} + days{daysSinceYearOne}};
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()));
    return text;
}

inline std::string clockText(std::int64_t units, std::int64_t unitsPerSecond, int digits) {
    const std::int64_t seconds = units / unitsPerSecond;
    const std::int64_t fraction = units % unitsPerSecond;
    char text[48];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    std::string out = text;
    if (digits > 0) {
        std::string f = std::to_string(fraction);
        const auto whole = std::to_string(unitsPerSecond).size() - 1;
        f.insert(0, whole - f.size(), '0');
        out += "." + f.substr(0, static_cast<std::size_t>(digits));
    }
    return out;
}

inline std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

inline std::string floatText(double d, bool single) {
    const bool plain = d == 0 || (std::abs(d) >= 1e-4 && std::abs(d) < 1e16);
    const std::chars_format form = plain ? std::chars_format::fixed : std::chars_format::scientific;
    char text[40];
    const char* const end = single ? std::to_chars(text, text + sizeof text, static_cast<float>(d), form).ptr
                                   : std::to_chars(text, text + sizeof text, d, form).ptr;
    std::string out(text, static_cast<std::size_t>(end - text));
    if (out.find_first_of(".en") == std::string::npos) out += ".0";
    return out;
}

inline std::string shown(const Type& type, const Value& value) {
    if (isNull(value)) return "NULL";
    if (const auto* text = std::get_if<std::string>(&value)) {
        std::string out = "'";
        for (char c : escaped(*text)) out += c == '\'' ? std::string("''") : std::string(1, c);
        return out + "'";
    }
    if (const auto* bytes = std::get_if<Bytes>(&value)) {
        std::string out = "0x";
        for (auto b : *bytes) {
            char two[3];
            std::snprintf(two, sizeof two, "%02X", b);
            out += two;
        }
        return out;
    }
    if (const auto* decimal = std::get_if<Decimal>(&value)) return toText(decimal->unscaled, decimal->scale);
    if (const auto* d = std::get_if<double>(&value)) return floatText(*d, type.id == TypeId::Real);
    if (const auto* guid = std::get_if<Guid>(&value)) {
        static constexpr int kOrder[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
        std::string out;
        for (int at : kOrder) {
            char two[3];
            if (at >= 0) std::snprintf(two, sizeof two, "%02x", (*guid)[static_cast<std::size_t>(at)]);
            out += at < 0 ? "-" : two;
        }
        return out;
    }
    constexpr std::int64_t kDays1900 = 693595;
    const std::int64_t n = std::get<std::int64_t>(value);
    switch (type.id) {
        case TypeId::Money:
        case TypeId::SmallMoney: return toText(n, 4);
        case TypeId::DateTime:
        case TypeId::SmallDateTime: {
            constexpr std::int64_t kDay = 86400LL * 300;
            const std::int64_t day = n >= 0 ? n / kDay : -((-n + kDay - 1) / kDay);
            const std::int64_t ticks = n - day * kDay;
            return dayText(kDays1900 + day) + " " + clockText((ticks * 10 + 1) / 3, 1000, 3);
        }
        case TypeId::Date: return dayText(n);
        case TypeId::Time: return clockText(n, 10'000'000, type.scale);
        case TypeId::DateTime2: {
            constexpr std::int64_t kDay = 86400LL * 10'000'000;
            return dayText(n / kDay) + " " + clockText(n % kDay, 10'000'000, type.scale);
        }
        default: return std::to_string(n);
    }
}

class ReplyLines : public Reply {
public:
    std::vector<std::string> lines;
    std::vector<std::string> transactions;  // "began", "committed", "rolled back"
    std::vector<std::string> databases;     // "from>to"
    int statements = 0;                     // statementDone calls
    int inProcedure = 0;                    // those of them that ended inside a procedure
    int procedures = 0;                     // procedureDone calls

    [[nodiscard]] std::string text() const {
        std::string out;
        for (const auto& line : lines) out += line + "\n";
        return out;
    }

    void columns(std::span<const ResultColumn> columns) override {
        std::string line = "cols ";
        types_.clear();
        for (const auto& column : columns) {
            if (!types_.empty()) line += ", ";
            line += (column.name.empty() ? "-" : column.name) + " " + typeDeclaration(column.type);
            types_.push_back(column.type);
        }
        lines.push_back(line);
    }
    void row(std::span<const Value> cells) override {
        std::string line = "row ";
        for (std::size_t i = 0; i < cells.size(); ++i) line += (i ? "|" : "") + shown(types_.at(i), cells[i]);
        lines.push_back(line);
    }
    void statementDone(std::optional<std::int64_t> count, bool inside) override {
        ++statements;
        inProcedure += inside;
        if (count) lines.push_back("count " + std::to_string(*count));
    }
    void error(const Message& message) override { lines.push_back("error " + told(message)); }
    void info(const Message& message) override { lines.push_back("info " + told(message)); }
    void databaseChanged(const std::string& from, const std::string& to) override {
        databases.push_back(from + ">" + to);
    }
    void transactionBegan(std::uint64_t) override { transactions.emplace_back("began"); }
    void transactionCommitted(std::uint64_t) override { transactions.emplace_back("committed"); }
    void transactionRolledBack(std::uint64_t) override { transactions.emplace_back("rolled back"); }
    void returnStatus(std::int32_t status) override { lines.push_back("return " + std::to_string(status)); }
    void outputParameter(int, const std::string& name, const Typed& value) override {
        lines.push_back("output " + name + " " + typeDeclaration(value.type) + " " + shown(value.type, value.value));
    }
    void procedureDone() override { ++procedures; }

private:
    static std::string told(const Message& m) {
        return std::to_string(m.number) + " " + std::to_string(m.severity) + " " + std::to_string(m.state) + " " +
               (m.procedure.empty() ? "-" : m.procedure) + " " + std::to_string(m.line) + " " + escaped(m.text);
    }

    std::vector<Type> types_;
};

}  // namespace sandbox::test

// See chain_state.h.
#include "tests/faults/chain_state.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "sandbox/tsql/run/session.h"
#include "tests/sandbox/support/reply_lines.h"

namespace torvik::test {

namespace {

// Columns that hold the moment at which a run did something.
const std::set<std::string> kMoments{"Pos_Op_Synkronisert",   "Pos_Or_OppdatertBeholdning",
                                     "OP_OPPDATERTTIDSPUNKT", "Pos_Op_OppdatertTidspunkt",
                                     "GA_SYNKTIDSPUNKT",      "TG_SYNKTIDSPUNKT",
                                     "dl_tidspunkt",          "Ve_InsDato",
                                     "Ikko_Tidspunkt",        "Vdl_Time"};

// Columns that tell where a chain happens to listen, and which number a send happens to have drawn.
const std::set<std::string> kOfOneRun{"Ikk_Server", "Ve_SesjonID"};

constexpr const char* kMarksOfRuns = "dts_logg";

// Made anew on the till by each run for its own use.
constexpr const char* kWorkTable = "UTBETALINGIMPORT";

class Rows final : public sandbox::SilentReply {
public:
    std::vector<std::vector<std::string>> sets;  // of rows, one for each SELECT

    void columns(std::span<const sandbox::ResultColumn> columns) override {
        columns_.assign(columns.begin(), columns.end());
        sets.emplace_back();
    }
    void row(std::span<const sandbox::Value> cells) override {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) line += (i ? " | " : "") + text(columns_[i], cells[i]);
        sets.back().push_back(std::move(line));
    }
    void error(const sandbox::Message& message) override { throw std::runtime_error(message.text); }

private:
    static std::string text(const sandbox::ResultColumn& column, const sandbox::Value& cell) {
        if (column.identity || kOfOneRun.contains(column.name)) return "";
        if (kMoments.contains(column.name) && !sandbox::isNull(cell)) return "set";
        return sandbox::test::shown(column.type, cell);
    }

    std::vector<sandbox::ResultColumn> columns_;
};

bool isIntent(const std::string& line) {
    return line.find("'Par {") != std::string::npos;
}

bool isOfASharedNight(const std::string& line) {
    for (const char* beginning : {"'Natt {", "'Hjelp {", "'Slutt {"})
        if (line.find(beginning) != std::string::npos) return true;
    return false;
}

TableLines readTables(sandbox::Server& server, const std::string& database) {
    sandbox::Session session(server.engine(), {.user = "sa", .database = database});
    Rows names;
    session.batch("SELECT CONVERT(varchar(128), name) FROM sysobjects WHERE xtype = 'U'", names);
    std::vector<std::string> tables;
    std::string batch;
    for (const std::string& quoted : names.sets.at(0)) {
        const std::string name = quoted.substr(1, quoted.size() - 2);
        if (name == kWorkTable) continue;
        tables.push_back(name);
        batch += "SELECT * FROM " + tables.back() + "\n";
    }
    Rows rows;
    session.batch(batch, rows);
    TableLines state;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        auto& lines = rows.sets.at(i);
        std::sort(lines.begin(), lines.end());
        if (tables[i] == kMarksOfRuns) {
            std::erase_if(lines, isIntent);
            std::erase_if(lines, isOfASharedNight);
            lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        }
        state[tables[i]] = std::move(lines);
    }
    return state;
}

std::vector<std::string> minus(const std::vector<std::string>& from, const std::vector<std::string>& what) {
    std::vector<std::string> left;
    std::set_difference(from.begin(), from.end(), what.begin(), what.end(), std::back_inserter(left));
    return left;
}

const std::vector<std::string>& linesOf(const TableLines& tables, const std::string& table) {
    static const std::vector<std::string> kNone;
    const auto found = tables.find(table);
    return found == tables.end() ? kNone : found->second;
}

std::set<std::string> namesOf(const TableLines& a, const TableLines& b) {
    std::set<std::string> names;
    for (const TableLines* tables : {&a, &b})
        for (const auto& [name, lines] : *tables) names.insert(name);
    return names;
}

}  // namespace

TableLines readBackOffice(sandbox::chain::DemoChain& chain) {
    return readTables(chain.backOffice(), sandbox::chain::DemoChain::kBackOfficeDatabase);
}

TableLines readTill(sandbox::chain::DemoChain& chain, std::size_t till) {
    return readTables(chain.till(till), chain.model().tills[till].database);
}

ChainState readState(sandbox::chain::DemoChain& chain) {
    ChainState state{.backOffice = readBackOffice(chain), .tills = {}};
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i) state.tills.push_back(readTill(chain, i));
    return state;
}

std::size_t countStandingPairs(sandbox::chain::DemoChain& chain) {
    sandbox::Session session(chain.backOffice().engine(),
                             {.user = "sa", .database = sandbox::chain::DemoChain::kBackOfficeDatabase});
    Rows rows;
    session.batch("SELECT * FROM dts_logg", rows);
    return static_cast<std::size_t>(std::count_if(rows.sets.at(0).begin(), rows.sets.at(0).end(), isIntent));
}

TableLines withChange(const TableLines& base, const TableLines& before, const TableLines& after) {
    TableLines changed = base;
    for (const std::string& table : namesOf(before, after)) {
        const auto gone = minus(linesOf(before, table), linesOf(after, table));
        const auto come = minus(linesOf(after, table), linesOf(before, table));
        auto& lines = changed[table];
        lines = minus(lines, gone);
        lines.insert(lines.end(), come.begin(), come.end());
        std::sort(lines.begin(), lines.end());
    }
    return changed;
}

std::string difference(const TableLines& expected, const TableLines& actual) {
    std::string text;
    for (const std::string& table : differingTables(expected, actual)) {
        text += table + (actual.contains(table) ? "" : " (there is no such table)") + "\n";
        for (const std::string& line : minus(linesOf(expected, table), linesOf(actual, table)))
            text += "  - " + line + "\n";
        for (const std::string& line : minus(linesOf(actual, table), linesOf(expected, table)))
            text += "  + " + line + "\n";
    }
    return text;
}

std::string difference(const ChainState& expected, const ChainState& actual) {
    std::string text = difference(expected.backOffice, actual.backOffice);
    for (std::size_t i = 0; i < expected.tills.size(); ++i) {
        const std::string till = difference(expected.tills[i], actual.tills.at(i));
        if (!till.empty()) text += "till " + std::to_string(i + 1) + ": " + till;
    }
    return text;
}

std::vector<std::string> differingTables(const TableLines& expected, const TableLines& actual) {
    std::vector<std::string> names;
    for (const std::string& table : namesOf(expected, actual))
        if (linesOf(expected, table) != linesOf(actual, table) || expected.contains(table) != actual.contains(table))
            names.push_back(table);
    return names;
}

}  // namespace torvik::test

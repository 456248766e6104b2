// What every table of a chain holds, as lines of text to compare: the back office first, then the tills. Read beside
// the wire, so that no fault reaches the reading and no count of requests sees it. Moments of a run are told only as
// "set" or NULL, generated keys not at all; the marks of runs in dts_logg are told once, however many runs have left
// them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "sandbox/chain/demo_chain.h"

namespace torvik::test {

// The rows of each table, sorted.
using TableLines = std::map<std::string, std::vector<std::string>>;

struct ChainState {
    TableLines backOffice;
    std::vector<TableLines> tills;

    friend bool operator==(const ChainState&, const ChainState&) = default;
};

// Without the intents of pairs of transactions, which come and go within a run and are counted apart, and without the
// rows of nights that copies share, which the next night removes.
[[nodiscard]] ChainState readState(sandbox::chain::DemoChain& chain);
[[nodiscard]] TableLines readBackOffice(sandbox::chain::DemoChain& chain);
[[nodiscard]] TableLines readTill(sandbox::chain::DemoChain& chain, std::size_t till);
[[nodiscard]] std::size_t countStandingPairs(sandbox::chain::DemoChain& chain);

// `base` with what has come and gone from `before` to `after`, table by table.
[[nodiscard]] TableLines withChange(const TableLines& base, const TableLines& before, const TableLines& after);

// The lines that only one of the two has, table by table, "-" for those expected; empty when both are the same.
[[nodiscard]] std::string difference(const TableLines& expected, const TableLines& actual);
[[nodiscard]] std::string difference(const ChainState& expected, const ChainState& actual);

// The names of the tables that differ.
[[nodiscard]] std::vector<std::string> differingTables(const TableLines& expected, const TableLines& actual);

}  // namespace torvik::test

// A chain whose tills are sent to, beside the model of what each must hold. Tests of sending over whole chains start
// from it.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "sandbox/chain/registers/kept_table.h"
#include "sandbox/chain/registers/registrar.h"
#include "sandbox/chain/registers/sent_till.h"
#include "tests/support/chain_run.h"

namespace torvik::test {

class ChainSend {
public:
    explicit ChainSend(const sandbox::chain::ChainOptions& options);

    // A day's work at the back office, in the model and in its database.
    void workDay(int day);
    // Any other change of the registers.
    void change(const std::function<void(sandbox::chain::KeptTables& office)>& work);

    // One run that sends to every till of the roster, in the model too. Gives the lines of the error log, of which
    // there should be none.
    QStringList send(const sandbox::chain::SendOptions& options);
    // The same by the program alone: for sends that fail.
    QStringList sendWithoutModel(const sandbox::chain::SendOptions& options);

    // Every table of every till against the model, column by column: what the model holds, what no send concerns as it
    // was before the first one, and no other table.
    void expectTillsAsTold(const std::string& when);
    // What the back office notes of vouchers.
    void expectNotesAsTold(const std::string& when);

    // The model's tills, to be compared with one another over time.
    [[nodiscard]] std::vector<std::map<std::string, std::string>> told() const;

    ChainRun run;
    sandbox::chain::KeptTables office;
    std::vector<sandbox::chain::KeptTables> tills;

private:
    // What no send concerns: tables that the model does not hold, and the other columns of those that it does.
    using Rest = std::map<std::string, std::vector<std::string>>;  // by table
    [[nodiscard]] Rest restOf(std::size_t till, const std::map<std::string, ChainRun::Table>& tables) const;

    std::vector<Rest> before_;
};

}  // namespace torvik::test

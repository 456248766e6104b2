// Copies of the program as processes of their own over one chain, and what they must leave however many they are: the
// tests of copies that run at the same time share it.
#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tests/faults/chain_state.h"

namespace torvik::test {

// A machine with a copy of the program: its notes outlive its processes.
class Machine {
public:
    // The program is given the chain's data link and the folder of its notes, and then `more`.
    Machine(const std::string& dataLink, const QString& program, const QStringList& more = {});

    void start();
    void kill();
    [[nodiscard]] bool ends();
    [[nodiscard]] bool endsWell();  // without an error of the run

private:
    QString path_;
    QTemporaryDir notes_;
    QStringList arguments_;
    QProcess process_;
};

// The sessions to each till, by the order of their requests.
class TillVisits {
public:
    explicit TillVisits(sandbox::chain::DemoChain& chain);
    ~TillVisits();
    TillVisits(const TillVisits&) = delete;
    TillVisits& operator=(const TillVisits&) = delete;

    // Each session's requests are done before the next one's begin: none is among another's.
    void expectOneAtATime();
    // How many sessions each till has had.
    [[nodiscard]] std::vector<std::size_t> counts();

private:
    sandbox::chain::DemoChain& chain_;
    std::mutex mutex_;
    std::vector<std::vector<std::uint64_t>> sessions_;
    std::vector<int> observers_;
};

// What copies have left, but for what depends on which of them came last.
struct Fetched {
    ChainState state;
    std::vector<std::string> hours;

    [[nodiscard]] static Fetched Of(sandbox::chain::DemoChain& chain);
};
void expectTheSame(const Fetched& expected, const Fetched& actual);

}  // namespace torvik::test

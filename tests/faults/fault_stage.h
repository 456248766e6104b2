// The chain that the cases of a fault start from: two tills of two departments, the first with rows of every kind. It
// is made once for a test program, in files; each case works on a copy of its own.
#pragma once

#include <QTemporaryDir>
#include <filesystem>
#include <functional>
#include <memory>

#include "sandbox/store/databases/private_folder.h"
#include "tests/faults/fault_program.h"
#include "tests/faults/recorded_run.h"

namespace torvik::test {

// Where a chain stands in files, in memory where the system has such a place. It goes with the object; where a test
// program was killed, with the next such folder.
class ChainFolder {
public:
    [[nodiscard]] std::filesystem::path files() const { return folder_.path() / "chain"; }

private:
    sandbox::PrivateFolder folder_{"torvik_faults_"};
};

// A running copy of a stage's chain.
struct ChainCopy {
    ChainCopy(const std::filesystem::path& files, const sandbox::chain::ChainOptions& options);

    // The program over it; all programs over one copy keep their notes in one place, as on one machine.
    [[nodiscard]] std::unique_ptr<FaultProgram> program();
    // Of pairs that are not known to have ended: intents at the back office, and notes on the disk.
    [[nodiscard]] std::size_t standingPairs();
    [[nodiscard]] std::size_t notes() const;

    ChainFolder folder;
    QTemporaryDir noteFolder;
    sandbox::chain::DemoChain chain;
};

class FaultStage {
public:
    // Nothing has been fetched.
    static const FaultStage& unfetched();
    // The first till's transfer has been done and its settlements are open; the second till has been fetched whole.
    static const FaultStage& transferred();
    // Nothing has been fetched, and the first till has sold more lines than one statement of rows takes.
    static const FaultStage& busy();

    explicit FaultStage(const std::function<void(const std::filesystem::path&)>& fill);

    [[nodiscard]] std::unique_ptr<ChainCopy> copy() const;
    // The run without a fault from here on.
    [[nodiscard]] const RecordedRun& run() const { return run_; }

private:
    ChainFolder folder_;
    RecordedRun run_;
};

}  // namespace torvik::test

// The same batches that fill the stand-in servers, written down.
#include "sandbox/chain/script_files.h"

#include <fstream>
#include <stdexcept>

#include "sandbox/chain/demo_chain.h"
#include "sandbox/chain/install.h"

namespace sandbox::chain {

namespace {

class ScriptFile {
public:
    ScriptFile(const std::filesystem::path& folder, const std::string& database)
        : path_(folder / (database + ".sql")), file_(path_, std::ios::binary) {
        add("CREATE DATABASE " + database + " COLLATE Danish_Norwegian_CI_AS");
        add("USE " + database);
    }
    void add(std::string_view batch) {
        file_ << batch << (batch.ends_with('\n') ? "" : "\n") << "go\n";
        if (!file_) throw std::runtime_error("cannot write " + path_.string());
    }

private:
    std::filesystem::path path_;
    std::ofstream file_;
};

}  // namespace

void writeScripts(const Chain& chain, const std::filesystem::path& folder, const std::string& server) {
    std::filesystem::create_directories(folder);
    for (const Till& till : chain.tills) {
        ScriptFile file(folder, till.database);
        installTill(chain, till, {.run = [&](std::string_view batch) { file.add(batch); }});
    }
    ScriptFile file(folder, DemoChain::kBackOfficeDatabase);
    const auto address = [&](const Till& till) {
        return TillAddress{server, till.database, DemoChain::kTillUser, DemoChain::kTillPassword};
    };
    installBackOffice(chain, address, {.run = [&](std::string_view batch) { file.add(batch); }});
}

}  // namespace sandbox::chain

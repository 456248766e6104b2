// Everything that the sessions of one server share: its databases, its name, its process list, its locks. A server
// process may hold several engines; nothing is global.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sandbox {

struct EngineOptions {
    std::string serverName = "TORVIKSANDBOX";      // @@SERVERNAME
    std::optional<std::filesystem::path> dataDir;  // none: databases live in memory and end with the engine
    std::string collation = "Danish_Norwegian_CI_AS";
};

class Engine {
public:
    // Makes master, tempdb, model and msdb, and opens the databases that dataDir holds.
    explicit Engine(EngineOptions options);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    [[nodiscard]] const std::string& serverName() const;
    [[nodiscard]] std::vector<std::string> databases() const;

    // The disk is full after so many more writing statements; none: it has room again. From any thread.
    void limitWrites(std::optional<std::int64_t> left);

    struct Shared;  // what sessions use; defined in the .cpp files' internal header
    [[nodiscard]] Shared& shared() { return *shared_; }

private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace sandbox

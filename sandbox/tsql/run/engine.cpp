// The engine's few entry points.
#include "sandbox/tsql/run/engine.h"

#include "sandbox/tsql/run/engine_shared.h"

namespace sandbox {

Engine::Engine(EngineOptions options) : shared_(std::make_unique<Shared>(std::move(options))) {}

Engine::~Engine() = default;

const std::string& Engine::serverName() const {
    return shared_->options.serverName;
}

void Engine::limitWrites(std::optional<std::int64_t> left) {
    shared_->databases.limitWrites(left);
}

std::vector<std::string> Engine::databases() const {
    std::vector<std::string> names;
    for (const auto& database : shared_->databases.all()) names.push_back(database->name());
    return names;
}

}  // namespace sandbox

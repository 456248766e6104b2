#include "sandbox/tsql/engine.h"

#include "sandbox/tsql/engine_shared.h"

namespace sandbox {

Engine::Engine(EngineOptions options) : shared_(std::make_unique<Shared>(std::move(options))) {}

Engine::~Engine() = default;

const std::string& Engine::serverName() const {
    return shared_->options.serverName;
}

std::vector<std::string> Engine::databases() const {
    std::vector<std::string> names;
    for (const auto& database : shared_->databases.all()) names.push_back(database->name());
    return names;
}

}  // namespace sandbox

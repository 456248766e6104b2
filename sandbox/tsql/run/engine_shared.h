// What the sessions of one server share. Internal to sandbox/tsql.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "sandbox/store/databases/database.h"
#include "sandbox/tsql/run/engine.h"

namespace sandbox {

struct Engine::Shared {
    explicit Shared(EngineOptions given) : options(std::move(given)), databases(options.dataDir, options.collation) {}

    EngineOptions options;
    Databases databases;
    std::atomic<std::uint64_t> lastDescriptor{0};  // of transactions
};

using EngineShared = Engine::Shared;

}  // namespace sandbox

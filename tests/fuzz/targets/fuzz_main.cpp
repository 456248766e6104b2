// libFuzzer's way to one target, TORVIK_FUZZ_TARGET. With TORVIK_SEEDS=DIR in the environment it writes the target's
// seeds there first.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/fuzz/targets/targets.h"

namespace {

const sandbox::fuzz::Target& target() {
    for (const sandbox::fuzz::Target& t : sandbox::fuzz::kTargets) {
        if (t.name == TORVIK_FUZZ_TARGET) return t;
    }
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerInitialize(int*, char***) {
    const char* folder = std::getenv("TORVIK_SEEDS");
    if (folder == nullptr) return 0;
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& seed : target().seeds()) {
        std::ofstream(std::filesystem::path(folder) / ("seed" + std::to_string(++number)), std::ios::binary) << seed;
    }
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    target().run({data, size});
    return 0;
}

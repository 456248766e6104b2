// The fuzz targets on their seeds, on every beginning of the short ones, and on the inputs that fuzzing has found.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/targets/targets.h"

namespace sandbox::fuzz {
namespace {

class FuzzCorpus : public ::testing::TestWithParam<Target> {
protected:
    static void run(const std::string& input) {
        GetParam().run({reinterpret_cast<const std::uint8_t*>(input.data()), input.size()});
    }
};

TEST_P(FuzzCorpus, SeedsAndTheirBeginningsAreTakenOrRefused) {
    constexpr std::size_t kShort = 400;
    const bool runs = GetParam().name == "batch";  // too slow for every beginning
    const std::vector<std::string> seeds = GetParam().seeds();
    ASSERT_FALSE(seeds.empty());
    for (const std::string& seed : seeds) {
        run(seed);
        if (runs || seed.size() > kShort) continue;
        for (std::size_t length = 0; length < seed.size(); ++length) run(seed.substr(0, length));
    }
}

TEST_P(FuzzCorpus, FindingsAreTakenOrRefused) {
    const std::filesystem::path folder =
        std::filesystem::path(TORVIK_SOURCE_DIR) / "tests/fuzz/corpus" / GetParam().name;
    ASSERT_TRUE(std::filesystem::exists(folder)) << folder;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        SCOPED_TRACE(entry.path());
        std::ifstream in(entry.path(), std::ios::binary);
        run({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzCorpus, ::testing::ValuesIn(kTargets),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace sandbox::fuzz

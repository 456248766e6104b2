// Pieces that suit the line: what they grow to, and shrink to, when each takes as long as its line makes it.
#include "fleet/share/piece_size.h"

#include <gtest/gtest.h>

namespace torvik::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kKi = 1024;
constexpr std::size_t kMi = kKi * kKi;

struct Line {
    const char* name;
    double bytesPerSecond;
    std::chrono::milliseconds thereAndBack;
    std::size_t settlesAt;
};

// The size after many pieces on such a line.
std::size_t settled(PieceSize& size, const Line& line) {
    for (int piece = 0; piece < 50; ++piece) {
        const std::chrono::duration<double> carried(static_cast<double>(size.bytes()) / line.bytesPerSecond);
        size.took(line.thereAndBack + std::chrono::duration_cast<PieceSize::Duration>(carried));
    }
    return size.bytes();
}

// 12.5 MB/s carry 2 MiB in 168 ms and 4 MiB in 336; 1.25 MB/s 256 KiB in 210 and 512 KiB in 419; 125 KB/s 64 KiB in
// 524 ms. A round trip more or less changes none of that.
TEST(PieceSize, SettlesWhereItsLineIsWellUsedAndAnswersComeSoon) {
    const Line lines[] = {
        {"a machine of its own", 1e9, 0ms, kMi},       {"a gigabit", 125e6, 1ms, kMi},
        {"100 megabits", 12.5e6, 1ms, 4 * kMi},        {"100 megabits, far away", 12.5e6, 30ms, 4 * kMi},
        {"a gigabit, far away", 125e6, 30ms, 4 * kMi}, {"10 megabits", 1.25e6, 30ms, 512 * kKi},
        {"a megabit", 125e3, 30ms, 64 * kKi},          {"100 kilobits", 12.5e3, 100ms, 64 * kKi},
    };
    for (const Line& line : lines) {
        PieceSize size;
        EXPECT_EQ(settled(size, line), line.settlesAt) << line.name;
    }
}

TEST(PieceSize, BeginsSmall) {
    EXPECT_EQ(PieceSize().bytes(), 64 * kKi);
}

TEST(PieceSize, FollowsALineThatChanges) {
    PieceSize size;
    EXPECT_EQ(settled(size, {"far away", 12.5e6, 30ms, 0}), 4 * kMi);
    EXPECT_EQ(settled(size, {"slow now", 125e3, 30ms, 0}), 64 * kKi);
    EXPECT_EQ(settled(size, {"far away again", 12.5e6, 30ms, 0}), 4 * kMi);
    EXPECT_EQ(settled(size, {"fast", 1e9, 0ms, 0}), kMi);
}

}  // namespace
}  // namespace torvik::test

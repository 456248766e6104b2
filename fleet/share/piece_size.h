// How much of a file goes to a share in one request. Each piece waits for the answer to the one before it, so that on
// a long line small pieces cost waiting; on a slow line a large one takes so long that its answer comes too late, and
// that nobody sees it go on or can cancel it; and on a fast one the server takes pieces of a megabyte twice as fast as
// those of four. Used by SmbShare; docs/fleet.md.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace torvik {

class PieceSize {
public:
    using Duration = std::chrono::steady_clock::duration;

    static constexpr std::size_t kLeast = std::size_t{64} << 10;
    static constexpr std::size_t kOfFastLine = std::size_t{1} << 20;
    static constexpr std::size_t kMost = std::size_t{4} << 20;

    // Of the next piece; the first is small, since nothing is known of the line yet.
    [[nodiscard]] std::size_t bytes() const { return bytes_; }

    // What the piece of that size has taken, its answer included.
    void took(Duration time) {
        if (time > kTooLong)
            bytes_ = std::max(bytes_ / 2, kLeast);
        else if (time < kFast)
            bytes_ = bytes_ > kOfFastLine ? bytes_ / 2 : std::min(bytes_ * 2, kOfFastLine);
        else if (time < kGood)
            bytes_ = std::min(bytes_ * 2, kMost);
    }

private:
    static constexpr std::chrono::milliseconds kFast{20};
    static constexpr std::chrono::milliseconds kGood{250};
    static constexpr std::chrono::milliseconds kTooLong{1000};

    std::size_t bytes_ = kLeast;
};

}  // namespace torvik

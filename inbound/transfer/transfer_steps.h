// The steps of the transfer from a till, in their order: one row a step, numbered as failure messages tell it.
#pragma once

#include <span>

namespace torvik {

struct TableMap;
class TdmPOStoTorvik;

// Log types of dts_logg.
enum class DtsLogg {
    None = -1,
    Started = 0,
    CopyBegins = 1,
    AllStaged = 2,
    Posted = 3,
    CopyFailed = 4,
    TimerMarked = 5,
    PostingFailed = 6,
    Complete = 7,
};

struct TransferStep {
    int p;
    const char* name;                         // empty: a log mark alone
    void (TdmPOStoTorvik::*run)() = nullptr;  // none: a table transfer or a log mark alone
    const TableMap* map = nullptr;
    DtsLogg before = DtsLogg::None;
    DtsLogg after = DtsLogg::None;
};

// The number of the step that posts: a failure before it is a failure of the copy.
inline constexpr int kInsertDataStep = 42;

[[nodiscard]] std::span<const TransferStep> transferSteps();

// The table transfers that follow each other from this one on: between them nothing is written on the till, nothing is
// posted and no mark is set, so that what they read of the till may be asked for at once.
[[nodiscard]] std::span<const TransferStep> tablesFrom(const TransferStep& step);

}  // namespace torvik

// The accumulation of sales data in the back office, which makes what the reports read. It runs once between two
// armings of the automatic run, after a fetch. See docs/settlements.md for what it works on.
#pragma once

namespace torvik {

class TTorvikPos;

class Accumulation {
public:
    explicit Accumulation(TTorvikPos& engine) : engine_(engine) {}

    bool HasAccumulatedData = false;  // since the last arming

    // Does nothing where it has been done. Raises what the batch raises; it then has not been done.
    void Execute(bool withStatistics);

private:
    TTorvikPos& engine_;
};

}  // namespace torvik

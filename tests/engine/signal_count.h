// Counts how often a signal came.
#pragma once

#include <QObject>

namespace torvik::test {

class SignalCount : public QObject {
public:
    template <typename Sender, typename Signal>
    SignalCount(const Sender* sender, Signal signal) {
        connect(sender, signal, this, [this] { ++_count; });
    }
    [[nodiscard]] int count() const { return _count; }

private:
    int _count = 0;
};

}  // namespace torvik::test

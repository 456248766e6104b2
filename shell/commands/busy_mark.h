// The window shows that it is busy, and can be used all the same, while this lives.
#pragma once

#include <QMainWindow>

namespace torvik {

class BusyMark {
public:
    explicit BusyMark(QMainWindow& window) : window_(window) { window_.setCursor(Qt::BusyCursor); }
    ~BusyMark() { window_.unsetCursor(); }
    BusyMark(const BusyMark&) = delete;
    BusyMark& operator=(const BusyMark&) = delete;

private:
    QMainWindow& window_;
};

}  // namespace torvik

// Answers modal dialogs as an operator would, while the code under test waits in them.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>

namespace torvik::test {

// Once a dialog of the kind stands open, and is ready, does this to it. The code under test then goes on when the
// answer closes it.
template <typename Dialog>
void whenAsked(
    std::function<void(Dialog&)> answer, std::function<bool(Dialog&)> ready = [](Dialog&) { return true; }) {
    auto* look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, look, [look, answer = std::move(answer), ready = std::move(ready)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible() || !ready(*dialog)) return;
        look->deleteLater();
        look->stop();
        answer(*dialog);
    });
    look->start(5);
}

template <typename Widget = QWidget>
[[nodiscard]] Widget& child(QWidget& parent, const char* name) {
    auto* found = parent.findChild<Widget*>(QString::fromUtf8(name));
    if (!found) throw std::runtime_error(std::string("no child is named ") + name);
    return *found;
}

// A press of the left button on a child by its name.
inline void press(QWidget& parent, const char* name) {
    QTest::mouseClick(&child(parent, name), Qt::LeftButton);
}

}  // namespace torvik::test

// The way of the Tab key through a window, and whether it is the way of the eye: from top to bottom and from left to
// right, one part of the window after the other.
#pragma once

#include <QWidget>

namespace torvik::test {

// The controls in the order in which Tab comes to them, from the first. Ends where it comes to one for the second time.
[[nodiscard]] QList<QWidget*> tabOrder(QWidget& window);
// What is wrong with it, in words: steps against reading, controls that Tab never comes to or never leaves.
[[nodiscard]] QStringList faultsOfTabOrder(QWidget& window);

}  // namespace torvik::test

#include "tests/shell/tab_order.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>
#include <algorithm>

namespace torvik::test {

namespace {

constexpr int kMostControls = 200;
constexpr int kMostParts = 6;

QString nameOf(const QWidget* widget) {
    QString name = QString::fromUtf8(widget->metaObject()->className());
    const QVariant text = widget->property("text");
    for (const QString& part : {widget->objectName(), text.toString()})
        if (!part.isEmpty()) name += u' ' + part;
    return name;
}

QRect placeIn(const QWidget* widget, const QWidget* above) {
    return {widget->mapTo(above, QPoint(0, 0)), widget->size()};
}

// The widget itself or what holds it, directly under the other one.
const QWidget* partOf(const QWidget* above, const QWidget* widget) {
    while (widget->parentWidget() != above) widget = widget->parentWidget();
    return widget;
}

const QWidget* commonParent(const QWidget* one, const QWidget* other) {
    const QWidget* above = one->parentWidget();
    while (above && !above->isAncestorOf(other)) above = above->parentWidget();
    return above;
}

// Of two parts side by side the left one is read first, else the upper one.
bool isReadBefore(const QWidget* one, const QWidget* other) {
    if (one->isAncestorOf(other)) return true;
    if (other->isAncestorOf(one)) return false;
    const QWidget* above = commonParent(one, other);
    const QRect first = placeIn(partOf(above, one), above);
    const QRect second = placeIn(partOf(above, other), above);
    const int shared = std::min(first.bottom(), second.bottom()) - std::max(first.top(), second.top());
    if (2 * shared > std::min(first.height(), second.height())) return first.left() < second.left();
    return first.top() < second.top();
}

bool takesTab(const QWidget* widget) {
    return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0 &&
           !widget->focusProxy();
}

// An editor in which Tab is a tabulator, as in scripts. It is left by the underlined letters.
bool keepsTab(const QWidget& widget) {
    const auto* editor = qobject_cast<const QPlainTextEdit*>(&widget);
    return editor && !editor->isReadOnly() && !editor->tabChangesFocus();
}

void leave(QWidget& editor) {
    QWidget* next = editor.nextInFocusChain();
    while (next != &editor && !takesTab(next)) next = next->nextInFocusChain();
    next->setFocus(Qt::TabFocusReason);
}

// A field of a time takes a Tab for each of its parts.
QWidget* afterTab(QWidget& window) {
    QWidget* at = QApplication::focusWidget();
    for (int presses = 0; presses < kMostParts && QApplication::focusWidget() == at; ++presses) {
        QTest::keyClick(at ? at : &window, Qt::Key_Tab);
        if (at && at == QApplication::focusWidget() && keepsTab(*at)) leave(*at);
    }
    return QApplication::focusWidget();
}

}  // namespace

QList<QWidget*> tabOrder(QWidget& window) {
    if (!window.isActiveWindow()) {
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window)) return {};
    }
    QList<QWidget*> way;
    if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
    while (way.size() < kMostControls) {
        QWidget* next = afterTab(window);
        if (!next || way.contains(next)) break;
        way << next;
    }
    // From the one that is read first: where the round begins is where the focus has been.
    const auto first = std::find_if(way.begin(), way.end(), [&way](const QWidget* one) {
        return std::all_of(way.begin(), way.end(),
                           [one](const QWidget* other) { return one == other || isReadBefore(one, other); });
    });
    if (first != way.end()) std::rotate(way.begin(), first, way.end());
    return way;
}

QStringList faultsOfTabOrder(QWidget& window) {
    const QList<QWidget*> way = tabOrder(window);
    QStringList faults;
    for (int i = 1; i < way.size(); ++i)
        if (!isReadBefore(way[i - 1], way[i]))
            faults << QStringLiteral("%1 comes before %2").arg(nameOf(way[i - 1]), nameOf(way[i]));
    for (QWidget* each : window.findChildren<QWidget*>())
        if (each->window() == &window && takesTab(each) && !way.contains(each))
            faults << QStringLiteral("%1 is not reached").arg(nameOf(each));
    if (way.isEmpty()) faults << QStringLiteral("Tab comes to nothing");
    return faults;
}

}  // namespace torvik::test

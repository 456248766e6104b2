// Splitters, tabs and tables are found by their names. A dialog is kept under its own; one without a name, such as a
// message, is as large as it needs to be.
#include "shell/window_layout.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QHeaderView>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>

#include "shell/settings/settings_store.h"
#include "shell/status/status_view.h"

namespace torvik {

namespace {

constexpr const char* kSplitters[] = {"whole", "left"};
constexpr char kPanes[] = "panes";
constexpr char kGeometry[] = "geometry";
constexpr char kColumns[] = "columns";

QByteArray keyOf(const QObject& widget, const char* what) {
    return widget.objectName().toUtf8() + '/' + what;
}

template <typename Widget>
Widget* named(QWidget& window, const char* name) {
    return window.findChild<Widget*>(QString::fromUtf8(name));
}

// A dialog is a window of its own, so that Qt's isAncestorOf does not know of it.
bool belongsTo(const QWidget& window, const QWidget& widget) {
    const QWidget* each = &widget;
    while (each && each != &window) each = each->parentWidget();
    return each != nullptr;
}

}  // namespace

WindowLayout::WindowLayout(SettingsStore& store, QWidget& window, StatusView& status)
    : QObject(&window), store_(store), window_(window), status_(status) {
    qApp->installEventFilter(this);
}

bool WindowLayout::restore() {
    for (const char* name : kSplitters)
        if (auto* splitter = named<QSplitter>(window_, name)) splitter->restoreState(store_.readLayout(name));
    if (auto* panes = named<QTabWidget>(window_, kPanes)) panes->setCurrentIndex(store_.readLayout(kPanes).toInt());
    status_.restoreColumns(store_.readLayout(kColumns));
    return window_.restoreGeometry(store_.readLayout(kGeometry));
}

void WindowLayout::keep() {
    store_.writeLayout(kGeometry, window_.saveGeometry());
    for (const char* name : kSplitters)
        if (const auto* splitter = named<QSplitter>(window_, name)) store_.writeLayout(name, splitter->saveState());
    if (const auto* panes = named<QTabWidget>(window_, kPanes))
        store_.writeLayout(kPanes, QByteArray::number(panes->currentIndex()));
    store_.writeLayout(kColumns, status_.columns());
}

bool WindowLayout::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide) {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (dialog && !dialog->objectName().isEmpty() && belongsTo(window_, *dialog)) {
            if (event->type() == QEvent::Show) {
                dialogShown(*dialog);
            } else {
                dialogHidden(*dialog);
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

// Before the dialog is seen: the event has not reached it yet. Where it stands is for the desktop, over the window.
void WindowLayout::dialogShown(QDialog& dialog) {
    const QByteArray size = store_.readLayout(keyOf(dialog, kGeometry).constData());
    const QList<QByteArray> sides = size.split('x');
    if (sides.size() == 2)
        dialog.resize(QSize(sides[0].toInt(), sides[1].toInt()).expandedTo(dialog.minimumSizeHint()));
    for (const auto* table : dialog.findChildren<QTableView*>())
        table->horizontalHeader()->restoreState(store_.readLayout(keyOf(dialog, kColumns).constData()));
}

void WindowLayout::dialogHidden(const QDialog& dialog) {
    store_.writeLayout(keyOf(dialog, kGeometry).constData(),
                       QByteArray::number(dialog.width()) + 'x' + QByteArray::number(dialog.height()));
    for (const auto* table : dialog.findChildren<QTableView*>())
        store_.writeLayout(keyOf(dialog, kColumns).constData(), table->horizontalHeader()->saveState());
}

}  // namespace torvik

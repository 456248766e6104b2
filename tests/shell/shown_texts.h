// What an operator can read: the texts of every window and dialog as it comes up, and those of a window now, with the
// cells of its lists. What is being typed into a password's field is dots.
#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace torvik::test {

class ShownTexts : public QObject {
public:
    ShownTexts() { qApp->installEventFilter(this); }
    ~ShownTexts() override { qApp->removeEventFilter(this); }

    [[nodiscard]] const QStringList& all() const { return all_; }
    // The names of the windows and dialogs that came up.
    [[nodiscard]] const QStringList& windows() const { return windows_; }

    void read(const QWidget& window) {
        all_ << window.windowTitle() << window.toolTip();
        for (const QWidget* each : window.findChildren<QWidget*>()) readOne(*each);
    }

private:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* widget = qobject_cast<QWidget*>(object);
        if (widget && widget->isWindow() && event->type() == QEvent::Show) {
            windows_ << (widget->objectName().isEmpty() ? QString::fromUtf8(widget->metaObject()->className())
                                                        : widget->objectName());
            if (const auto* box = qobject_cast<QMessageBox*>(widget)) all_ << box->text() << box->informativeText();
            read(*widget);
        }
        return false;
    }

    void readOne(const QWidget& widget) {
        all_ << widget.toolTip() << widget.statusTip();
        if (const auto* label = qobject_cast<const QLabel*>(&widget)) all_ << label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) all_ << button->text();
        if (const auto* line = qobject_cast<const QLineEdit*>(&widget)) all_ << line->displayText();
        if (const auto* plain = qobject_cast<const QPlainTextEdit*>(&widget)) all_ << plain->toPlainText();
        if (const auto* rich = qobject_cast<const QTextEdit*>(&widget)) all_ << rich->toPlainText();
        if (const auto* view = qobject_cast<const QAbstractItemView*>(&widget))
            if (view->model()) readRows(*view->model(), {});
    }

    void readRows(const QAbstractItemModel& model, const QModelIndex& parent) {
        for (int row = 0; row < model.rowCount(parent); ++row)
            for (int column = 0; column < model.columnCount(parent); ++column) {
                const QModelIndex cell = model.index(row, column, parent);
                all_ << cell.data().toString() << cell.data(Qt::ToolTipRole).toString();
                if (column == 0) readRows(model, cell);
            }
    }

    QStringList all_;
    QStringList windows_;
};

}  // namespace torvik::test

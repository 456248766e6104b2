// The window's turns while a server works: it is painted, "Avbryt" is taken, and everything else comes afterwards.
#include "shell/server_wait.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPushButton>
#include <QShortcutEvent>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QWindow>

namespace torvik {
namespace {

class CountsPaints : public QWidget {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

class WaitingWindow : public testing::Test {
protected:
    WaitingWindow() {
        auto* content = new QWidget;
        painted = new CountsPaints;
        painted->setParent(content);
        painted->setGeometry(0, 0, 50, 50);
        button.setParent(content);
        button.setGeometry(60, 0, 80, 30);
        window.setCentralWidget(content);
        QToolBar* bar = window.addToolBar(QStringLiteral("bar"));
        bar->addAction(&cancel);
        cancelButton = bar->widgetForAction(&cancel);
        QObject::connect(&cancel, &QAction::triggered, &window, [this] { happened.append(QStringLiteral("cancel")); });
        QObject::connect(&other, &QAction::triggered, &window, [this] { happened.append(QStringLiteral("other")); });
        QObject::connect(&button, &QPushButton::clicked, &window,
                         [this] { happened.append(QStringLiteral("button")); });
        window.resize(400, 200);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        wait = std::make_unique<ServerWait>(cancel, *cancelButton,
                                            [this] { happened.append(QStringLiteral("close asked")); });
    }

    // As the mouse gives it to the window.
    void clickOn(const QWidget& widget) {
        const QPoint global = widget.mapToGlobal(widget.rect().center());
        const QPoint local = window.mapFromGlobal(global);
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
            QCoreApplication::postEvent(
                window.windowHandle(),
                new QMouseEvent(type, local, global, Qt::LeftButton,
                                type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier));
    }
    void statement() {
        db::serverCall([] { std::this_thread::sleep_for(std::chrono::milliseconds(200)); });
    }

    QMainWindow window;
    QAction cancel{QStringLiteral("Avbryt")};
    QAction other{QStringLiteral("Annet")};
    QPushButton button;
    CountsPaints* painted = nullptr;
    QWidget* cancelButton = nullptr;
    QStringList happened;
    std::unique_ptr<ServerWait> wait;
};

TEST_F(WaitingWindow, IsPaintedDuringAStatement) {
    const int before = painted->paints;
    painted->update();
    statement();
    EXPECT_GT(painted->paints, before);
}

TEST_F(WaitingWindow, TakesTheCancelDuringAStatement) {
    clickOn(*cancelButton);
    statement();
    EXPECT_EQ(happened, QStringList{QStringLiteral("cancel")});
}

TEST_F(WaitingWindow, TakesTheCancelsShortcutDuringAStatement) {
    QCoreApplication::postEvent(&other, new QShortcutEvent(QKeySequence(Qt::Key_F5), 1));
    QCoreApplication::postEvent(&cancel, new QShortcutEvent(QKeySequence(Qt::SHIFT | Qt::Key_Escape), 2));
    statement();
    EXPECT_EQ(happened, QStringList{QStringLiteral("cancel")});
    QCoreApplication::processEvents();
    EXPECT_EQ(happened, QStringList({QStringLiteral("cancel"), QStringLiteral("other")}));
}

TEST_F(WaitingWindow, AnotherClickActsAfterTheStatement) {
    clickOn(button);
    statement();
    EXPECT_EQ(happened, QStringList());
    QCoreApplication::processEvents();
    EXPECT_EQ(happened, QStringList{QStringLiteral("button")});
}

TEST_F(WaitingWindow, TimerFiresAfterTheStatement) {
    QTimer::singleShot(1, &window, [this] { happened.append(QStringLiteral("timer")); });
    QTimer every;
    QObject::connect(&every, &QTimer::timeout, &window, [this] { happened.append(QStringLiteral("every")); });
    every.start(5);
    statement();
    EXPECT_EQ(happened, QStringList());
    EXPECT_TRUE(QTest::qWaitFor([this] { return happened.contains(QStringLiteral("timer")); }));
    EXPECT_TRUE(QTest::qWaitFor([this] { return happened.contains(QStringLiteral("every")); }));
}

TEST_F(WaitingWindow, CallOfAWorkerComesAfterTheStatement) {
    class Receiver : public QObject {
    public:
        bool event(QEvent* event) override {
            called = called || event->type() == QEvent::User;
            return QObject::event(event);
        }
        bool called = false;
    } receiver;
    QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
    statement();
    EXPECT_FALSE(receiver.called);
    QCoreApplication::processEvents();
    EXPECT_TRUE(receiver.called);
}

TEST_F(WaitingWindow, IsClosedByTheOperatorAfterTheStatement) {
    QCoreApplication::postEvent(window.windowHandle(), new QCloseEvent);
    statement();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(happened.contains(QStringLiteral("close asked"))) << "so that the statement can be ended";
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(WaitingWindow, CloseOfAnotherWindowAsksForNothing) {
    QWidget dialog;
    dialog.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QCoreApplication::postEvent(dialog.windowHandle(), new QCloseEvent);
    statement();
    EXPECT_EQ(happened, QStringList());
}

TEST_F(WaitingWindow, ClickThatCameDuringAStatementWaitsForTheNextOneToo) {
    clickOn(button);
    statement();
    statement();
    EXPECT_EQ(happened, QStringList());
    QCoreApplication::processEvents();
    EXPECT_EQ(happened, QStringList{QStringLiteral("button")});
}

}  // namespace
}  // namespace torvik

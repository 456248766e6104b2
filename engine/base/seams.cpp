// The real clock, sleep and message loop behind the seams.
#include "engine/base/seams.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <chrono>

namespace torvik {

namespace {

qint64 steadyMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void sleepMilliseconds(int milliseconds) {
    QThread::msleep(static_cast<unsigned long>(qMax(0, milliseconds)));
}

void pumpPending() {
    if (QCoreApplication::instance()) QCoreApplication::processEvents();
}

// An event loop of its own lets the thread rest between events, where polling would keep a core busy.
void pumpAtMost(int milliseconds) {
    if (!QCoreApplication::instance()) {
        sleepMilliseconds(milliseconds);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

Seams::Seams()
    : now([] { return QDateTime::currentDateTime(); }),
      tickCount(steadyMilliseconds),
      sleep(sleepMilliseconds),
      pumpMessages(pumpPending),
      pumpFor(pumpAtMost),
      tempFolder([] { return QDir::tempPath(); }) {}

QString LogTime(const QDateTime& time) {
    return time.toString(u"dd.MM.yyyy HH:mm:ss");
}

}  // namespace torvik

// A signal handler may do next to nothing, so it writes a byte into a socket that the message loop reads.
#include "shell/start/termination.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#endif

namespace torvik {

#ifdef Q_OS_UNIX

namespace {

constexpr unsigned kSecondsForAStart = 2;

int gSignalSockets[2] = {-1, -1};
volatile std::sig_atomic_t gStarting = 1;

void tellMessageLoop(int) {
    if (gStarting) ::alarm(kSecondsForAStart);  // whose own signal ends the process
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(gSignalSockets[0], &byte, sizeof byte);
}

}  // namespace

void onTerminationSignal(std::function<void()> onTerminate) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, gSignalSockets) != 0) return;
    auto* notifier = new QSocketNotifier(gSignalSockets[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [onTerminate = std::move(onTerminate)] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(gSignalSockets[1], &byte, sizeof byte);
        ::alarm(0);
        onTerminate();
    });
    struct sigaction action = {};
    action.sa_handler = tellMessageLoop;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

void terminationStartDone() {
    gStarting = 0;
}

#else

void onTerminationSignal(std::function<void()>) {}  // a window message closes the program there
void terminationStartDone() {}

#endif

}  // namespace torvik

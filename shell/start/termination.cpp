// A signal handler may do next to nothing, so it sets a timer that was made before, and writes a byte into a socket
// that the message loop reads.
#include "shell/start/termination.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <ctime>
#endif

namespace torvik {

#ifdef Q_OS_UNIX

namespace {

int gSignalSockets[2] = {-1, -1};
timer_t gTimer;
volatile std::sig_atomic_t gHasTimer = 0;
volatile std::sig_atomic_t gEnding = 0;

void startTimer() {
    if (gEnding || !gHasTimer) return;
    gEnding = 1;
    itimerspec time = {};
    time.it_value.tv_sec = kTimeToEnd.count() / 1000;
    time.it_value.tv_nsec = kTimeToEnd.count() % 1000 * 1'000'000;
    ::timer_settime(gTimer, 0, &time, nullptr);
}

void tellMessageLoop(int) {
    startTimer();
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(gSignalSockets[0], &byte, sizeof byte);
}

void endNow(int) {
    constexpr char kWords[] = "TorvikPosSync did not end in time and was ended\n";
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kWords, sizeof kWords - 1);
    ::_exit(1);
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

void onTerminationSignal(std::function<void()> onTerminate) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, gSignalSockets) != 0) return;
    auto* notifier = new QSocketNotifier(gSignalSockets[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [onTerminate = std::move(onTerminate)] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(gSignalSockets[1], &byte, sizeof byte);
        onTerminate();
    });
    sigevent alarm = {};
    alarm.sigev_notify = SIGEV_SIGNAL;
    alarm.sigev_signo = SIGALRM;
    gHasTimer = ::timer_create(CLOCK_MONOTONIC, &alarm, &gTimer) == 0;
    handle(SIGALRM, endNow);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) handle(signal, tellMessageLoop);
}

void beginTermination() {
    startTimer();
}

#else

void onTerminationSignal(std::function<void()>) {}  // a window message closes the program there
void beginTermination() {}                          // and the system itself ends one that takes too long

#endif

}  // namespace torvik

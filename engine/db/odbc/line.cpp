// See line.h.
#include "engine/db/odbc/line.h"

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#endif

namespace torvik::db::odbc {

#ifdef Q_OS_LINUX

namespace {

// An idle line is asked after 30 seconds, and then every 10 until it has been silent for 60.
constexpr int kIdleSeconds = 30;
constexpr int kBetweenProbes = 10;
constexpr int kProbes = 3;
constexpr int kUnansweredMs = 60'000;
constexpr int kForever = 0;

void set(int socket, int level, int option, int value) {
    ::setsockopt(socket, level, option, &value, sizeof value);
}

}  // namespace

void watchLine(int socket) {
    if (socket == kNoSocket) return;
    set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    set(socket, IPPROTO_TCP, TCP_KEEPIDLE, kIdleSeconds);
    set(socket, IPPROTO_TCP, TCP_KEEPINTVL, kBetweenProbes);
    set(socket, IPPROTO_TCP, TCP_KEEPCNT, kProbes);
    // What was sent and is not acknowledged is not probed for; the system would send it again for a quarter of an hour.
    set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, kUnansweredMs);
}

// The same limit would end a connection whose other end lives and reads nothing.
void allowUnread(int socket) {
    if (socket != kNoSocket) set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, kForever);
}

bool lineStands(int socket) {
    if (socket == kNoSocket) return true;
    pollfd asked{socket, POLLRDHUP, 0};
    return ::poll(&asked, 1, 0) == 0;
}

#else

void watchLine(int) {}
void allowUnread(int) {}
bool lineStands(int) {
    return true;
}

#endif

}  // namespace torvik::db::odbc

#include "tests/support/samba_server.h"

#include <arpa/inet.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <csignal>
#include <stdexcept>

#include "fleet/share/smb_share.h"

namespace torvik::test {

namespace {

constexpr int kStartMs = 20000;
constexpr int kLookAgainMs = 20;

constexpr char kConfiguration[] = R"([global]
workgroup = KJEDEN
server role = standalone server
smb ports = %2
interfaces = 127.0.0.1
bind interfaces only = yes
private dir = %1/private
lock directory = %1/lock
state directory = %1/state
cache directory = %1/cache
pid directory = %1/pid
ncalrpc dir = %1/ncalrpc
passdb backend = tdbsam:%1/private/passdb.tdb
log file = %1/smbd.log
map to guest = never
username map = %1/users
load printers = no
printcap name = /dev/null
disable spoolss = yes
usershare max shares = 0

[C$]
path = %1/share-C$
read only = no
valid users = %3

[LESES]
path = %1/share-LESES
read only = yes
valid users = %3
)";

[[noreturn]] void fail(const QString& text) {
    throw std::runtime_error(text.toStdString());
}

// Of the system, which Samba's users must be.
QString thisUser() {
    return QString::fromUtf8(::getpwuid(::getuid())->pw_name);
}

void write(const QString& name, const QString& text) {
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly)) fail(file.errorString());
    file.write(text.toUtf8());
}

struct Listener {
    Listener() : socket(::socket(AF_INET, SOCK_STREAM, 0)) {}
    ~Listener() { ::close(socket); }
    int socket;
};

sockaddr_in local(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

std::uint16_t freePort() {
    const Listener listener;
    sockaddr_in address = local(0);
    socklen_t size = sizeof address;
    if (::bind(listener.socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::getsockname(listener.socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        fail(QStringLiteral("no free port"));
    return ntohs(address.sin_port);
}

bool answers(std::uint16_t port) {
    const Listener client;
    const sockaddr_in address = local(port);
    return ::connect(client.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

QString program(const QString& name) {
    for (const char* folder : {"/usr/sbin/", "/usr/bin/"})
        if (QFile::exists(QString::fromUtf8(folder) + name)) return QString::fromUtf8(folder) + name;
    fail(name + QStringLiteral(" is not installed: scripts/setup.sh installs it"));
}

}  // namespace

SambaServer::SambaServer(qint64 fileLimit) : port_(freePort()) {
    for (const char* each : {"private", "lock", "state", "cache", "pid", "ncalrpc", "share-C$", "share-LESES"})
        QDir(folder_.path()).mkpath(QString::fromUtf8(each));
    writeConfiguration();
    addUser();
    start(fileLimit);
}

SambaServer::~SambaServer() {
    stop();
}

QString SambaServer::folder(const QString& share) const {
    return folder_.filePath(QStringLiteral("share-") + share);
}

QByteArray SambaServer::content(const QString& share, const QString& file) const {
    QFile opened(folder(share) + u'/' + file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArrayLiteral("(no such file)");
}

QStringList SambaServer::files(const QString& share) const {
    return QDir(folder(share)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

std::unique_ptr<FileShare> SambaServer::share(int timeoutMs) const {
    return smbFileShare({.port = port_, .timeoutMs = timeoutMs});
}

void SambaServer::writeConfiguration() const {
    write(folder_.filePath(QStringLiteral("smb.conf")),
          QString::fromUtf8(kConfiguration).arg(folder_.path(), QString::number(port_), thisUser()));
    write(folder_.filePath(QStringLiteral("users")),
          QStringLiteral("%1 = %2\n").arg(thisUser(), QString::fromUtf8(kUser)));
}

void SambaServer::addUser() const {
    QProcess add;
    add.start(program(QStringLiteral("pdbedit")),
              {QStringLiteral("-s"), folder_.filePath(QStringLiteral("smb.conf")), QStringLiteral("-a"),
               QStringLiteral("-t"), QStringLiteral("-u"), thisUser()});
    add.write((QByteArray(kPassword) + '\n').repeated(2));
    add.closeWriteChannel();
    if (!add.waitForFinished(kStartMs) || add.exitCode() != 0)
        fail(QStringLiteral("no user: ") + QString::fromUtf8(add.readAllStandardError()));
}

void SambaServer::start(qint64 fileLimit) {
    process_.setChildProcessModifier([fileLimit] {
        ::setsid();
        if (fileLimit == 0) return;
        const rlimit limit{static_cast<rlim_t>(fileLimit), static_cast<rlim_t>(fileLimit)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::signal(SIGXFSZ, SIG_IGN);
    });
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(program(QStringLiteral("smbd")),
                   {QStringLiteral("--foreground"), QStringLiteral("--no-process-group"),
                    QStringLiteral("--configfile=") + folder_.filePath(QStringLiteral("smb.conf"))});
    if (!process_.waitForStarted()) fail(process_.errorString());
    group_ = process_.processId();
    QElapsedTimer timer;
    timer.start();
    while (!answers(port_)) {
        if (process_.waitForFinished(kLookAgainMs) || timer.elapsed() > kStartMs)
            fail(QStringLiteral("smbd: ") + QString::fromUtf8(process_.readAll()) +
                 QString::fromUtf8(content(QStringLiteral("../"), QStringLiteral("smbd.log"))));
    }
}

// It has a process of its own for each connection, all in its group.
void SambaServer::stop() {
    if (group_ == 0) return;
    ::kill(static_cast<pid_t>(-group_), SIGKILL);
    process_.waitForFinished();
    group_ = 0;
}

void SambaServer::freeze() {
    ::kill(static_cast<pid_t>(-group_), SIGSTOP);
}

}  // namespace torvik::test

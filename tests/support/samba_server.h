// A Samba server for a test, on a port of its own and as the user who runs the test: root is not needed. Its shares are
// folders below its own: "C$" for writing and "LESES" for reading. With a limit it is a machine whose disk is full: no
// file there can grow beyond so many bytes (a limit of the process, which needs no root either).
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <cstdint>

#include "fleet/share/file_share.h"

namespace torvik::test {

class SambaServer {
public:
    // Raises std::runtime_error with the server's words when it does not come up.
    explicit SambaServer(qint64 fileLimit = 0);
    ~SambaServer();
    SambaServer(const SambaServer&) = delete;
    SambaServer& operator=(const SambaServer&) = delete;

    // Nobody answers any more, on standing connections neither.
    void stop();
    // Answers nothing, and keeps the connections.
    void freeze();

    [[nodiscard]] std::uint16_t port() const { return port_; }
    // The login of a demo chain's tills, as a till's row has one for its database and its share.
    static constexpr const char* kUser = "pos";
    static constexpr const char* kPassword = "Pos-1";

    // The folder that a share stands for, and a file in it.
    [[nodiscard]] QString folder(const QString& share) const;
    [[nodiscard]] QByteArray content(const QString& share, const QString& file) const;
    [[nodiscard]] QStringList files(const QString& share) const;

    // How this server's shares are reached.
    [[nodiscard]] std::unique_ptr<FileShare> share(int timeoutMs = 20000) const;

private:
    void writeConfiguration() const;
    void addUser() const;
    void start(qint64 fileLimit);

    QTemporaryDir folder_;
    std::uint16_t port_ = 0;
    QProcess process_;
    qint64 group_ = 0;
};

}  // namespace torvik::test

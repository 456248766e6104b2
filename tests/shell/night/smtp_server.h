// A real SMTP server, a process of its own, for the length of a test.
#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <stdexcept>

namespace torvik::test {

class SmtpServer {
public:
    // fault: what smtp_server.py can do wrong; none: it takes every mail.
    explicit SmtpServer(const QString& fault = {}) {
        QStringList arguments{QStringLiteral(TORVIK_SMTP_SERVER), mails_};
        if (!fault.isEmpty()) arguments << fault;
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral("/usr/bin/python3"), arguments);
        if (!process_.waitForReadyRead(20000)) throw std::runtime_error("the SMTP server did not start");
        port_ = process_.readLine().trimmed().toInt();
    }
    ~SmtpServer() {
        process_.kill();
        process_.waitForFinished();
    }
    SmtpServer(const SmtpServer&) = delete;
    SmtpServer& operator=(const SmtpServer&) = delete;

    [[nodiscard]] int port() const { return port_; }
    // What it has taken so far.
    [[nodiscard]] QList<QJsonObject> mails() const {
        QList<QJsonObject> all;
        QFile file(mails_);
        if (!file.open(QIODevice::ReadOnly)) return all;
        for (const QByteArray& line : file.readAll().split('\n'))
            if (!line.isEmpty()) all << QJsonDocument::fromJson(line).object();
        return all;
    }

private:
    QTemporaryDir folder_;
    QString mails_ = folder_.filePath(QStringLiteral("mails"));
    QProcess process_;
    int port_ = 0;
};

}  // namespace torvik::test

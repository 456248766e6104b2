// A mail with files attached, over plain SMTP without authentication: the logs of a night. AutomaticRun sends it.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>

namespace torvik {

struct LogMail {
    QString server;  // host name or address
    int port = 25;
    QString sender;
    QString recipients;  // a comma list
    QString subject;
    QString body;
    QStringList attachments;  // files
    QDateTime date;

    // Connects, sends and disconnects, calling `pump` all the time; when `cancelled` says so it ends. Raises
    // EngineError with the reason when the server did not take the mail for every recipient. Connecting may take six
    // seconds, an answer of the server half a minute.
    void send(const std::function<void()>& pump, const std::function<bool()>& cancelled) const;
};

}  // namespace torvik

// freebcp, of Debian's freetds-bin: rows out of a table into a file, and in from it. What bulk work is compared with.
#pragma once

#include <QProcess>
#include <stdexcept>

#include "engine/db/session.h"

namespace torvik::bench {

// At the session's server and with its login. what: freebcp's arguments up to the options, "database..table", "in" or
// "out", the file. form: how the file holds the rows; as text. Rows go in in batches of 10,000.
inline void freebcp(const db::Session& at, const QStringList& what, const QStringList& form = {QStringLiteral("-c")}) {
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral("freebcp"),
                  what + form +
                      QStringList{QStringLiteral("-b"), QStringLiteral("10000"), QStringLiteral("-S"),
                                  QString(at.Server()).replace(u',', u':'), QStringLiteral("-U"), at.Username(),
                                  QStringLiteral("-P"), at.Password()});
    program.waitForFinished(-1);
    if (program.exitStatus() != QProcess::NormalExit || program.exitCode() != 0)
        throw std::runtime_error("freebcp: " + program.readAll().toStdString());
}

}  // namespace torvik::bench

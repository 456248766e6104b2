// A script runner: a statement that may be long and returns nothing. Colons stand as they are; there are no parameters.
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include "engine/db/session.h"

namespace torvik::db {

class Script : public QObject {
public:
    explicit Script(Session* session = nullptr, QObject* parent = nullptr) : QObject(parent), session_(session) {}

    QStringList SQL;
    int CommandTimeout = 30;

    void SetConnection(Session* session) { session_ = session; }
    [[nodiscard]] Session* Connection() const { return session_; }

    // Runs all lines as one batch, to the reply's end; the first error is raised.
    void Execute();
    void ExecSQL() { Execute(); }

private:
    QPointer<Session> session_;
};

}  // namespace torvik::db

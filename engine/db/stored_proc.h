// A call of a stored procedure with parameters by name. Parameters not set are not sent, so their defaults hold.
#pragma once

#include <QObject>
#include <QPointer>

#include "engine/db/parameters.h"
#include "engine/db/session.h"

namespace torvik::db {

class StoredProc : public QObject {
public:
    explicit StoredProc(Session* session = nullptr, QObject* parent = nullptr);

    // The name may carry a version suffix: "ExecuteDtsFromPos;1".
    QString StoredProcName;
    int CommandTimeout = 30;

    void SetConnection(Session* session) { session_ = session; }
    [[nodiscard]] Session* Connection() const { return session_; }

    // The parameter, without "@" or ":"; made when first asked for. "RETURN_VALUE" is the procedure's return value.
    [[nodiscard]] Parameter& ParamByName(const QString& name);
    // Runs the call to its end, then fills in RETURN_VALUE and the output parameters. Rows are read past.
    void ExecProc();
    [[nodiscard]] int ReturnValue() const;

private:
    QPointer<Session> session_;
    Parameters params_;
};

}  // namespace torvik::db

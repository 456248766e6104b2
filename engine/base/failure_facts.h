// A failure taken apart, for the operator who asks what happened and for the structured log: what stands in the
// exception and in the failures nested in it, as values. Never a password: the session layer's errors hold none.
#pragma once

#include <QString>
#include <exception>
#include <optional>

#include "engine/base/failure_kind.h"
#include "engine/db/errors.h"

namespace torvik {

struct FailureFacts {
    FailureKind Kind = FailureKind::Other;
    std::optional<db::ConnectionError::Reason> Connection;  // why there is no connection
    QString Text;                                           // as the logs tell it: the outermost
    QString Step;                                           // the innermost step that is named; empty when none is
    QString Table;       // that the failed statement was about; empty when nothing was sent
    QString ServerText;  // the server's or the driver's own; empty when the program itself found the failure
    int Number = 0;      // the server's; 0 when it gave none

    // The reason in the operator's words; empty when Text says it all.
    [[nodiscard]] QString Reason() const;
    [[nodiscard]] QString Remedy() const;   // what the operator can do about it
    [[nodiscard]] QString NextRun() const;  // what the next run does by itself

    bool operator==(const FailureFacts&) const = default;
};

[[nodiscard]] FailureFacts FactsOf(const std::exception& failure);

// The first table, view or procedure that the batch names from this line on (1 is its first), or else at all. The
// server's catalogue does not count; nor does a line beyond the batch, which is a procedure's.
[[nodiscard]] QString TableOf(const QString& statement, int line);

}  // namespace torvik

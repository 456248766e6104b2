#include "engine/base/failure_kind.h"

#include "engine/base/abort.h"
#include "engine/db/errors.h"

namespace torvik {

namespace {

template <typename Kind>
bool is(const std::exception& failure) {
    return dynamic_cast<const Kind*>(&failure) != nullptr;
}

FailureKind kindOf(const std::exception& failure) {
    if (is<EAbort>(failure)) return FailureKind::Cancelled;
    if (is<db::CommitInDoubt>(failure)) return FailureKind::CommitInDoubt;
    if (is<db::ConnectionError>(failure)) return FailureKind::ConnectionLost;
    if (is<db::TimeoutError>(failure)) return FailureKind::TimedOut;
    if (is<db::StatementError>(failure)) return FailureKind::Refused;
    return FailureKind::Other;
}

}  // namespace

FailureKind classify(const std::exception& failure) {
    const FailureKind kind = kindOf(failure);
    if (kind != FailureKind::Other) return kind;
    const auto* nesting = dynamic_cast<const std::nested_exception*>(&failure);
    return nesting ? classify(nesting->nested_ptr()) : FailureKind::Other;
}

FailureKind classify(const std::exception_ptr& failure) {
    if (!failure) return FailureKind::Other;
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& known) {
        return classify(known);
    } catch (...) {
        return FailureKind::Other;
    }
}

}  // namespace torvik

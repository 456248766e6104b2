#include "engine/base/failure_kind.h"

#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/db/errors.h"

namespace torvik {
namespace {

// The failure as it comes to the one who asks, under the words of two layers.
template <typename Failure>
FailureKind underTwoLayers(const Failure& failure) {
    try {
        try {
            try {
                throw Failure(failure);
            } catch (...) {
                std::throw_with_nested(EngineError(QStringLiteral("steget feilet")));
            }
        } catch (...) {
            std::throw_with_nested(EngineError(QStringLiteral("overføringen feilet")));
        }
    } catch (const std::exception& outermost) {
        EXPECT_EQ(ErrorText(outermost), QStringLiteral("overføringen feilet"));
        return classify(outermost);
    }
}

TEST(FailureKindOf, SurvivesTheWordsOfHigherLayers) {
    const db::ConnectionError lost(db::ConnectionError::Reason::Lost, QStringLiteral("borte"));
    EXPECT_EQ(underTwoLayers(lost), FailureKind::ConnectionLost);
    EXPECT_EQ(underTwoLayers(db::CommitInDoubt(QStringLiteral("uten svar"), lost, false)), FailureKind::CommitInDoubt);
    EXPECT_EQ(underTwoLayers(db::TimeoutError(QStringLiteral("for lenge"))), FailureKind::TimedOut);
    EXPECT_EQ(underTwoLayers(db::StatementError(QStringLiteral("nektet"))), FailureKind::Refused);
    EXPECT_EQ(underTwoLayers(EAbort()), FailureKind::Cancelled);
    EXPECT_EQ(underTwoLayers(EngineError(QStringLiteral("selv"))), FailureKind::Other);
}

TEST(FailureKindOf, PlainFailuresAndNone) {
    EXPECT_EQ(classify(db::TimeoutError(QStringLiteral("for lenge"))), FailureKind::TimedOut);
    EXPECT_EQ(classify(std::make_exception_ptr(EAbort())), FailureKind::Cancelled);
    EXPECT_EQ(classify(std::make_exception_ptr(7)), FailureKind::Other);
    EXPECT_EQ(classify(std::exception_ptr()), FailureKind::Other);
}

}  // namespace
}  // namespace torvik

// After a till: a back-office session that broke is opened again and the walk's place on the roster found again, so
// that one break does not fail all tills that follow.
#pragma once

#include <QString>
#include <exception>

#include "engine/base/engine_context.h"

namespace torvik {

class BackOffice;
class TAvdeling;

class TargetReconnect {
public:
    TargetReconnect(const EngineContext& context, BackOffice& office, TAvdeling& roster)
        : context_(context), office_(office), roster_(roster) {}

    // Leaves the roster on this till's row; raises when the row is gone. Three rounds without a connection end quietly:
    // what the last of them failed with, null when the back office answers.
    std::exception_ptr CheckTargetConnection(int Ik_Ku_Id, const QString& Kassenr);

    // Whether the last of these calls had to open the session again.
    [[nodiscard]] bool HasReopened() const { return reopened_; }

private:
    void probe();
    void reopen();
    void locate(int Ik_Ku_Id, const QString& kassenr);

    EngineContext context_;
    BackOffice& office_;
    TAvdeling& roster_;
    bool reopened_ = false;
};

}  // namespace torvik

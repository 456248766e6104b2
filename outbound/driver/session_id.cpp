#include "outbound/driver/session_id.h"

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/db/query.h"

namespace torvik {

namespace {

// Rows that another send is writing are under a number that it holds: what they are locked by need not be waited for.
constexpr char kTake[] = R"(DECLARE @result int, @free int
EXEC @result = sp_getapplock @Resource = 'TorvikPosSync.SesjonID.%1', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = 0
SELECT @free = CASE WHEN @result >= 0 AND NOT EXISTS (SELECT 1 FROM VareEksport (NOLOCK) WHERE Ve_SesjonID = '%1') THEN 1 ELSE 0 END
IF @result >= 0 AND @free = 0
  EXEC sp_releaseapplock @Resource = 'TorvikPosSync.SesjonID.%1', @LockOwner = 'Session'
SELECT @free AS Ledig)";

constexpr char kRelease[] = "EXEC sp_releaseapplock @Resource = 'TorvikPosSync.SesjonID.%1', @LockOwner = 'Session'";

}  // namespace

SendSessionID::SendSessionID(db::Session& backOffice, const std::function<int()>& draw) : backOffice_(backOffice) {
    for (int draws = 0; draws < kNumbers; ++draws) {
        const QString number = QString::number(draw());
        if (!take(number)) continue;
        text_ = number;
        return;
    }
    throw EngineError(QStringLiteral("Fant ingen ledig sesjon for sending"));
}

SendSessionID::~SendSessionID() {
    if (!backOffice_.Connected()) return;
    try {
        db::Query release(&backOffice_);
        release.ParamCheck = false;
        release.SQL = QStringList{QString::fromUtf8(kRelease).arg(text_)};
        release.ExecSQL();
    } catch (const std::exception&) {
        // The lock goes with the session.
    }
}

bool SendSessionID::take(const QString& number) {
    db::Query lock(&backOffice_);
    lock.ParamCheck = false;
    lock.CommandTimeout = kQueryTimeout;
    lock.SQL = QString::fromUtf8(kTake).arg(number).split(QLatin1Char('\n'));
    lock.Open();
    return lock.FieldByName(QStringLiteral("Ledig")).AsInteger() == 1;
}

}  // namespace torvik

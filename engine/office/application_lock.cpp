#include "engine/office/application_lock.h"

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr char kTake[] = R"(declare @svar int
exec @svar = sp_getapplock @Resource = N'%1', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = 0
select @svar)";

// The lock is had before the question is asked; without rows the answer is one of nulls.
constexpr char kTakeAndAsk[] = R"(declare @svar int
exec @svar = sp_getapplock @Resource = N'%1', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = 0
select @svar, spurt.* from (select 1 rad) en left join (
%2
) spurt on 1 = 1)";

constexpr char kRelease[] = "exec sp_releaseapplock @Resource = N'%1', @LockOwner = 'Session'";

// Answers of sp_getapplock: below none of these is a lock that another session holds.
constexpr qint64 kGranted = 0;
constexpr qint64 kTimedOut = -1;

QStringList lines(const char* statement, const QString& name) {
    return statementLines(QString::fromUtf8(statement).arg(quotesDoubled(name)));
}

}  // namespace

ApplicationLock::ApplicationLock(db::Session& office, const QString& name, const QString& question)
    : office_(office), name_(name) {
    db::Query query(&office_);
    query.ParamCheck = false;
    query.CommandTimeout = office_.ConnectionTimeout();
    query.SQL = question.isEmpty() ? lines(kTake, name_)
                                   : statementLines(QString::fromUtf8(kTakeAndAsk).arg(quotesDoubled(name_), question));
    query.Open();
    const qint64 answer = query.Fields(0).AsInteger();
    if (answer < kTimedOut)
        throw EngineError(QStringLiteral("Klarte ikke å låse %1 (sp_getapplock svarte %2)").arg(name_).arg(answer));
    held_ = answer >= kGranted;
    if (question.isEmpty()) return;
    for (; !query.Eof(); query.Next())
        if (!query.Fields(1).IsNull()) answer_ << query.Fields(1).AsString().trimmed();
}

// A session that is gone has let go of the lock already; one that cannot let go of it is closed, or the lock would stay
// for as long as the window does.
ApplicationLock::~ApplicationLock() {
    if (!held_ || !office_.Connected()) return;
    try {
        db::Query query(&office_);
        query.ParamCheck = false;
        query.CommandTimeout = office_.ConnectionTimeout();
        query.SQL = lines(kRelease, name_);
        query.ExecSQL();
    } catch (const std::exception&) {
        try {
            office_.Close();
        } catch (const std::exception&) {
        }
    }
}

QString ApplicationLock::OfTill(int Ik_Ku_Id, const QString& kassenummer) {
    return QStringLiteral("TorvikPosSync.Kasse.%1.%2").arg(QString::number(Ik_Ku_Id), kassenummer);
}

QString ApplicationLock::OfStockCounts() {
    return QStringLiteral("TorvikPosSync.Varetelling");
}

}  // namespace torvik

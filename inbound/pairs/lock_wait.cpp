#include "inbound/pairs/lock_wait.h"

#include "engine/db/query.h"
#include "engine/db/session.h"

namespace torvik {

namespace {

constexpr char kShort[] = "SET LOCK_TIMEOUT 5000";  // milliseconds
constexpr char kEndless[] = "SET LOCK_TIMEOUT -1";

void set(db::Session& session, const char* sql) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QStringList{QString::fromUtf8(sql)};
    query.ExecSQL();
}

}  // namespace

LockWait::LockWait(db::Session& session) : session_(session) {
    set(session_, kShort);
}

LockWait::~LockWait() {
    try {
        if (session_.Connected()) set(session_, kEndless);
    } catch (const std::exception&) {
    }
}

}  // namespace torvik

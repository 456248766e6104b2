#include "engine/office/target_reconnect.h"

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/office/back_office.h"
#include "engine/roster/avdeling.h"

namespace torvik {

namespace {

constexpr int kRounds = 3;
constexpr int kPauseMs = 3000;

// Without its place the walk cannot go on.
struct RowIsGone : EngineError {
    using EngineError::EngineError;
};

}  // namespace

std::exception_ptr TargetReconnect::CheckTargetConnection(int Ik_Ku_Id, const QString& Kassenr) {
    std::exception_ptr failure;
    int rounds = kRounds;
    reopened_ = false;
    while (rounds > 0) {
        try {
            try {
                probe();
                return nullptr;
            } catch (const std::exception&) {
                --rounds;
                reopened_ = true;
                reopen();
                locate(Ik_Ku_Id, Kassenr.trimmed());
                failure = nullptr;
            }
        } catch (const RowIsGone&) {
            throw;
        } catch (const std::exception&) {
            failure = std::current_exception();
            context_.Seam.sleep(kPauseMs);
            context_.Seam.pumpMessages();
        }
    }
    return failure;
}

void TargetReconnect::probe() {
    db::Query& query = office_.GeneralQuery({QStringLiteral("select GETDATE()")});
    query.Open();
    query.Close();
    if (!roster_.Qry().Active()) throw EAbort();
}

void TargetReconnect::reopen() {
    office_.Session().Close();
    office_.Session().Open();
    roster_.Close();
    roster_.Open();
}

void TargetReconnect::locate(int Ik_Ku_Id, const QString& kassenr) {
    db::Query& tills = roster_.Qry();
    tills.Last();
    tills.First();
    tills.Locate(QStringLiteral("Ikk_Ik_Ku_ID;Ikk_Kassenummer"), {Ik_Ku_Id, kassenr});
    if (tills.FieldByName(QStringLiteral("Ikk_Ik_Ku_ID")).AsInteger() != Ik_Ku_Id ||
        roster_.Ikk_Kassenummer() != kassenr) {
        throw RowIsGone(QStringLiteral("Klarte ikke å lokalisere korrekt kasse (%1,%2) etter ny tilkobling til "
                                       "mÅlserver")
                            .arg(QString::number(Ik_Ku_Id), kassenr));
    }
}

}  // namespace torvik

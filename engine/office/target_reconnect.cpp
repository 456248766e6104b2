// After each till: a back-office session that broke is opened again and the walk's place found again, so that one break
// does not fail all tills that follow.
#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

namespace torvik {

namespace {
constexpr int kRounds = 3;
constexpr int kPauseMs = 3000;
}  // namespace

void TTorvikPos::CheckTargetConnection(int Ik_Ku_Id, const QString& Kassenr) {
    bool located = true;
    int rounds = kRounds;
    while (rounds > 0) {
        try {
            try {
                db::Query& probe = generalQuery({QStringLiteral("select GETDATE()")});
                probe.Open();
                probe.Close();
                if (!Avdeling->Qry().Active()) throw EAbort();
                rounds = 0;
            } catch (const std::exception&) {
                --rounds;
                relocateTill(Ik_Ku_Id, Kassenr, located);
            }
        } catch (const std::exception&) {
            // Without its place the walk cannot go on. Three rounds without a connection end quietly: what needs it
            // next fails.
            if (!located) throw;
            Seam.sleep(kPauseMs);
            Seam.pumpMessages();
        }
    }
}

void TTorvikPos::relocateTill(int Ik_Ku_Id, const QString& Kassenr, bool& located) {
    target().Close();
    target().Open();
    Avdeling->Close();
    Avdeling->Open();
    db::Query& tills = Avdeling->Qry();
    tills.Last();
    tills.First();
    const QString kassenr = Kassenr.trimmed();
    tills.Locate(QStringLiteral("Ikk_Ik_Ku_ID;Ikk_Kassenummer"), {Ik_Ku_Id, kassenr});
    if (tills.FieldByName(QStringLiteral("Ikk_Ik_Ku_ID")).AsInteger() != Ik_Ku_Id ||
        Avdeling->Ikk_Kassenummer() != kassenr) {
        located = false;
        throw EngineError(QStringLiteral("Klarte ikke å lokalisere korrekt kasse (%1,%2) etter ny tilkobling til "
                                         "mÅlserver")
                              .arg(QString::number(Ik_Ku_Id), kassenr));
    }
}

}  // namespace torvik

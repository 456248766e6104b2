#include "engine/office/standing_pair.h"

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/office/back_office.h"

namespace torvik {

namespace {

constexpr char kStanding[] = R"(select count(*) Antall from dts_logg (NOLOCK)
where dl_dlt_id = 1 and dl_ik_ku_id = :Ik_Ku_ID and dl_kassenr = :KasseNr and dl_info like 'Par {%')";

}  // namespace

bool HasStandingPair(BackOffice& office, int Ik_Ku_Id, const QString& KasseNr) {
    db::Query query(&office.Session());
    query.SQL = statementLines(kStanding);
    query.ParamByName(QStringLiteral("Ik_Ku_ID")) = Ik_Ku_Id;
    query.ParamByName(QStringLiteral("KasseNr")) = KasseNr;
    query.Open();
    return query.Fields(0).AsInteger() > 0;
}

}  // namespace torvik

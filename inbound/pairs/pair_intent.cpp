#include "inbound/pairs/pair_intent.h"

#include <QRegularExpression>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "inbound/pairs/lock_wait.h"

namespace torvik {

namespace {

constexpr int kLongestMachine = 60;  // dl_info has 255
constexpr int kStrikeTimeout = 600;  // seconds: a fetch by another copy can hold rows of dts_logg for its whole length

// Type 1 is one of those that nothing asks for: 0 is the mark of a run under way.
constexpr char kWrite[] = R"(insert into dts_logg (dl_dlt_id,dl_ik_ku_id,dl_kassenr,dl_tidspunkt,dl_dp_id, dl_info)
values (1,:Ik_Ku_ID,:KasseNr,getdate(),1,:Info))";

constexpr char kStrike[] = R"(delete from dts_logg
where dl_dlt_id = 1 and dl_ik_ku_id = :Ik_Ku_ID and dl_kassenr = :KasseNr and dl_info = :Info
SELECT @@ROWCOUNT Antall)";

// Without locks: a fetch of another till holds rows of this table for as long as it takes.
constexpr char kStanding[] =
    R"(select dl_info, convert(varchar(19), dl_tidspunkt, 120) dl_tidspunkt from dts_logg (NOLOCK)
where dl_dlt_id = 1 and dl_ik_ku_id = :Ik_Ku_ID and dl_kassenr = :KasseNr and dl_info like 'Par %'
order by dl_tidspunkt)";

constexpr char kStandsForCertain[] = R"(select dl_info from dts_logg WITH (UPDLOCK)
where dl_dlt_id = 1 and dl_ik_ku_id = :Ik_Ku_ID and dl_kassenr = :KasseNr and dl_info = :Info)";

// A query with the till's key, and the intent's text where the statement names it.
void prepare(db::Query& query, const char* sql, int ikKuId, const QString& kasseNr, const QString& info = {}) {
    query.SQL = statementLines(sql);
    query.ParamByName(QStringLiteral("Ik_Ku_ID")) = ikKuId;
    query.ParamByName(QStringLiteral("KasseNr")) = kasseNr;
    if (!info.isEmpty()) query.ParamByName(QStringLiteral("Info")) = info;
}

}  // namespace

QString PairIntent::text() const {
    return QStringLiteral("Par %1 %2, notat %3, maskin %4")
        .arg(id.toString(), subject, store.toString(), machine.left(kLongestMachine));
}

std::optional<PairIntent> PairIntent::fromText(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral(R"(^Par (\{[0-9a-fA-F-]{36}\}) (.+), notat (\{[0-9a-fA-F-]{36}\}), maskin (.*)$)"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch()) return {};
    return PairIntent{QUuid(match.captured(1)), match.captured(2), QUuid(match.captured(3)), match.captured(4), {}};
}

PairIntents::PairIntents(db::Session& backOffice, int Ik_Ku_Id, const QString& KasseNr)
    : backOffice_(backOffice), ikKuId_(Ik_Ku_Id), kasseNr_(KasseNr) {}

void PairIntents::write(const PairIntent& intent) {
    db::Query query(&backOffice_);
    prepare(query, kWrite, ikKuId_, kasseNr_, intent.text());
    query.ExecSQL();
}

bool PairIntents::strike(const PairIntent& intent) {
    db::Query query(&backOffice_);
    query.CommandTimeout = kStrikeTimeout;
    prepare(query, kStrike, ikKuId_, kasseNr_, intent.text());
    query.Open();
    return query.Fields(0).AsInteger() == 1;
}

std::vector<PairIntent> PairIntents::standing() {
    db::Query query(&backOffice_);
    prepare(query, kStanding, ikKuId_, kasseNr_);
    query.Open();
    std::vector<PairIntent> found;
    for (; !query.Eof(); query.Next()) {
        auto intent = PairIntent::fromText(query.Fields(0).AsString());
        if (!intent) continue;
        intent->began = query.Fields(1).AsString();
        found.push_back(*intent);
    }
    return found;
}

bool PairIntents::standsForCertain(const PairIntent& intent) {
    const LockWait shortWait(backOffice_);
    db::Query query(&backOffice_);
    prepare(query, kStandsForCertain, ikKuId_, kasseNr_, intent.text());
    query.Open();
    return !query.IsEmpty();
}

}  // namespace torvik

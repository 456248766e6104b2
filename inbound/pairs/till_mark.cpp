#include "inbound/pairs/till_mark.h"

#include <algorithm>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

// Times are compared in the form in which they were noted: a time that is sent as a parameter is finer than a datetime,
// and equals none.
constexpr TillMarkKind kKinds[] = {
    {TillMark::Kind::Settlement, "oppgjør",
     R"(UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL
WHERE OP_ID = :Key1 AND CONVERT(varchar(23), OP_OPPDATERTTIDSPUNKT, 121) = :Marked
SELECT @@ROWCOUNT Antall)",
     R"(SELECT OP_ID FROM OPPGJOR WITH (UPDLOCK)
WHERE OP_ID = :Key1 AND CONVERT(varchar(23), OP_OPPDATERTTIDSPUNKT, 121) = :Marked)"},
    {TillMark::Kind::SettlementStatus, "oppgjørstatus",
     R"(UPDATE OPPGJOR SET OP_STATUS = :Before WHERE OP_ID = :Key1 AND OP_STATUS = :Marked
SELECT @@ROWCOUNT Antall)",
     R"(SELECT OP_ID FROM OPPGJOR WITH (UPDLOCK) WHERE OP_ID = :Key1 AND OP_STATUS = :Marked)"},
    {TillMark::Kind::GiftCard, "gavekort",
     R"(UPDATE GAVEKORT SET GA_SYNKTIDSPUNKT = NULL
WHERE GA_ID = :Key1 AND GA_AVDNR = :Key2 AND GA_KASSENR = :Key3
AND CONVERT(varchar(23), GA_SYNKTIDSPUNKT, 121) = :Marked
SELECT @@ROWCOUNT Antall)",
     R"(SELECT GA_ID FROM GAVEKORT WITH (UPDLOCK)
WHERE GA_ID = :Key1 AND GA_AVDNR = :Key2 AND GA_KASSENR = :Key3
AND CONVERT(varchar(23), GA_SYNKTIDSPUNKT, 121) = :Marked)"},
    {TillMark::Kind::CreditNote, "tilgodelapp",
     R"(UPDATE TILGODELAPP SET TG_SYNKTIDSPUNKT = NULL
WHERE TG_ID = :Key1 AND TG_AVDNR = :Key2 AND TG_KASSENR = :Key3
AND CONVERT(varchar(23), TG_SYNKTIDSPUNKT, 121) = :Marked
SELECT @@ROWCOUNT Antall)",
     R"(SELECT TG_ID FROM TILGODELAPP WITH (UPDLOCK)
WHERE TG_ID = :Key1 AND TG_AVDNR = :Key2 AND TG_KASSENR = :Key3
AND CONVERT(varchar(23), TG_SYNKTIDSPUNKT, 121) = :Marked)"},
    {TillMark::Kind::TimeEntry, "time",
     R"(UPDATE TIMER SET TI_STATUS = :Before
WHERE TI_ID = :Key1 AND CONVERT(varchar(23), TI_TIDINN, 121) = :Key2 AND TI_STATUS = :Marked
SELECT @@ROWCOUNT Antall)",
     R"(SELECT TI_ID FROM TIMER WITH (UPDLOCK)
WHERE TI_ID = :Key1 AND CONVERT(varchar(23), TI_TIDINN, 121) = :Key2 AND TI_STATUS = :Marked)"},
    {TillMark::Kind::ReleaseTime, "klartidspunkt",
     R"(UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = CONVERT(datetime, :Before, 121) WHERE IN_KLAR_HENT_TIMER IS NULL
SELECT @@ROWCOUNT Antall)",
     R"(SELECT IN_ID FROM INNSTILLINGER WITH (UPDLOCK) WHERE IN_KLAR_HENT_TIMER IS NULL)"},
};

constexpr char kLastSettlement[] =
    R"(SELECT TOP 1 OP_ID, CONVERT(varchar(23), OP_TIDSPUNKT, 121) OP_TIDSPUNKT FROM OPPGJOR ORDER BY OP_ID DESC)";

constexpr char kSettlement[] = R"(SELECT OP_ID FROM OPPGJOR WITH (UPDLOCK)
WHERE OP_ID = :Id AND CONVERT(varchar(23), OP_TIDSPUNKT, 121) = :Tidspunkt)";

void prepare(db::Query& query, const char* sql, const TillMark& mark) {
    query.SQL = statementLines(sql);
    const auto set = [&query](const QString& name, const QString& value) {
        if (query.Params().Find(name)) query.ParamByName(name) = value.isEmpty() ? db::Value() : db::Value(value);
    };
    for (qsizetype i = 0; i < mark.key.size(); ++i) set(QStringLiteral("Key%1").arg(i + 1), mark.key[i]);
    set(QStringLiteral("Marked"), mark.marked);
    set(QStringLiteral("Before"), mark.before);
}

}  // namespace

std::span<const TillMarkKind> tillMarkKinds() {
    return kKinds;
}

const TillMarkKind& kindOf(const TillMark& mark) {
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [&mark](const TillMarkKind& kind) { return kind.kind == mark.kind; });
}

bool stands(const TillMark& mark, db::Session& till) {
    db::Query query(&till);
    prepare(query, kindOf(mark).stands, mark);
    query.Open();
    return !query.IsEmpty();
}

bool takeBack(const TillMark& mark, db::Session& till) {
    db::Query query(&till);
    prepare(query, kindOf(mark).takeBack, mark);
    query.Open();
    return query.Fields(0).AsInteger() == 1;
}

std::optional<NotedSettlement> lastSettlement(db::Session& till) {
    db::Query query(&till);
    query.SQL = statementLines(kLastSettlement);
    query.Open();
    return lastSettlement(query);
}

QString lastSettlementSql() {
    return QString::fromUtf8(kLastSettlement);
}

std::optional<NotedSettlement> lastSettlement(const db::DataSet& rows) {
    if (rows.IsEmpty()) return {};
    return NotedSettlement{rows.Fields(0).AsInteger(), rows.Fields(1).AsString()};
}

bool has(const NotedSettlement& settlement, db::Session& till) {
    db::Query query(&till);
    query.SQL = statementLines(kSettlement);
    query.ParamByName(QStringLiteral("Id")) = settlement.id;
    query.ParamByName(QStringLiteral("Tidspunkt")) = settlement.time;
    query.Open();
    return !query.IsEmpty();
}

}  // namespace torvik

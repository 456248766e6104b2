#include "inbound/pairs/pair_evidence.h"

#include <QRegularExpression>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr char kSettlementOnTill[] = R"(SELECT OP_ID, CONVERT(varchar(23), OP_TIDSPUNKT, 121) Tidspunkt,
CONVERT(varchar(23), OP_OPPDATERTTIDSPUNKT, 121) Hentet, OP_STATUS
FROM OPPGJOR WHERE OP_ID = :Op_Id)";

constexpr char kSettlementAtBackOffice[] =
    R"(SELECT CONVERT(varchar(23), Pos_Op_Synkronisert, 121) Overfort,
( SELECT COUNT(*) FROM PosOrdre WHERE Pos_Or_Op_Id = Pos_Op_Id AND Pos_Or_Ik_Ku_Id = Pos_Op_Ik_Ku_Id
AND Pos_Or_KasseNr = Pos_Op_KasseNr) Bonger,
( SELECT COUNT(*) FROM PosOrdre WHERE Pos_Or_Op_Id = Pos_Op_Id AND Pos_Or_Ik_Ku_Id = Pos_Op_Ik_Ku_Id
AND Pos_Or_KasseNr = Pos_Op_KasseNr AND Pos_Or_OppdatertBeholdning IS NOT NULL) Bokfort
FROM PosOppgjor WHERE Pos_Op_Id = :Op_Id AND Pos_Op_Ik_Ku_Id = :Ik_Ku_ID AND Pos_Op_KasseNr = :KasseNr)";

constexpr char kMarkedOnTill[] =
    R"(SELECT ( SELECT COUNT(*) FROM GAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL) Gavekort,
( SELECT CONVERT(varchar(23), MAX(GA_SYNKTIDSPUNKT), 121) FROM GAVEKORT) SisteGavekort,
( SELECT COUNT(*) FROM TILGODELAPP WHERE TG_SYNKTIDSPUNKT IS NULL) Tilgodelapper,
( SELECT CONVERT(varchar(23), MAX(TG_SYNKTIDSPUNKT), 121) FROM TILGODELAPP) SisteTilgodelapp,
( SELECT COUNT(*) FROM TIMER WHERE TI_STATUS < 16) Timer)";

constexpr char kCountsOnTill[] =
    R"(SELECT OP_ID, CONVERT(varchar(23), OP_TIDSPUNKT, 121) Tidspunkt,
CONVERT(varchar(23), OP_OPPDATERTTIDSPUNKT, 121) Hentet, OP_STATUS
FROM OPPGJOR WHERE OP_TYPE = 'VARETELLING' ORDER BY OP_ID)";

constexpr char kLastAtBackOffice[] =
    R"(SELECT COALESCE(MAX(Pos_Op_Id), 0) Oppgjor FROM PosOppgjor
WHERE Pos_Op_Ik_Ku_Id = :Ik_Ku_ID AND Pos_Op_KasseNr = :KasseNr AND Pos_Op_Synkronisert IS NOT NULL)";

std::unique_ptr<db::Query> open(db::Session& session, const char* sql,
                                std::initializer_list<std::pair<const char*, db::Value>> values) {
    auto query = std::make_unique<db::Query>(&session);
    query->SQL = statementLines(sql);
    for (const auto& [name, value] : values)
        if (query->Params().Find(QString::fromUtf8(name))) query->ParamByName(QString::fromUtf8(name)) = value;
    query->Open();
    return query;
}

QString textOf(const db::Query& row, const char* column) {
    const QString text = row.FieldByName(QString::fromUtf8(column)).AsString().trimmed();
    return text.isEmpty() ? QStringLiteral("-") : text;
}

// A settlement is known by its number, so its mark can be taken back without the note.
void gatherSettlement(PairEvidence& evidence, int settlement, const PairSides& sides) {
    const auto onTill = open(sides.till, kSettlementOnTill, {{"Op_Id", settlement}});
    if (onTill->IsEmpty()) {
        evidence.till << QStringLiteral("Oppgjør %1 finnes ikke på kassen").arg(settlement);
    } else {
        evidence.till
            << QStringLiteral("Oppgjør %1, tidspunkt %2").arg(QString::number(settlement), textOf(*onTill, "Tidspunkt"))
            << QStringLiteral("Merket som hentet: %1, status %2")
                   .arg(textOf(*onTill, "Hentet"), textOf(*onTill, "OP_STATUS"));
        evidence.note.settlement = NotedSettlement{settlement, textOf(*onTill, "Tidspunkt")};
        const QStringList key{QString::number(settlement)};
        const db::Field& fetched = onTill->FieldByName(QStringLiteral("Hentet"));
        if (sides.IsEnterprise && !fetched.IsNull())
            evidence.note.marks.push_back({TillMark::Kind::Settlement, key, fetched.AsString(), {}});
        if (!sides.IsEnterprise && textOf(*onTill, "OP_STATUS") == QStringLiteral("1"))
            evidence.note.marks.push_back(
                {TillMark::Kind::SettlementStatus, key, QStringLiteral("1"), QStringLiteral("0")});
        evidence.canTakeBack = !evidence.note.marks.empty();
    }
    const auto posted =
        open(sides.backOffice, kSettlementAtBackOffice,
             {{"Op_Id", settlement}, {"Ik_Ku_ID", evidence.note.Ik_Ku_Id}, {"KasseNr", evidence.note.KasseNr}});
    if (posted->IsEmpty())
        evidence.backOffice << QStringLiteral("Oppgjør %1 er ikke overført").arg(settlement);
    else
        evidence.backOffice
            << QStringLiteral("Oppgjør %1 overført: %2").arg(QString::number(settlement), textOf(*posted, "Overfort"))
            << QStringLiteral("%1 av %2 bonger er bokført").arg(textOf(*posted, "Bokfort"), textOf(*posted, "Bonger"));
}

// Which cards and time entries a transfer had marked stands in its note alone.
void gatherTransfer(PairEvidence& evidence, const PairSides& sides) {
    const auto marked = open(sides.till, kMarkedOnTill, {});
    evidence.till << QStringLiteral("Gavekort som ikke er hentet: %1, sist merket %2")
                         .arg(textOf(*marked, "Gavekort"), textOf(*marked, "SisteGavekort"))
                  << QStringLiteral("Tilgodelapper som ikke er hentet: %1, sist merket %2")
                         .arg(textOf(*marked, "Tilgodelapper"), textOf(*marked, "SisteTilgodelapp"))
                  << QStringLiteral("Timer som ikke er hentet: %1").arg(textOf(*marked, "Timer"));
    const auto last = open(sides.backOffice, kLastAtBackOffice,
                           {{"Ik_Ku_ID", evidence.note.Ik_Ku_Id}, {"KasseNr", evidence.note.KasseNr}});
    evidence.backOffice << QStringLiteral("Siste overførte oppgjør: %1").arg(textOf(*last, "Oppgjor"));
}

// Which counts were marked stands in the note alone, and what the back office has taken in nowhere: it adds them up.
void gatherStockCounts(PairEvidence& evidence, const PairSides& sides) {
    const auto counts = open(sides.till, kCountsOnTill, {});
    for (; !counts->Eof(); counts->Next())
        evidence.till << QStringLiteral("Varetelling %1, tidspunkt %2, merket som hentet: %3, status %4")
                             .arg(textOf(*counts, "OP_ID"), textOf(*counts, "Tidspunkt"), textOf(*counts, "Hentet"),
                                  textOf(*counts, "OP_STATUS"));
    evidence.backOffice << QStringLiteral("Kontroller om tellingen er med i varetellingen for perioden");
}

}  // namespace

PairEvidence gatherEvidence(const PairIntent& intent, const PairSides& sides) {
    static const QRegularExpression settlement(QStringLiteral("^oppgjør (\\d+)$"));
    PairEvidence evidence;
    evidence.note.intent = intent;
    evidence.note.Ik_Ku_Id = sides.Ik_Ku_Id;
    evidence.note.KasseNr = sides.KasseNr;
    evidence.backOffice << QStringLiteral("Begynt %1 av maskin %2, ikke fullført").arg(intent.began, intent.machine);
    const QRegularExpressionMatch match = settlement.match(intent.subject);
    if (match.hasMatch())
        gatherSettlement(evidence, match.captured(1).toInt(), sides);
    else if (intent.subject == QStringLiteral("varetelling"))
        gatherStockCounts(evidence, sides);
    else
        gatherTransfer(evidence, sides);
    return evidence;
}

}  // namespace torvik

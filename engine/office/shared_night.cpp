// All rows are of type 1, one of those that nothing asks for, and known by the beginning of their text. READPAST passes
// over what a visit under way holds: its rows are of other types, or of pairs of transactions.
#include "engine/office/shared_night.h"

#include <QRegularExpression>
#include <QSysInfo>
#include <array>

#include "engine/base/query_timeout.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/office/back_office.h"

namespace torvik {

namespace {

constexpr int kLongestMachine = 60;  // dl_info has 255

constexpr char kWrite[] = R"(insert into dts_logg (dl_dlt_id,dl_ik_ku_id,dl_kassenr,dl_tidspunkt,dl_dp_id, dl_info)
values (1,:Ik_Ku_ID,:KasseNr,getdate(),1,:Info))";

constexpr char kForget[] = R"(delete from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and (dl_info like 'Natt {%' or dl_info like 'Hjelp {%' or dl_info like 'Slutt {%'))";

constexpr char kEnd[] = R"(delete from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and dl_info = :Info)";

constexpr char kStanding[] = R"(select top 1 dl_info, dl_ik_ku_id, dl_kassenr from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and dl_info like 'Natt {%' and dl_tidspunkt > dateadd(hour,-12,getdate())
order by dl_tidspunkt desc)";

constexpr char kHelpers[] = R"(select count(*) Antall from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and dl_info like :Info)";

constexpr char kFetched[] = R"(select dl_ik_ku_id, dl_kassenr from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and dl_info like :Info)";

constexpr char kOfTill[] = R"(select dl_info from dts_logg WITH (READPAST)
where dl_dlt_id = 1 and (dl_info = '%1' or (dl_ik_ku_id = %2 and dl_kassenr = '%3'
and (dl_info like 'Slutt %4%' or dl_info like 'Par {%'))))";

struct EndWord {
    VisitEnd::Kind kind;
    QString word;
};

const std::array kEndWords{EndWord{VisitEnd::Kind::Fetched, QStringLiteral("hentet")},
                           EndWord{VisitEnd::Kind::FetchedWithErrors, QStringLiteral("hentet med feil")},
                           EndWord{VisitEnd::Kind::Failed, QStringLiteral("feilet")}};

QString thisMachine() {
    return QSysInfo::machineHostName().left(kLongestMachine);
}

QString nightText(const SharedNight& night) {
    return QStringLiteral("Natt %1, maskin %2").arg(night.id.toString(), night.machine);
}

QString helpText(const SharedNight& night) {
    return QStringLiteral("Hjelp %1, maskin ").arg(night.id.toString());
}

QString endText(const SharedNight& night, const EndWord& word) {
    return QStringLiteral("Slutt %1 %2, maskin ").arg(night.id.toString(), word.word);
}

}  // namespace

void SharedNights::write(int Ik_Ku_Id, const QString& KasseNr, const QString& info) {
    db::Query query(&office_.Session());
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(kWrite);
    query.ParamByName(QStringLiteral("Ik_Ku_ID")) = Ik_Ku_Id;
    query.ParamByName(QStringLiteral("KasseNr")) = KasseNr;
    query.ParamByName(QStringLiteral("Info")) = info;
    query.ExecSQL();
}

void SharedNights::run(const char* sql, const QString& info) {
    db::Query query(&office_.Session());
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(sql);
    if (!info.isEmpty()) query.ParamByName(QStringLiteral("Info")) = info;
    query.ExecSQL();
}

SharedNight SharedNights::Begin(int Ik_Ku_Id, const QString& KasseNr) {
    run(kForget);
    const SharedNight night{QUuid::createUuid(), thisMachine(), Ik_Ku_Id, KasseNr};
    write(Ik_Ku_Id, KasseNr, nightText(night));
    return night;
}

void SharedNights::End(const SharedNight& night) {
    run(kEnd, nightText(night));
}

std::optional<SharedNight> SharedNights::Standing() {
    db::Query query(&office_.Session());
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(kStanding);
    query.Open();
    if (query.IsEmpty()) return {};
    static const QRegularExpression form(QStringLiteral(R"(^Natt (\{[0-9a-fA-F-]{36}\}), maskin (.*)$)"));
    const QRegularExpressionMatch match = form.match(query.Fields(0).AsString().trimmed());
    if (!match.hasMatch()) return {};
    return SharedNight{QUuid(match.captured(1)), match.captured(2), static_cast<int>(query.Fields(1).AsInteger()),
                       query.Fields(2).AsString().trimmed()};
}

void SharedNights::Join(const SharedNight& night) {
    write(night.Ik_Ku_Id, night.KasseNr, helpText(night) + thisMachine());
}

bool SharedNights::HasHelpers(const SharedNight& night) {
    db::Query query(&office_.Session());
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(kHelpers);
    query.ParamByName(QStringLiteral("Info")) = helpText(night) + u'%';
    query.Open();
    return query.Fields(0).AsInteger() > 0;
}

void SharedNights::EndVisit(const SharedNight& night, int Ik_Ku_Id, const QString& KasseNr, VisitEnd::Kind kind) {
    for (const EndWord& word : kEndWords)
        if (word.kind == kind) write(Ik_Ku_Id, KasseNr, endText(night, word) + thisMachine());
}

std::set<std::pair<int, QString>> SharedNights::Fetched(const SharedNight& night) {
    db::Query query(&office_.Session());
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(kFetched);
    query.ParamByName(QStringLiteral("Info")) = QStringLiteral("Slutt %1 hentet%").arg(night.id.toString());
    std::set<std::pair<int, QString>> tills;
    for (query.Open(); !query.Eof(); query.Next())
        tills.emplace(static_cast<int>(query.Fields(0).AsInteger()), query.Fields(1).AsString().trimmed());
    return tills;
}

QString SharedNights::QuestionOf(const SharedNight& night, int Ik_Ku_Id, const QString& KasseNr) {
    return QString::fromUtf8(kOfTill).arg(quotesDoubled(nightText(night)), QString::number(Ik_Ku_Id),
                                          quotesDoubled(KasseNr), night.id.toString());
}

// A till that somebody has fetched has been fetched, whoever else failed at it.
TillMarks SharedNights::MarksIn(const SharedNight& night, const QStringList& answer) {
    TillMarks marks;
    for (const QString& text : answer) {
        if (text == nightText(night)) marks.NightStands = true;
        if (text.startsWith(QStringLiteral("Par {"))) marks.PairStands = true;
        for (const EndWord& word : kEndWords) {
            const QString beginning = endText(night, word);
            if (!text.startsWith(beginning)) continue;
            if (!marks.End || marks.End->kind == VisitEnd::Kind::Failed)
                marks.End = VisitEnd{word.kind, text.mid(beginning.size())};
        }
    }
    return marks;
}

}  // namespace torvik

#include "inbound/transfer/time_entries.h"

#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr int kFetched = 16;  // added to the status of an entry that was fetched

constexpr char kFetchedEntries[] = R"(SELECT TI_ID, TI_STATUS, CONVERT(varchar(23), TI_TIDINN, 121) TI_TIDINN
FROM TIMER WHERE TI_STATUS IN (17,18,20,24))";

// Locked, so that nobody sets another before the mark clears it.
constexpr char kReleaseTime[] =
    R"(SELECT CONVERT(varchar(23), IN_KLAR_HENT_TIMER, 121) FROM INNSTILLINGER WITH (UPDLOCK))";

constexpr char kGiveStatusBack[] = R"(UPDATE TIMER SET TI_STATUS = :Status WHERE TI_ID = :Id)";

constexpr char kGiveReleaseTimeBack[] =
    R"(UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = CONVERT(datetime, :Tidspunkt, 121))";

}  // namespace

void TimeEntries::copied(db::DataSet& source) {
    copied_.clear();
    const db::Field& id = source.FieldByName(QStringLiteral("TI_ID"));
    for (source.First(); !source.Eof(); source.Next()) copied_.insert(id.AsInteger());
}

void TimeEntries::before(db::Session& till, bool together) {
    const QStringList fetchedSql = statementLines(kFetchedEntries);
    const QStringList releaseSql = statementLines(kReleaseTime);
    db::PlannedReads reads(till, db::PlannedReads::Within::Transaction);
    if (together)
        for (const QStringList& sql : {fetchedSql, releaseSql}) reads.Plan(sql);
    db::Query query(&till);
    query.SQL = fetchedSql;
    db::DataSet& fetched = reads.Open(query);
    fetchedBefore_.clear();
    for (; !fetched.Eof(); fetched.Next()) fetchedBefore_.insert(fetched.Fields(0).AsInteger());
    query.SQL = releaseSql;
    releaseTime_ = reads.Open(query).Fields(0).AsString();
}

QString TimeEntries::FetchedSql() {
    return QString::fromUtf8(kFetchedEntries);
}

std::vector<TillMark> TimeEntries::after(db::DataSet& fetched, db::Session& till) {
    db::Query giveBack(&till);
    giveBack.SQL = statementLines(kGiveStatusBack);
    std::vector<TillMark> marks;
    bool givenBack = false;
    for (; !fetched.Eof(); fetched.Next()) {
        const qint64 id = fetched.Fields(0).AsInteger();
        if (fetchedBefore_.contains(id)) continue;
        const qint64 status = fetched.Fields(1).AsInteger();
        if (copied_.contains(id)) {
            marks.push_back({TillMark::Kind::TimeEntry,
                             {QString::number(id), fetched.Fields(2).AsString()},
                             QString::number(status),
                             QString::number(status - kFetched)});
            continue;
        }
        giveBack.ParamByName(QStringLiteral("Status")) = status - kFetched;
        giveBack.ParamByName(QStringLiteral("Id")) = id;
        giveBack.ExecSQL();
        givenBack = true;
    }
    if (releaseTime_.isEmpty()) return marks;
    if (!givenBack) {
        marks.push_back({TillMark::Kind::ReleaseTime, {}, {}, releaseTime_});
        return marks;
    }
    db::Query release(&till);
    release.SQL = statementLines(kGiveReleaseTimeBack);
    release.ParamByName(QStringLiteral("Tidspunkt")) = releaseTime_;
    release.ExecSQL();
    return marks;
}

}  // namespace torvik

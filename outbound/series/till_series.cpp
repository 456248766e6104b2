#include "outbound/series/till_series.h"

#include "engine/base/query_timeout.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"

namespace torvik {

namespace {

constexpr char kSeries[] = "select * from ledigid";

constexpr char kAppend[] = "insert into ledigid (LI_ATTRIBUTT, LI_NESTELEDIGEID) values (:Navn, :Neste)";

// The till may have given out numbers since it was read.
constexpr char kRaise[] = R"(update ledigid set LI_NESTELEDIGEID = :Neste
where LI_ATTRIBUTT = :Navn and (LI_NESTELEDIGEID is null or LI_NESTELEDIGEID < :Neste))";

constexpr char kIdentity[] = "SELECT IDENT_CURRENT( '%1' )";
constexpr char kReseed[] = "DBCC CHECKIDENT ('%1', RESEED, %2)";

// The one series that is the identity column of a table as well.
const QString kIdentitySeries = QStringLiteral("OPL_ID");
const QString kIdentityTable = QStringLiteral("OPPGJORLINJE");

constexpr char kHasMark[] =
    "select 1 from sysobjects t join syscolumns c on t.id = c.id where t.name = 'Innstillinger' and c.name = 'IN_NUMMERSERIER_SYNKRONISERT'";
constexpr char kMark[] = "update Innstillinger set IN_NUMMERSERIER_SYNKRONISERT = 1";

const QString kName = QStringLiteral("LI_ATTRIBUTT");
const QString kNext = QStringLiteral("LI_NESTELEDIGEID");

void prepare(db::Query& query, const QString& sql) {
    query.CommandTimeout = kQueryTimeout;
    query.SQL = statementLines(sql);
}

}  // namespace

TillSeries::TillSeries(db::Session& till, OperatorLog& log) : till_(till), log_(log) {
    db::Query all(&till_);
    prepare(all, QString::fromUtf8(kSeries));
    all.Open();
    series_.CopyFrom(all);
}

void TillSeries::raise(const QString& name, int next) {
    const bool isNew = !series_.Locate(kName, name, db::LocateOption::CaseInsensitive);
    if (isNew) {
        series_.Append();
        series_.FieldByName(kName) = name;
        series_.FieldByName(kNext) = 1;
    } else {
        series_.Edit();
    }
    if (name.toUpper() == kIdentitySeries) UpdateIdentity(kIdentityTable, next);

    const QString known = series_.text("LI_ATTRIBUTT");
    const int before = series_.integer("LI_NESTELEDIGEID");
    if (before < next) {
        log_.AddLog(isNew ? QStringLiteral("Ny verdi på %1 : %2").arg(known, QString::number(next))
                          : QStringLiteral("Endrer verdien på %1 fra nr. %2 til nr. %3")
                                .arg(known, QString::number(before), QString::number(next)));
        series_.FieldByName(kNext) = next;
    } else {
        log_.AddLog(QStringLiteral("Uendret verdi på %1").arg(known));
    }
    if (isNew)
        store(kAppend, known, series_.integer("LI_NESTELEDIGEID"));
    else if (before < next)
        store(kRaise, known, next);
    series_.Post();
}

void TillSeries::store(const char* sql, const QString& name, int next) {
    db::Query query(&till_);
    prepare(query, QString::fromUtf8(sql));
    query.ParamByName(QStringLiteral("Navn")) = name;
    query.ParamByName(QStringLiteral("Neste")) = next;
    query.ExecSQL();
}

void TillSeries::UpdateIdentity(const QString& TableName, int NewValue) {
    db::Query query(&till_);
    prepare(query, QString::fromUtf8(kIdentity).arg(TableName));
    query.Open();
    const qint64 current = query.Fields(0).AsInteger();
    query.Close();
    if (NewValue <= current) return;
    prepare(query, QString::fromUtf8(kReseed).arg(TableName, QString::number(NewValue)));
    query.ExecSQL();
}

void TillSeries::SetSeriesSynchronized() {
    db::Query query(&till_);
    prepare(query, QString::fromUtf8(kHasMark));
    query.Open();
    const bool hasMark = !query.IsEmpty();
    query.Close();
    if (!hasMark) return;
    prepare(query, QString::fromUtf8(kMark));
    query.ExecSQL();
}

}  // namespace torvik

#include "inbound/stock_counts/varetelling.h"

#include <QRandomGenerator>
#include <set>

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/roster/avdeling.h"
#include "engine/till/till_connection.h"
#include "inbound/stock_counts/counted_item.h"

namespace torvik {

namespace {

constexpr int kKeys = 9999999;     // a key is 0 to 9999998
constexpr int kLinesOfBatch = 64;  // of text: 32 counted items
constexpr char kUser[] = "sa";
constexpr int kEveryDepartment = -1;

// Tills from this schema version on have zones. Compared as text, so that "99" counts as newer.
constexpr char16_t kZonesSince[] = u"117";

constexpr char kCountedInChain[] =
    R"(SELECT In_AvdNr,In_KasseNr,Or_Tidspunkt,Ol_Va_Id,Ol_Antall,Ol_Salgspris,Or_Op_Id%1
FROM ordre JOIN ordrelinje ON (ol_or_id=or_id) JOIN Oppgjor ON ( Or_Op_Id=Op_Id), Innstillinger
WHERE or_status=0 AND OP_OPPDATERTTIDSPUNKT is null AND Op_Type='VARETELLING')";

constexpr char kCountedInSingleBackOffice[] =
    R"(SELECT In_AvdNr,In_KasseNr,Or_Tidspunkt,Ol_Va_Id,Ol_Antall,Ol_Salgspris,Or_Op_Id%1
FROM ordre JOIN ordrelinje ON (ol_or_id=or_id) JOIN Oppgjor ON ( Or_Op_Id=Op_Id), Innstillinger
WHERE or_status=0 AND OP_STATUS=0 AND Op_Type='VARETELLING')";

constexpr char kZonesOfLine[] = ", ( select ols_soner from ordrelinjesoner where ols_ol_id=ol_id ) ols_soner";

constexpr char kEmptyStage[] = R"(delete from nipponordrelinje
delete from nipponordrehode)";

constexpr char kTakeNumber[] = R"(declare @id int
exec GetSPID "NH_ID",@id out
select @id)";

constexpr char kInsertHead[] = R"(insert into nipponordrehode (Nh_ID,Nh_Ku_ID,Nh_Prislapp,Nh_Or_ID,Nh_Key)
select %1,%2,0,0, %3)";

// The zones are not taken over, although the till is asked for them: required.
constexpr char kInsertLine[] = R"(insert into nipponordrelinje (Nl_Nh_Id,Nl_Va_ID,Nl_Antall, Nl_Soner)
select %1,'%2',%3, null)";

constexpr char kStaged[] = "select count(*) from nipponordrelinje";

constexpr char kHandOver[] = "exec NipponToVaretell '%1',%2,%3, %4";

constexpr char kMarkInChain[] = "update oppgjor set op_oppdaterttidspunkt = GETDATE() where op_id=%1";

constexpr char kMarkInSingleBackOffice[] = "update oppgjor set op_status = 1 where op_id=%1";

void prepare(db::Query& query, const QStringList& sql) {
    query.ParamCheck = false;
    query.CommandTimeout = kQueryTimeout;
    query.SQL = sql;
}

int periodNumber(const QString& period) {
    bool isNumber = false;
    const int number = period.trimmed().toInt(&isNumber);
    if (!isNumber) throw EngineError(QStringLiteral("Perioden for varetelling er ikke et tall: '%1'").arg(period));
    return number;
}

}  // namespace

TVaretelling::TVaretelling(const TillVisit& visit, const QString& noteFolder)
    : TorvikPOS(visit.Roster.TorvikPOS()), visit_(visit), pairs_(visit_, noteFolder) {}

void TVaretelling::Execute(const QString& Periode) {
    TransactionPair pair(pairs_.sides(), QStringLiteral("varetelling"));
    pair.begin();
    try {
        bring(pair, Periode);
        pair.commit();
    } catch (const std::exception& e) {
        pairs_.fail(pair, e,
                    QStringLiteral("Varetelling for avdeling {Avdeling} kassenummer {Kassenummer} ble ikke hentet: "
                                   "{Feilmelding}"),
                    {visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer, ErrorText(e)},
                    TransactionPair::RollbackLines::Bare);
        throw;
    }
    warnOfFailures();
}

void TVaretelling::bring(TransactionPair& pair, const QString& period) {
    const int key = QRandomGenerator::global()->bounded(kKeys);
    db::Query counted(&visit_.TillSession);
    openCounted(counted);
    if (counted.IsEmpty()) throw EngineError(QStringLiteral("Ingen varetelling å hente"));
    attempt([this] { atBackOffice(statementLines(kEmptyStage)); });
    const int head = takeNumber();
    stageHead(head, counted.text("In_AvdNr"), key);
    stageLines(head, counted);
    tellStaged();
    handOver(period, key);
    markFetched(pair, counted);
}

// The version is that of the till that was last asked for it: this run asks none.
void TVaretelling::openCounted(db::Query& counted) const {
    const bool hasZones = visit_.Connection.DbVersion() >= QStringView(kZonesSince);
    prepare(counted, statementLines(QString::fromUtf8(visit_.Context.Options.IsEnterprise ? kCountedInChain
                                                                                          : kCountedInSingleBackOffice)
                                        .arg(hasZones ? QString::fromUtf8(kZonesOfLine) : QString())));
    counted.Open();
}

int TVaretelling::takeNumber() const {
    db::Query number(&visit_.OfficeSession);
    prepare(number, statementLines(kTakeNumber));
    number.Open();
    return static_cast<int>(number.Fields(0).AsInteger());
}

void TVaretelling::stageHead(int head, const QString& department, int key) {
    const int Ik_Ku_Id = visit_.Roster.GetIk_Ku_Id(department);
    attempt([&] {
        atBackOffice(statementLines(QString::fromUtf8(kInsertHead)
                                        .arg(QString::number(head), QString::number(Ik_Ku_Id), QString::number(key))));
    });
}

void TVaretelling::stageLines(int head, db::Query& counted) {
    QStringList batch;
    while (!counted.Eof()) {
        const QString item = ResolveCountedItem(visit_, counted.text("Ol_Va_Id"));
        const double quantity = counted.FieldByName(QStringLiteral("Ol_Antall")).AsFloat();
        batch << statementLines(
            QString::fromUtf8(kInsertLine).arg(QString::number(head), quotesDoubled(item), numberLiteral(quantity)));
        counted.Next();
        if (batch.size() % kLinesOfBatch != 0 && !counted.Eof()) continue;
        attempt([&] { atBackOffice(batch); });
        batch.clear();
    }
}

void TVaretelling::tellStaged() const {
    db::Query staged(&visit_.OfficeSession);
    prepare(staged, statementLines(kStaged));
    staged.Open();
    visit_.Log.AddLog(QStringLiteral("Det er lagt %1 poster i nipponordrelinje").arg(staged.Fields(0).AsInteger()));
}

void TVaretelling::handOver(const QString& period, int key) {
    const QStringList sql{QString::fromUtf8(kHandOver).arg(QString::fromUtf8(kUser),
                                                           QString::number(periodNumber(period)),
                                                           QString::number(kEveryDepartment), QString::number(key))};
    if (visit_.Context.Options.RunAsService())
        atBackOffice(sql);
    else
        attempt([&] { atBackOffice(sql); });
}

// A settlement whose lines do not stand together is marked more than once; the note holds the last mark.
void TVaretelling::markFetched(TransactionPair& pair, db::Query& counted) const {
    const bool inChain = visit_.Context.Options.IsEnterprise;
    std::set<int> settlements;
    int previous = -1;
    for (counted.First(); !counted.Eof(); counted.Next()) {
        const int settlement = counted.integer("Or_Op_Id");
        if (settlement == previous) continue;
        onTill({QString::fromUtf8(inChain ? kMarkInChain : kMarkInSingleBackOffice).arg(settlement)});
        settlements.insert(settlement);
        previous = settlement;
    }
    for (const int settlement : settlements) pairs_.noteSettlement(pair, settlement);
}

// What is only told on the way is followed by the marks: required. The lines that were told stand above this one.
void TVaretelling::warnOfFailures() const {
    if (failures_ == 0) return;
    visit_.Log.AddLog(QStringLiteral("Varetellingen (avd. %1, kasse %2) er merket som hentet, men %3 setninger feilet. "
                                     "Kontroller tellingen i back office")
                          .arg(visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer, QString::number(failures_)),
                      true, kls_Warning);
}

void TVaretelling::attempt(const std::function<void()>& work) {
    try {
        work();
    } catch (const EAbort&) {
        throw;  // a statement that was ended is no refusal: nothing is marked
    } catch (const std::exception& e) {
        ++failures_;
        visit_.Log.AddLog(ErrorText(e), true);
    }
}

void TVaretelling::onTill(const QStringList& sql) const {
    db::Query query(&visit_.TillSession);
    prepare(query, sql);
    query.ExecSQL();
}

void TVaretelling::atBackOffice(const QStringList& sql) const {
    db::Query query(&visit_.OfficeSession);
    prepare(query, sql);
    query.ExecSQL();
}

}  // namespace torvik

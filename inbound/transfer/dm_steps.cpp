// The steps of the transfer that are no table transfers, and the questions by which table transfers are prepared.
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "inbound/transfer/maps/table_map.h"
#include "inbound/transfer/staging_tables.h"

namespace torvik {

namespace {

constexpr char kRecentStarts[] =
    R"(select * from dts_logg where dl_dlt_id = 0 and dl_ik_ku_id = %1 and dl_kassenr = '%2' and dl_tidspunkt > dateadd(minute,-10, current_timestamp))";

constexpr char kTillOfRun[] =
    R"(SELECT internkundekasse.*, Ik_Avdelingsnummer FROM internkundekasse join InternKunde ON Ikk_Ik_Ku_Id=Ik_Ku_Id  WHERE ikk_ik_ku_id=%1  AND ikk_kassenummer='%2')";

// The whole of the protection against fetching twice: the first id moves on only when the back office has posted a
// settlement and its transaction has committed.
constexpr char kFirstId[] =
    R"(SELECT COALESCE((MAX(POS_OP_ID) + 1),1) OP_ID FROM POSOPPGJOR WHERE POS_OP_IK_KU_ID = %1 AND POS_OP_KASSENR = '%2' AND Pos_Op_Synkronisert IS NOT NULL)";

constexpr char kNewRunId[] = "SELECT NEWID() AS UNID";

constexpr char kKnownStaff[] = "select ika_id from InternkundeAnsatt where Ika_Ik_Ku_ID=%1 order by ika_id";

constexpr char kTimeImportType[] =
    "select isnull(Ik_TimeImportType,1) Ik_TimeimportType from InternKunde where Ik_Ku_ID = %1";

constexpr char kDropUtbetalingImport[] =
    R"(if exists (select 1 from  sysobjects where name = 'sp_UTBETALINGIMPORT' and type = 'P')
drop procedure sp_UTBETALINGIMPORT)";

constexpr char kCreateUtbetalingImport[] = R"(create procedure sp_UTBETALINGIMPORT (@id int)
as
if exists (select 1 from  sysobjects where id = object_id('UTBETALINGIMPORT') and type = 'U')
drop table UTBETALINGIMPORT
create table UTBETALINGIMPORT (
  iUB_BT_ID int not null,
  iUB_NAVN varchar(25) not null,
  iUB_KONTO char(11) not null,
  iUB_TELEFON varchar(30) null,
  iUB_EPOST varchar(255) null,
  iUB_ADRESSE varchar(512) null,
  constraint iPK_UTBETALING primary key (iUB_BT_ID)
)
if (select in_dbversion from innstillinger) >= '149.0'
insert into UTBETALINGIMPORT select UB_BT_ID,UB_NAVN,UB_KONTO,UB_TELEFON,UB_EPOST,UB_ADRESSE from UTBETALING,BETALING,ORDRE
where ub_bt_id = bt_id and bt_or_id = or_id and or_op_id >=@id)";

constexpr char kInsertUtbetaling[] = "exec sp_UTBETALINGIMPORT :Op_ID";

constexpr char kMarkReleasedTimer[] = R"(UPDATE Timer SET Ti_Status = Ti_Status + 16
FROM innstillinger
WHERE Ti_Status IN (2,4,8)
  AND IN_KLAR_HENT_TIMER is not null and coalesce(ti_korrigerttidinn, ti_tidinn)<=IN_KLAR_HENT_TIMER
UPDATE innstillinger SET IN_KLAR_HENT_TIMER=null)";

constexpr char kMarkClosedTimer[] = R"(UPDATE Timer SET Ti_Status = Ti_Status + 16
WHERE Ti_Status IN (1,2,4,8) AND NOT coalesce(ti_korrigerttidut, ti_tidut) IS NULL
UPDATE innstillinger SET IN_KLAR_HENT_TIMER=null)";

constexpr char kDeleteStartMark[] =
    "delete from dts_logg where dl_dlt_id = 0 and dl_ik_ku_id = %1 and dl_kassenr = '%2'";

constexpr int kReleasedOnly = 0;  // time import type: only entries that the till has released

// The staff that the back office has, as a list of literals: the till's others are the ones to send.
QString staffList(db::DataSet& staff) {
    QStringList ids;
    for (; !staff.Eof(); staff.Next()) ids << QStringLiteral("'%1'").arg(quotesDoubled(staff.text("ika_id")));
    const QString list = ids.join(QLatin1Char(','));
    return list.trimmed().isEmpty() ? QStringLiteral("'-1'") : list;
}

}  // namespace

std::unique_ptr<db::Query> TdmPOStoTorvik::destinationQuery(const QString& sql) const {
    auto query = std::make_unique<db::Query>(destinationConnection_);
    query->ParamCheck = false;
    query->SQL = QStringList{sql};
    return query;
}

void TdmPOStoTorvik::initialize() {
    Progress(step_, 0, true, 0);
    const auto starts =
        destinationQuery(QString::fromUtf8(kRecentStarts).arg(QString::number(Ik_Ku_ID), quotesDoubled(kasseNr_)));
    starts->Open();
    noRecentStart_ = starts->IsEmpty();
    Progress(step_, 1, true, 1);
}

void TdmPOStoTorvik::createTempTables() {
    Progress(QStringLiteral("Creating temporary tables"), 0, true, 0);
    qryCreateTempTables.SQL = createTempTablesSql();
    qryCreateTempTables.ExecSQL();
    Progress(QStringLiteral("Temporary tables created"), 1, true, 1);
}

void TdmPOStoTorvik::startup() {
    const TillLogin login = askBackOffice();
    if (!sourceConnection_->Connected()) {
        sourceConnection_->SetDatabase(login.database);
        sourceConnection_->SetUsername(login.user);
        sourceConnection_->SetPassword(login.password);
        sourceConnection_->SetServer(login.server);
        sourceConnection_->SetTrustServerCertificate(login.trusted);
        sourceConnection_->Open();
    }
    if (ReadsTogether && !schema_) schema_ = TillSchema::Ask(*sourceConnection_);
    tillVersion_ = schema_ ? schema_->Version() : askTillVersion();
    Progress(step_, 1, true, 1);
}

// The department, the first settlement to fetch and the run's identifier, and how the till is logged in to.
TdmPOStoTorvik::TillLogin TdmPOStoTorvik::askBackOffice() {
    const QStringList till =
        statementLines(QString::fromUtf8(kTillOfRun).arg(QString::number(Ik_Ku_ID), quotesDoubled(kasseNr_)));
    const QStringList first =
        statementLines(QString::fromUtf8(kFirstId).arg(QString::number(Ik_Ku_ID), quotesDoubled(kasseNr_)));
    const QStringList id = statementLines(kNewRunId);
    db::PlannedReads reads(*destinationConnection_, db::PlannedReads::Within::Transaction);
    if (ReadsTogether)
        for (const QStringList& sql : {till, first, id}) reads.Plan(sql);
    db::Query query(destinationConnection_);
    query.ParamCheck = false;

    query.SQL = till;
    const db::DataSet& row = reads.Open(query);
    ikAvdelingsnummer_ = row.text("Ik_Avdelingsnummer");
    const TillLogin login{row.text("ikk_database"), row.text("ikk_brukernavn"), row.text("ikk_passord"),
                          row.text("ikk_server"), row.integer("Ikk_AutentiseringType") == 1};
    Progress(QStringLiteral("Starter overføring fra avd %1, kassenr %2 (%3)")
                 .arg(QString::number(Ik_Ku_ID), kasseNr_, login.database),
             0, true, 1);
    query.SQL = first;
    firstId_ = reads.Open(query).FieldByName(QStringLiteral("OP_ID")).AsInteger();
    query.SQL = id;
    unId_ = reads.Open(query).FieldByName(QStringLiteral("UNID")).AsString();
    return login;
}

int TdmPOStoTorvik::askTillVersion() {
    db::Query version(sourceConnection_);
    version.SQL = statementLines(TillSchema::VersionSql());
    version.Open();
    return version.integer("IN_DBVERSION");
}

bool TdmPOStoTorvik::tillHasTable(const char* name) {
    if (schema_) return schema_->Has(name);
    qrySource.Close();
    qrySource.SQL = QStringList{TillSchema::TableSql(QString::fromUtf8(name))};
    qrySource.Open();
    return qrySource.FieldByName(QStringLiteral("Antall")).AsInteger() > 0;
}

QString TdmPOStoTorvik::sourceSql(const TableMap& map) {
    const char* text = map.source;
    if (map.releasedSource) {
        if (!ReadsTogether) timeImportType_.reset();
        if (timeImportType() == kReleasedOnly) text = map.releasedSource;
    }
    QString sql = QString::fromUtf8(text);
    sql.replace(QStringLiteral("%d"), QString::number(firstId_));
    if (sql.contains(QStringLiteral("%s"))) sql.replace(QStringLiteral("%s"), knownStaff());
    return sql;
}

// What the steps want to know of the back office, in one round trip. What it refuses is asked again, and told, by the
// step that needs it.
void TdmPOStoTorvik::askForSources() {
    const QStringList staff{QString::fromUtf8(kKnownStaff).arg(Ik_Ku_ID)};
    const QStringList type{QString::fromUtf8(kTimeImportType).arg(Ik_Ku_ID)};
    db::PlannedReads reads(*destinationConnection_, db::PlannedReads::Within::Transaction);
    for (const QStringList& sql : {staff, type}) reads.Plan(sql);
    qryGeneral.SQL = staff;
    knownStaff_ = staffList(reads.Open(qryGeneral));
    qryGeneral.SQL = type;
    timeImportType_ = reads.Open(qryGeneral).integer("Ik_TimeimportType");
    qryGeneral.Close();
}

QString TdmPOStoTorvik::knownStaff() {
    if (knownStaff_) return *knownStaff_;
    qryGeneral.Close();
    qryGeneral.SQL = QStringList{QString::fromUtf8(kKnownStaff).arg(Ik_Ku_ID)};
    qryGeneral.Open();
    const QString list = staffList(qryGeneral);
    qryGeneral.Close();
    return list;
}

int TdmPOStoTorvik::timeImportType() {
    if (timeImportType_) return *timeImportType_;
    qryGeneral.Close();
    qryGeneral.SQL = QStringList{QString::fromUtf8(kTimeImportType).arg(Ik_Ku_ID)};
    qryGeneral.Open();
    timeImportType_ = qryGeneral.integer("Ik_TimeimportType");
    qryGeneral.Close();
    return *timeImportType_;
}

void TdmPOStoTorvik::createUtbetalingImport() {
    for (const char* sql : {kDropUtbetalingImport, kCreateUtbetalingImport}) {
        qryCreateUtbetalingImport.SQL = statementLines(sql);
        qryCreateUtbetalingImport.ExecSQL();
    }
}

void TdmPOStoTorvik::insertUtbetaling() {
    qryInsertUtbetaling.SQL = statementLines(kInsertUtbetaling);
    qryInsertUtbetaling.ParamByName(QStringLiteral("Op_ID")) = firstId_;
    qryInsertUtbetaling.ExecSQL();
    const auto rows = static_cast<int>(qryInsertUtbetaling.RowsAffected());
    Progress(QStringLiteral("Overfører Utbetalinger"), rows, true, rows);
}

void TdmPOStoTorvik::runProcedure(db::StoredProc& procedure) {
    procedure.ParamByName(QStringLiteral("Ik_Ku_Id")) = Ik_Ku_ID;
    procedure.ParamByName(QStringLiteral("KasseNr")) = kasseNr_;
    procedure.ParamByName(QStringLiteral("KasseNr")).SetType(db::FieldType::Integer);
    procedure.ParamByName(QStringLiteral("UnId")) = QUuid(unId_);
    procedure.ExecProc();
}

void TdmPOStoTorvik::insertData() {
    Progress(QStringLiteral("Overfører data til Torvik"), 0, true, 0);
    runProcedure(spInsert);
    Progress(QStringLiteral("Data overført til Torvik"), 1, true, 1);
}

// Adding 16 takes a time entry out of the statuses that are fetched, so that it is fetched once.
void TdmPOStoTorvik::updateTimer() {
    Progress(QStringLiteral("Oppdaterer Timer"), 0, true, 0);
    if (!ReadsTogether) timeImportType_.reset();
    qryUpdateTimer.SQL = statementLines(timeImportType() == kReleasedOnly ? kMarkReleasedTimer : kMarkClosedTimer);
    timeEntries_.before(*sourceConnection_, ReadsTogether);
    if (ReadsTogether) return markTimerTogether();
    qryUpdateTimer.ExecSQL();
    db::Query fetched(sourceConnection_);
    fetched.SQL = statementLines(TimeEntries::FetchedSql());
    fetched.Open();
    marks_ = timeEntries_.after(fetched, *sourceConnection_);
}

// The mark, and behind it what has been marked, and the settlement by which the till is known again.
void TdmPOStoTorvik::markTimerTogether() {
    db::BatchedReads reads(*sourceConnection_);
    reads.CommandTimeout = qryUpdateTimer.CommandTimeout;
    reads.AddStatement(qryUpdateTimer.SQL.join(QStringLiteral("\r\n")));
    for (const QString& sql : {TimeEntries::FetchedSql(), lastSettlementSql()}) reads.AddRead(sql);
    reads.Send();
    reads.OpenNext(TimeEntries::FetchedSql());
    marks_ = timeEntries_.after(reads, *sourceConnection_);
    reads.OpenNext(lastSettlementSql());
    lastSettlement_ = lastSettlement(reads);
}

std::optional<NotedSettlement> TdmPOStoTorvik::LastSettlement() const {
    return lastSettlement_ ? *lastSettlement_ : lastSettlement(*sourceConnection_);
}

void TdmPOStoTorvik::deleteTemp() {
    runProcedure(spDeleteTemp);
}

void TdmPOStoTorvik::finish() {
    destinationQuery(QString::fromUtf8(kDeleteStartMark).arg(QString::number(Ik_Ku_ID), quotesDoubled(kasseNr_)))
        ->ExecSQL();
}

}  // namespace torvik

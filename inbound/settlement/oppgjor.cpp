#include "inbound/settlement/oppgjor.h"

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/office/item_numbers.h"
#include "engine/roster/avdeling.h"
#include "engine/run/run_control.h"
#include "inbound/settlement/single_back_office.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr char kOpenInChain[] =
    "SELECT Op_Id,OP_TIDSPUNKT,In_AvdNr FROM Oppgjor,Innstillinger WHERE OP_TYPE='NORMAL' AND OP_OPPDATERTTIDSPUNKT is null";

constexpr char kOpenInSingleBackOffice[] =
    "SELECT Op_Id,OP_TIDSPUNKT,In_AvdNr FROM Oppgjor,Innstillinger WHERE OP_TYPE='NORMAL' AND OP_STATUS=0";

constexpr char kPaymentsOfSettlement[] = R"(DECLARE @Op_Id int
SET @Op_Id=%1
SELECT * FROM OppgjorBetaling WHERE Ob_Op_Id=@Op_Id)";

}  // namespace

TOppgjor::TOppgjor(const TillVisit& visit, OppgjorJoinPoints joinPoints)
    : QObject(&visit.Roster),
      visit_(visit),
      joinPoints_(std::move(joinPoints)),
      status_(visit_),
      pairs_(visit_, joinPoints_.NoteFolder),
      transfer_(visit_, pairs_, status_, FqryGeneralTarget),
      posting_(visit_, pairs_, status_, FqryGeneralTarget) {
    for (db::Query* query : {&FqryGeneralTarget, &FqryOppgjor, &FqryOppgjorBetaling}) {
        query->CommandTimeout = kQueryTimeout;
        query->ParamCheck = false;
    }
    FqryGeneralTarget.SetConnection(&visit_.OfficeSession);
    for (db::Query* query : {&FqryOppgjor, &FqryOppgjorBetaling}) query->SetConnection(&visit_.TillSession);
    FqryOppgjor.SQL =
        QStringList{QString::fromUtf8(visit_.Context.Options.IsEnterprise ? kOpenInChain : kOpenInSingleBackOffice)};
    FqryOppgjorBetaling.SQL = statementLines(QString::fromUtf8(kPaymentsOfSettlement).arg(-1));
}

int TOppgjor::NumDaysSinceLastBackup() {
    return joinPoints_.DaysSinceLastBackup ? joinPoints_.DaysSinceLastBackup(*this) : -1;
}

void TOppgjor::GetList(QStringList& List) {
    List.clear();
    const bool wasOpen = FqryOppgjor.Active();
    FqryOppgjor.Open();
    for (FqryOppgjor.First(); !FqryOppgjor.Eof(); FqryOppgjor.Next()) List << FqryOppgjor.text("Op_Id");
    if (!wasOpen) FqryOppgjor.Close();
}

void TOppgjor::Execute() {
    const TillIdentity& till = visit_.Till;
    visit_.Log.AddLog(
        QStringLiteral("START OPPGJØR FOR AVDELING %1, KASSENUMMER %2").arg(till.Avdelingsnummer, till.Kassenummer));
    resolveStandingPairs(pairs_.sides(), till.Avdelingsnummer, joinPoints_.DecidePair);
    const RunOptions& options = visit_.Context.Options;
    db::PlannedReads reads(visit_.TillSession);
    reads.CommandTimeout = kQueryTimeout;
    if (options.ReadsTogether) {
        transfer_.planReport(reads);
        reads.Plan(FqryOppgjor.SQL);
    }
    transfer_.reportTill(reads);
    db::DataSet& settlements = openList(reads);
    if (!options.IsEnterprise && !options.OnlyOppgjor) {
        SingleBackOffice(visit_).takeFromTill();
        visit_.Items.LoadVareTable();
        visit_.Items.LoadVareAliasTable();
    }
    transfer_.run();
    if (IncludeLastBackupStatus) readLastBackup();
    visit_.Control.TestCancel();

    reportEnd(posting_.run(settlements));
}

db::DataSet& TOppgjor::openList(db::PlannedReads& reads) {
    db::DataSet& settlements = reads.Open(FqryOppgjor);
    GlobalLogger().LogInformation(
        QStringLiteral(
            "Starter innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {settlements.RecordCount(), visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer});
    if (settlements.IsEmpty()) status_.set(oksNull, ostHentet, {}, QTime(0, 0));
    return settlements;
}

// A till whose backups cannot be read has been fetched all the same.
void TOppgjor::readLastBackup() {
    try {
        status_.DaysSinceLastBackup = NumDaysSinceLastBackup();
        status_.set(oksTrue, ostDoNotSet);
    } catch (const std::exception&) {
        status_.DaysSinceLastBackup = -1;
    }
}

void TOppgjor::reportEnd(int fetched) {
    const TillIdentity& till = visit_.Till;
    // The doubled word is required.
    if (fetched == 0)
        status_.set(oksTrue, ostHentet,
                    visit_.Context.Options.IncludeDTS_TorvikPOS
                        ? QStringLiteral("Ikke noe noe oppgjør å hente. DTS er kjørt OK.")
                        : QStringLiteral("Ikke noe noe oppgjør å hente. Status OK."));
    GlobalLogger().LogInformation(
        QStringLiteral("Fullført innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kasse {Kassenummer}"),
        {fetched, till.Avdelingsnummer, till.Kassenummer});
    visit_.Log.AddLog(QStringLiteral("SLUTT oppgjør FOR AVDELING %1").arg(till.Avdelingsnummer));
}

}  // namespace torvik

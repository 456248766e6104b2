// What both phases of a till's fetch share: the queries, the pair of transactions, the status line of the till.
#include "inbound/settlement/oppgjor.h"

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/butikksalg.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kQueryTimeout = 600;  // seconds

constexpr char kOpenInChain[] =
    "SELECT Op_Id,OP_TIDSPUNKT,In_AvdNr FROM Oppgjor,Innstillinger WHERE OP_TYPE='NORMAL' AND OP_OPPDATERTTIDSPUNKT is null";

constexpr char kOpenInSingleBackOffice[] =
    "SELECT Op_Id,OP_TIDSPUNKT,In_AvdNr FROM Oppgjor,Innstillinger WHERE OP_TYPE='NORMAL' AND OP_STATUS=0";

constexpr char kPaymentsOfSettlement[] = R"(DECLARE @Op_Id int
SET @Op_Id=%1
SELECT * FROM OppgjorBetaling WHERE Ob_Op_Id=@Op_Id)";

// A till that is lost as well has been rolled back by its server.
void rollBackQuietly(db::Session& session) {
    try {
        session.Rollback();
    } catch (const std::exception&) {
    }
}

}  // namespace

TOppgjor::TOppgjor(TAvdeling& avdeling, OppgjorJoinPoints joinPoints)
    : QObject(&avdeling),
      Avdeling(avdeling),
      torvikPos_(avdeling.TorvikPOS()),
      joinPoints_(std::move(joinPoints)),
      Butikksalg(new TButikksalg(*this)) {
    for (db::Query* query : {&FqryGeneralTarget, &FqryGeneralSource, &FqryOppgjor, &FqryOppgjorBetaling}) {
        query->CommandTimeout = kQueryTimeout;
        query->ParamCheck = false;
    }
    FqryGeneralTarget.SetConnection(torvikPos_.TargetConnection());
    for (db::Query* query : {&FqryGeneralSource, &FqryOppgjor, &FqryOppgjorBetaling})
        query->SetConnection(torvikPos_.SourceConnection);
    FqryOppgjor.SQL = QStringList{QString::fromUtf8(torvikPos_.IsEnterprise ? kOpenInChain : kOpenInSingleBackOffice)};
    FqryOppgjorBetaling.SQL = statementLines(QString::fromUtf8(kPaymentsOfSettlement).arg(-1));
}

int TOppgjor::NumDaysSinceLastBackup() {
    return joinPoints_.DaysSinceLastBackup ? joinPoints_.DaysSinceLastBackup(*this) : -1;
}

void TOppgjor::GetList(QStringList& List) {
    List.clear();
    const bool wasOpen = FqryOppgjor.Active();
    FqryOppgjor.Open();
    for (FqryOppgjor.First(); !FqryOppgjor.Eof(); FqryOppgjor.Next())
        List << FqryOppgjor.FieldByName(QStringLiteral("Op_Id")).AsString().trimmed();
    if (!wasOpen) FqryOppgjor.Close();
}

void TOppgjor::Execute() {
    struct FreeDataModule {
        ~FreeDataModule() { dmPOStoTorvik.reset(); }
    } const freeDataModule;

    elapsed_.start();
    torvikPos_.AddLog(QStringLiteral("START OPPGJØR FOR AVDELING %1, KASSENUMMER %2").arg(avd(), till()));
    readLastSettlement();
    reportUnsettledSales();
    openList();
    if (!torvikPos_.IsEnterprise && !torvikPos_.OnlyOppgjor) {
        UpdateAnsatte();
        SeedPosOppgjor();
        torvikPos_.LoadVareTable();
        torvikPos_.LoadVareAliasTable();
    }
    transfer();
    torvikPos_.TestCancel();

    postOpenSettlements();
    reportEnd();
}

void TOppgjor::reportEnd() {
    if (fetched_ == 0)
        setStatus(oksTrue, ostHentet,
                  torvikPos_.IncludeDTS_TorvikPOS ? QStringLiteral("Ikke noe noe oppgjør å hente. DTS er kjørt OK.")
                                                  : QStringLiteral("Ikke noe noe oppgjør å hente. Status OK."));
    GlobalLogger().LogInformation(
        QStringLiteral("Fullført innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kasse {Kassenummer}"),
        {fetched_, avd(), till()});
    torvikPos_.AddLog(QStringLiteral("SLUTT oppgjør FOR AVDELING %1").arg(avd()));
}

void TOppgjor::startTransactions() {
    torvikPos_.SourceConnection->StartTransaction();
    torvikPos_.AddLog(QStringLiteral("Transaksjon startet for kildedatabase"));
    try {
        torvikPos_.TargetConnection()->StartTransaction();
    } catch (const std::exception&) {
        rollBackQuietly(*torvikPos_.SourceConnection);
        throw;
    }
    torvikPos_.AddLog(QStringLiteral("Transaksjon startet for måldatabase"));
}

// The till first: what the back office then fails to commit, the next run fetches again. Both are asked before it
// whether their transaction still stands, so that a session that was lost, or a transaction that its server has ended,
// is found while neither side is committed.
void TOppgjor::commitTransactions() {
    const auto require = [](db::Session& session, const QString& database) {
        if (!session.InTransaction()) throw EngineError(QStringLiteral("Transaksjonen for %1 er brutt").arg(database));
    };
    require(*torvikPos_.SourceConnection, QStringLiteral("kildedatabase"));
    require(*torvikPos_.TargetConnection(), QStringLiteral("måldatabase"));
    torvikPos_.SourceConnection->Commit();
    torvikPos_.AddLog(QStringLiteral("Transaksjon commit for kildedatabase"));
    torvikPos_.TargetConnection()->Commit();
    torvikPos_.AddLog(QStringLiteral("Transaksjon commit for måldatabase"));
}

void TOppgjor::rollbackTransactions(const std::exception& failure) {
    const QString text = ErrorText(failure);
    const QString marked = QStringLiteral("<<<  %1 >>>").arg(text);
    torvikPos_.AddLog(marked, true);
    const auto rollBack = [&](db::Session& session, const QString& done) {
        try {
            session.Rollback();
            torvikPos_.AddLog(done.arg(text), true);
        } catch (const std::exception&) {
            torvikPos_.AddLog(marked);
        }
    };
    rollBack(*torvikPos_.TargetConnection(), QStringLiteral("Transaksjon rollback for måldatabase. %1"));
    rollBack(*torvikPos_.SourceConnection, QStringLiteral("Transaksjon rollback for kildedatabase. %1"));
}

void TOppgjor::setStatus(TOKStatus value, TOppgjorStatusType kind, const QString& melding, QTime elapsed) {
    if (!elapsed.isValid()) elapsed = QTime(0, 0).addMSecs(static_cast<int>(elapsed_.elapsed()));
    torvikPos_.ffraOppgjorStatus->SetStatus(ikKuId(), avd(), address(), till(), kind, value, melding, elapsed,
                                            daysSinceBackup_);
}

QString TOppgjor::avd() const {
    return Avdeling.Avdelingsnummer();
}

QString TOppgjor::till() const {
    return Avdeling.Ikk_Kassenummer();
}

QString TOppgjor::address() const {
    return Avdeling.Qry().FieldByName(QStringLiteral("Ku_Adresse1")).AsString().trimmed();
}

int TOppgjor::ikKuId() const {
    return static_cast<int>(Avdeling.Qry().FieldByName(QStringLiteral("Ikk_Ik_Ku_Id")).AsInteger());
}

}  // namespace torvik

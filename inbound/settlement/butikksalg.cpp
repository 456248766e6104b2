#include "inbound/settlement/butikksalg.h"

#include <QDir>

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/seams.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"
#include "engine/office/item_numbers.h"
#include "engine/roster/avdeling.h"
#include "inbound/settlement/debug_file.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kOpIdLine = 1;
constexpr int kStatementsABatch = 64;
constexpr int kStatusSinceTillVersion = 110;     // tills above it have Ol_Status
constexpr double kStatusSinceBackOffice = 1050;  // back offices above it take the status
constexpr int kStatusOfPlainSale = 1;

constexpr char kOpIdText[] = "SET @Op_Id = %1";

constexpr char kLinesOfSettlement[] = R"(DECLARE @Op_Id int
SET @Op_Id =-1
SELECT In_AvdNr,In_KasseNr,Or_Tidspunkt,Ol_Va_Id,Ol_Antall,Ol_Salgspris,Ol_Rabatt,Or_Id%1
FROM ordre JOIN ordrelinje ON (ol_or_id=or_id), Innstillinger
WHERE Or_Op_Id= @Op_Id and or_status=0)";
constexpr char kStatusColumn[] = ",Ol_Status";

constexpr char kHoursOfSettlement[] = R"(DECLARE @Op_Id int
SET @Op_Id =-1
SELECT datepart(hour,or_tidspunkt) Kl,COUNT(*) AntallSalg,SUM(SumInklMva) SumInklMva
FROM ordre join vOrdreSum on (or_id=vos_or_id),Innstillinger
WHERE Or_Op_Id= @Op_Id and or_status=0
GROUP BY datepart(hour,or_tidspunkt))";

// Held in the settlement's transaction, so that two runs cannot post the same till's orders at the same time.
constexpr char kLockOrders[] = R"(SELECT Pos_Or_Id, Pos_Or_OppdatertBeholdning FROM POSORDRE WITH (UPDLOCK) WHERE
Pos_Or_Op_Id = %1
AND Pos_Or_Ik_Ku_Id = %2
AND Pos_Or_KasseNr = '%3')";

constexpr char kPostWithStatus[] = "execute UpdateButikksalg2 %1,'%2',%3,%4,%5,0,0,%6";
constexpr char kPostWithoutStatus[] = "execute UpdateButikksalg2 %1,'%2',%3,%4,%5,0,0";

constexpr char kInsertHour[] =
    "insert into timesalg (Ts_Ik_Ku_ID,Ts_Dato,Ts_Time,Ts_Omsetning,Ts_AntallSalg) select %1,%2,%3,%4,%5";
constexpr char kUnlessHourThere[] =
    " where not exists ( select 1 from timesalg where Ts_Ik_Ku_ID=%1 and Ts_Dato=%2 and ts_time=%3) ";
// The turnover adds up over the settlements of a day; the number of sales is the last settlement's.
constexpr char kUpdateHour[] =
    "update timesalg set Ts_Omsetning = Ts_Omsetning + %1, Ts_AntallSalg = %2 where Ts_Ik_Ku_ID=%3 and Ts_Dato = %4 and Ts_Time = %5";

constexpr char kMarkOrders[] =
    "UPDATE PosOrdre SET Pos_Or_OppdatertBeholdning = GETDATE() WHERE Pos_Or_Op_Id = %1 AND Pos_Or_Ik_Ku_Id = %2 AND Pos_Or_KasseNr = '%3' AND Pos_Or_OppdatertBeholdning IS NULL ";

}  // namespace

TButikksalg::TButikksalg(const TillVisit& visit) : visit_(visit) {
    for (db::Query* query : {&FOrdreQry, &FTimesalgQry, &FqryGeneralTarget}) {
        query->CommandTimeout = kQueryTimeout;
        query->ParamCheck = false;
    }
    FOrdreQry.SetConnection(&visit_.TillSession);
    FTimesalgQry.SetConnection(&visit_.TillSession);
    FqryGeneralTarget.SetConnection(&visit_.OfficeSession);
    const bool hasStatus = db::Value(visit_.DbVersion).toInt() > kStatusSinceTillVersion;
    FOrdreQry.SQL = statementLines(
        QString::fromUtf8(kLinesOfSettlement).arg(hasStatus ? QString::fromUtf8(kStatusColumn) : QString()));
    FTimesalgQry.SQL = statementLines(kHoursOfSettlement);
}

void TButikksalg::SetOp_Id(int value) {
    opId_ = value;
    for (db::Query* query : {&FOrdreQry, &FTimesalgQry}) {
        const bool wasOpen = query->Active();
        query->Close();
        query->SQL[kOpIdLine] = QString::fromUtf8(kOpIdText).arg(value);
        if (wasOpen) query->Open();
    }
}

void TButikksalg::SetAvdelingsnummer(const QString& value) {
    avdelingsnummer_ = value;
    FIk_Ku_Id = visit_.Roster.GetIk_Ku_Id(value);
    if (FIk_Ku_Id == -1) throw EngineError(QStringLiteral("%1 er ikke en gyldig avdeling").arg(value));
}

void TButikksalg::Execute() {
    if (!Dato.isValid()) throw EngineError(QStringLiteral("Du må oppgi en salgsdato først"));
    if (avdelingsnummer_.isEmpty()) throw EngineError(QStringLiteral("Du må oppgi en avdeling først"));
    clearCollection();
    CollectSales();
    PostSales();
    clearCollection();
}

void TButikksalg::clearCollection() {
    ButikksalgCollection.clear();
    places_.clear();
}

void TButikksalg::CollectSales() {
    db::Query posted(&visit_.OfficeSession);
    posted.ParamCheck = false;
    posted.CommandTimeout = kQueryTimeout;
    posted.SQL = statementLines(
        QString::fromUtf8(kLockOrders).arg(QString::number(opId_), QString::number(FIk_Ku_Id), quotesDoubled(KasseNr)));
    posted.Open();
    const db::Field& postedAt = posted.FieldByName(QStringLiteral("Pos_Or_OppdatertBeholdning"));

    FOrdreQry.Close();
    FOrdreQry.Open();
    if (FOrdreQry.IsEmpty())
        GlobalLogger().LogDebug(
            QStringLiteral("Ingen ordrelinjer å oppdatere for oppgjør {Oppgjorsnummer} avdelingsnummer "
                           "{Avdelingsnummer} kassenummer {Kassenummer}"),
            {opId_, avdelingsnummer_, KasseNr});
    else
        GlobalLogger().LogDebug(
            QStringLiteral("Oppdaterer {Antall_ordrelinjer} ordrelinjer for oppgjør {Oppgjorsnummer} avdelingsnummer "
                           "{Avdelingsnummer} kassenummer {Kassenummer}"),
            {FOrdreQry.RecordCount(), opId_, avdelingsnummer_, KasseNr});

    const db::Field& order = FOrdreQry.FieldByName(QStringLiteral("OR_ID"));
    const db::Field& item = FOrdreQry.FieldByName(QStringLiteral("OL_VA_ID"));
    const db::Field& quantity = FOrdreQry.FieldByName(QStringLiteral("OL_ANTALL"));
    const db::Field& price = FOrdreQry.FieldByName(QStringLiteral("OL_SALGSPRIS"));
    const db::Field& discount = FOrdreQry.FieldByName(QStringLiteral("OL_RABATT"));
    const db::Field* status = FOrdreQry.FindField(QStringLiteral("OL_STATUS"));
    for (; !FOrdreQry.Eof(); FOrdreQry.Next()) {
        // An order that the back office does not have, or has counted before, adds nothing.
        if (!posted.Locate(QStringLiteral("Pos_Or_Id"), order.AsValue(), db::LocateOption::CaseInsensitive)) continue;
        if (!postedAt.IsNull()) continue;
        const double turnover = quantity.AsFloat() * price.AsFloat() * ((100 - discount.AsFloat()) / 100);
        AddSale(item.AsString().trimmed(),
                status && !status->IsNull() ? static_cast<int>(status->AsInteger()) : kStatusOfPlainSale,
                quantity.AsFloat(), turnover);
    }
    FOrdreQry.Close();
}

void TButikksalg::AddSale(const QString& Va_Id, int Ol_Status, double Antall, double Omsetning) {
    const QString id = visit_.Items.ResolveVaId(Va_Id).toUpper();
    const auto [place, added] = [&] {
        const auto found = places_.constFind({id, Ol_Status});
        if (found != places_.constEnd()) return std::pair(*found, false);
        places_.insert({id, Ol_Status}, ButikksalgCollection.size());
        return std::pair(ButikksalgCollection.size(), true);
    }();
    if (added) ButikksalgCollection.push_back({FIk_Ku_Id, Dato, Ol_Status, id, 0, 0});
    TButikksalgItem& item = ButikksalgCollection[place];
    item.Antall += Antall;
    item.Omsetning += Omsetning;
}

QString TButikksalg::postingOf(const TButikksalgItem& item) const {
    const QString department = QString::number(item.Ik_Ku_Id);
    const QString date = Dato.dateLiteral();
    // A back office that does not know the status loses the split by it; the sums stay apart all the same.
    if (visit_.Office.DBVersion() > kStatusSinceBackOffice)
        return QString::fromUtf8(kPostWithStatus)
            .arg(department, quotesDoubled(item.Va_Id), date, numberLiteral(item.Antall), numberLiteral(item.Omsetning),
                 QString::number(item.Ol_Status));
    return QString::fromUtf8(kPostWithoutStatus)
        .arg(department, quotesDoubled(item.Va_Id), date, numberLiteral(item.Antall), numberLiteral(item.Omsetning));
}

void TButikksalg::PostSales() {
    QStringList statements;
    for (const TButikksalgItem& item : ButikksalgCollection) statements << postingOf(item);
    UpdateTimesalg(statements);
    executeInBatches(statements);

    FqryGeneralTarget.SQL = QStringList{
        QString::fromUtf8(kMarkOrders).arg(QString::number(opId_), QString::number(FIk_Ku_Id), quotesDoubled(KasseNr))};
    FqryGeneralTarget.ExecSQL();

    ++FileNameID;
    saveDebugFile(visit_.Log, [&] {
        SaveTextLines(
            QDir(visit_.Context.Seam.tempFolder()).filePath(QStringLiteral("Pluliste.%1.txt").arg(FileNameID)),
            statements);
    });
}

void TButikksalg::UpdateTimesalg(QStringList& statements) {
    FTimesalgQry.Close();
    FTimesalgQry.Open();
    visit_.Log.AddLog(QStringLiteral("Behandler timesalg, totalt %1 poster").arg(FTimesalgQry.RecordCount()));
    const QString department = QString::number(FIk_Ku_Id);
    const QString date = Dato.literal();
    const QString nothing = QString::number(0);
    for (; !FTimesalgQry.Eof(); FTimesalgQry.Next()) {
        const QString hour = QString::number(FTimesalgQry.FieldByName(QStringLiteral("Kl")).AsInteger());
        // One statement, and so one line: a batch never ends between the two halves.
        statements << QString::fromUtf8(kInsertHour).arg(department, date, hour, nothing, nothing) +
                          QString::fromUtf8(kUnlessHourThere).arg(department, date, hour);
        statements << QString::fromUtf8(kUpdateHour)
                          .arg(numberLiteral(FTimesalgQry.FieldByName(QStringLiteral("SumInklMva")).AsFloat()),
                               QString::number(FTimesalgQry.FieldByName(QStringLiteral("AntallSalg")).AsInteger()),
                               department, date, hour);
    }
    FTimesalgQry.Close();
}

// A batch goes off behind each statement whose place, from 0, is a multiple of 64: the first batch has one statement.
void TButikksalg::executeInBatches(const QStringList& statements) {
    db::Query query(&visit_.OfficeSession);
    query.ParamCheck = false;
    query.CommandTimeout = kQueryTimeout;
    const auto execute = [&query] {
        query.ExecSQL();
        query.SQL.clear();
    };
    for (qsizetype i = 0; i < statements.size(); ++i) {
        query.SQL << statements[i];
        if (i % kStatementsABatch == 0) execute();
    }
    if (!query.SQL.isEmpty()) execute();
}

}  // namespace torvik

#include "inbound/settlement/single_back_office.h"

#include <memory>

#include "engine/base/query_timeout.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/run/run_control.h"

namespace torvik {

namespace {

constexpr char kStaffOfTill[] =
    "select AN_ID,( SELECT TOP 1 AK_ID FROM Adgangskort WHERE AK_AN_ID=AN_ID AND AK_AKTIV=1) AK_ID, AN_NAVN,AN_AKTIV,AN_RABATT,AN_RABKUNPAAORDPRIS,AN_NIVAA,AN_AVDNR FROM ansatt";

constexpr char kInsertStaff[] =
    "INSERT INTO InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn,Ika_Visningsnavn,Ika_Kortnummer,Ika_Aktiv,Ika_Rabatt,Ika_RabattKunPaaOrdPris,Ika_Nivaa) ";
constexpr char kSelectStaff[] = "SELECT '%1',%2,'%3','%4',%5,%6,%7,%8,%9";
constexpr char kUnlessThere[] = "WHERE NOT EXISTS ( SELECT 1 FROM InternKundeAnsatt WHERE Ika_Id='%1')";

constexpr char kLastPostedOnTill[] =
    "select MIN(in_avdnr) in_avdnr,MIN(in_kassenr) in_kassenr,MAX(op_id) Op_Id from oppgjor,innstillinger where op_status=1";

constexpr char kPostedOfTill[] =
    "SELECT COUNT(*) Antall FROM PosOppgjor WHERE Pos_Op_Ik_Ku_Id=%1 AND Pos_Op_Kassenr='%2'";

constexpr char kInsertFirstSettlement[] =
    "INSERT INTO PosOppgjor (Pos_Op_Id,Pos_Op_Ik_Ku_ID,Pos_Op_KasseNr,Pos_Op_Ika_Id,Pos_Op_Tidspunkt,Pos_Op_OppdatertTidspunkt,Pos_Op_Type,Pos_Op_Status,Pos_Op_TidspunktFerdig) ";
constexpr char kSelectFirstSettlement[] =
    "select %1,%2,'%3',(select min(ika_id) from internkundeansatt where ika_ik_ku_id=%4),GETDATE(),GETDATE(),'NORMAL',0,GETDATE()";

std::unique_ptr<db::Query> queryOn(db::Session& session, const QStringList& sql) {
    auto query = std::make_unique<db::Query>(&session);
    query->ParamCheck = false;
    query->CommandTimeout = kQueryTimeout;
    query->SQL = sql;
    return query;
}

}  // namespace

void SingleBackOffice::takeFromTill() {
    UpdateAnsatte();
    SeedPosOppgjor();
}

void SingleBackOffice::UpdateAnsatte() {
    visit_.Log.AddLog(QStringLiteral("Oppdaterer Ansatte..."));
    const auto staff = queryOn(visit_.TillSession, {QString::fromUtf8(kStaffOfTill)});
    staff->Open();

    const auto text = [&staff](const char* column) {
        return quotesDoubled(staff->FieldByName(QString::fromUtf8(column)).AsString().trimmed());
    };
    const auto integer = [&staff](const char* column) {
        return QString::number(staff->FieldByName(QString::fromUtf8(column)).AsInteger());
    };
    QStringList sql;
    for (; !staff->Eof(); staff->Next()) {
        const QString card = text("AK_ID");
        sql << QString::fromUtf8(kInsertStaff)
            << QString::fromUtf8(kSelectStaff)
                   .arg(text("AN_ID"), QString::number(visit_.Till.Ik_Ku_Id), text("AN_NAVN"), text("AN_NAVN"),
                        card.isEmpty() ? QStringLiteral("null") : QStringLiteral("'%1'").arg(card), integer("AN_AKTIV"),
                        numberLiteral(staff->FieldByName(QStringLiteral("AN_RABATT")).AsFloat()),
                        integer("AN_RABKUNPAAORDPRIS"), integer("AN_NIVAA"))
            << QString::fromUtf8(kUnlessThere).arg(text("AN_ID"));
    }
    if (!sql.isEmpty()) queryOn(visit_.OfficeSession, sql)->ExecSQL();
    visit_.Control.TestCancel();
}

void SingleBackOffice::SeedPosOppgjor() {
    const auto last = queryOn(visit_.TillSession, {QString::fromUtf8(kLastPostedOnTill)});
    last->Open();
    const QString number = quotesDoubled(last->FieldByName(QStringLiteral("in_kassenr")).AsString());
    const QString department = QString::number(visit_.Till.Ik_Ku_Id);

    const auto posted = queryOn(visit_.OfficeSession, {QString::fromUtf8(kPostedOfTill).arg(department, number)});
    posted->Open();
    if (posted->FieldByName(QStringLiteral("Antall")).AsInteger() == 0)
        queryOn(visit_.OfficeSession,
                {QString::fromUtf8(kInsertFirstSettlement),
                 QString::fromUtf8(kSelectFirstSettlement).arg(QString::number(0), department, number, department)})
            ->ExecSQL();
    visit_.Control.TestCancel();
    visit_.Context.Seam.pumpMessages();
}

}  // namespace torvik

// What a single back office, without a chain above it, takes from a till before the transfer: its staff, and a first
// settlement to count from.
#include "engine/db/statement_text.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/oppgjor.h"

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

}  // namespace

void TOppgjor::UpdateAnsatte() {
    torvikPos_.AddLog(QStringLiteral("Oppdaterer Ansatte..."));
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL = QStringList{QString::fromUtf8(kStaffOfTill)};
    FqryGeneralSource.Open();

    const auto text = [this](const char* column) {
        return FqryGeneralSource.FieldByName(QString::fromUtf8(column)).AsString().trimmed();
    };
    const auto integer = [this](const char* column) {
        return QString::number(FqryGeneralSource.FieldByName(QString::fromUtf8(column)).AsInteger());
    };
    QStringList sql;
    for (; !FqryGeneralSource.Eof(); FqryGeneralSource.Next()) {
        const QString card = text("AK_ID");
        sql << QString::fromUtf8(kInsertStaff)
            << QString::fromUtf8(kSelectStaff)
                   .arg(text("AN_ID"), QString::number(ikKuId()), text("AN_NAVN"), text("AN_NAVN"),
                        card.isEmpty() ? QStringLiteral("null") : QStringLiteral("'%1'").arg(card), integer("AN_AKTIV"),
                        numberLiteral(FqryGeneralSource.FieldByName(QStringLiteral("AN_RABATT")).AsFloat()),
                        integer("AN_RABKUNPAAORDPRIS"), integer("AN_NIVAA"))
            << QString::fromUtf8(kUnlessThere).arg(text("AN_ID"));
    }
    FqryGeneralSource.Close();
    if (!sql.isEmpty()) {
        db::Query insert(torvikPos_.TargetConnection());
        insert.ParamCheck = false;
        insert.CommandTimeout = FqryGeneralTarget.CommandTimeout;
        insert.SQL = sql;
        insert.ExecSQL();
    }
    torvikPos_.TestCancel();
}

void TOppgjor::SeedPosOppgjor() {
    FqryGeneralSource.Close();
    FqryGeneralSource.SQL = QStringList{QString::fromUtf8(kLastPostedOnTill)};
    FqryGeneralSource.Open();
    const QString number = FqryGeneralSource.FieldByName(QStringLiteral("in_kassenr")).AsString();
    FqryGeneralSource.Close();

    db::Query query(torvikPos_.TargetConnection());
    query.ParamCheck = false;
    query.CommandTimeout = FqryGeneralTarget.CommandTimeout;
    query.SQL = QStringList{QString::fromUtf8(kPostedOfTill).arg(QString::number(ikKuId()), number)};
    query.Open();
    const bool none = query.FieldByName(QStringLiteral("Antall")).AsInteger() == 0;
    query.Close();
    if (none) {
        const QString department = QString::number(ikKuId());
        query.SQL = QStringList{
            QString::fromUtf8(kInsertFirstSettlement),
            QString::fromUtf8(kSelectFirstSettlement).arg(QString::number(0), department, number, department)};
        query.ExecSQL();
    }
    torvikPos_.TestCancel();
    torvikPos_.Seam.pumpMessages();
}

}  // namespace torvik

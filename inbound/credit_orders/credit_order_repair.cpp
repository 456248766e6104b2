#include "inbound/credit_orders/credit_order_repair.h"

#include <cmath>

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "inbound/credit_orders/credit_order_parts.h"

namespace torvik {

namespace {

constexpr int kQueryTimeout = 600;  // seconds
constexpr int kWarningLevel = 2;    // of OnAddLog

constexpr char kCreditSale[] =
    R"(select OR_ID,OR_TIDSPUNKT,OR_REKVISISJONSNUMMER,AN_NAVN,KU_ID,IN_AVDNR,IN_KASSENR,OL_VA_ID,ISNULL(OLT_NAVN,VA_NAVN) VA_NAVN,OL_ANTALL,OL_RABATT,OL_SALGSPRIS, OL_MVASATS
FROM innstillinger,ordre JOIN ordrelinje ON (ol_or_id=or_id) JOIN kunde ON (or_ku_id=ku_id) left outer join OrdreLinjeTekst ON (OLT_OL_ID=OL_ID) 
JOIN ANSATT ON (AN_ID=OR_AN_ID) JOIN VARE ON (ol_va_id=va_id)
WHERE ku_id<>1 AND OR_ID=%1
AND EXISTS ( SELECT * FROM BETALING WHERE BT_OR_ID=OR_ID AND BT_BF_ID=6)
ORDER BY OR_ID)";

// A back office whose GetID has no number to give: the batch takes it from GetspID, and tells which it was.
constexpr char kTakeNumber[] = R"(declare @OR_ID int
exec dbo.GetspID 'Or_ID', @Or_ID OUTPUT)";
constexpr char kTellNumber[] = "select @Or_ID as Or_ID";

// VAT is always on, at the department's rate, whatever the customer says.
constexpr char kInsertOrder[] =
    R"(INSERT INTO ORDRE(Or_ID,Or_Fra_Ik_Ku_ID,Or_Pi_ID,Or_Ku_ID,Or_An_ID,Or_Lb_ID,Or_Bb_ID,Or_Eier_Ik_Ku_ID,Or_Til_Ik_Ku_ID,Or_Ordretype,Or_Ka_ID,Or_Vu_Id
,Or_Dato,Or_Status,Or_MvaBeregnes,Or_MvaSats,Or_Porto,Or_VaarRef,Or_DeresRef,Or_Prislapp,Or_Rabatt,Or_Info,Or_Vu_Kurs,Or_LevDato,Or_AntKolli,Or_Avrunding,Or_AntPaller, Or_Le_Id) 
select %1,vLager.Krl_Til_Ku_id,ku_pi_id,ku_id,ISNULL(In_Kredittsalg_An_ID,'%2'),
ku_lb_id,ku_bb_id, case when ik_Properties & 1 = 0 then in_hoved_ik_ku_id else ik_ku_id end ,null,3 /*direkte ordre*/,null,'NOK',%3,%4,1,ik_mvasats,0,'%5','%6',0,0,null,1,null,0,0,0, In_Direkteordre_Le_ID
from internkunde (NOLOCK),vLager (NOLOCK),kunde (NOLOCK),innstillinger (NOLOCK)
where vLager.Krl_Fra_Ku_id=ik_ku_id and ku_id=%7 and ik_avdelingsnummer='%8')";

constexpr char kLineVat[] = ",0,OR_MVABEREGNES,1,null,%1";

constexpr char kCreditSalesOfTill[] =
    R"(select or_id,or_ku_id,ol_id,ol_va_id,ol_antall,or_tidspunkt from ordre join ordrelinje on ( ol_or_id=or_id ) where or_status=0 and or_op_id is not null
 and exists ( select 1 from betaling where bt_or_id=or_id and bt_bf_id=6) and or_tidspunkt>=%1 order by or_id)";

constexpr char kOrderWithLine[] =
    "select or_id from ordre join ordrelinje on ( ol_or_id=or_id ) where or_ku_id=%1 and or_dato>=%2 and ol_va_id='%3' and ol_levert between %4 and %5";

std::unique_ptr<db::Query> tillQuery(TTorvikPos& torvikPos, const QString& sql) {
    auto query = std::make_unique<db::Query>(torvikPos.SourceConnection);
    query->ParamCheck = false;
    query->CommandTimeout = kQueryTimeout;
    query->SQL = statementLines(sql);
    query->Open();
    return query;
}

int createHead(TTorvikPos& torvikPos, const CreditSale& sale, int status) {
    int number = torvikPos.GetTargetId(QStringLiteral("OR_ID"));
    const bool numbered = number != 0;
    torvikPos.AddLog(numbered ? QStringLiteral("Oppretter ordrenr. %1 fra kredittsalg bong nr %2")
                                    .arg(QString::number(number), QString::number(sale.order))
                              : QStringLiteral("Oppretter ordre for kredittsalg bong nr %1").arg(sale.order));
    QStringList insert = statementLines(
        QString::fromUtf8(kInsertOrder)
            .arg(numbered ? QString::number(number) : QStringLiteral("@Or_ID"), QStringLiteral("NR"), sale.time,
                 QString::number(status), sale.ourReference, QStringLiteral("Rekv.nr.: %1 ").arg(sale.requisition),
                 QString::number(customerAtBackOffice(torvikPos, sale.customer)), sale.department));
    if (numbered) {
        creditOrderQuery(torvikPos, insert)->ExecSQL();
    } else {
        insert = statementLines(QString::fromUtf8(kTakeNumber)) + insert;
        insert << QString::fromUtf8(kTellNumber);
        const auto query = creditOrderQuery(torvikPos, insert);
        query->Open();
        number = integerOf(*query, "Or_ID");
    }
    linkCreditOrder(torvikPos, sale, number);
    return number;
}

// A warning that the order may exist: nobody to ask counts as an order that does.
bool makeAllTheSame(TTorvikPos& torvikPos, const db::Query& line, qint64 backOfficeOrder) {
    const QString known =
        QStringLiteral("Bong %1 (kunde %2, bl.a. vare %3) vil ikke opprettes, fordi den finnes på Torvik ordre %4.")
            .arg(QString::number(integerOf(line, "or_id")), QString::number(integerOf(line, "or_ku_id")),
                 line.FieldByName(QStringLiteral("ol_va_id")).AsString().trimmed(), QString::number(backOfficeOrder));
    if (torvikPos.RunAsService()) {
        if (torvikPos.OnAddLog) torvikPos.OnAddLog(&torvikPos, known, kWarningLevel, torvikPos.Seam.now());
        return false;
    }
    return torvikPos.OnAskOperator && torvikPos.OnAskOperator(known + QStringLiteral(" Vil du likevel opprette den?"));
}

// What fails is told in the repair's own words, and is no failure of the walk's.
void createMissingOfTill(TTorvikPos& torvikPos, const TillVisit& visit, const QDateTime& from) {
    try {
        QStringList missing;
        CreateCreditOrdersEx(torvikPos, from, missing);
        for (const QString& order : std::as_const(missing)) CreateCreditOrder(torvikPos, order.toInt());
    } catch (const std::exception& e) {
        visit.Log.AddLog(
            QStringLiteral("En feil oppstod i TTorvikPOS.CreateCreditOrdersEx (avd. %1, kasse %2). Feil: %3")
                .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer, ErrorText(e)),
            true);
    }
}

TillWalkPlan planOf(TTorvikPos& torvikPos, const QDateTime& from) {
    OperatorLog& log = torvikPos.Parts().Log;
    return {
        .Wait = TillWalkPlan::Waiting::BetweenDepartments,
        .Unreachable =
            [&log](const TillIdentity& till) {
                log.AddLog(QStringLiteral("Klarte ikke å koble til (avd. %1, kasse %2)")
                               .arg(till.Avdelingsnummer, till.Kassenummer),
                           true);
            },
        .Work = [&torvikPos, from](TillVisit& visit) { createMissingOfTill(torvikPos, visit, from); },
        .Failed =
            [&log](const TillIdentity& till, const std::exception& failure) {
                // The name of the other run is required.
                log.AddLog(QStringLiteral("Feil i ExecuteOppgjor for avd. %1, kasse %2. Se feil nedenfor")
                               .arg(till.Avdelingsnummer, till.Kassenummer),
                           true);
                log.AddLog(ErrorText(failure), true);
            },
        .ProgressText =
            [](const TillIdentity&, int done, int count) {
                return QStringLiteral("Hentet kredittordre fra %1 av %2 kasser")
                    .arg(QString::number(done), QString::number(count));
            },
    };
}

void createMissing(TTorvikPos& torvikPos, const QDateTime& from) {
    RunParts& parts = torvikPos.Parts();
    parts.Office.SetConnection(parts.Office.Connection());
    parts.Items.Load();
    parts.Roster.Close();
    parts.Roster.Open();
    TillWalk(parts, planOf(torvikPos, from)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE"));
    parts.Log.SaveOppgjorLog();
}

}  // namespace

void CreateCreditOrder(TTorvikPos& torvikPos, int Or_Id) {
    const int status = importStatus(torvikPos.qryGeneralTarget());
    const auto sale = tillQuery(torvikPos, QString::fromUtf8(kCreditSale).arg(Or_Id));
    int number = 0;
    int previous = -1;
    for (; !sale->Eof(); sale->Next()) {
        const int order = integerOf(*sale, "OR_ID");
        if (order != previous) number = createHead(torvikPos, CreditSale(*sale), status);
        previous = order;
        if (number > 0) insertCreditOrderLine(torvikPos, number, *sale, kLineVat);
    }
}

void CreateCreditOrdersEx(TTorvikPos& torvikPos, const QDateTime& FromDate, QStringList& List) {
    const auto sold = tillQuery(torvikPos, QString::fromUtf8(kCreditSalesOfTill).arg(db::DateTime(FromDate).literal()));
    for (; !sold->Eof(); sold->Next()) {
        const double whole = std::trunc(sold->FieldByName(QStringLiteral("ol_antall")).AsFloat());
        const auto order = creditOrderQuery(
            torvikPos,
            {QString::fromUtf8(kOrderWithLine)
                 .arg(QString::number(integerOf(*sold, "or_ku_id")), sold->dateTime("or_tidspunkt").literal(),
                      sold->FieldByName(QStringLiteral("ol_va_id")).AsString().trimmed(), numberLiteral(whole),
                      numberLiteral(whole + 1))});
        order->Open();
        const bool missing = order->IsEmpty() || makeAllTheSame(torvikPos, *sold, order->Fields(0).AsInteger());
        const QString id = QString::number(integerOf(*sold, "or_id"));
        if (missing && !List.contains(id)) List << id;
    }
}

void ImportMissingCreditOrders(TTorvikPos& torvikPos, const QDateTime& ADateTime) {
    torvikPos.AddLog(QStringLiteral("HENTER KREDITTORDRE SOM MANGLER"));
    torvikPos.SetCancelRequest(false);
    torvikPos.Cancelled = false;
    try {
        createMissing(torvikPos, ADateTime);
    } catch (const std::exception& e) {
        torvikPos.AddLog(
            QStringLiteral("En feil oppstod i rutinen TTorvikPos.ImportMissingCreditOrders: %1").arg(ErrorText(e)),
            true);
    }
}

}  // namespace torvik

#include "inbound/credit_orders/credit_order_repair.h"

#include <cmath>

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "inbound/credit_orders/credit_order_parts.h"

namespace torvik {

namespace {

constexpr int kWarningLevel = 2;  // of OnAddLog

constexpr char kCreditSale[] =
    R"(select OR_ID,OR_TIDSPUNKT,OR_REKVISISJONSNUMMER,AN_NAVN,KU_ID,IN_AVDNR,IN_KASSENR,OL_VA_ID,ISNULL(OLT_NAVN,VA_NAVN) VA_NAVN,OL_ANTALL,OL_RABATT,OL_SALGSPRIS, OL_MVASATS
FROM innstillinger,ordre JOIN ordrelinje ON (ol_or_id=or_id) JOIN kunde ON (or_ku_id=ku_id) left outer join OrdreLinjeTekst ON (OLT_OL_ID=OL_ID) 
JOIN ANSATT ON (AN_ID=OR_AN_ID) JOIN VARE ON (ol_va_id=va_id)
WHERE ku_id<>1 AND OR_ID=%1
AND EXISTS ( SELECT * FROM BETALING WHERE BT_OR_ID=OR_ID AND BT_BF_ID=6)
ORDER BY OR_ID)";

// A back office whose GetID has no number to give: the batch takes it from GetspID, and tells which it was. Without one
// nothing is inserted.
constexpr char kTakeNumber[] = R"(declare @OR_ID int
exec dbo.GetspID 'Or_ID', @Or_ID OUTPUT
if @Or_ID >= 1)";
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

constexpr char kTill[] = "SELECT IN_AVDNR, IN_KASSENR FROM INNSTILLINGER";

constexpr char kOrderWithLine[] =
    "select or_id from ordre join ordrelinje on ( ol_or_id=or_id ) where or_ku_id=%1 and or_dato>=%2 and ol_va_id='%3' and ol_levert between %4 and %5";

std::unique_ptr<db::Query> tillQuery(const TillVisit& visit, const QString& sql) {
    auto query = std::make_unique<db::Query>(&visit.TillSession);
    query->ParamCheck = false;
    query->CommandTimeout = kQueryTimeout;
    query->SQL = statementLines(sql);
    query->Open();
    return query;
}

void requireNumber(int number, const CreditSale& sale) {
    if (number < 1)
        throw EngineError(
            QStringLiteral(
                "En feil oppstod når kredittordre %1 skulle opprettes for avdelingsnummer %2, kassenummer %3")
                .arg(QString::number(sale.order), sale.department, sale.till));
}

int createHead(const TillVisit& visit, const CreditSale& sale, int status) {
    int number = visit.Office.GetTargetId(QStringLiteral("OR_ID"));
    const bool numbered = number != 0;
    if (numbered) requireNumber(number, sale);
    visit.Log.AddLog(numbered ? QStringLiteral("Oppretter ordrenr. %1 fra kredittsalg bong nr %2")
                                    .arg(QString::number(number), QString::number(sale.order))
                              : QStringLiteral("Oppretter ordre for kredittsalg bong nr %1").arg(sale.order));
    QStringList insert = statementLines(
        QString::fromUtf8(kInsertOrder)
            .arg(numbered ? QString::number(number) : QStringLiteral("@Or_ID"), QStringLiteral("NR"), sale.time,
                 QString::number(status), sale.ourReference, QStringLiteral("Rekv.nr.: %1 ").arg(sale.requisition),
                 QString::number(customerAtBackOffice(visit, sale.customer)), quotesDoubled(sale.department)));
    if (numbered) {
        creditOrderQuery(visit, insert)->ExecSQL();
    } else {
        insert = statementLines(QString::fromUtf8(kTakeNumber)) + insert;
        insert << QString::fromUtf8(kTellNumber);
        const auto query = creditOrderQuery(visit, insert);
        query->Open();
        number = query->integer("Or_ID");
        requireNumber(number, sale);
    }
    linkCreditOrder(visit, sale, number);
    return number;
}

// An order of the same customer, not older, with a line of the item and about the quantity; or 0.
int orderWithLine(const TillVisit& visit, const db::Query& sold) {
    const double whole = std::trunc(sold.FieldByName(QStringLiteral("ol_antall")).AsFloat());
    const auto order = creditOrderQuery(
        visit, {QString::fromUtf8(kOrderWithLine)
                    .arg(QString::number(sold.integer("or_ku_id")), sold.dateTime("or_tidspunkt").literal(),
                         quotesDoubled(sold.text("ol_va_id")), numberLiteral(whole), numberLiteral(whole + 1))});
    order->Open();
    return order->IsEmpty() ? 0 : static_cast<int>(order->Fields(0).AsInteger());
}

// The order that the receipt's own row at the back office names; or 0.
int linkedOrder(const TillVisit& visit, const db::Query& sold, const db::Query& till) {
    return linkedCreditOrder(visit, sold.integer("or_id"), till.text("IN_KASSENR"), till.text("IN_AVDNR"));
}

// A warning that the order may exist: nobody to ask counts as an order that does.
bool makeAllTheSame(const TillVisit& visit, const db::Query& line, qint64 backOfficeOrder) {
    const QString known =
        QStringLiteral("Bong %1 (kunde %2, bl.a. vare %3) vil ikke opprettes, fordi den finnes på Torvik ordre %4.")
            .arg(QString::number(line.integer("or_id")), QString::number(line.integer("or_ku_id")),
                 line.text("ol_va_id"), QString::number(backOfficeOrder));
    const EngineContext& context = visit.Context;
    if (context.Options.RunAsService()) {
        if (context.Events.OnAddLog) context.Events.OnAddLog(context.Sender, known, kWarningLevel, context.Seam.now());
        return false;
    }
    return context.Events.OnAskOperator &&
           context.Events.OnAskOperator(known + QStringLiteral(" Vil du likevel opprette den?"));
}

// What fails is told in the repair's own words, and is no failure of the walk's.
void createMissingOfTill(const TillVisit& visit, const QDateTime& from) {
    try {
        QStringList missing;
        CreateCreditOrdersEx(visit, from, missing);
        for (const QString& order : std::as_const(missing)) CreateCreditOrder(visit, order.toInt());
    } catch (const std::exception& e) {
        visit.Log.AddLog(
            QStringLiteral("En feil oppstod i TTorvikPOS.CreateCreditOrdersEx (avd. %1, kasse %2). Feil: %3")
                .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer, ErrorText(e)),
            true);
    }
}

TillWalkPlan planOf(OperatorLog& log, const QDateTime& from) {
    return {
        .Wait = TillWalkPlan::Waiting::BetweenDepartments,
        .LogsInAhead = true,
        .Unreachable =
            [&log](const TillIdentity& till) {
                log.AddLog(QStringLiteral("Klarte ikke å koble til (avd. %1, kasse %2)")
                               .arg(till.Avdelingsnummer, till.Kassenummer),
                           true);
            },
        .Work = [from](const TillVisit& visit) { createMissingOfTill(visit, from); },
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

void createMissing(RunParts& parts, const QDateTime& from) {
    parts.Office.Begin();
    parts.Items.Load();
    parts.Roster.Close();
    parts.Roster.Open();
    TillWalk(parts, planOf(parts.Log, from)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE"));
    parts.Log.SaveOppgjorLog();
}

}  // namespace

void CreateCreditOrder(const TillVisit& visit, int Or_Id) {
    const int status = importStatus(visit.Office.GeneralQuery());
    const auto sale = tillQuery(visit, QString::fromUtf8(kCreditSale).arg(Or_Id));
    // Each statement commits by itself: an item that cannot be resolved is found before the first.
    for (; !sale->Eof(); sale->Next()) static_cast<void>(visit.Items.ResolveVaId(sale->text("OL_VA_ID")));
    sale->First();
    int number = 0;
    int previous = -1;
    for (; !sale->Eof(); sale->Next()) {
        const int order = sale->integer("OR_ID");
        if (order != previous) number = createHead(visit, CreditSale(*sale), status);
        previous = order;
        if (number > 0) insertCreditOrderLine(visit, number, *sale, kLineVat);
    }
}

void CreateCreditOrdersEx(const TillVisit& visit, const QDateTime& FromDate, QStringList& List) {
    const auto till = tillQuery(visit, QString::fromUtf8(kTill));
    const auto sold = tillQuery(visit, QString::fromUtf8(kCreditSalesOfTill).arg(db::DateTime(FromDate).literal()));
    QStringList declined;  // receipts that are linked to an order and stay so
    for (; !sold->Eof(); sold->Next()) {
        const QString id = QString::number(sold->integer("or_id"));
        int known = orderWithLine(visit, *sold);
        const bool byLinkAlone = known == 0;
        // An order under another customer or item, or of another quantity, is known by its link. One answer holds for
        // all lines of the receipt.
        if (byLinkAlone && !List.contains(id) && !declined.contains(id)) known = linkedOrder(visit, *sold, *till);
        if (byLinkAlone && declined.contains(id)) continue;
        const bool missing = known == 0 || makeAllTheSame(visit, *sold, known);
        if (byLinkAlone && !missing) declined << id;
        if (missing && !List.contains(id)) List << id;
    }
}

void ImportMissingCreditOrders(TTorvikPos& torvikPos, const QDateTime& ADateTime) {
    RunParts& parts = torvikPos.Parts();
    parts.Log.AddLog(QStringLiteral("HENTER KREDITTORDRE SOM MANGLER"));
    parts.Control.Begin();
    try {
        createMissing(parts, ADateTime);
    } catch (const std::exception& e) {
        parts.Log.AddLog(
            QStringLiteral("En feil oppstod i rutinen TTorvikPos.ImportMissingCreditOrders: %1").arg(ErrorText(e)),
            true);
    }
}

}  // namespace torvik

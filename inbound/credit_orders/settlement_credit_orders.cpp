#include "inbound/credit_orders/settlement_credit_orders.h"

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"
#include "inbound/credit_orders/credit_order_parts.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kTorvikOrderSinceTillVersion = 229;

constexpr char kClickAndCollectCustomer[] = "SELECT ISNULL(In_KlikkOgHent_Ku_ID,-1) from Innstillinger";
constexpr char kAnonymousCustomer[] = "SELECT ISNULL(In_Anonym_Ku_ID,-1) from Innstillinger";

// Paid by invoice, or sold to a named customer without any payment; not the payment of an account.
constexpr char kCreditSales[] =
    R"(select OR_ID,OR_TIDSPUNKT,OR_OP_ID, OR_REKVISISJONSNUMMER, AN_NAVN,KU_ID,IN_AVDNR,IN_KASSENR,OL_VA_ID,SUBSTRING(ISNULL(OLT_NAVN,VA_NAVN),1,50) VA_NAVN,OL_ANTALL,
OL_RABATT,OL_SALGSPRIS, OL_MVASATS%1
FROM innstillinger,ordre JOIN ordrelinje ON (ol_or_id=or_id) JOIN kunde ON (or_ku_id=ku_id) left outer join OrdreLinjeTekst ON (OLT_OL_ID=OL_ID) 
JOIN ANSATT ON (AN_ID=OR_AN_ID) JOIN VARE ON (ol_va_id=va_id)
WHERE ku_id<>1 AND OR_STATUS=0 AND OR_OP_ID=%2
AND NOT EXISTS ( SELECT 1 FROM ORDRELINJE, INNSTILLINGER WHERE OL_VA_ID=IN_BETALING_VA_ID AND OL_OR_ID=OR_ID) 
AND ( EXISTS ( SELECT * FROM BETALING WHERE BT_OR_ID=OR_ID AND BT_BF_ID=6)
OR ( Or_Ku_Id NOT IN (%3, %4) AND NOT EXISTS ( SELECT * FROM BETALING WHERE BT_OR_ID=OR_ID)) ) 
ORDER BY OR_ID)";
constexpr char kTorvikOrderColumn[] = ",OR_TORVIK_OR_ID";

constexpr char kOrderOfReferences[] = R"(select Or_ID from ORDRE where 
Or_Ordretype = 3 /*direkte ordre*/
 and or_dato =%1 and Or_VaarRef= '%2' and Or_DeresRef='%3')";

constexpr char kNumberFromGetspID[] = R"(declare @OR_ID int
exec dbo.GetspID 'Or_ID', @Or_ID OUTPUT
select @Or_ID as Or_ID)";

constexpr char kInsertOrder[] =
    R"(INSERT INTO ORDRE(Or_ID,Or_Fra_Ik_Ku_ID,Or_Pi_ID,Or_Ku_ID,Or_An_ID,Or_Lb_ID,Or_Bb_ID,Or_Eier_Ik_Ku_ID,Or_Til_Ik_Ku_ID,Or_Ordretype,Or_Ka_ID,Or_Vu_Id
,Or_Dato,Or_Status,Or_MvaBeregnes,Or_MvaSats,Or_Porto,Or_VaarRef,Or_DeresRef,Or_Prislapp,Or_Rabatt,Or_Info,Or_Vu_Kurs,Or_LevDato,Or_AntKolli,Or_Avrunding,Or_AntPaller, Or_Le_Id, Or_InternInfo, Or_Kav_Id) 
select %1,vLager.Krl_Til_Ku_id,ku_pi_id,ku_id,ISNULL(In_Kredittsalg_An_ID,'%2'),
ku_lb_id,ku_bb_id, case when ik_Properties & 1 = 0 then in_hoved_ik_ku_id else ik_ku_id end ,null,3 /*direkte ordre*/,null,'NOK',
%3,%4,Ku_Mvaberegnes,(case when Ku_Mvaberegnes= 0 then 0 else ik_mvasats end),0,'%5','%6',0,0,null,1,null,0,0,0, In_Direkteordre_Le_ID, %7, Ku_Kav_Id
from internkunde (NOLOCK),vLager (NOLOCK),kunde (NOLOCK),innstillinger (NOLOCK)
where vLager.Krl_Fra_Ku_id=ik_ku_id and ku_id=%8 and ik_avdelingsnummer='%9')";

constexpr char kLineVat[] = ",0,OR_MVABEREGNES,1,null, case when or_mvaberegnes = 1 then %1 else 0 end";

}  // namespace

void SettlementCreditOrders::create() {
    status_ = importStatus(general_);
    const QString clickAndCollect = setting(kClickAndCollectCustomer);
    const QString anonymous = setting(kAnonymousCustomer);

    db::Query sales(&visit_.TillSession);
    sales.ParamCheck = false;
    sales.CommandTimeout = kQueryTimeout;
    const bool hasTorvikOrder = db::Value(visit_.DbVersion).toInt() >= kTorvikOrderSinceTillVersion;
    sales.SQL = statementLines(QString::fromUtf8(kCreditSales)
                                   .arg(hasTorvikOrder ? QString::fromUtf8(kTorvikOrderColumn) : QString(),
                                        QString::number(settlement_), clickAndCollect, anonymous));
    sales.Open();

    // The number stays where a receipt is found to have its order: its lines go to the order made last.
    int number = 0;
    int previous = -1;
    for (; !sales.Eof(); sales.Next()) {
        const auto order = sales.integer("OR_ID");
        if (order != previous) {
            const CreditSale sale(sales);
            if (const int known = knownOrder(sale))
                reportKnown(sale, known);
            else
                number = createHead(sale);
            previous = order;
        }
        if (number > 0) insertCreditOrderLine(visit_, number, sales, kLineVat);
    }
}

QString SettlementCreditOrders::setting(const char* sql) {
    general_.Close();
    general_.SQL = QStringList{QString::fromUtf8(sql)};
    general_.Open();
    const QString value = general_.Fields(0).AsString();
    general_.Close();
    return value;
}

// The order that was made of this sale before, known by date and references or by the till order's link; or 0.
int SettlementCreditOrders::knownOrder(const CreditSale& sale) {
    const auto same = creditOrderQuery(
        visit_,
        statementLines(QString::fromUtf8(kOrderOfReferences).arg(sale.time, sale.ourReference, sale.requisition)));
    same->Open();
    if (!same->IsEmpty()) return static_cast<int>(same->Fields(0).AsInteger());
    return linkedCreditOrder(visit_, sale.order, sale.till, sale.department);
}

void SettlementCreditOrders::reportKnown(const CreditSale& sale, int known) {
    GlobalLogger().LogWarning(
        QStringLiteral(
            "Kredittordre nummer {Ordrenummer} i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet fordi den er opprettet tidligere."),
        {known, settlement_, visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer});
    visit_.Log.AddLog(QStringLiteral("Ordrenr. %1 fra kredittsalg bong nr %2 er opprettet tidligere")
                          .arg(QString::number(known), QString::number(sale.order)));
}

int SettlementCreditOrders::newNumber(const CreditSale& sale) {
    int number = visit_.Office.GetTargetId(QStringLiteral("OR_ID"));
    if (number == 0) {
        const auto query = creditOrderQuery(visit_, statementLines(kNumberFromGetspID));
        query->Open();
        number = static_cast<int>(query->Fields(0).AsInteger());
    }
    if (number < 1)
        throw EngineError(
            QStringLiteral(
                "En feil oppstod når kredittordre %1 skulle opprettes for avdelingsnummer %2, kassenummer %3")
                .arg(QString::number(sale.order), visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer));
    return number;
}

int SettlementCreditOrders::createHead(const CreditSale& sale) {
    const int number = newNumber(sale);
    visit_.Log.AddLog(QStringLiteral("Oppretter ordrenr. %1 fra kredittsalg bong nr %2")
                          .arg(QString::number(number), QString::number(sale.order)));
    const QString internalInfo = QStringLiteral("null");
    creditOrderQuery(
        visit_, statementLines(QString::fromUtf8(kInsertOrder)
                                   .arg(QString::number(number), QStringLiteral("NR"), sale.time,
                                        QString::number(status_), sale.ourReference, sale.requisition, internalInfo,
                                        QString::number(customerAtBackOffice(visit_, sale.customer)),
                                        quotesDoubled(sale.department))))
        ->ExecSQL();
    linkCreditOrder(visit_, sale, number);
    GlobalLogger().LogDebug(
        QStringLiteral(
            "Opprettet kredittordre {Ordrenummer} fra oppgjørsnummer {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
        {number, settlement_, visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer});
    return number;
}

}  // namespace torvik

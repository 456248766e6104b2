// Credit orders of the settlement being posted: each sale on credit of the till becomes an order of the back office
// that can be invoiced, with its lines, linked to the till's order. Runs inside the settlement's pair of transactions.
#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/credit_orders/credit_order_parts.h"
#include "inbound/settlement/oppgjor.h"
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

// The walk over one settlement's credit sales.
class CreditOrdersOfSettlement {
public:
    explicit CreditOrdersOfSettlement(TOppgjor& oppgjor)
        : oppgjor_(oppgjor),
          engine_(oppgjor.TorvikPos()),
          avd_(oppgjor.Roster().Avdelingsnummer()),
          till_(oppgjor.Roster().Ikk_Kassenummer()),
          settlement_(oppgjor.qryOppgjor().FieldByName(QStringLiteral("Op_Id")).AsInteger()) {}

    void create() {
        status_ = importStatus(oppgjor_.qryGeneralTarget());
        const QString clickAndCollect = setting(kClickAndCollectCustomer);
        const QString anonymous = setting(kAnonymousCustomer);

        db::Query sales(engine_.SourceConnection);
        sales.ParamCheck = false;
        sales.CommandTimeout = oppgjor_.qryGeneralSource().CommandTimeout;
        const bool hasTorvikOrder = db::Value(engine_.DbVersion()).toInt() >= kTorvikOrderSinceTillVersion;
        sales.SQL = statementLines(QString::fromUtf8(kCreditSales)
                                       .arg(hasTorvikOrder ? QString::fromUtf8(kTorvikOrderColumn) : QString(),
                                            QString::number(settlement_), clickAndCollect, anonymous));
        sales.Open();

        // The number stays where a receipt is found to have its order: its lines go to the order made last.
        int number = 0;
        int previous = -1;
        for (; !sales.Eof(); sales.Next()) {
            const auto order = static_cast<int>(sales.FieldByName(QStringLiteral("OR_ID")).AsInteger());
            if (order != previous) {
                const CreditSale sale(sales);
                if (const int known = knownOrder(sale))
                    reportKnown(sale, known);
                else
                    number = createHead(sale);
                previous = order;
            }
            if (number > 0) insertCreditOrderLine(engine_, number, sales, kLineVat);
        }
    }

private:
    [[nodiscard]] QString setting(const char* sql) {
        db::Query& general = oppgjor_.qryGeneralTarget();
        general.Close();
        general.SQL = QStringList{QString::fromUtf8(sql)};
        general.Open();
        const QString value = general.Fields(0).AsString();
        general.Close();
        return value;
    }

    // The order that was made of this sale before, known by date and references or by the till order's link; or 0.
    [[nodiscard]] int knownOrder(const CreditSale& sale) {
        const auto same = creditOrderQuery(
            engine_,
            statementLines(QString::fromUtf8(kOrderOfReferences).arg(sale.time, sale.ourReference, sale.requisition)));
        same->Open();
        if (!same->IsEmpty()) return static_cast<int>(same->Fields(0).AsInteger());
        return linkedCreditOrder(engine_, sale);
    }

    void reportKnown(const CreditSale& sale, int known) {
        GlobalLogger().LogWarning(
            QStringLiteral(
                "Kredittordre nummer {Ordrenummer} i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir ikke opprettet fordi den er opprettet tidligere."),
            {known, settlement_, avd_, till_});
        engine_.AddLog(QStringLiteral("Ordrenr. %1 fra kredittsalg bong nr %2 er opprettet tidligere")
                           .arg(QString::number(known), QString::number(sale.order)));
    }

    [[nodiscard]] int newNumber(const CreditSale& sale) {
        int number = engine_.GetTargetId(QStringLiteral("OR_ID"));
        if (number == 0) {
            const auto query = creditOrderQuery(engine_, statementLines(kNumberFromGetspID));
            query->Open();
            number = static_cast<int>(query->Fields(0).AsInteger());
        }
        if (number < 1)
            throw EngineError(
                QStringLiteral(
                    "En feil oppstod når kredittordre %1 skulle opprettes for avdelingsnummer %2, kassenummer %3")
                    .arg(QString::number(sale.order), avd_, till_));
        return number;
    }

    [[nodiscard]] int createHead(const CreditSale& sale) {
        const int number = newNumber(sale);
        engine_.AddLog(QStringLiteral("Oppretter ordrenr. %1 fra kredittsalg bong nr %2")
                           .arg(QString::number(number), QString::number(sale.order)));
        const QString internalInfo = QStringLiteral("null");
        creditOrderQuery(
            engine_,
            statementLines(QString::fromUtf8(kInsertOrder)
                               .arg(QString::number(number), QStringLiteral("NR"), sale.time, QString::number(status_),
                                    sale.ourReference, sale.requisition, internalInfo,
                                    QString::number(customerAtBackOffice(engine_, sale.customer)), sale.department)))
            ->ExecSQL();
        linkCreditOrder(engine_, sale, number);
        GlobalLogger().LogDebug(
            QStringLiteral(
                "Opprettet kredittordre {Ordrenummer} fra oppgjørsnummer {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}"),
            {number, settlement_, avd_, till_});
        return number;
    }

    TOppgjor& oppgjor_;
    TTorvikPos& engine_;
    QString avd_;
    QString till_;
    qint64 settlement_;
    int status_ = 0;
};

}  // namespace

void TOppgjor::CreateCreditOrders() {
    CreditOrdersOfSettlement(*this).create();
}

}  // namespace torvik

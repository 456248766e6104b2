#include "inbound/credit_orders/credit_order_parts.h"

#include "engine/base/query_timeout.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/office/item_numbers.h"

namespace torvik {

namespace {

constexpr int kCollectingCustomer = 12000;

constexpr char kImportStatus[] = R"(declare @str varchar(255)
if exists ( select 1 from syscolumns (NOLOCK) where name='In_Rpos_Or_Status_Import')
set @str = 'select In_Rpos_Or_Status_Import from innstillinger (NOLOCK) '
else
set @str = 'select 0 AS In_Rpos_Or_Status_Import'
EXEC(@str))";

constexpr char kCustomer[] = "select ku_id from kunde where ku_id=%1";

constexpr char kLinkedOrder[] =
    R"(SELECT Pos_Or_Kreditt_Or_Id Or_ID FROM PosOrdre JOIN InternKunde ON Pos_Or_Ik_Ku_Id = Ik_Ku_Id 
WHERE Pos_Or_Id = :Pos_Or_Id 
AND Pos_Or_KasseNr = :KasseNr 
AND Ik_Avdelingsnummer = :AvdNr 
AND Pos_Or_Kreditt_Or_Id IS NOT NULL )";

constexpr char kLinkOrder[] = R"(UPDATE PosOrdre SET Pos_Or_Kreditt_Or_Id = :Kreditt_Or_Id 
FROM PosOrdre JOIN InternKunde ON Pos_Or_Ik_Ku_Id = Ik_Ku_Id 
WHERE Pos_Or_Id = :Pos_Or_Id 
AND Pos_Or_KasseNr = :KasseNr 
AND Ik_Avdelingsnummer = :AvdNr )";

constexpr char kInsertLine[] =
    "INSERT INTO ORDRELINJE (OL_Or_ID,OL_Va_ID,OL_Navn,OL_Bestilt,OL_Levert,OL_Pris,OL_Rabatt,OL_Kostpris,OL_Status,OL_MvaBeregnes,OL_Utskrift,OL_Hoved_OL_ID,OL_Mvasats)";
constexpr char kSelectLine[] = "SELECT %1,'%2','%3'";
// The till's price less VAT; ordered and delivered are the same.
constexpr char kSelectLineAmounts[] = ",%1,%2,%3 / (1+(%4/100)),%5,VA_KOSTPRIS";
constexpr char kFromItem[] = " FROM ordre,vare,internkunde WHERE or_eier_ik_ku_id=ik_ku_id and va_id='%1' AND or_id=%2";

constexpr char kRemoveFee[] =
    R"(update ordrelinje set ol_pris = 0 from innstillinger, ordre join kunde on or_ku_id = ku_id
 where ol_or_id = or_id and ku_FjernGebyr = 1 and or_id = %1
and Ol_Va_ID = In_Fakturagebyr_Va_ID)";

void setKey(db::Query& query, int order, const QString& till, const QString& department) {
    query.ParamByName(QStringLiteral("Pos_Or_Id")) = order;
    query.ParamByName(QStringLiteral("KasseNr")) = till;
    query.ParamByName(QStringLiteral("AvdNr")) = department;
}

}  // namespace

CreditSale::CreditSale(const db::Query& row)
    : order(row.integer("OR_ID")),
      customer(row.integer("KU_ID")),
      time(row.dateTime("OR_TIDSPUNKT").literal()),
      ourReference(quotesDoubled(QStringLiteral("Bong %1 ved %2").arg(QString::number(order), row.text("AN_NAVN")))),
      requisition(quotesDoubled(row.text("OR_REKVISISJONSNUMMER"))),
      department(row.text("IN_AVDNR")),
      till(row.text("IN_KASSENR")) {}

std::unique_ptr<db::Query> creditOrderQuery(const TillVisit& visit, const QStringList& sql) {
    auto query = std::make_unique<db::Query>(&visit.OfficeSession);
    query->ParamCheck = false;
    query->CommandTimeout = kQueryTimeout;
    query->SQL = sql;
    return query;
}

int importStatus(db::Query& general) {
    general.Close();
    general.SQL = statementLines(kImportStatus);
    general.Open();
    const int status = general.integer("In_Rpos_Or_Status_Import");
    general.Close();
    return status;
}

int customerAtBackOffice(const TillVisit& visit, int customer) {
    const auto known = creditOrderQuery(visit, {QString::fromUtf8(kCustomer).arg(customer)});
    known->Open();
    return known->IsEmpty() ? kCollectingCustomer : customer;
}

int linkedCreditOrder(const TillVisit& visit, int order, const QString& till, const QString& department) {
    const auto linked = creditOrderQuery(visit, statementLines(kLinkedOrder));
    linked->ParamCheck = true;
    setKey(*linked, order, till, department);
    linked->Open();
    return linked->IsEmpty() ? 0 : linked->integer("Or_ID");
}

void linkCreditOrder(const TillVisit& visit, const CreditSale& sale, int number) {
    const auto link = creditOrderQuery(visit, statementLines(kLinkOrder));
    link->ParamCheck = true;
    link->ParamByName(QStringLiteral("Kreditt_Or_Id")) = number;
    setKey(*link, sale.order, sale.till, sale.department);
    link->ExecSQL();
}

void insertCreditOrderLine(const TillVisit& visit, int number, const db::Query& row, const char* vat) {
    const QString item = quotesDoubled(visit.Items.ResolveVaId(row.text("OL_VA_ID")));
    const QString quantity = numberLiteral(row.FieldByName(QStringLiteral("OL_ANTALL")).AsFloat());
    const QString price = numberLiteral(row.FieldByName(QStringLiteral("OL_SALGSPRIS")).AsFloat());
    const QString discount = numberLiteral(row.FieldByName(QStringLiteral("OL_RABATT")).AsFloat());
    const QString rate = QString::number(row.FieldByName(QStringLiteral("OL_MVASATS")).AsFloat(), 'f', 2);
    const QString order = QString::number(number);
    creditOrderQuery(visit, {QString::fromUtf8(kInsertLine),
                             QString::fromUtf8(kSelectLine).arg(order, item, quotesDoubled(row.text("VA_NAVN"))),
                             QString::fromUtf8(kSelectLineAmounts).arg(quantity, quantity, price, rate, discount),
                             QString::fromUtf8(vat).arg(rate), QString::fromUtf8(kFromItem).arg(item, order)})
        ->ExecSQL();
    creditOrderQuery(visit, statementLines(QString::fromUtf8(kRemoveFee).arg(order)))->ExecSQL();
}

}  // namespace torvik

#include "outbound/run/gift_card_item.h"

#include "engine/db/query.h"
#include "engine/office/back_office.h"

namespace torvik {

namespace {

constexpr char kGiftCardItem[] = "select In_Gavekort_Va_ID from innstillinger (NOLOCK) ";

constexpr char kReplaceItem[] = R"(delete from gavekortvare
insert into gavekortvare (GAV_VA_ID,GAV_AKTIV) select va_id,1 from vare where va_id='%1' and not exists ( select 1 from gavekortvare where gav_va_id='%1'))";

}  // namespace

void RefreshGiftCardItem(BackOffice& office, db::Session& till) {
    db::Query& settings = office.GeneralQuery(QStringList{QString::fromUtf8(kGiftCardItem)});
    settings.Open();
    QString item = settings.Fields(0).AsString().trimmed();
    settings.Close();
    if (item.isEmpty()) return;
    item.replace(QLatin1Char('\''), QStringLiteral("''"));
    db::Query replace(&till);
    replace.ParamCheck = false;
    replace.SQL = QString::fromUtf8(kReplaceItem).arg(item).split(QLatin1Char('\n'));
    replace.ExecSQL();
}

}  // namespace torvik

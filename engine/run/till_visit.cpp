#include "engine/run/till_visit.h"

#include "engine/base/engine_events.h"
#include "engine/db/query.h"

namespace torvik {

TillIdentity TillIdentity::Of(const db::Query& roster) {
    const auto text = [&](const char16_t* column) { return roster.FieldByName(QString::fromUtf16(column)).AsString(); };
    TillIdentity till;
    till.Ik_Ku_Id = static_cast<int>(roster.FieldByName(QStringLiteral("Ik_Ku_Id")).AsInteger());
    till.Avdelingsnummer = text(u"Ik_Avdelingsnummer").trimmed();
    till.Kassenummer = text(u"Ikk_Kassenummer").trimmed();
    till.Ku_Navn = text(u"Ku_Navn").trimmed();
    till.Ku_Adresse1 = text(u"Ku_Adresse1").trimmed();
    till.Ikk_Kassenummer = text(u"Ikk_Kassenummer");
    till.Ik_Properties = roster.FieldByName(QStringLiteral("Ik_Properties")).AsInteger();
    return till;
}

void ResolveTill(TillVisit& visit) {
    if (visit.Context.Events.OnResolveTill) visit.Context.Events.OnResolveTill(visit);
}

}  // namespace torvik

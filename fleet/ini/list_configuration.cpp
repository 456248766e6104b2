#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/run/run_parts.h"
#include "fleet/ini/ini_runs.h"

namespace torvik {

namespace {

constexpr char kSettings[] = "SELECT * FROM INNSTILLINGER WHERE IN_ID=1";

constexpr std::pair<const char*, QString TTorvikPOSConfig::*> kFields[] = {
    {"IN_NAVN", &TTorvikPOSConfig::In_Navn},       {"In_Adr1", &TTorvikPOSConfig::In_Adr1},
    {"In_Adr2", &TTorvikPOSConfig::In_Adr2},       {"In_Adr3", &TTorvikPOSConfig::In_Adr3},
    {"In_Telefon", &TTorvikPOSConfig::In_Telefon}, {"In_Telefax", &TTorvikPOSConfig::In_Telefax},
    {"In_Avdnr", &TTorvikPOSConfig::In_Avdnr},     {"In_Kassenr", &TTorvikPOSConfig::In_Kassenr},
    {"In_Orgnr", &TTorvikPOSConfig::In_Orgnr},
};

}  // namespace

void ListConfiguration(RunParts& parts, int Ku_Id, const QString& Kassenummer, TTorvikPOSConfig& TorvikPOSConfig) {
    parts.Log.AddLog(QStringLiteral("HENTER KONFIGURASJON..."));
    parts.Office.Begin();
    parts.Roster.Close();
    parts.Roster.ClearFilter();
    parts.Roster.SetKu_Id(Ku_Id);
    parts.Roster.SetIkk_Kassenummer(Kassenummer);
    parts.Roster.Open();
    // A till that did not answer has a closed session, which the query then tells.
    (void)parts.ConnectSource();
    db::Query settings(&parts.Till.Session());
    settings.SQL = QStringList{QString::fromUtf8(kSettings)};
    settings.Open();
    if (settings.IsEmpty())
        throw EngineError(QStringLiteral("Tabellen INNSTILLINGER er tom, eller har ingen post med ID=1"));
    for (const auto& [column, field] : kFields) TorvikPOSConfig.*field = settings.text(column);
    parts.Log.AddLog(QStringLiteral("fullføRT HENTING AV KONFIGURASJON"));
}

}  // namespace torvik

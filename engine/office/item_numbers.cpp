// The back office's item numbers and aliases, loaded once a run so that the check of a sold item's number costs no
// round trip.
#include "engine/base/abort.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "engine/torvik_pos.h"

namespace torvik {

void TTorvikPos::loadReferenceTable(db::MemTable& table, const QString& sql) {
    db::Query& query = generalQuery({sql});
    query.Open();
    table.Close();
    table.CopyFrom(query);
    query.Close();
}

void TTorvikPos::LoadVareTable() {
    AddLog(QStringLiteral("Laster inn vare tabellen (kan ta litt tid) ..."), false, kls_OK);
    loadReferenceTable(*Vare, QStringLiteral("select ltrim(rtrim(va_id)) va_id from vare (NOLOCK) order by va_id"));
}

void TTorvikPos::LoadVareAliasTable() {
    AddLog(QStringLiteral("Laster inn varealias tabellen (kan ta litt tid) ..."), false, kls_OK);
    loadReferenceTable(*VareAlias, QStringLiteral("select * from varealias (NOLOCK) order by vr_id"));
}

QString TTorvikPos::ResolveVaId(const QString& Va_Id) {
    const auto isItem = [this](const QString& number) {
        return Vare->Locate(QStringLiteral("VA_ID"), number, db::LocateOption::CaseInsensitive);
    };
    const auto isAlias = [this](const QString& number) {
        return VareAlias->Locate(QStringLiteral("VR_ID"), number, db::LocateOption::CaseInsensitive);
    };
    const auto changedTo = [&](const QString& number) {
        AddLog(QStringLiteral("Varenummer %1 er endret til %2.").arg(Va_Id, number), false, kls_OK);
        return number;
    };
    const auto aliasTarget = [this] { return VareAlias->FieldByName(QStringLiteral("VR_VA_ID")).AsString().trimmed(); };

    const QString number = Va_Id.trimmed();
    const QString replacement = ReplacementVa_Id.trimmed();
    if (isItem(number)) return number;
    if (isAlias(number)) return changedTo(aliasTarget());
    if (isItem(replacement)) return changedTo(replacement);
    if (isAlias(replacement)) return changedTo(aliasTarget());
    throw EngineError(QStringLiteral("Finner ikke varenummer %1 eller erstatningsnummer %2").arg(Va_Id, replacement));
}

}  // namespace torvik

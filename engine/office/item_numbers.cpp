#include "engine/office/item_numbers.h"

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"

namespace torvik {

ItemNumbers::ItemNumbers(const EngineContext& context, BackOffice& office, OperatorLog& log)
    : context_(context),
      office_(office),
      log_(log),
      Vare(std::make_unique<db::MemTable>()),
      VareAlias(std::make_unique<db::MemTable>()) {}

ItemNumbers::~ItemNumbers() = default;

void ItemNumbers::load(db::MemTable& table, const QString& sql) {
    db::Query& query = office_.GeneralQuery({sql});
    query.Open();
    table.Close();
    table.CopyFrom(query);
    query.Close();
}

void ItemNumbers::LoadVareTable() {
    log_.AddLog(QStringLiteral("Laster inn vare tabellen (kan ta litt tid) ..."), false, kls_OK);
    load(*Vare, QStringLiteral("select ltrim(rtrim(va_id)) va_id from vare (NOLOCK) order by va_id"));
}

void ItemNumbers::LoadVareAliasTable() {
    log_.AddLog(QStringLiteral("Laster inn varealias tabellen (kan ta litt tid) ..."), false, kls_OK);
    load(*VareAlias, QStringLiteral("select * from varealias (NOLOCK) order by vr_id"));
}

void ItemNumbers::Load() {
    LoadVareTable();
    LoadVareAliasTable();
    log_.AddLog(QStringLiteral("Lastet %1 varer for referanseintegritet").arg(Vare->RecordCount()));
}

QString ItemNumbers::ResolveVaId(const QString& Va_Id) const {
    const auto isItem = [this](const QString& number) {
        return Vare->Locate(QStringLiteral("VA_ID"), number, db::LocateOption::CaseInsensitive);
    };
    const auto isAlias = [this](const QString& number) {
        return VareAlias->Locate(QStringLiteral("VR_ID"), number, db::LocateOption::CaseInsensitive);
    };
    const auto changedTo = [&](const QString& number) {
        log_.AddLog(QStringLiteral("Varenummer %1 er endret til %2.").arg(Va_Id, number), false, kls_OK);
        return number;
    };
    const auto aliasTarget = [this] { return VareAlias->FieldByName(QStringLiteral("VR_VA_ID")).AsString().trimmed(); };

    const QString number = Va_Id.trimmed();
    const QString replacement = context_.Options.ReplacementVa_Id.trimmed();
    if (isItem(number)) return number;
    if (isAlias(number)) return changedTo(aliasTarget());
    if (isItem(replacement)) return changedTo(replacement);
    if (isAlias(replacement)) return changedTo(aliasTarget());
    throw EngineError(QStringLiteral("Finner ikke varenummer %1 eller erstatningsnummer %2").arg(Va_Id, replacement));
}

}  // namespace torvik

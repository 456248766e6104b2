// The commands that fetch from the tills.
#include <QScopeGuard>

#include "engine/db/session.h"
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "inbound/credit_orders/credit_order_repair.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/night/automatic_run.h"
#include "shell/settings/bound_settings.h"

namespace torvik {

void actiOppgjorManually(CommandContext& context) {
    if (!ApplyKasseCollection(context, kOldTills)) return;
    TTorvikPos& engine = context.engine;
    engine.IncludeGiftVoucherOnOppgjor = engine.IsEnterprise;
    engine.IncludeCreditCouponOnOppgjor = engine.IsEnterprise;
    context.settings.apply(kAtCommand);
    context.target.Close();
    context.target.SetConnectString(context.target.ConnectString());
    engine.Tasks = TTasks{taHent};
    engine.SetAutoCommunicate(false);
    engine.ffraOppgjorStatus->Clear();

    const auto restore =
        qScopeGuard([&] { engine.SetAutoCommunicate(context.settings.value("cbAutoStart").toBool()); });
    engine.ExecuteOppgjor();
    if (engine.IncludeVaretellingOnOppgjor) engine.ExecuteVaretelling();
    context.automaticRun.accumulateIfWanted();
}

void dxBtnHentVaretelling(CommandContext& context) {
    const auto period = context.ask.Text(QStringLiteral("Periode"), QStringLiteral("Oppgi periode (Ã…Ã…Ã…Ã…MM)"),
                                         context.settings.value("edVt_Periode").toString());
    if (!period || !ApplyKasseCollection(context, kAllTills)) return;
    context.engine.VaretellingPeriode = *period;
    context.engine.ExecuteVaretelling();
}

void btnNils(CommandContext& context) {
    const auto from = context.ask.Date(QStringLiteral("Ta med ordrer fra og med dato:"));
    if (!from || !ApplyKasseCollection(context, kAllTills)) return;
    ImportMissingCreditOrders(context.engine, from->startOfDay());
}

}  // namespace torvik

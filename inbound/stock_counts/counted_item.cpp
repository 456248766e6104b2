#include "inbound/stock_counts/counted_item.h"

#include "engine/base/abort.h"
#include "engine/base/engine_events.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/office/item_numbers.h"
#include "engine/run/run_control.h"
#include "engine/run/till_visit.h"

namespace torvik {

namespace {

constexpr int kWarningLevel = 2;  // of OnAddLog

// At night as little as in a service: a question would hold both transactions open until the morning.
bool canAsk(const EngineContext& context) {
    const EngineEvents& events = context.Events;
    return !context.Options.RunAsService() && events.OnAskText && (!events.OnIsAttended || events.OnIsAttended());
}

// The replacement is looked up like any number, and is not replaced again.
QString replacementFor(const EngineContext& context, const QString& number) {
    const QString replacement = context.Options.ReplacementForNonExistingItemNumber.trimmed();
    if (replacement.isEmpty() || number == replacement)
        throw EngineError(
            QStringLiteral("Import av varetelling avbrutt da varenummeret %1 ikke finnes i Torvik").arg(number));
    // The replacement twice: required.
    if (context.Events.OnAddLog)
        context.Events.OnAddLog(
            context.Sender, QStringLiteral("Varenr. %1 finnes ikke. Erstattet med %2").arg(replacement, replacement),
            kWarningLevel, context.Seam.now());
    return replacement;
}

QString askFor(const TillVisit& visit, const QString& number) {
    const EngineEvents& events = visit.Context.Events;
    const auto answer = events.OnAskText(QStringLiteral("Varenr. %1 finnes ikke").arg(number),
                                         QStringLiteral("Nytt varenummer"), number);
    if (answer) return answer->trimmed();
    visit.Control.TestCancel();
    const bool ends =
        !events.OnAskOperator || events.OnAskOperator(QStringLiteral("Vil du avbryte import av varetellingen"));
    visit.Control.TestCancel();
    if (ends) throw EngineError(QStringLiteral("Import av varetelling avbrutt av bruker"));
    return number;
}

}  // namespace

QString ResolveCountedItem(const TillVisit& visit, const QString& number) {
    QString wanted = number.trimmed();
    for (;;) {
        try {
            return visit.Items.ResolveVaId(wanted);
        } catch (const EngineError&) {
            wanted = canAsk(visit.Context) ? askFor(visit, wanted) : replacementFor(visit.Context, wanted);
        }
    }
}

}  // namespace torvik

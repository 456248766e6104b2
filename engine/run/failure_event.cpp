#include "engine/run/failure_event.h"

#include <memory>

#include "engine/base/abort.h"
#include "engine/base/failure_facts.h"
#include "engine/run/till_visit.h"
#include "logging/logger.h"

namespace torvik {

namespace {

void addReason(ILogEntry& event, const FailureFacts& facts) {
    const std::pair<const char16_t*, QVariant> properties[] = {{u"Aarsak", facts.Reason()},
                                                               {u"Serversvar", facts.ServerText},
                                                               {u"Steg", facts.Step},
                                                               {u"Tabell", facts.Table}};
    for (const auto& [name, value] : properties)
        if (!value.toString().isEmpty()) event.WithArgument(QString::fromUtf16(name), value);
    if (facts.Number != 0) event.WithArgument(QStringLiteral("Feilnummer"), QVariant(facts.Number));
}

}  // namespace

void LogTillFailure(const QString& words, const TillIdentity& till, const std::exception& failure) {
    const std::initializer_list<LogArg> values{till.Avdelingsnummer, till.Kassenummer, ErrorText(failure)};
    const auto event = std::make_shared<TLogEntry>(TLogLevel::llError, words, values);
    addReason(*event, FactsOf(failure));
    GlobalLogger().Log(event);
}

}  // namespace torvik

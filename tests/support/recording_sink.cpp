// How a recorded event reads in an expectation.
#include "tests/support/recording_sink.h"

namespace torvik::test {

QStringList RecordingSink::lines() const {
    QStringList all;
    for (const auto& entry : entries) {
        const auto& event = dynamic_cast<const TLogEntry&>(*entry);
        QString line = logLevelShortName(event.Level) + QLatin1Char(' ') + event.Template;
        for (const TLogArgument& argument : event.Arguments)
            line += QLatin1Char(' ') + argument.Name + QLatin1Char('=') +
                    (argument.Value->is_string() ? QString::fromStdString(argument.Value->get<std::string>())
                                                 : jsonText(*argument.Value));
        if (!event.Exception.isEmpty()) line += QStringLiteral(" !") + event.Exception;
        all << line;
    }
    return all;
}

}  // namespace torvik::test

// The sinks that the ini file asks for, each behind a queue of its own, and the properties of every event.
#include "logging/setup_logging.h"

#include "logging/ini_file.h"
#include "logging/program_file.h"
#include "logging/queued_sink.h"
#include "logging/rolling_file_sink.h"
#include "logging/seq_sink.h"

namespace torvik {

namespace {

constexpr std::size_t kQueueDepth = 100;

QString versionOrNone() {
    try {
        return programVersion();
    } catch (const std::exception&) {
        return QStringLiteral("0.0.0");
    }
}

void addProperty(TLogger& logger, const char* name, const QString& value) {
    if (!value.isEmpty()) logger.WithProperty(QString::fromUtf8(name), JsonValue(value.toStdString()));
}

}  // namespace

TLogger& AddRollingFileSink(TLogger& logger, const QString& FileName) {
    if (!FileName.isEmpty())
        logger.AddSink(std::make_shared<TQueuedSink>(std::make_shared<TRollingFileSink>(FileName), kQueueDepth));
    return logger;
}

TLogger& AddSeqSink(TLogger& logger, const QString& ServerUrl, const QString& ApiKey) {
    if (!ServerUrl.isEmpty())
        logger.AddSink(std::make_shared<TQueuedSink>(std::make_shared<TSeqSink>(ServerUrl, ApiKey), kQueueDepth));
    return logger;
}

void SetupLogging(const QString& Application, const QString& IniFileName, const QString& DefaultFileName,
                  const QString& DefaultSeqUrl) {
    const IniFile ini(IniFileName);
    const auto setting = [&ini](const char* key, const QString& fallback = {}) {
        return ini.value("Logging", key, fallback);
    };
    TLogger& logger = GlobalLogger();
    logger.ClearSinks();
    AddSeqSink(logger, setting("SeqUrl", DefaultSeqUrl), setting("SeqApiKey"));
    AddRollingFileSink(logger, setting("Filename", DefaultFileName));

    logger.WithProperty(QStringLiteral("Application"), JsonValue(Application.toStdString()));
    addProperty(logger, "Tenant", setting("Tenant"));
    addProperty(logger, "Environment", setting("Environment"));

    logger.LogInformation(
        QStringLiteral("Started logging from {ApplicationPath} version {ApplicationVersion}, running as {User} on "
                       "{MachineName}"),
        {programFile(), versionOrNone(), qEnvironmentVariable("USERNAME"), qEnvironmentVariable("COMPUTERNAME")});
}

}  // namespace torvik

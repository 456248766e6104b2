// Puts the process's logger together at start: which sinks it has and which properties stand on every event.
// docs/log-format.md tells the ini keys.
#pragma once

#include <QString>

#include "logging/logger.h"

namespace torvik {

// Each adds a sink behind a queue of 100 events, unless its file name or address is empty, and returns the logger.
TLogger& AddRollingFileSink(TLogger& logger, const QString& FileName);
TLogger& AddSeqSink(TLogger& logger, const QString& ServerUrl, const QString& ApiKey);

// Gives GlobalLogger() the sinks and properties that section "Logging" of the ini file names, the defaults where it
// does not, and logs the start.
void SetupLogging(const QString& Application, const QString& IniFileName, const QString& DefaultFileName,
                  const QString& DefaultSeqUrl);

}  // namespace torvik

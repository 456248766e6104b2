// A program that sets up logging, logs and returns: log_and_end INI-FILE LOG-FILE COUNT. Its test looks at what came
// through.
#include <cstdlib>

#include "logging/setup_logging.h"

int main(int, char** argv) {
    torvik::SetupLogging(QStringLiteral("log_and_end"), QString::fromUtf8(argv[1]), QString::fromUtf8(argv[2]),
                         QString());
    for (int i = 0; i < std::atoi(argv[3]); ++i) torvik::GlobalLogger().LogDebug(QStringLiteral("{N}"), {i});
}

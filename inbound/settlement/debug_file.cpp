#include "inbound/settlement/debug_file.h"

#include "engine/base/abort.h"
#include "engine/log/operator_log.h"
#include "logging/logger.h"

namespace torvik {

void saveDebugFile(OperatorLog& log, const std::function<void()>& save) {
    try {
        save();
    } catch (const std::exception& e) {
        log.AddLog(QStringLiteral("Klarte ikke å lagre feilsøkingsfil: %1").arg(ErrorText(e)), false, kls_Warning);
        GlobalLogger().LogWarning(QStringLiteral("Klarte ikke å lagre feilsøkingsfil: {Feilmelding}"), {ErrorText(e)});
    }
}

}  // namespace torvik

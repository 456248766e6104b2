#include "fleet/objects/till_version.h"

#include "engine/base/abort.h"

namespace torvik {

int tillVersionNumber(const QString& dbVersion) {
    bool isNumber = false;
    const int version = dbVersion.trimmed().toInt(&isNumber);
    if (!isNumber) throw EngineError(QStringLiteral("'%1' is not a valid integer value").arg(dbVersion));
    return version;
}

}  // namespace torvik

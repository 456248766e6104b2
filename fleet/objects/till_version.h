// From which schema version on a till takes files from its own database.
#pragma once

#include <QString>

namespace torvik {

constexpr int kBinaryObjectVersion = 72;

// in_dbversion as a number; raises EngineError when the text is none.
[[nodiscard]] int tillVersionNumber(const QString& dbVersion);

}  // namespace torvik

#include "shell/ini_file.h"

#define SI_NO_CONVERSION
#include <SimpleIni.h>

namespace torvik {

QString iniValue(const QString& file, const char* section, const char* key, const QString& fallback) {
    CSimpleIniA ini(true);
    if (ini.LoadFile(file.toLocal8Bit().constData()) < 0) return fallback;
    const char* value = ini.GetValue(section, key, nullptr);
    return value ? QString::fromUtf8(value) : fallback;
}

}  // namespace torvik

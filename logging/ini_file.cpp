// Tells UTF-16 and UTF-8 by their marks, takes anything else that is not UTF-8 for Latin-1, and leaves the rest to the
// library.
#include "logging/ini_file.h"

#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <QFile>
#include <QStringConverter>

namespace torvik {

namespace {

QString decoded(const QByteArray& bytes) {
    QStringDecoder decoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8));
    const QString text = decoder(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

}  // namespace

struct IniFile::Content {
    CSimpleIniA ini{true};
};

IniFile::IniFile(const QString& file) : content_(std::make_unique<Content>()) {
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) return;
    content_->ini.LoadData(decoded(source.readAll()).toStdString());
}

IniFile::~IniFile() = default;

QString IniFile::value(const char* section, const char* key, const QString& fallback) const {
    const char* found = content_->ini.GetValue(section, key, nullptr);
    return found ? QString::fromUtf8(found) : fallback;
}

}  // namespace torvik

// An ini file read once, with backslashes and commas as they stand (which QSettings would spoil). Used for
// "TorvikPosSync.ini" and "deploy.ini".
#pragma once

#include <QString>
#include <memory>

namespace torvik {

class IniFile {
public:
    // Takes UTF-8, UTF-16 with its mark, and else Latin-1, as old Windows files are. A file that is missing or cannot
    // be read has no values.
    explicit IniFile(const QString& file);
    ~IniFile();
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;

    // The value, which may be empty; `fallback` where the section or the key is missing. Case does not count in names.
    [[nodiscard]] QString value(const char* section, const char* key, const QString& fallback = {}) const;

private:
    struct Content;
    std::unique_ptr<Content> content_;
};

}  // namespace torvik

// The path as the system knows it: no QCoreApplication has to exist for it.
#include "logging/program_file.h"

#include <QCoreApplication>
#include <QDir>
#include <filesystem>
#include <stdexcept>

#ifdef Q_OS_WIN
#include <windows.h>

#include <array>
#endif

namespace torvik {

#ifdef Q_OS_WIN

QString programFile() {
    std::array<wchar_t, 32768> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return QDir::fromNativeSeparators(QString::fromWCharArray(path.data(), static_cast<qsizetype>(length)));
}

#else

QString programFile() {
    return QString::fromStdString(std::filesystem::read_symlink("/proc/self/exe").string());
}

#endif

// On Windows the version record of the file, which Qt reads; elsewhere a file has none, and main() states the version.
QString programVersion() {
    const QString version = QCoreApplication::applicationVersion();
    if (version.isEmpty()) throw std::runtime_error("the program has no version record");
    return version;
}

}  // namespace torvik

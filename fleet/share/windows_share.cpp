// The till's share over Windows' own network connection and file copy.
#ifdef _WIN32

#ifndef UNICODE
#define UNICODE
#endif
// clang-format off: windows.h comes first
#include <windows.h>
#include <winnetwk.h>
// clang-format on

#include <exception>

#include "fleet/share/file_share.h"

namespace torvik {

namespace {

std::wstring wide(const std::string& utf8) {
    if (utf8.empty()) return {};
    const int size = static_cast<int>(utf8.size());
    std::wstring out(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, out.data(), static_cast<int>(out.size()));
    return out;
}

std::string narrow(const wchar_t* text, int size) {
    std::string out(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text, size, nullptr, 0, nullptr, nullptr)),
                    '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, size, out.data(), static_cast<int>(out.size()), nullptr, nullptr);
    return out;
}

[[noreturn]] void fail(DWORD code) {
    throw ShareError(static_cast<int>(code), systemErrorText(static_cast<int>(code)));
}

// What the copy's callback needs; what the callback's own work raised waits here until the copy has ended.
struct Copy {
    const ShareProgress& progress;
    std::exception_ptr raised;
};

DWORD CALLBACK chunkCopied(LARGE_INTEGER total, LARGE_INTEGER transferred, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                           DWORD reason, HANDLE, HANDLE, LPVOID data) {
    auto& copy = *static_cast<Copy*>(data);
    if (reason != CALLBACK_CHUNK_FINISHED) return PROGRESS_CONTINUE;
    try {
        copy.progress(static_cast<std::uint64_t>(transferred.QuadPart), static_cast<std::uint64_t>(total.QuadPart));
    } catch (...) {
        copy.raised = std::current_exception();
        return PROGRESS_CANCEL;
    }
    return PROGRESS_CONTINUE;
}

class WindowsShare : public FileShare {
public:
    void connect(const std::string& resource, const ShareLogin& login) override {
        std::wstring name = wide(resource);
        NETRESOURCEW net{};
        net.dwType = RESOURCETYPE_DISK;
        net.lpRemoteName = name.data();
        const DWORD code = WNetAddConnection2W(&net, wide(login.password).c_str(), wide(login.user).c_str(), 0);
        if (code != NO_ERROR) fail(code);
    }

    void copy(const std::string& localFile, const std::string& target, const ShareProgress& progress,
              const int& cancel) override {
        static_assert(sizeof(BOOL) == sizeof(int));
        Copy copy{progress, nullptr};
        const BOOL copied = CopyFileExW(wide(localFile).c_str(), wide(target).c_str(), chunkCopied, &copy,
                                        reinterpret_cast<BOOL*>(const_cast<int*>(&cancel)), 0);
        const DWORD code = copied ? NO_ERROR : GetLastError();
        if (copy.raised) std::rethrow_exception(copy.raised);
        if (code != NO_ERROR) fail(code);
    }

    void remove(const std::string& target) override {
        if (!DeleteFileW(wide(target).c_str())) fail(GetLastError());
    }

    // The profile stays as it is; open files are no hindrance.
    void disconnect(const std::string& resource) override {
        const DWORD code = WNetCancelConnection2W(wide(resource).c_str(), 0, TRUE);
        if (code != NO_ERROR) fail(code);
    }
};

}  // namespace

std::string systemErrorText(int code) {
    wchar_t* text = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    std::string out = length == 0 ? "Error " + std::to_string(code) : narrow(text, static_cast<int>(length));
    LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == ' ')) out.pop_back();
    return out;
}

std::unique_ptr<FileShare> systemFileShare() {
    return std::make_unique<WindowsShare>();
}

}  // namespace torvik

#endif

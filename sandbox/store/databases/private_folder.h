// A folder of this process' own for what nobody keeps: in shared memory, and gone with the object. A process that is
// killed leaves its folder behind; whoever makes the next one of that name removes it. Used by Databases where no data
// folder is given, and by tests whose chains stand in files. docs/sandbox-storage.md.
#pragma once

#include <filesystem>
#include <string>

namespace sandbox {

class PrivateFolder {
public:
    // Under /dev/shm, or where the system has none, among the temporary files; named `prefix` and six characters.
    // Removes the folders so named, of the same user, that no process holds any more. Raises std::runtime_error where
    // it cannot be made.
    explicit PrivateFolder(const std::string& prefix);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    // Where such folders are made.
    [[nodiscard]] static std::filesystem::path parent();

private:
    std::filesystem::path path_;
    int lock_ = -1;  // the file whose lock tells others that the folder is in use
};

}  // namespace sandbox

// Runs a program of the system for a test and gives what it wrote and how it ended.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace sandbox::test {

struct Ran {
    int status = -1;     // its exit status; 127: there is no such program; 124: it took too long
    std::string output;  // standard output and error together
};

// A shell command line; `input` is its standard input.
inline Ran runProgram(const std::string& command, const std::string& input = {}) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("torvik-input-" + std::to_string(::getpid()));
    std::ofstream(file, std::ios::binary) << input;
    std::FILE* pipe = ::popen(("timeout 60 " + command + " <" + file.string() + " 2>&1").c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
    Ran ran;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe))
        ran.output.append(part.data(), count);
    const int status = ::pclose(pipe);
    ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::filesystem::remove(file);
    return ran;
}

// A folder of its own that goes with the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "torvik-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder");
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream in(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }

private:
    std::filesystem::path path_;
};

}  // namespace sandbox::test

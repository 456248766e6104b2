// Folders of one process each, and what becomes of those whose process was killed.
#include "sandbox/store/databases/private_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <vector>

namespace sandbox {
namespace {

namespace fs = std::filesystem;

// A prefix that no other process has, so that nobody else removes what a test leaves lying.
class PrivateFolders : public ::testing::Test {
protected:
    ~PrivateFolders() override {
        for (const fs::path& each : all()) fs::remove_all(each);
    }
    [[nodiscard]] std::vector<fs::path> all() const {
        std::vector<fs::path> found;
        for (const auto& each : fs::directory_iterator(PrivateFolder::parent()))
            if (each.path().filename().string().starts_with(prefix)) found.push_back(each.path());
        return found;
    }
    // A process that makes a folder with a file in it and is killed.
    [[nodiscard]] fs::path folderOfKilledProcess() const {
        std::array<int, 2> pipe{};
        EXPECT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const PrivateFolder folder(prefix);
            std::ofstream(folder.path() / "db.sqlite") << "rows";
            const std::string path = folder.path();
            if (::write(pipe[1], path.data(), path.size()) < 0) ::_exit(1);
            for (;;) ::pause();
        }
        ::close(pipe[1]);
        std::array<char, 200> path{};
        const ssize_t length = ::read(pipe[0], path.data(), path.size());
        ::close(pipe[0]);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        return std::string(path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    }
    // As programs made it that knew no lock, so many hours ago.
    [[nodiscard]] fs::path withoutLock(int hours) const {
        std::string path = (PrivateFolder::parent() / (prefix + "XXXXXX")).string();
        EXPECT_NE(::mkdtemp(path.data()), nullptr);
        std::ofstream(fs::path(path) / "db.sqlite") << "rows";
        const timespec then{::time(nullptr) - hours * 3600L, 0};
        const std::array<timespec, 2> times{then, then};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
        return path;
    }

    std::string prefix = "torvik-test-" + std::to_string(::getpid()) + "-";
};

TEST_F(PrivateFolders, IsTheUsersAloneAndGoesWithItsObject) {
    fs::path path;
    {
        const PrivateFolder folder(prefix);
        path = folder.path();
        std::ofstream(path / "db.sqlite") << "rows";
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(PrivateFolders, LivingOnesLeaveEachOtherAlone) {
    const PrivateFolder first(prefix);
    std::ofstream(first.path() / "db.sqlite") << "rows";
    const PrivateFolder second(prefix);
    { const PrivateFolder third(prefix); }
    EXPECT_TRUE(fs::exists(first.path() / "db.sqlite"));
    EXPECT_TRUE(fs::exists(second.path()));
    EXPECT_EQ(all().size(), 2U);
}

// Each looks at the others' folders at every moment of their making.
TEST_F(PrivateFolders, MadeByManyAtOnceAllStand) {
    std::atomic<int> lost = 0;
    const auto makeSome = [&] {
        for (int i = 0; i < 300; ++i) {
            const PrivateFolder folder(prefix);
            std::ofstream(folder.path() / "db.sqlite") << "rows";
            if (!fs::exists(folder.path() / "db.sqlite")) ++lost;
        }
    };
    std::vector<std::thread> makers;
    for (int i = 0; i < 8; ++i) makers.emplace_back(makeSome);
    for (std::thread& each : makers) each.join();
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(all(), std::vector<fs::path>());
}

TEST_F(PrivateFolders, ThatOfAKilledProcessGoesWhenTheNextIsMade) {
    const fs::path left = folderOfKilledProcess();
    ASSERT_TRUE(fs::exists(left / "db.sqlite")) << left;
    const PrivateFolder next(prefix);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_EQ(all(), std::vector{next.path()});
}

TEST_F(PrivateFolders, ThatOfAnotherNameStays) {
    const fs::path left = folderOfKilledProcess();
    const PrivateFolder shorter(prefix.substr(0, prefix.size() - 1));
    const PrivateFolder longer(prefix + "x-");
    EXPECT_TRUE(fs::exists(left / "db.sqlite"));
}

TEST_F(PrivateFolders, OneWithoutALockStaysForADay) {
    const fs::path young = withoutLock(23);
    const fs::path old = withoutLock(25);
    const PrivateFolder folder(prefix);
    EXPECT_TRUE(fs::exists(young / "db.sqlite"));
    EXPECT_FALSE(fs::exists(old));
}

TEST_F(PrivateFolders, ThatOfAnotherUserStays) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another user";
    const fs::path old = withoutLock(25);
    ASSERT_EQ(::chown(old.c_str(), 65534, 65534), 0);
    const PrivateFolder folder(prefix);
    EXPECT_TRUE(fs::exists(old / "db.sqlite"));
}

TEST_F(PrivateFolders, ProgramStartedMeanwhileDoesNotHoldIt) {
    const PrivateFolder folder(prefix);
    const std::string command = "ls -l /proc/self/fd | grep -q '" + folder.path().string() + "'";
    EXPECT_NE(std::system(command.c_str()), 0) << "it has the lock's file open";
}

}  // namespace
}  // namespace sandbox

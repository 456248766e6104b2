// The share of a till's machine, as a real server serves it: what is copied is there byte for byte, and what fails has
// the system's text and leaves no part.
#include "fleet/share/smb_share.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

#include "tests/support/line_relay.h"
#include "tests/support/qt_print.h"
#include "tests/support/samba_server.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kC = R"(\\127.0.0.1\C$)";
constexpr int kGoOn = 0;
constexpr std::uint64_t kMega = std::uint64_t{1} << 20;

void ignore(std::uint64_t, std::uint64_t) {}

// Bytes that no shift or repetition of a piece would give.
QByteArray bytes(qsizetype count) {
    QByteArray all(count, Qt::Uninitialized);
    quint32 state = 12345;
    for (char& c : all) {
        state = state * 1664525 + 1013904223;
        c = static_cast<char>(state >> 24);
    }
    return all;
}

class SmbShare : public testing::Test {
protected:
    SmbShare() : share(samba.share()) {}

    [[nodiscard]] static ShareLogin login() { return {SambaServer::kUser, SambaServer::kPassword}; }
    [[nodiscard]] std::string file(const QByteArray& content, const QString& name = QStringLiteral("TorvikPOS.zip")) {
        QFile made(local.filePath(name));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(content);
        return made.fileName().toStdString();
    }
    // The text of what the call raises; empty when it raises nothing.
    template <typename Call>
    static std::string errorOf(Call&& call) {
        try {
            call();
            return {};
        } catch (const ShareError& e) {
            EXPECT_NE(e.code(), 0);
            return e.what();
        }
    }

    SambaServer samba;
    QTemporaryDir local;
    std::unique_ptr<FileShare> share;
};

TEST_F(SmbShare, CopiesByteForByteAndTellsHowFarItIs) {
    const QByteArray content = bytes(9 * kMega + 17);
    std::vector<std::pair<std::uint64_t, std::uint64_t>> told;
    share->connect(kC, login());
    share->copy(
        file(content), kC + R"(\TorvikPOS.zip)",
        [&](std::uint64_t done, std::uint64_t total) { told.emplace_back(done, total); }, kGoOn);
    share->disconnect(kC);
    EXPECT_TRUE(samba.content("C$", "TorvikPOS.zip") == content);
    ASSERT_GE(told.size(), 2U);
    EXPECT_EQ(told.back(), std::pair(std::uint64_t(content.size()), std::uint64_t(content.size())));
    for (std::size_t i = 1; i < told.size(); ++i) EXPECT_GT(told[i].first, told[i - 1].first);
}

TEST_F(SmbShare, OverwritesALongerFile) {
    share->connect(kC, login());
    share->copy(file("en lang gammel utgave"), kC + R"(\TorvikPOS.zip)", ignore, kGoOn);
    share->copy(file("ny"), kC + R"(\TorvikPOS.zip)", ignore, kGoOn);
    EXPECT_EQ(samba.content("C$", "TorvikPOS.zip"), "ny");
}

TEST_F(SmbShare, CopiesAFileWithoutBytes) {
    int told = 0;
    share->connect(kC, login());
    share->copy(
        file({}), kC + R"(\TorvikPOS.zip)", [&](std::uint64_t, std::uint64_t) { ++told; }, kGoOn);
    EXPECT_EQ(samba.content("C$", "TorvikPOS.zip"), "");
    EXPECT_EQ(told, 0);
}

// Marks stand where a count of 32 bits, signed or not, would begin anew.
TEST_F(SmbShare, CopiesAFileOfMoreThan4GiB) {
    constexpr qint64 kGiB = qint64{1} << 30;
    if (!qEnvironmentVariableIsSet("TORVIK_LONG")) GTEST_SKIP() << "writes 4 GiB: ./test.sh --long runs it";
    const std::pair<qint64, QByteArray> marks[] = {
        {0, "begynner"}, {2 * kGiB - 3, "to GiB"}, {4 * kGiB - 3, "fire GiB"}, {4 * kGiB + 7, "slutt"}};
    const QString big = QString::fromStdString(file({}));
    QFile made(big);
    ASSERT_TRUE(made.open(QIODevice::ReadWrite));
    for (const auto& [at, mark] : marks) {
        made.seek(at);
        made.write(mark);
    }
    made.close();
    share->connect(kC, login());
    share->copy(big.toStdString(), kC + R"(\stor.zip)", ignore, kGoOn);
    QFile copied(samba.folder("C$") + "/stor.zip");
    ASSERT_TRUE(copied.open(QIODevice::ReadOnly));
    EXPECT_EQ(copied.size(), 4 * kGiB + 12);
    for (const auto& [at, mark] : marks) {
        copied.seek(at);
        EXPECT_EQ(copied.read(mark.size()), mark) << at;
    }
}

TEST_F(SmbShare, TakesNamesThatAUrlCannotHold) {
    ASSERT_TRUE(QDir(samba.folder("C$")).mkdir("Æble & 50% #1"));
    share->connect(kC, login());
    share->copy(file("x"), kC + R"(\Æble & 50% #1\fil %20+1.zip)", ignore, kGoOn);
    EXPECT_THAT(samba.files("C$/Æble & 50% #1"), ElementsAre("fil %20+1.zip"));
}

TEST_F(SmbShare, CancelEndsTheCopyAndLeavesNoPart) {
    int cancel = 0;
    share->connect(kC, login());
    EXPECT_EQ(errorOf([&] {
                  share->copy(
                      file(bytes(9 * kMega)), kC + R"(\TorvikPOS.zip)",
                      [&](std::uint64_t, std::uint64_t) { cancel = -1; }, cancel);
              }),
              systemErrorText(ECANCELED));
    EXPECT_THAT(samba.files("C$"), IsEmpty());
}

TEST_F(SmbShare, CancelAtTheLastPieceEndsTheCopyToo) {
    int cancel = 0;
    share->connect(kC, login());
    EXPECT_EQ(errorOf([&] {
                  share->copy(
                      file("kort"), kC + R"(\TorvikPOS.zip)", [&](std::uint64_t, std::uint64_t) { cancel = -1; },
                      cancel);
              }),
              systemErrorText(ECANCELED));
    EXPECT_THAT(samba.files("C$"), IsEmpty());
}

TEST_F(SmbShare, WrongPasswordIsRefused) {
    EXPECT_EQ(errorOf([&] { share->connect(kC, {SambaServer::kUser, "Galt-Passord-1"}); }), systemErrorText(EACCES));
}

TEST_F(SmbShare, NoPasswordIsRefusedNotTakenForAGuest) {
    EXPECT_NE(errorOf([&] { share->connect(kC, {SambaServer::kUser, ""}); }), "");
}

TEST_F(SmbShare, DomainMayStandBeforeTheUser) {
    share->connect(kC, {R"(KJEDEN\pos)", SambaServer::kPassword});
    share->copy(file("x"), kC + R"(\a.zip)", ignore, kGoOn);
    EXPECT_THAT(samba.files("C$"), ElementsAre("a.zip"));
}

TEST_F(SmbShare, UnknownShareIsRefused) {
    EXPECT_NE(errorOf([&] { share->connect(R"(\\127.0.0.1\FINNES-IKKE)", login()); }), "");
}

TEST_F(SmbShare, FolderThatIsNotThereIsRefused) {
    share->connect(kC, login());
    EXPECT_EQ(errorOf([&] { share->copy(file("x"), kC + R"(\Mangler\a.zip)", ignore, kGoOn); }),
              systemErrorText(ENOENT));
}

TEST_F(SmbShare, LocalFileThatIsNotThereIsToldAndOverwritesNothing) {
    share->connect(kC, login());
    share->copy(file("gammel"), kC + R"(\a.zip)", ignore, kGoOn);
    EXPECT_EQ(errorOf([&] { share->copy("/finnes/ikke.zip", kC + R"(\a.zip)", ignore, kGoOn); }),
              systemErrorText(ENOENT));
    EXPECT_EQ(samba.content("C$", "a.zip"), "gammel");
}

TEST_F(SmbShare, ReadOnlyShareTakesNoFile) {
    share->connect(R"(\\127.0.0.1\LESES)", login());
    EXPECT_NE(errorOf([&] { share->copy(file("x"), R"(\\127.0.0.1\LESES\a.zip)", ignore, kGoOn); }), "");
    EXPECT_THAT(samba.files("LESES"), IsEmpty());
}

TEST_F(SmbShare, FullDiskEndsTheCopyAndLeavesNoPart) {
    const SambaServer full(qint64(64 * kMega));
    const auto there = full.share();
    there->connect(kC, login());
    EXPECT_NE(errorOf([&] { there->copy(file(bytes(70 * kMega)), kC + R"(\a.zip)", ignore, kGoOn); }), "");
    EXPECT_THAT(full.files("C$"), IsEmpty());
    there->copy(file("liten"), kC + R"(\b.zip)", ignore, kGoOn);
    EXPECT_EQ(full.content("C$", "b.zip"), "liten");
}

TEST_F(SmbShare, ShareThatDisappearsInTheMiddleEndsTheCopy) {
    share->connect(kC, login());
    EXPECT_NE(errorOf([&] {
                  share->copy(
                      file(bytes(16 * kMega)), kC + R"(\a.zip)", [&](std::uint64_t, std::uint64_t) { samba.stop(); },
                      kGoOn);
              }),
              "");
}

TEST_F(SmbShare, ShareThatFallsSilentEndsTheCopyByItsTimeOut) {
    const auto patient = samba.share(1000);
    patient->connect(kC, login());
    EXPECT_NE(errorOf([&] {
                  patient->copy(
                      file(bytes(16 * kMega)), kC + R"(\a.zip)", [&](std::uint64_t, std::uint64_t) { samba.freeze(); },
                      kGoOn);
              }),
              "");
}

// At 300 KB/s half a megabyte takes longer than the server is waited for.
TEST_F(SmbShare, CopiesOverALineOnWhichLargePiecesWouldComeTooLate) {
    const LineRelay slow(samba.port(), {.bytesPerSecond = 300'000});
    const auto there = smbFileShare({.port = slow.port(), .timeoutMs = 1500});
    const QByteArray content = bytes(1'200'000);
    int told = 0;
    there->connect(kC, login());
    there->copy(
        file(content), kC + R"(\a.zip)", [&](std::uint64_t, std::uint64_t) { ++told; }, kGoOn);
    EXPECT_TRUE(samba.content("C$", "a.zip") == content);
    EXPECT_GE(told, 3);
}

TEST_F(SmbShare, WhatTheProgressRaisesEndsTheCopyAndLeavesNoPart) {
    share->connect(kC, login());
    EXPECT_THROW(share->copy(
                     file("x"), kC + R"(\a.zip)",
                     [](std::uint64_t, std::uint64_t) { throw std::runtime_error("vindu"); }, kGoOn),
                 std::runtime_error);
    EXPECT_THAT(samba.files("C$"), IsEmpty());
}

TEST_F(SmbShare, RemovesAFile) {
    share->connect(kC, login());
    share->copy(file("x"), kC + R"(\a.zip)", ignore, kGoOn);
    share->remove(kC + R"(\a.zip)");
    EXPECT_THAT(samba.files("C$"), IsEmpty());
    EXPECT_EQ(errorOf([&] { share->remove(kC + R"(\a.zip)"); }), systemErrorText(ENOENT));
}

TEST_F(SmbShare, DisconnectsOnce) {
    share->connect(kC, login());
    share->disconnect(kC);
    EXPECT_NE(errorOf([&] { share->disconnect(kC); }), "");
    EXPECT_NE(errorOf([&] { share->copy(file("x"), kC + R"(\a.zip)", ignore, kGoOn); }), "");
}

TEST_F(SmbShare, ConnectsAnewOverAConnectionThatStands) {
    share->connect(kC, login());
    EXPECT_NE(errorOf([&] { share->connect(kC, {SambaServer::kUser, "Galt-Passord-1"}); }), "");
    share->connect(kC, login());
    share->copy(file("x"), kC + R"(\a.zip)", ignore, kGoOn);
    EXPECT_EQ(samba.content("C$", "a.zip"), "x");
}

}  // namespace
}  // namespace torvik::test

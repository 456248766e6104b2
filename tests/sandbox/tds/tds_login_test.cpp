// Prelogin and LOGIN7 messages.
#include <gtest/gtest.h>

#include "sandbox/tds/login.h"
#include "sandbox/tds/prelogin.h"
#include "tests/support/tds_client.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;

TEST(TdsPrelogin, TellsTheEncryptionThatTheClientWants) {
    const Buffer message = {0, 0, 11, 0, 6, 1, 0, 17, 0, 1, 0xFF, 15, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(readPrelogin(message).encryption, Encryption::On);
    EXPECT_FALSE(readPrelogin(message).fedAuth);
}

TEST(TdsPrelogin, OptionsThatAreNotKnownArePassedOver) {
    const Buffer message = {1, 0, 16, 0, 1, 6, 0, 17, 0, 1, 0x77, 0, 18, 0, 1, 0xFF, 3, 1, 9};
    EXPECT_EQ(readPrelogin(message).encryption, Encryption::Required);
    EXPECT_TRUE(readPrelogin(message).fedAuth);
}

TEST(TdsPrelogin, BrokenOnesAreRefused) {
    const Buffer cases[] = {
        {},
        {1, 0, 6, 0, 1},                 // no end
        {1, 0, 7, 0, 1, 0xFF, 0},        // data behind the message
        {1, 0xFF, 0xFF, 0, 1, 0xFF, 0},  // far behind it
        {1, 0, 6, 0, 1, 0xFF, 9},        // an unknown encryption
        {1, 0, 6, 0, 0, 0xFF},           // none at all
    };
    for (const Buffer& c : cases) EXPECT_THROW((void)readPrelogin(c), StreamError) << c.size();
}

TEST(TdsPrelogin, AnswerIsReadableAsAPrelogin) {
    const Buffer answer = writePrelogin(Encryption::NotSupported, true);
    EXPECT_EQ(readPrelogin(answer).encryption, Encryption::NotSupported);
    EXPECT_TRUE(readPrelogin(answer).fedAuth);
}

TEST(TdsLogin, GivesAllItsFields) {
    LoginFields f;
    f.user = "sa";
    f.password = "p@ss Wørd";
    f.host = "TILL7";
    f.program = "prøve";
    f.database = "Butikk";
    f.language = "us_english";
    f.packetSize = 8000;
    const Login login = readLogin(loginMessage(f));
    EXPECT_EQ(login.user, "sa");
    EXPECT_EQ(login.password, "p@ss Wørd");
    EXPECT_EQ(login.host, "TILL7");
    EXPECT_EQ(login.program, "prøve");
    EXPECT_EQ(login.database, "Butikk");
    EXPECT_EQ(login.language, "us_english");
    EXPECT_EQ(login.packetSize, 8000U);
    EXPECT_EQ(login.version, Version::V74);
    EXPECT_FALSE(login.integrated);
}

TEST(TdsLogin, VersionsFrom71AreTaken) {
    struct {
        std::uint32_t word;
        Version version;
        std::uint32_t acknowledged;
    } cases[] = {{0x71000001, Version::V71, 0x71000001},
                 {0x72090002, Version::V72, 0x72090002},
                 {0x730A0003, Version::V73, 0x730B0003},
                 {0x74000004, Version::V74, 0x74000004}};
    for (const auto& c : cases) {
        LoginFields f;
        f.version = c.word;
        EXPECT_EQ(readLogin(loginMessage(f)).version, c.version);
        EXPECT_EQ(acknowledgedVersion(c.version), c.acknowledged);
    }
    LoginFields f;
    f.version = 0x70000000;
    EXPECT_THROW((void)readLogin(loginMessage(f)), StreamError);
}

TEST(TdsLogin, EveryCutOrLyingMessageIsRefusedOrRead) {
    const Buffer whole = loginMessage({});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THROW((void)readLogin(ByteSpan(whole).first(length)), StreamError) << length;
    }
    // Offsets and lengths that point elsewhere: never beyond the message.
    for (std::size_t at = 36; at < 94; ++at) {
        Buffer lying = whole;
        lying[at] = 0xFF;
        try {
            (void)readLogin(lying);
        } catch (const StreamError&) {
        }
    }
}

TEST(TdsLogin, FeatureExtensionsArePassedOver) {
    const Buffer utf8Support = {0x0A, 1, 0, 0, 0, 1, 0xFF};
    const Buffer federated = {0x02, 2, 0, 0, 0, 9, 9, 0xFF};
    LoginFields f;
    f.features = utf8Support;
    EXPECT_FALSE(readLogin(loginMessage(f)).fedAuth);
    f.features = federated;
    EXPECT_TRUE(readLogin(loginMessage(f)).fedAuth);
    f.features = {0x0A, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_THROW((void)readLogin(loginMessage(f)), StreamError);
}

}  // namespace
}  // namespace sandbox::tds

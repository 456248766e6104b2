#include "logging/ini_file.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "tests/support/data_link.h"

namespace torvik {
namespace {

struct Encoded {
    const char* name;
    QByteArray content;
};

class IniFileEncodings : public testing::TestWithParam<Encoded> {};

TEST_P(IniFileEncodings, GiveTheSameValues) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("å.ini"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(GetParam().content);
    file.close();
    const IniFile ini(path);
    EXPECT_EQ(ini.value("Logging", "Tenant"), QStringLiteral("Bærum, Åmot"));
    EXPECT_EQ(ini.value("logging", "FILENAME"), QStringLiteral("C:\\Log\\ny.log"));
    EXPECT_EQ(ini.value("Logging", "SeqUrl", QStringLiteral("x")), QString());
    EXPECT_EQ(ini.value("Logging", "SeqApiKey", QStringLiteral("x")), QStringLiteral("x"));
}

const QString kText =
    QStringLiteral("; merknad\r\n[Logging]\r\nTenant = Bærum, Åmot\r\nFilename=C:\\Log\\ny.log\r\nSeqUrl=\r\n");

INSTANTIATE_TEST_SUITE_P(All, IniFileEncodings,
                         testing::Values(Encoded{"Utf8", kText.toUtf8()},
                                         Encoded{"Utf8WithMark", "\xEF\xBB\xBF" + kText.toUtf8()},
                                         Encoded{"Latin1", kText.toLatin1()},
                                         Encoded{"Utf16", test::markedUtf16(kText)}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(IniFile, MissingFileHasNoValues) {
    EXPECT_EQ(IniFile(QStringLiteral("/finnes/ikke.ini")).value("a", "b", QStringLiteral("c")), QStringLiteral("c"));
}

}  // namespace
}  // namespace torvik

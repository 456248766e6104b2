// A till's ini file as text: its lines out of its bytes, in whatever encoding the till wrote them, and its settings.
#include "fleet/ini/ini_text.h"

#include <gmock/gmock.h>

#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(IniLines, AreDecodedAsTheTillWroteThem) {
    const struct {
        const char* name;
        QByteArray bytes;
    } cases[] = {
        {"code page 1252", QByteArray("[Kasse]\r\nNavn=Bl\xE5 kj\xF8kken \x96 \x80"
                                      "1\r\n")},
        {"UTF-8", QByteArray("[Kasse]\r\nNavn=Blå kjøkken – €1\r\n")},
        {"UTF-8 with its mark", QByteArray("\xEF\xBB\xBF[Kasse]\r\nNavn=Blå kjøkken – €1\r\n")},
        {"UTF-16", QByteArray("\xFF\xFE", 2) +
                       QByteArray(reinterpret_cast<const char*>(u"[Kasse]\r\nNavn=Blå kjøkken – €1\r\n"), 2 * 32)},
    };
    for (const auto& [name, bytes] : cases)
        EXPECT_THAT(iniLines(bytes), ElementsAre(QStringLiteral("[Kasse]"), QStringLiteral("Navn=Blå kjøkken – €1")))
            << name;
}

TEST(IniLines, EndAsTheFileEndsThem) {
    EXPECT_THAT(iniLines("a\r\nb\nc\rd"), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(iniLines("a\n"), ElementsAre("a"));
    EXPECT_THAT(iniLines("a\r\n\r\n"), ElementsAre("a", ""));
    EXPECT_THAT(iniLines(""), IsEmpty());
}

TEST(IniText, ReadsValuesByNameWithoutRegardToCase) {
    const IniText ini({"; [Labels]", "PrinterName=utenfor", "[ Labels ]", " PrinterName = Zebra = 2 ",
                       "Tom=", ";PrinterName=x", "PRINTERNAME=senere", "[CEDevice]", "Enabled=1"});
    EXPECT_EQ(ini.value("labels", "printername"), "Zebra = 2");
    EXPECT_EQ(ini.value("Labels", "Tom", "x"), "");
    EXPECT_EQ(ini.value("Labels", "Mangler", "x"), "x");
    EXPECT_EQ(ini.value("Mangler", "PrinterName", "x"), "x");
    EXPECT_EQ(ini.value("CEDevice", "PrinterName"), "");
}

TEST(IniText, ReadsNumbersAndTruthValues) {
    const IniText ini({"[A]", "Ja=1", "Nei=0", "Minus=-1", "Tekst=true", "Tom="});
    EXPECT_EQ(ini.integer("A", "Minus", 7), -1);
    EXPECT_EQ(ini.integer("A", "Tekst", 7), 7);
    EXPECT_EQ(ini.integer("A", "Mangler", 7), 7);
    EXPECT_TRUE(ini.boolean("A", "Ja", false));
    EXPECT_TRUE(ini.boolean("A", "Minus", false));
    EXPECT_FALSE(ini.boolean("A", "Nei", true));
    EXPECT_FALSE(ini.boolean("A", "Tekst", false));
    EXPECT_TRUE(ini.boolean("A", "Tom", true));
    EXPECT_FALSE(ini.boolean("A", "Mangler", false));
}

}  // namespace
}  // namespace torvik

// Controls can be seen and read on a light desktop and on a dark one.
#include "shell/look/program_style.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QImage>
#include <QPainter>
#include <QStyleOptionButton>

namespace torvik {
namespace {

constexpr int kPlain = 50;  // of 255, in lightness

QPalette lightPalette() {
    return QPalette(QColor(0xef, 0xef, 0xef));
}
QPalette darkPalette() {
    QPalette dark(QColor(0x35, 0x35, 0x35));
    dark.setColor(QPalette::Base, QColor(0x23, 0x23, 0x23));
    return dark;
}

class OnADesktop : public testing::TestWithParam<bool> {
protected:
    [[nodiscard]] static QPalette palette() { return GetParam() ? darkPalette() : lightPalette(); }
};

// Along a line through its middle, from outside to its edge.
TEST_P(OnADesktop, BoxOfACheckBoxStandsOut) {
    const ProgramStyle style;
    constexpr QRect kBox(4, 4, 15, 15);
    QImage image(24, 24, QImage::Format_RGB32);
    image.fill(palette().color(QPalette::Window));
    QPainter painter(&image);
    QStyleOptionButton option;
    option.palette = palette();
    option.rect = kBox;
    option.state = QStyle::State_Enabled | QStyle::State_Off;
    style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, nullptr);
    painter.end();
    const int behind = image.pixelColor(1, 12).lightness();
    int edge = 0;
    for (int x = kBox.left() - 1; x <= kBox.left() + 2; ++x)
        edge = std::max(edge, qAbs(image.pixelColor(x, 12).lightness() - behind));
    EXPECT_GE(edge, kPlain);
}

TEST_P(OnADesktop, DisabledTextsCanBeReadAndToldFromOthers) {
    ProgramStyle style;
    QPalette polished = palette();
    for (const QPalette::ColorRole text : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        polished.setColor(QPalette::Disabled, text, polished.color(QPalette::Disabled, QPalette::Window));
    style.polish(polished);
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {{QPalette::WindowText, QPalette::Window},
                                                                         {QPalette::Text, QPalette::Base},
                                                                         {QPalette::ButtonText, QPalette::Button}};
    for (const auto& [text, behind] : texts) {
        const int disabled = polished.color(QPalette::Disabled, text).lightness();
        EXPECT_GE(qAbs(disabled - polished.color(QPalette::Disabled, behind).lightness()), kPlain) << text;
        EXPECT_GE(qAbs(disabled - polished.color(QPalette::Active, text).lightness()), kPlain) << text;
    }
}

// A desktop that has thought of it is left alone.
TEST_P(OnADesktop, DisabledTextsThatCanBeReadStayAsTheyAre) {
    ProgramStyle style;
    QPalette polished = palette();
    const QColor own(GetParam() ? QColor(0xc0, 0xc0, 0xa0) : QColor(0x60, 0x60, 0x40));
    polished.setColor(QPalette::Disabled, QPalette::WindowText, own);
    style.polish(polished);
    EXPECT_EQ(polished.color(QPalette::Disabled, QPalette::WindowText), own);
}

INSTANTIATE_TEST_SUITE_P(Each, OnADesktop, testing::Bool(),
                         [](const auto& test) { return test.param ? "Dark" : "Light"; });

}  // namespace
}  // namespace torvik

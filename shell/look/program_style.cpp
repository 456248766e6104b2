// Fusion outlines with a darker shade of the window, which on a dark window is no outline at all.
#include "shell/look/program_style.h"

#include <QPainter>
#include <QStyleOption>

namespace torvik {

namespace {

constexpr int kReadable = 90;  // of 255, between the lightness of a text and of what is behind it
constexpr double kDisabledText = 0.45;
constexpr double kOutline = 0.45;
constexpr double kDisabledOutline = 0.25;

QColor between(const QColor& behind, const QColor& text, double share) {
    const auto mixed = [share](int from, int to) { return static_cast<int>(from + (to - from) * share); };
    return {mixed(behind.red(), text.red()), mixed(behind.green(), text.green()), mixed(behind.blue(), text.blue())};
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

bool isOutlined(QStyle::PrimitiveElement element) {
    switch (element) {
        case QStyle::PE_IndicatorCheckBox:
        case QStyle::PE_PanelLineEdit:
        case QStyle::PE_Frame: return true;
        default: return false;
    }
}

}  // namespace

void ProgramStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {{QPalette::WindowText, QPalette::Window},
                                                                         {QPalette::Text, QPalette::Base},
                                                                         {QPalette::ButtonText, QPalette::Button}};
    for (const auto& [text, behind] : texts) {
        const QColor back = palette.color(QPalette::Disabled, behind);
        if (qAbs(palette.color(QPalette::Disabled, text).lightness() - back.lightness()) >= kReadable) continue;
        palette.setColor(QPalette::Disabled, text, between(back, palette.color(QPalette::Active, text), kDisabledText));
    }
}

void ProgramStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (!isOutlined(element) || !isDark(option->palette)) return;
    const bool enabled = option->state.testFlag(State_Enabled);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(between(option->palette.color(QPalette::Active, QPalette::Window),
                            option->palette.color(QPalette::Active, QPalette::WindowText),
                            enabled ? kOutline : kDisabledOutline));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

}  // namespace torvik

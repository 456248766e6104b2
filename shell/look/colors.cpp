// A theme is dark when the colour behind its texts is.
#include "shell/look/colors.h"

#include <QGuiApplication>
#include <QPalette>
#include <array>

namespace torvik {

namespace {

struct Shades {
    QColor onLight;
    QColor onDark;
    QColor fill;
};

const Shades& shades(Tone tone) {
    static const std::array<Shades, 4> all{{
        {QColor(0x9b, 0x1c, 0x1c), QColor(0xff, 0x8a, 0x80), QColor(0xc0, 0x39, 0x2b)},
        {QColor(0x1e, 0x6b, 0x40), QColor(0x7d, 0xd9, 0xa3), QColor(0x2e, 0x8b, 0x57)},
        {QColor(0x1f, 0x4e, 0x79), QColor(0x8a, 0xbf, 0xf0), QColor(0x2f, 0x7c, 0xc0)},
        {QColor(0x5f, 0x65, 0x6b), QColor(0xb8, 0xbe, 0xc4), QColor(0xb0, 0xb6, 0xbc)},
    }};
    return all[static_cast<std::size_t>(tone)];
}

}  // namespace

QColor textColor(Tone tone) {
    const bool dark = QGuiApplication::palette().color(QPalette::Base).lightness() < 128;
    return dark ? shades(tone).onDark : shades(tone).onLight;
}

QColor fillColor(Tone tone) {
    return shades(tone).fill;
}

}  // namespace torvik

// Colours that are readable on the desktop's theme, light or dark.
#pragma once

#include <QColor>

namespace torvik {

enum class Tone { Red, Green, Blue, Grey };

// For text on the palette's base colour.
[[nodiscard]] QColor textColor(Tone tone);
// For a filled area.
[[nodiscard]] QColor fillColor(Tone tone);

}  // namespace torvik

// The look of the whole program, light and dark: Fusion, with what Fusion leaves too faint on a dark desktop made
// plain. main sets it as the application's style; no widget has a style sheet of its own.
#pragma once

#include <QProxyStyle>

namespace torvik {

class ProgramStyle : public QProxyStyle {
    Q_OBJECT

public:
    ProgramStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    using QProxyStyle::polish;
    // Texts of what is disabled stay readable, whatever the desktop gives them.
    void polish(QPalette& palette) override;
    // Check boxes, fields and the frames of lists are outlined where the desktop is dark.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};

}  // namespace torvik

// Each icon is painted once, at a size that every use scales down.
#include "shell/look/icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <array>

namespace torvik {

namespace {

constexpr int kSize = 64;
const QColor kGreen(0x2e, 0x8b, 0x57);
const QColor kRed(0xc0, 0x39, 0x2b);
const QColor kYellow(0xf0, 0xad, 0x1e);
const QColor kGrey(0x9a, 0xa0, 0xa6);
const QColor kBlue(0x1f, 0x4e, 0x79);

template <typename Paint>
QIcon drawn(Paint paint) {
    QPixmap pixmap(kSize, kSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter);
    painter.end();
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected);  // in a chosen row too as it is, not tinted
    return icon;
}

QPen broad(const QColor& color, qreal width) {
    return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

QIcon ring() {
    return drawn([](QPainter& p) {
        p.setPen(broad(kGrey, 6));
        p.drawEllipse(QPointF(32, 32), 22, 22);
    });
}

QIcon disc(const QColor& color, const QPainterPath& sign) {
    return drawn([&](QPainter& p) {
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawEllipse(QPointF(32, 32), 27, 27);
        p.setBrush(Qt::NoBrush);
        p.setPen(broad(Qt::white, 7));
        p.drawPath(sign);
    });
}

QIcon tick() {
    QPainterPath path(QPointF(20, 33));
    path.lineTo(29, 42);
    path.lineTo(45, 23);
    return disc(kGreen, path);
}

QIcon cross() {
    QPainterPath path(QPointF(23, 23));
    path.lineTo(41, 41);
    path.moveTo(41, 23);
    path.lineTo(23, 41);
    return disc(kRed, path);
}

QIcon triangle() {
    return drawn([](QPainter& p) {
        p.setPen(broad(kYellow, 6));
        p.setBrush(kYellow);
        p.drawPolygon(QPolygonF{{32, 9}, {58, 54}, {6, 54}});
        p.setPen(broad(Qt::white, 7));
        p.drawLine(QPointF(32, 25), QPointF(32, 38));
        p.drawPoint(QPointF(32, 48));
    });
}

}  // namespace

// A till with two arrows, one each way.
QIcon applicationIcon() {
    return drawn([](QPainter& p) {
        p.setPen(Qt::NoPen);
        p.setBrush(kBlue);
        p.drawRoundedRect(QRectF(4, 4, 56, 56), 12, 12);
        p.setPen(broad(Qt::white, 6));
        p.drawPolyline(QPolygonF{{14, 25}, {46, 25}, {37, 16}});
        p.drawPolyline(QPolygonF{{50, 40}, {18, 40}, {27, 49}});
    });
}

// An arrow down into a tray.
QIcon fetchIcon() {
    return drawn([](QPainter& p) {
        p.setPen(broad(kGreen, 8));
        p.drawPolyline(QPolygonF{{18, 26}, {32, 40}, {46, 26}});
        p.drawLine(QPointF(32, 8), QPointF(32, 38));
        p.setPen(broad(kBlue, 8));
        p.drawPolyline(QPolygonF{{9, 42}, {9, 56}, {55, 56}, {55, 42}});
    });
}

// An arrow up out of a tray.
QIcon sendIcon() {
    return drawn([](QPainter& p) {
        p.setPen(broad(kBlue, 8));
        p.drawPolyline(QPolygonF{{18, 22}, {32, 8}, {46, 22}});
        p.drawLine(QPointF(32, 10), QPointF(32, 40));
        p.setPen(broad(kGreen, 8));
        p.drawPolyline(QPolygonF{{9, 42}, {9, 56}, {55, 56}, {55, 42}});
    });
}

QIcon cancelIcon() {
    return cross();
}

// A blue arrow.
QIcon runningIcon() {
    static const QIcon icon = drawn([](QPainter& p) {
        p.setPen(broad(kBlue, 4));
        p.setBrush(QColor(0x2f, 0x7c, 0xc0));
        p.drawPolygon(QPolygonF{{14, 8}, {54, 32}, {14, 56}});
    });
    return icon;
}

QIcon statusIcon(int status) {
    static const std::array<QIcon, 4> icons{ring(), tick(), triangle(), cross()};
    return status >= 0 && status < static_cast<int>(icons.size()) ? icons[static_cast<std::size_t>(status)] : icons[0];
}

}  // namespace torvik

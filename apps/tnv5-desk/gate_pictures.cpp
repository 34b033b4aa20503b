#include "apps/tnv5-desk/gate_pictures.h"

#include "apps/tnv5-desk/theme.h"

#include <QApplication>
#include <QPainter>

namespace tnv5::desk {

namespace {

QImage blank(QSize size, double ratio)
{
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    return image;
}

TMood moodOf(TGateLook look)
{
    switch (look) {
    case TGateLook::Passing:
        return TMood::Good;
    case TGateLook::Refused:
        return TMood::Bad;
    case TGateLook::Silent:
        return TMood::Warning;
    case TGateLook::Free:
    case TGateLook::Unconnected:
        break;
    }
    return TMood::Faint;
}

/// A disc of 100 by 100 with a sign: a bar, a tick, a cross, a question mark's place, or nothing but a dashed
/// ring.
void draw(QPainter& painter, TGateLook look)
{
    const QColor colour = moodColour(moodOf(look));
    QPen line(colour, 9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    if (look == TGateLook::Unconnected) {
        line.setStyle(Qt::DotLine);
    }
    painter.setPen(line);
    const bool filled = look == TGateLook::Passing || look == TGateLook::Refused;
    painter.setBrush(filled ? QBrush(colour) : QBrush(Qt::NoBrush));
    painter.drawEllipse(QRectF(8, 8, 84, 84));
    line.setStyle(Qt::SolidLine);
    line.setWidth(11);
    line.setColor(filled ? QApplication::palette().color(QPalette::Window) : colour);
    painter.setPen(line);
    painter.setBrush(Qt::NoBrush);
    switch (look) {
    case TGateLook::Free: // a closed bar
        painter.drawLine(30, 50, 70, 50);
        break;
    case TGateLook::Passing:
        painter.drawPolyline(QPolygonF({{30, 52}, {45, 67}, {71, 35}}));
        break;
    case TGateLook::Refused:
        painter.drawLine(34, 34, 66, 66);
        painter.drawLine(66, 34, 34, 66);
        break;
    case TGateLook::Silent: // an exclamation mark
        painter.drawLine(50, 28, 50, 54);
        painter.drawPoint(50, 72);
        break;
    case TGateLook::Unconnected:
        break;
    }
}

void begin(QPainter& painter, int size)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 100.0, size / 100.0);
}

/// A frame with an arrow into it or out of it.
QImage glyph(int size, double ratio, bool in)
{
    QImage image = blank({size, size}, ratio);
    QPainter painter(&image);
    begin(painter, size);
    painter.setPen(QPen(QApplication::palette().color(QPalette::ButtonText), 9, Qt::SolidLine, Qt::RoundCap,
                        Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({{60, 12}, {88, 12}, {88, 88}, {60, 88}}));
    const double tip = in ? 66 : 10;
    const double back = in ? 48 : 28;
    painter.drawLine(QPointF(10, 50), QPointF(66, 50));
    painter.drawPolyline(QPolygonF({{back, 32}, {tip, 50}, {back, 68}}));
    return image;
}

} // namespace

void fillStates(panel::TImageList& list, int size, double ratio)
{
    list.Clear();
    for (int look = 0; look < kGateLooks; ++look) {
        QImage image = blank({size, size}, ratio);
        QPainter painter(&image);
        begin(painter, size);
        draw(painter, static_cast<TGateLook>(look));
        painter.end();
        list.Add(image);
    }
}

void fillGlyphs(panel::TImageList& list, int size, double ratio)
{
    list.Clear();
    list.Add(glyph(size, ratio, true));
    list.Add(glyph(size, ratio, false));
}

} // namespace tnv5::desk

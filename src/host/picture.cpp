#include "tnv5/host/picture.h"

#include <QGuiApplication>
#include <QPainter>

namespace tnv5::host {

namespace {

constexpr QSize kSize(160, 200);
constexpr int kCaption = 32; // height of the strip with the name

void drawFigure(QPainter& painter, const QColor& colour)
{
    const int middle = kSize.width() / 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QPoint(middle, 70), 36, 42);
    painter.drawEllipse(QPoint(middle, 190), 70, 70);
}

void drawText(QPainter& painter, const QString& name)
{
    QFont font;
    font.setBold(true);
    font.setPixelSize(34);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(0, 40, kSize.width(), 60), Qt::AlignCenter, initialsOf(name));

    const QRect strip(0, kSize.height() - kCaption, kSize.width(), kCaption);
    painter.fillRect(strip, Qt::white);
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(Qt::black);
    const QString fitting = painter.fontMetrics().elidedText(name, Qt::ElideRight, strip.width() - 8);
    painter.drawText(strip, Qt::AlignCenter, fitting);
}

bool canDrawText()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

} // namespace

QString initialsOf(const QString& name)
{
    const QStringList words = name.split(u' ', Qt::SkipEmptyParts);
    if (words.isEmpty()) {
        return {};
    }
    const QString last = words.size() > 1 ? words.last().left(1) : QString();
    return (words.first().left(1) + last).toUpper();
}

QImage holderPicture(const TMember& member)
{
    const int hue = static_cast<int>(qHash(member.id, 0) % 360);
    QImage picture(kSize, QImage::Format_RGB32);
    picture.fill(QColor::fromHsv(hue, 40, 230));
    QPainter painter(&picture);
    drawFigure(painter, QColor::fromHsv(hue, 160, 140));
    if (canDrawText()) {
        drawText(painter, member.name);
    }
    return picture;
}

} // namespace tnv5::host

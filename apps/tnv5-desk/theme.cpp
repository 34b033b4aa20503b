#include "apps/tnv5-desk/theme.h"

#include <QApplication>
#include <QStyleFactory>
#include <QWidget>
#include <algorithm>
#include <array>
#include <cmath>

namespace tnv5::desk {

namespace {

QPalette paletteOf(const QColor& window, const QColor& base, const QColor& text, const QColor& faint,
                   const QColor& button, const QColor& highlight)
{
    QPalette colours(text, button, button.lighter(120), button.darker(160), button.darker(120), text,
                     Qt::white, base, window);
    colours.setColor(QPalette::AlternateBase, window);
    colours.setColor(QPalette::ToolTipBase, base);
    colours.setColor(QPalette::ToolTipText, text);
    colours.setColor(QPalette::PlaceholderText, faint);
    colours.setColor(QPalette::Highlight, highlight);
    colours.setColor(QPalette::HighlightedText, Qt::white);
    colours.setColor(QPalette::Link, highlight);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        colours.setColor(QPalette::Disabled, role, faint);
    }
    return colours;
}

double brightness(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

} // namespace

QPalette lightPalette()
{
    return paletteOf(QColor(0xf3f4f6), Qt::white, QColor(0x1a1c1f), QColor(0x5f646b), QColor(0xe6e8eb),
                     QColor(0x1f5fae));
}

QPalette darkPalette()
{
    return paletteOf(QColor(0x202326), QColor(0x17191b), QColor(0xeceff1), QColor(0xa3abb2), QColor(0x31363b),
                     QColor(0x2f6fbf));
}

void apply(TTheme theme)
{
    if (theme == TTheme::System) {
        return;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("fusion"))); // keeps to the palette
    QApplication::setPalette(theme == TTheme::Dark ? darkPalette() : lightPalette());
}

QColor moodColour(TMood mood)
{
    return moodColour(mood, QApplication::palette());
}

QColor moodColour(TMood mood, const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Window).lightness() < 128;
    switch (mood) {
    case TMood::Plain:
        break;
    case TMood::Good:
        return dark ? QColor(0x7bd88f) : QColor(0x17692c);
    case TMood::Warning:
        return dark ? QColor(0xffcf70) : QColor(0x7a4d00);
    case TMood::Bad:
        return dark ? QColor(0xff9a92) : QColor(0xa8201a);
    case TMood::Faint:
        return dark ? QColor(0xa3abb2) : QColor(0x5f646b);
    }
    return palette.color(QPalette::WindowText);
}

double contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({brightness(one), brightness(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

void colour(QWidget* widget, TMood mood)
{
    QPalette colours = widget->palette();
    colours.setColor(QPalette::WindowText, moodColour(mood));
    colours.setColor(QPalette::Text, moodColour(mood));
    widget->setPalette(colours);
}

} // namespace tnv5::desk

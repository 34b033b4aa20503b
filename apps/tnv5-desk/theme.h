#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

class QWidget;

namespace tnv5::desk {

enum class TTheme { System, Light, Dark };

/// What a text or a picture says by its colour; never by the colour alone.
enum class TMood { Plain, Good, Warning, Bad, Faint };

QPalette lightPalette();
QPalette darkPalette();

/// Gives the application a theme; `System` leaves its colours as they are.
void apply(TTheme theme);

/// Colour of a text of this mood on the application's background; readable in every theme.
QColor moodColour(TMood mood);
/// The same on a palette's.
QColor moodColour(TMood mood, const QPalette& palette);

/// How well two colours can be told apart, 1 to 21; a text needs 4.5.
double contrast(const QColor& one, const QColor& other);

/// Puts a widget's text into the colour of a mood.
void colour(QWidget* widget, TMood mood);

} // namespace tnv5::desk

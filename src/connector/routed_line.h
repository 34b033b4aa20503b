#pragma once

#include <QStringView>

/// The lines that a connector hands to the component on it.
///
///     $IP:DDDDssREST..   event: board, short status, card or number; two trailing characters
///     #IP:DDDDSTATE..    state: board, word; two trailing characters
///
/// Nothing verifies the trailing characters. A line that is too short or has no ":" yields empty or partial
/// fields; without ":" they are cut from the whole line.
namespace tnv5::connector {

/// The text between the marker and the first ":".
QStringView ipOf(QStringView line);
/// The four characters after it.
QStringView deviceOf(QStringView line);
/// The fourth of these; anything but "G" and "I" counts as "T".
QStringView deviceTypeOf(QStringView line);
/// Everything between the board and the two trailing characters.
QStringView statusOf(QStringView line);
/// The first two characters of the status.
QStringView shortStatusOf(QStringView line);
/// The status from its third character on.
QStringView cardNumberOf(QStringView line);

} // namespace tnv5::connector

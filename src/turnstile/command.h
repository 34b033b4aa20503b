#pragma once

#include <QString>
#include <QStringView>

/// The commands of the classic controllers: "$" + address + three fields + checksum + carriage return.
///
/// The functions below give the text without checksum and carriage return. Numbers are written as they are,
/// so one above 9 lengthens the command while the checksum still covers its first seven characters; intended.
namespace tnv5::turnstile {

/// Status poll of the whole line.
inline const QString kPollCommand = QStringLiteral("$000900");

/// Opens a channel for `time` + 1 units: a turnstile channel ("A") by `relay`, any other by `relayDoor`.
/// Example: `openCommand(u"01A", 1, 3, 2)` is "$01A103".
QString openCommand(QStringView address, int relay, int relayDoor, int time);

/// Refuses. Example: `refuseCommand(u"01A", 0)` is "$01A000".
QString refuseCommand(QStringView address, int relay);

/// Switches a relay, for the host: "00" closes the command, "20" when a channel other than "A" is switched
/// on. On a turnstile channel on and off are the same command; intended.
QString relayCommand(QStringView address, QStringView relay, bool on);

/// Checksum of a command, two upper-case hexadecimal digits, taken over its first seven characters.
/// Example: `checksum(u"$000900")` is "1D".
/// @throws platform::EConvertError when a character that must be a digit is none.
QString checksum(QStringView command);

/// A command as it goes on the wire, with checksum and carriage return. @throws what checksum throws.
QByteArray commandLine(QStringView command);

} // namespace tnv5::turnstile

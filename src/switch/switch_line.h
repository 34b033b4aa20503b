#pragma once

#include <QString>
#include <QStringView>

/// The routed lines of relay boards, and the commands to them. The fields that they share with the other
/// boards on a connector stand in connector/routed_line.h.
///
///     $IP:DDDDSSrfTIME     a board's own report: relay r is off ("F") or on ("N") until TIME
///     #IP:DDDDRELAYrs..    relay r is on ("Y") or not; two trailing characters
namespace tnv5::switching {

/// Relay number of a board's own report: the seventh character behind the ":".
QStringView reportedRelay(QStringView line);
/// Its state: the eighth.
QStringView reportedState(QStringView line);
/// Its time: from the ninth on, at most 100 characters. Nothing is cut off at the end, unlike elsewhere.
QStringView reportedTime(QStringView line);

/// Relay number: the character behind the first "RELAY" of the line; empty when there is none.
QStringView relayNumber(QStringView line);
/// Its state: the character behind that.
QStringView relayState(QStringView line);

/// Command that switches a relay of a pair of boards: relays 1 and 2 are the first two of board A, 3 to 5 the
/// three of board B. Empty for any other relay.
/// @param device address of either board, four characters; anything else is the pair's address as it stands
/// Example: relay "4" of "012A" on "0.0.0.0" gives "RL0.0.0.0:012B2".
QString relayCommand(const QString& ip, const QString& device, QStringView relay);

} // namespace tnv5::switching

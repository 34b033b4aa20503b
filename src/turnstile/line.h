#pragma once

#include <QString>
#include <QStringView>

/// The lines of the classic controllers.
///
///     $aaacDATA   event: address, one command letter, data
///     #aaaTEXT    message: address, text
///
/// A line that is too short yields empty fields.
namespace tnv5::turnstile {

constexpr char16_t kEventStart = u'$';
constexpr char16_t kMessageStart = u'#';

/// The host's own request for a status poll, as it comes in from a line; exactly this text.
constexpr QStringView kPollLine = u"$000900";

/// Command letters of event lines.
constexpr QStringView kCardRead = u"R";
constexpr QStringView kPassage = u"P";
constexpr QStringView kPassed = u"G";
constexpr QStringView kGaveUp = u"F";

struct TEventLine
{
    QStringView address;
    QStringView command;
    QStringView data;
};

struct TMessageLine
{
    QStringView address;
    QStringView text;
};

TEventLine parseEvent(QStringView line);
TMessageLine parseMessage(QStringView line);

/// What a message line says, in the order in which the forms are tested.
enum class TMessageForm { HardReset, WaitCard, Relay, CrcError, GateOpen, ButtonActive, InGateActive };

/// Case does not matter. "Relay" matches any text that begins with it.
bool isMessage(QStringView text, TMessageForm form);

/// The channel letter, character 3 of an address; empty when the address is shorter.
QStringView channelOf(QStringView address);

/// True for the letter of a turnstile channel, "A".
bool isTurnstileChannel(QStringView address);

} // namespace tnv5::turnstile

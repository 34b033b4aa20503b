#include "tnv5/common/text.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/tools/explanation.h"
#include "tnv5/turnstile/command.h"
#include "tnv5/turnstile/line.h"

#include <algorithm>

namespace tnv5::tools {

using common::Copy;
using common::CopyFrom;
using turnstile::TMessageForm;

namespace {

constexpr qsizetype kAddressLength = 3;
constexpr qsizetype kChecked = 7; // "$", address and three fields
constexpr qsizetype kChecksumLength = 2;

const QString kDoorLetter = QStringLiteral("D");

bool isDigits(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

QString place(QStringView address)
{
    const QString kind = turnstile::isTurnstileChannel(address)         ? QStringLiteral("turnstile ")
                         : turnstile::channelOf(address) == kDoorLetter ? QStringLiteral("door ")
                                                                        : QStringLiteral("channel ");
    return kind + address.toString();
}

// Commands and events begin alike; behind the address a command has digits, an event a letter.
bool isCommand(QStringView line)
{
    return line.size() >= kChecked + kChecksumLength && isDigits(Copy(line, kAddressLength + 2, 3));
}

TChecksum checkCommand(QStringView line)
{
    try {
        return turnstile::checksum(line) == line.last(kChecksumLength) ? TChecksum::Right : TChecksum::Wrong;
    } catch (const platform::EConvertError&) {
        return TChecksum::Wrong; // an address that is no number has none
    }
}

// Which relay opens and which refuses is the host's setting; these are its usual values.
QString fieldsMeaning(QStringView address, QStringView fields)
{
    const QString where = place(address);
    const QString relay = QStringLiteral("relay ") + fields.front();
    const QChar mode = fields[1];
    const QStringView time = CopyFrom(fields, 3);
    if (fields.size() > 3) {
        return QStringLiteral("command ") + fields.toString() + QStringLiteral(" to ") + where +
               QStringLiteral(" (a number above 9 in it)");
    }
    if (fields.front() == u'0') {
        return QStringLiteral("refuse at ") + where;
    }
    if (time != u"0") {
        return QStringLiteral("open ") + where + QStringLiteral(" for ") + time.toString() +
               QStringLiteral(", ") + relay;
    }
    if (turnstile::isTurnstileChannel(address)) {
        return QStringLiteral("switch ") + relay + QStringLiteral(" of ") + where;
    }
    return QStringLiteral("switch ") + relay + QStringLiteral(" of ") + where +
           (mode == u'0' ? QStringLiteral(" off") : QStringLiteral(" on"));
}

TExplanation explainCommand(QStringView line)
{
    const TChecksum checksum = checkCommand(line);
    if (line.startsWith(turnstile::kPollCommand)) {
        return {TDirection::ToEquipment, checksum, QStringLiteral("asks all controllers for their state")};
    }
    const QStringView fields =
        Copy(line, kAddressLength + 2, line.size() - 1 - kAddressLength - kChecksumLength);
    return {TDirection::ToEquipment, checksum, fieldsMeaning(Copy(line, 2, kAddressLength), fields)};
}

QString eventMeaning(const turnstile::TEventLine& event)
{
    const QString where = place(event.address);
    if (event.command == turnstile::kCardRead) {
        return QStringLiteral("card ") + event.data.toString() + QStringLiteral(" read at ") + where;
    }
    if (event.command == turnstile::kPassage) {
        return QStringLiteral("passage under way at ") + where;
    }
    if (event.command == turnstile::kPassed) {
        return QStringLiteral("passage done at ") + where;
    }
    if (event.command == turnstile::kGaveUp) {
        return QStringLiteral("nobody came at ") + where;
    }
    return where + QStringLiteral(" reports an unknown event");
}

QString messageMeaning(const turnstile::TMessageLine& message)
{
    struct TForm
    {
        TMessageForm form;
        QString meaning;
    };
    static const TForm kForms[] = {{TMessageForm::HardReset, QStringLiteral(" has started")},
                                   {TMessageForm::WaitCard, QStringLiteral(" waits for a card")},
                                   {TMessageForm::Relay, QStringLiteral(" confirms a command")},
                                   {TMessageForm::CrcError, QStringLiteral(" got a damaged command")},
                                   {TMessageForm::GateOpen, QStringLiteral(" is open")},
                                   {TMessageForm::ButtonActive, QStringLiteral(": exit button pressed")},
                                   {TMessageForm::InGateActive, QStringLiteral(": somebody is in the gate")}};
    const QString where = place(message.address);
    for (const TForm& each : kForms) {
        if (turnstile::isMessage(message.text, each.form)) {
            return where + each.meaning;
        }
    }
    return where + QStringLiteral(" says \"") + message.text.toString() + u'"';
}

} // namespace

TExplanation explainTurnstile(const QByteArray& piece)
{
    const QString text = platform::fromWire(piece);
    QStringView line(text);
    const bool whole = line.endsWith(u'\r');
    if (whole) {
        line.chop(1);
    }
    const bool event = line.startsWith(turnstile::kEventStart);
    if (!whole || line.size() <= kAddressLength || (!event && !line.startsWith(turnstile::kMessageStart))) {
        return {TDirection::Unknown, TChecksum::None, QStringLiteral("no line of a classic controller")};
    }
    if (line == turnstile::kPollLine) {
        return {TDirection::FromEquipment, TChecksum::None, QStringLiteral("request for a status poll")};
    }
    if (event && isCommand(line)) {
        return explainCommand(line);
    }
    return {TDirection::FromEquipment, TChecksum::None,
            event ? eventMeaning(turnstile::parseEvent(line))
                  : messageMeaning(turnstile::parseMessage(line))};
}

} // namespace tnv5::tools

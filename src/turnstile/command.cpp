#include "tnv5/turnstile/command.h"

#include "tnv5/common/crc8.h"
#include "tnv5/common/text.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"
#include "tnv5/turnstile/line.h"

namespace tnv5::turnstile {

using common::Copy;

namespace {

constexpr qsizetype kUsualLength = 7;

unsigned digitAt(QStringView text, qsizetype index)
{
    const QStringView digit = Copy(text, index, 1);
    if (digit.isEmpty() || digit.front() < u'0' || digit.front() > u'9') {
        throw platform::EConvertError(QStringLiteral("'%1' is not a valid integer value").arg(digit));
    }
    return static_cast<unsigned>(digit.front().unicode() - u'0');
}

unsigned codeAt(QStringView text, qsizetype index)
{
    const QStringView character = Copy(text, index, 1);
    return character.isEmpty() ? 0U : platform::wireByte(character.front());
}

void appendNumber(QString& text, qint64 number)
{
    if (number >= 0 && number <= 9) { // the usual case, without another string
        text.append(QChar(u'0' + static_cast<char16_t>(number)));
    } else {
        text.append(QString::number(number));
    }
}

QString beginCommand(QStringView address)
{
    QString command;
    command.reserve(kUsualLength);
    command.append(QChar(kEventStart)).append(address);
    return command;
}

quint8 checksumValue(QStringView command)
{
    unsigned value = codeAt(command, 1);
    value ^= digitAt(command, 2) * 10 + digitAt(command, 3);
    value ^= codeAt(command, 4);
    for (const qsizetype index : {5, 6, 7}) {
        value ^= digitAt(command, index);
    }
    return static_cast<quint8>(value); // every term is at most 255
}

} // namespace

QString openCommand(QStringView address, int relay, int relayDoor, int time)
{
    const bool turnstile = isTurnstileChannel(address);
    QString command = beginCommand(address);
    appendNumber(command, turnstile ? relay : relayDoor);
    command.append(turnstile ? QChar(u'0') : QChar(u'2'));
    appendNumber(command, qint64{time} + 1);
    return command;
}

QString refuseCommand(QStringView address, int relay)
{
    QString command = beginCommand(address);
    appendNumber(command, relay);
    return command.append(QStringView(u"00"));
}

QString relayCommand(QStringView address, QStringView relay, bool on)
{
    const bool door = on && !isTurnstileChannel(address);
    return beginCommand(address).append(relay).append(QStringView(door ? u"20" : u"00"));
}

QString checksum(QStringView command)
{
    return common::HexByte(checksumValue(command));
}

QByteArray commandLine(QStringView command)
{
    const auto [high, low] = common::HexDigits(checksumValue(command));
    const char end[] = {high, low, '\r'};
    return platform::toWire(command, {end, sizeof end});
}

} // namespace tnv5::turnstile

#include "turnstile/command.h"

#include "common/crc8.h"
#include "common/text.h"
#include "platform/code_page.h"
#include "platform/errors.h"
#include "turnstile/line.h"

namespace tnv5::turnstile {

using common::Copy;

namespace {

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

} // namespace

QString openCommand(QStringView address, int relay, int relayDoor, int time)
{
    const bool turnstile = isTurnstileChannel(address);
    return kEventStart + address.toString() + QString::number(turnstile ? relay : relayDoor) +
           (turnstile ? u'0' : u'2') + QString::number(qint64{time} + 1);
}

QString refuseCommand(QStringView address, int relay)
{
    return kEventStart + address.toString() + QString::number(relay) + QStringLiteral("00");
}

QString relayCommand(QStringView address, QStringView relay, bool on)
{
    const bool door = on && !isTurnstileChannel(address);
    return kEventStart + address.toString() + relay.toString() +
           (door ? QStringLiteral("20") : QStringLiteral("00"));
}

QString checksum(QStringView command)
{
    unsigned value = codeAt(command, 1);
    value ^= digitAt(command, 2) * 10 + digitAt(command, 3);
    value ^= codeAt(command, 4);
    for (const qsizetype index : {5, 6, 7}) {
        value ^= digitAt(command, index);
    }
    return common::HexByte(static_cast<quint8>(value)); // every term above is at most 255
}

} // namespace tnv5::turnstile

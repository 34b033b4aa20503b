#include "tnv5/switch/switch_line.h"

#include "tnv5/common/text.h"

#include <array>

namespace tnv5::switching {

using common::Copy;
using common::CopyFrom;
using common::Pos;

namespace {

constexpr qsizetype kAddressLength = 4;
constexpr qsizetype kLongestTime = 100;
constexpr QStringView kRelay = u"RELAY";

// the pair's relays 1 to 5
constexpr std::array<QStringView, 5> kBoardRelays = {u"A1", u"A2", u"B1", u"B2", u"B3"};

QStringView afterColon(QStringView line)
{
    return CopyFrom(line, Pos(u":", line) + 1);
}

QStringView behindRelay(QStringView line, qsizetype place)
{
    const qsizetype at = Pos(kRelay, line);
    return at == 0 ? QStringView() : Copy(line, at + kRelay.size() + place, 1);
}

} // namespace

QStringView reportedRelay(QStringView line)
{
    return Copy(afterColon(line), 7, 1);
}

QStringView reportedState(QStringView line)
{
    return Copy(afterColon(line), 8, 1);
}

QStringView reportedTime(QStringView line)
{
    return Copy(afterColon(line), 9, kLongestTime);
}

QStringView relayNumber(QStringView line)
{
    return behindRelay(line, 0);
}

QStringView relayState(QStringView line)
{
    return behindRelay(line, 1);
}

QString relayCommand(const QString& ip, const QString& device, QStringView relay)
{
    if (relay.size() != 1 || relay < QStringView(u"1") || relay > QStringView(u"5")) {
        return {};
    }
    const QStringView board = kBoardRelays[static_cast<std::size_t>(relay[0].unicode() - u'1')];
    const QString pair = device.size() == kAddressLength ? device.left(kAddressLength - 1) : device;
    return QStringLiteral("RL") + ip + u':' + pair + board.toString();
}

} // namespace tnv5::switching

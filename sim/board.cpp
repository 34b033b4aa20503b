#include "sim/board.h"

#include "sim/board_bus.h"
#include "tnv5/platform/code_page.h"

#include <algorithm>
#include <utility>

namespace tnv5::sim {

namespace {

constexpr int kRelaysOfSideA = 2;
constexpr int kRelaysElsewhere = 3;
constexpr int kAlarmRelay = 3;

} // namespace

TBoard::TBoard(TBoardBus& bus, QByteArray address, int width)
    : FBus(bus),
      FAddress(std::move(address)),
      FWidth(width),
      FRelays(FAddress.endsWith('A') ? kRelaysOfSideA : kRelaysElsewhere),
      FRelayEnds(FRelays.size())
{
    if (FWidth > 0) {
        FRows.resize(kRows);
    }
}

QString TBoard::row(int number) const
{
    return FRows.value(number - 1);
}

bool TBoard::relay(int number) const
{
    return number >= 1 && number <= relays() && FRelays[static_cast<std::size_t>(number - 1)];
}

void TBoard::ping()
{
    if (!FFaults.Dead && !FFaults.Silent) {
        ++FCounts.Pings;
    }
    say('$', QByteArrayLiteral("PING"));
}

/// @return false when the board does not speak.
bool TBoard::say(char start, const QByteArray& body)
{
    if (FFaults.Dead || FFaults.Silent) {
        return false;
    }
    const QByteArray line = start + FAddress + body;
    const QByteArray bytes =
        FFaults.Babbles ? FBus.noise(line.size()) + '\r' : line + boardChecksum(line) + '\r';
    FLater.after(FFaults.LateAnswerMs, [this, bytes] { FBus.send(bytes); });
    return true;
}

void TBoard::answer(char start, const QByteArray& body)
{
    FLater.after(FBus.Delays.AnswerMs, [this, start, body] { say(start, body); });
}

bool TBoard::ask(const QByteArray& body, TBehaviour behaviour)
{
    if (FFaults.Dead) {
        return false;
    }
    FWaiting = behaviour;
    return say('$', body);
}

bool TBoard::pressButton(TBehaviour behaviour)
{
    if (FFaults.Dead) {
        return false;
    }
    FWaiting = behaviour;
    const bool said = say('#', QByteArrayLiteral("BT"));
    if (opensByButton()) {
        openGate();
    }
    return said;
}

bool TBoard::walkThrough()
{
    if (FFaults.Dead) {
        return false;
    }
    if (FOpen) {
        act(TBehaviour::PassesThrough);
        return true;
    }
    ++FCounts.Passed;
    return say('#', QByteArrayLiteral("GO"));
}

void TBoard::hear(const TBoardCommand& command)
{
    if (FFaults.Dead) {
        return;
    }
    switch (command.Order) {
    case TBoardOrder::Echo:
        ++FCounts.Echoes;
        break;
    case TBoardOrder::Hardware:
        ++FCounts.Hardware;
        answer('#', hardware());
        break;
    case TBoardOrder::Open:
        if (hasGate() && openGate()) {
            answer('$', QByteArrayLiteral("ET")); // the command was heard
        }
        break;
    case TBoardOrder::Refuse:
        refuse();
        break;
    case TBoardOrder::Guard:
        ++FCounts.Guards;
        break;
    case TBoardOrder::Relay:
        orderRelay(command.Number, command.Time);
        break;
    case TBoardOrder::ClearRows:
        clearRows();
        break;
    case TBoardOrder::ShowRow:
        showRow(command.Number, command.Text);
        break;
    case TBoardOrder::Light:
        ++FCounts.Lights;
        break;
    case TBoardOrder::Sound:
        ++FCounts.Sounds;
        break;
    case TBoardOrder::Unknown:
        break;
    }
}

// "GX" is "N" or a letter, three digits of width, "x" and the number of rows; "GR" one letter a relay.
QByteArray TBoard::hardware() const
{
    const QByteArray display =
        FWidth > 0 ? 'n' + QByteArray::number(FWidth).rightJustified(3, '0') + 'x' + QByteArray::number(kRows)
                   : QByteArrayLiteral("N");
    QByteArray relays;
    for (const bool on : FRelays) {
        relays += on ? 'Y' : 'N';
    }
    return "HWGX=" + display + "/GR=" + relays + '/';
}

bool TBoard::opensByButton() const
{
    return FAddress.endsWith('G') || FAddress.endsWith('T') || FAddress.endsWith('D');
}

void TBoard::refuse()
{
    if (hasGate()) {
        ++FCounts.Refused;
        FWaiting.reset();
        answer('$', QByteArrayLiteral("ET"));
    }
}

/// @return false when a hook destroyed the bus.
bool TBoard::openGate()
{
    ++FCounts.Opened;
    FOpen = true;
    FGate.clear();
    FGate.after(std::max(FBus.Delays.OpenMs, 1), [this] { closeGate(); });
    const TBehaviour behaviour = FWaiting.value_or(FBus.Guest);
    FWaiting.reset();
    if (!FBus.fire(FBus.OnOpened, QString::fromLatin1(FAddress))) {
        return false;
    }
    act(behaviour);
    return true;
}

void TBoard::closeGate()
{
    FOpen = false;
}

void TBoard::act(TBehaviour behaviour)
{
    if (behaviour == TBehaviour::WalksAway) {
        return;
    }
    if (behaviour == TBehaviour::GivesUp) {
        FGate.after(std::max(FBus.Delays.GiveUpMs, 1), [this] {
            ++FCounts.GaveUp;
            FOpen = false;
            FGate.clear();
            say('$', QByteArrayLiteral("FK"));
        });
        return;
    }
    FGate.clear();
    FGate.after(std::max(FBus.Delays.ProgressMs, 1), [this] {
        FGate.after(std::max(FBus.Delays.PassageMs, 1), [this] {
            ++FCounts.Passed;
            FOpen = false;
            if (FBus.fire(FBus.OnPassed, QString::fromLatin1(FAddress))) {
                say('$', QByteArrayLiteral("GR"));
            }
        });
        say('$', QByteArrayLiteral("PR"));
    });
}

void TBoard::orderRelay(int number, int time)
{
    if (number < 1 || number > relays()) {
        return;
    }
    ++FCounts.RelayOrders;
    if (number == kAlarmRelay && time > 0) {
        ++FCounts.Alarms;
    }
    quint64& end = FRelayEnds[static_cast<std::size_t>(number - 1)];
    FLater.cancel(std::exchange(end, 0));
    const int ms = time > 0 ? time * FBus.Delays.TimeUnitMs : FBus.Delays.RelayPulseMs;
    if (ms > 0) {
        end = FLater.after(ms, [this, number] { setRelay(number, false); });
    }
    setRelay(number, ms > 0 || !relay(number));
}

void TBoard::setRelay(int number, bool on)
{
    FRelays[static_cast<std::size_t>(number - 1)] = on;
    FBus.fire(FBus.OnRelay, QString::fromLatin1(FAddress), number, on);
}

void TBoard::showRow(int number, const QByteArray& text)
{
    if (FWidth > 0) {
        ++FCounts.RowsShown;
        FRows[number - 1] = platform::fromWire(text).left(FWidth);
        FBus.fire(FBus.OnDisplay, QString::fromLatin1(FAddress));
    }
}

void TBoard::clearRows()
{
    if (FWidth > 0) {
        FRows = QStringList(QList<QString>(kRows));
        FBus.fire(FBus.OnDisplay, QString::fromLatin1(FAddress));
    }
}

} // namespace tnv5::sim

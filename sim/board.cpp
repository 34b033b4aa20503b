#include "sim/board.h"

#include "sim/board_bus.h"
#include "tnv5/platform/code_page.h"

#include <QDateTime>
#include <algorithm>
#include <utility>

namespace tnv5::sim {

namespace {

constexpr int kRelaysOfSideA = 2;
constexpr int kRelaysElsewhere = 3;
constexpr int kAlarmRelay = 3;

/// A moment as boards write it, so many milliseconds from now. Example: "05.01.2026 12:30:00".
QByteArray boardTime(int inMs)
{
    const qint64 ms = platform::TClock::current().nowMs() + inMs;
    const QDateTime time(QDate(1899, 12, 30).addDays(ms / platform::kMsPerDay),
                         QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms % platform::kMsPerDay)),
                         Qt::UTC); // so that no hour is missing
    return time.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")).toLatin1();
}

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

bool TBoard::say(char start, const QByteArray& body)
{
    const QByteArray line = start + FAddress + body;
    return sayLine(line + boardChecksum(line));
}

/// @return false when the board does not speak.
bool TBoard::sayLine(const QByteArray& line)
{
    if (FFaults.Dead || FFaults.Silent) {
        return false;
    }
    const QByteArray bytes = (FFaults.Babbles ? FBus.noise(line.size()) : line) + '\r';
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
    const int ms = time > 0 ? time * FBus.Delays.TimeUnitMs : FBus.Delays.RelayPulseMs;
    setRelay(number, ms > 0 || !relay(number), ms);
}

bool TBoard::switchRelay(int number, bool on, int ms)
{
    if (FFaults.Dead || number < 1 || number > relays()) {
        return false;
    }
    setRelay(number, on, on ? ms : 0);
    return true;
}

/// @param ms how long it stays on; 0: until told otherwise
void TBoard::setRelay(int number, bool on, int ms)
{
    endRelayLater(number, ms);
    const bool news = relay(number) != on || ms > 0;
    FRelays[static_cast<std::size_t>(number - 1)] = on;
    if (FBus.fire(FBus.OnRelay, QString::fromLatin1(FAddress), number, on) && news && FReporting) {
        reportRelay(number, ms);
    }
}

void TBoard::endRelayLater(int number, int ms)
{
    quint64& end = FRelayEnds[static_cast<std::size_t>(number - 1)];
    FLater.cancel(std::exchange(end, 0));
    if (ms > 0) {
        end = FLater.after(ms, [this, number] { setRelay(number, false, 0); });
    }
}

// "SS", the relay by the board's own count, "N" or "F", and until when it is on, or the moment when no end is
// known. There are no check characters behind the time.
void TBoard::reportRelay(int number, int ms)
{
    const char state = relay(number) ? 'N' : 'F';
    if (sayLine('$' + FAddress + "SS" + QByteArray::number(number) + state + boardTime(ms))) {
        ++FCounts.RelayReports;
    }
}

void TBoard::restart()
{
    FGate.clear();
    FLater.clear();
    FOpen = false;
    FWaiting.reset();
    std::fill(FRelayEnds.begin(), FRelayEnds.end(), 0);
    FRows.fill(QString());
    bool there = true;
    for (int number = 1; there && number <= relays(); ++number) {
        if (relay(number)) {
            FRelays[static_cast<std::size_t>(number - 1)] = false;
            there = FBus.fire(FBus.OnRelay, QString::fromLatin1(FAddress), number, false);
        }
    }
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

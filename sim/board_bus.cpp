#include "sim/board_bus.h"

#include "sim/board.h"

#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr qsizetype kAddressLength = 4;
constexpr qsizetype kMaxBody = 512;

bool isAddress(const QString& text)
{
    return text.size() == kAddressLength && std::all_of(text.begin(), text.end(), [](QChar c) {
               return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z');
           });
}

bool isPlain(const QByteArray& body)
{
    return body.size() <= kMaxBody && !body.contains('\r');
}

bool isCard(const QString& text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u' ' && c <= u'~'; });
}

} // namespace

TBoardBus::TBoardBus(TByteStream& stream) : FStream(stream)
{
    FStream.OnRead = [this](const QByteArray& bytes) { receive(bytes); };
    FPingTimer.OnTimer = [this](platform::TTimer*) { pingTick(); };
}

TBoardBus::~TBoardBus()
{
    FStream.OnRead = nullptr;
}

bool TBoardBus::addBoard(const QString& address, int width)
{
    if (!isAddress(address) || find(address) != nullptr) {
        return false;
    }
    FBoards.push_back(std::make_unique<TBoard>(*this, address.toLatin1(), std::clamp(width, 0, kMaxWidth)));
    FByAddress.insert(FBoards.back()->address(), FBoards.back().get());
    pacePings();
    return true;
}

bool TBoardBus::addPair(const QString& group, int widthA, int widthB)
{
    const QString sideA = group + u'A';
    const QString sideB = group + u'B';
    return find(sideA) == nullptr && find(sideB) == nullptr && addBoard(sideA, widthA) &&
           addBoard(sideB, widthB);
}

QStringList TBoardBus::addresses() const
{
    QStringList list;
    for (const auto& board : FBoards) {
        list.append(QString::fromLatin1(board->address()));
    }
    return list;
}

void TBoardBus::setPingInterval(int ms)
{
    FPingMs = std::max(ms, 0);
    FPingDue = 0;
    pacePings();
}

void TBoardBus::pacePings()
{
    const bool pinging = FPingMs > 0 && !FBoards.empty();
    if (pinging) {
        FPingTimer.SetInterval(std::max(1, FPingMs / static_cast<int>(FBoards.size())));
    }
    FPingTimer.SetEnabled(pinging);
}

void TBoardBus::pingTick()
{
    const QPointer<TBoardBus> self(this);
    FPingDue += static_cast<qint64>(FBoards.size()) * FPingTimer.Interval();
    while (self && FPingMs > 0 && FPingDue >= FPingMs) {
        FPingDue -= FPingMs;
        FNext = FNext < FBoards.size() ? FNext : 0;
        FBoards[FNext++]->ping();
    }
}

bool TBoardBus::readCard(const QString& address, const QString& card, TBehaviour behaviour)
{
    TBoard* const board = find(address);
    const QByteArray body = "RQ" + card.toLatin1();
    return board != nullptr && isCard(card) && isPlain(body) && board->ask(body, behaviour);
}

bool TBoardBus::pressButton(const QString& address, TBehaviour behaviour)
{
    TBoard* const board = find(address);
    return board != nullptr && board->pressButton(behaviour);
}

bool TBoardBus::walkThrough(const QString& address)
{
    TBoard* const board = find(address);
    return board != nullptr && board->walkThrough();
}

bool TBoardBus::switchRelay(const QString& address, int relay, bool on, int ms)
{
    TBoard* const board = find(address);
    return board != nullptr && board->switchRelay(relay, on, ms);
}

bool TBoardBus::say(const QString& address, char start, const QByteArray& body)
{
    TBoard* const board = find(address);
    return board != nullptr && (start == '$' || start == '#') && isPlain(body) && board->say(start, body);
}

bool TBoardBus::ping(const QString& address)
{
    TBoard* const board = find(address);
    if (board == nullptr || board->faults().Dead || board->faults().Silent) {
        return false;
    }
    board->ping();
    return true;
}

void TBoardBus::setFaults(const QString& address, const TBoardFaults& faults)
{
    if (TBoard* const board = find(address)) {
        board->setFaults(faults);
    }
}

void TBoardBus::setReporting(const QString& address, bool reporting)
{
    if (TBoard* const board = find(address)) {
        board->setReporting(reporting);
    }
}

void TBoardBus::restart(const QString& address)
{
    if (TBoard* const board = find(address)) {
        board->restart();
    }
}

QStringList TBoardBus::rows(const QString& address) const
{
    QStringList list;
    const TBoard* const board = find(address);
    for (int i = 1; board != nullptr && board->width() > 0 && i <= TBoard::kRows; ++i) {
        list.append(board->row(i).leftJustified(board->width()));
    }
    return list;
}

bool TBoardBus::relayOn(const QString& address, int relay) const
{
    const TBoard* const board = find(address);
    return board != nullptr && board->relay(relay);
}

bool TBoardBus::gateOpen(const QString& address) const
{
    const TBoard* const board = find(address);
    return board != nullptr && board->open();
}

TBoardCounts TBoardBus::counts(const QString& address) const
{
    const TBoard* const board = find(address);
    return board != nullptr ? board->counts() : TBoardCounts();
}

void TBoardBus::receive(const QByteArray& bytes)
{
    const QPointer<TBoardBus> self(this);
    FPause.clear();
    handleAll(FFramer.take(bytes));
    if (self && FFramer.waiting()) {
        FPause.clear(); // what a command led to may have brought more
        FPause.after(std::max(Delays.PauseMs, 1), [this] { handleAll(FFramer.pause()); });
    }
}

void TBoardBus::handleAll(const QList<TBoardFramer::TFramed>& commands)
{
    const QPointer<TBoardBus> self(this);
    for (const TBoardFramer::TFramed& framed : commands) {
        platform::guarded([&] { handle(framed); });
        if (!self) {
            return;
        }
    }
}

void TBoardBus::handle(const TBoardFramer::TFramed& framed)
{
    const TReceivedCommand received{platform::Now(), framed.Line, framed.Right};
    FCommands.push_back(received);
    if (FCommands.size() > kMaxRemembered) {
        FCommands.pop_front();
    }
    ++(framed.Right ? FRight : FBad);
    const auto command = framed.Right ? parseBoardCommand(framed.Line) : std::nullopt;
    const QList<TBoard*> boards = command ? meant(*command) : QList<TBoard*>();
    if (framed.Right && (boards.isEmpty() || command->Order == TBoardOrder::Unknown)) {
        ++FStray;
    }
    const QPointer<TBoardBus> self(this);
    if (!fire(OnCommand, received)) {
        return;
    }
    for (TBoard* const board : boards) {
        board->hear(*command);
        if (!self) {
            return;
        }
    }
}

QList<TBoard*> TBoardBus::meant(const TBoardCommand& command) const
{
    QList<TBoard*> boards;
    if (command.Address.size() == kAddressLength) {
        boards.append(FByAddress.value(command.Address));
    } else {
        boards = {FByAddress.value(command.Address + 'A'), FByAddress.value(command.Address + 'B')};
    }
    boards.removeAll(nullptr);
    return boards;
}

void TBoardBus::send(const QByteArray& line)
{
    ++FSaid;
    FStream.write(line);
}

QByteArray TBoardBus::noise(qsizetype length)
{
    QByteArray bytes;
    for (; length > 0; --length) {
        bytes += static_cast<char>(FRandom() % 256);
    }
    return bytes;
}

} // namespace tnv5::sim

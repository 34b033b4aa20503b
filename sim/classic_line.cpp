#include "sim/classic_line.h"

#include "sim/classic_controller.h"
#include "tnv5/platform/errors.h"

#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr qsizetype kAddressLength = 3;
constexpr qsizetype kMaxCard = 64;
constexpr int kPollRelay = 9;

bool isAddress(const QString& text)
{
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    return text.size() == kAddressLength && isDigit(text[0]) && isDigit(text[1]) &&
           text[2] >= QLatin1Char('A') && text[2] <= QLatin1Char('Z');
}

bool isCard(const QString& text)
{
    return !text.isEmpty() && text.size() <= kMaxCard &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u' ' && c <= u'~'; });
}

bool isPoll(const TClassicCommand& command)
{
    return command.broadcast() && command.Relay == kPollRelay && command.Mode == 0 && command.Time == 0;
}

} // namespace

TClassicLine::TClassicLine(TByteStream& stream) : FStream(stream)
{
    FStream.OnRead = [this](const QByteArray& bytes) { receive(bytes); };
}

TClassicLine::~TClassicLine()
{
    FStream.OnRead = nullptr;
}

bool TClassicLine::addController(const QString& address)
{
    if (!isAddress(address) || find(address) != nullptr) {
        return false;
    }
    FControllers.push_back(std::make_unique<TClassicController>(*this, address));
    return true;
}

QStringList TClassicLine::addresses() const
{
    QStringList list;
    for (const auto& controller : FControllers) {
        list.append(controller->address());
    }
    return list;
}

quint64 TClassicLine::readCard(const QString& address, const QString& card, TBehaviour behaviour)
{
    TClassicController* controller = find(address);
    return controller != nullptr && isCard(card)
               ? controller->ask(card, '$', "R" + card.toLatin1(), behaviour)
               : 0;
}

quint64 TClassicLine::pressButton(const QString& address, TBehaviour behaviour)
{
    TClassicController* controller = find(address);
    return controller != nullptr ? controller->ask({}, '#', QByteArrayLiteral("Btn-Activ"), behaviour) : 0;
}

quint64 TClassicLine::inGate(const QString& address, TBehaviour behaviour)
{
    TClassicController* controller = find(address);
    return controller != nullptr ? controller->ask({}, '#', QByteArrayLiteral("InG-Activ"), behaviour) : 0;
}

bool TClassicLine::hardReset(const QString& address)
{
    TClassicController* controller = find(address);
    if (controller == nullptr || controller->faults().Dead) {
        return false;
    }
    controller->restart();
    return true;
}

void TClassicLine::setFaults(const QString& address, const TControllerFaults& faults)
{
    if (TClassicController* controller = find(address)) {
        controller->setFaults(faults);
    }
}

bool TClassicLine::gateOpen(const QString& address) const
{
    const TClassicController* controller = find(address);
    return controller != nullptr && controller->open();
}

TGateCounts TClassicLine::counts(const QString& address) const
{
    const TClassicController* controller = find(address);
    return controller != nullptr ? controller->counts() : TGateCounts();
}

TGateCounts TClassicLine::totals() const
{
    TGateCounts sum;
    for (const auto& controller : FControllers) {
        sum += controller->counts();
    }
    return sum;
}

TReading TClassicLine::reading(quint64 id) const
{
    const TReading* found = const_cast<TClassicLine*>(this)->findReading(id);
    return found != nullptr ? *found : TReading();
}

TClassicController* TClassicLine::find(const QString& address) const
{
    const auto found = std::find_if(FControllers.begin(), FControllers.end(),
                                    [&](const auto& controller) { return controller->address() == address; });
    return found != FControllers.end() ? found->get() : nullptr;
}

void TClassicLine::receive(const QByteArray& bytes)
{
    const QPointer<TClassicLine> self(this);
    const QByteArrayList lines = FFramer.take(bytes);
    for (const QByteArray& line : lines) {
        platform::guarded([&] { handle(line); });
        if (!self) {
            return;
        }
    }
}

void TClassicLine::handle(const QByteArray& line)
{
    const auto command = parseClassicCommand(line);
    TClassicController* controller = find(QString::fromLatin1(line.mid(1, kAddressLength)));
    const bool right = command && (controller == nullptr || !controller->faults().HearsWrong);
    const TReceivedCommand received{platform::Now(), line, right};
    FCommands.push_back(received);
    if (FCommands.size() > kMaxRemembered) {
        FCommands.pop_front();
    }
    if (!right) {
        ++FBad;
        if (fire(OnCommand, received) && fire(OnBadCommand, line) && controller != nullptr) {
            controller->hearWrong();
        }
        return;
    }
    if (!fire(OnCommand, received)) {
        return;
    }
    if (controller != nullptr) {
        controller->hear(*command);
    } else if (isPoll(*command)) {
        poll();
    } else {
        ++FStray;
    }
}

void TClassicLine::poll()
{
    const QPointer<TClassicLine> self(this);
    for (std::size_t i = 0; self && i < FControllers.size(); ++i) {
        FControllers[i]->hearPoll();
    }
}

/// @return false when what the other side did destroyed the line.
bool TClassicLine::send(const QByteArray& line)
{
    const QPointer<TClassicLine> self(this);
    FStream.write(line);
    return !self.isNull();
}

TReading& TClassicLine::addReading()
{
    if (FReadings.size() >= kMaxRemembered) {
        FReadings.pop_front();
    }
    TReading reading;
    reading.Id = ++FLastReading;
    reading.Asked = platform::Now();
    FReadings.push_back(reading);
    return FReadings.back();
}

TReading* TClassicLine::findReading(quint64 id)
{
    if (FReadings.empty() || id < FReadings.front().Id || id > FReadings.back().Id) {
        return nullptr;
    }
    return &FReadings[id - FReadings.front().Id]; // numbers have no gaps
}

} // namespace tnv5::sim

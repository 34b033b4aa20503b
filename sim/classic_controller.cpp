#include "sim/classic_controller.h"

#include "sim/classic_line.h"

#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr int kMsPerSecond = 1'000;
constexpr int kHoldMode = 2; // opens without a time

} // namespace

TClassicController::TClassicController(TClassicLine& line, QString address)
    : FLine(line), FAddress(std::move(address))
{
}

quint64 TClassicController::ask(const QString& card, char start, const QByteArray& body, TBehaviour behaviour)
{
    if (FFaults.Dead) {
        return 0;
    }
    if (FWaiting.size() >= TClassicLine::kMaxWaiting && !decide(TFate::NoCommand)) {
        return 0;
    }
    TReading& reading = FLine.addReading();
    reading.Address = FAddress;
    reading.Card = card;
    reading.Behaviour = behaviour;
    const quint64 id = reading.Id;
    ++FCounts.Asked;
    FWaiting.push_back({id, 0});
    // the wait is armed first: with a stream in memory the answer comes while the line is being said
    const QPointer<TClassicLine> line(&FLine);
    const quint64 limit = FLater.after(FLine.Delays.AnswerLimitMs, [this, id] { stopWaiting(id); });
    if (line) {
        if (!FWaiting.empty() && FWaiting.back().Reading == id) {
            FWaiting.back().Limit = limit;
        }
        say(start, body);
    }
    return id;
}

void TClassicController::restart()
{
    FLater.clear();
    while (!FWaiting.empty()) {
        if (!decide(TFate::NoCommand)) {
            return;
        }
    }
    if (close() && say('#', QByteArrayLiteral("HardReset"))) {
        FLater.after(FLine.Delays.RestartMs, [this] { say('#', QByteArrayLiteral("Wait-Card")); });
    }
}

void TClassicController::hear(const TClassicCommand& command)
{
    if (FFaults.Dead) {
        return;
    }
    ++FCounts.Commands;
    FLater.after(FLine.Delays.AcknowledgeMs, [this, command] { obey(command); });
}

void TClassicController::hearWrong()
{
    if (FFaults.Dead) {
        return;
    }
    ++FCounts.BadCommands;
    FLater.after(FLine.Delays.AcknowledgeMs, [this] { answer(QByteArrayLiteral("CRC-ERROR")); });
}

void TClassicController::hearPoll()
{
    if (!FFaults.Dead) {
        FLater.after(FLine.Delays.AcknowledgeMs, [this] { answer(QByteArrayLiteral("Wait-Card")); });
    }
}

bool TClassicController::say(char start, const QByteArray& body)
{
    return FFaults.Dead || FLine.send(start + FAddress.toLatin1() + body + '\r');
}

void TClassicController::answer(const QByteArray& text)
{
    if (!FFaults.Silent) {
        FLater.after(FFaults.LateAnswerMs, [this, text] { say('#', text); });
    }
}

void TClassicController::obey(const TClassicCommand& command)
{
    const QPointer<TClassicLine> line(&FLine);
    answer("Relay " + QByteArray::number(command.Relay));
    if (!line) {
        return;
    }
    if (command.Relay == 0) {
        refuse();
    } else if (command.Time > 0 || command.Mode == kHoldMode) {
        openFor(command.Time * kMsPerSecond);
    } else {
        close();
    }
}

/// Opens the gate; 0 until a command closes it.
void TClassicController::openFor(int ms)
{
    ++FCounts.Opened;
    FOpen = true;
    FLater.cancel(FClosing);
    FClosing = ms > 0 ? FLater.after(ms, [this] { close(); }) : 0;
    TPerson person{0, ++FOpening};
    TBehaviour behaviour = FLine.Guest;
    bool someone = ms > 0;
    if (!FWaiting.empty()) {
        person.Reading = FWaiting.front().Reading;
        someone = true;
        if (const TReading* reading = FLine.findReading(person.Reading)) {
            behaviour = reading->Behaviour;
        }
    }
    if (FLine.fire(FLine.OnOpened, FAddress) && settle(person.Reading, TFate::Opened) && someone) {
        act(person, behaviour, ms);
    }
}

/// @return false when the line is gone.
bool TClassicController::close()
{
    FLater.cancel(std::exchange(FClosing, 0));
    return !std::exchange(FOpen, false) || FLine.fire(FLine.OnClosed, FAddress);
}

void TClassicController::refuse()
{
    ++FCounts.Refused;
    if (close() && FLine.fire(FLine.OnRefused, FAddress)) {
        decide(TFate::Refused);
    }
}

/// The fate of whoever has waited longest, if anyone. @return false when the line is gone.
bool TClassicController::decide(TFate fate)
{
    return FWaiting.empty() || settle(FWaiting.front().Reading, fate);
}

/// The fate of one who waits; nothing for one who does not. @return false when the line is gone.
bool TClassicController::settle(quint64 reading, TFate fate)
{
    const auto waiting = std::find_if(FWaiting.begin(), FWaiting.end(),
                                      [reading](const TWaiting& one) { return one.Reading == reading; });
    if (waiting == FWaiting.end()) {
        return true;
    }
    FLater.cancel(waiting->Limit);
    FWaiting.erase(waiting);
    FCounts.NoCommand += fate == TFate::NoCommand ? 1 : 0;
    TReading* found = FLine.findReading(reading);
    if (found == nullptr) {
        return true;
    }
    found->Fate = fate;
    found->Answered = platform::Now();
    return FLine.fire(FLine.OnFate, TReading(*found));
}

void TClassicController::stopWaiting(quint64 reading)
{
    settle(reading, TFate::NoCommand);
}

void TClassicController::act(const TPerson& person, TBehaviour behaviour, int openMs)
{
    const auto inTime = [openMs](int ms) { return openMs == 0 || ms < openMs; };
    const int giveUpMs = inTime(FLine.Delays.GiveUpMs) ? FLine.Delays.GiveUpMs : openMs;
    switch (behaviour) {
    case TBehaviour::PassesThrough:
        if (inTime(FLine.Delays.ProgressMs)) {
            FLater.after(FLine.Delays.ProgressMs, [this, person] { enter(person); });
        } else {
            FLater.after(openMs, [this] { giveUp(); });
        }
        break;
    case TBehaviour::GivesUp:
        FLater.after(giveUpMs, [this] { giveUp(); });
        break;
    case TBehaviour::WalksAway:
        break;
    }
}

void TClassicController::enter(const TPerson& person)
{
    if (!FOpen) {
        giveUp();
    } else if (!turnstile()) {
        if (say('#', QByteArrayLiteral("Gate-Open"))) {
            passed(person);
        }
    } else if (say('$', QByteArrayLiteral("P"))) {
        FLater.after(FLine.Delays.PassageMs, [this, person] { leave(person); });
    }
}

void TClassicController::leave(const TPerson& person)
{
    if (!say('$', QByteArrayLiteral("G"))) {
        return;
    }
    // a turnstile locks behind the person, unless it has been opened again for the next one
    if (person.Opening != FOpening || close()) {
        passed(person);
    }
}

void TClassicController::giveUp()
{
    ++FCounts.GaveUp;
    if (say('$', QByteArrayLiteral("F"))) {
        FLine.fire(FLine.OnGaveUp, FAddress);
    }
}

void TClassicController::passed(const TPerson& person)
{
    ++FCounts.Passed;
    if (TReading* reading = FLine.findReading(person.Reading)) {
        reading->Passed = true;
    }
    FLine.fire(FLine.OnPassed, FAddress);
}

} // namespace tnv5::sim

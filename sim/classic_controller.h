#pragma once

#include "sim/classic_command.h"
#include "sim/classic_records.h"
#include "sim/later.h"

#include <deque>

namespace tnv5::sim {

class TClassicLine;

/// One controller of a classic line, its gate, and the people in front of it. Lives as long as the line,
/// which any hook may destroy: what calls a hook tells whether the line is still there.
class TClassicController
{
public:
    TClassicController(TClassicLine& line, QString address);

    const QString& address() const { return FAddress; }
    bool open() const { return FOpen; }
    const TGateCounts& counts() const { return FCounts; }
    const TControllerFaults& faults() const { return FFaults; }
    void setFaults(const TControllerFaults& faults) { FFaults = faults; }

    /// Someone asks to pass; `body` is what the controller says after its address, `start` before it.
    quint64 ask(const QString& card, char start, const QByteArray& body, TBehaviour behaviour);
    void restart();

    void hear(const TClassicCommand& command);
    void hearWrong();
    void hearPoll();

private:
    struct TWaiting
    {
        quint64 Reading;
        quint64 Limit; // number of the action that ends the waiting
    };

    /// The person whom an opening is for.
    struct TPerson
    {
        quint64 Reading; // 0 for a guest
        quint64 Opening;
    };

    bool turnstile() const { return FAddress.back() == QLatin1Char('A'); }
    bool say(char start, const QByteArray& body);
    void answer(const QByteArray& text);
    void obey(const TClassicCommand& command);
    void openFor(int ms);
    bool close();
    void refuse();
    bool decide(TFate fate);
    bool settle(quint64 reading, TFate fate);
    void stopWaiting(quint64 reading);
    void act(const TPerson& person, TBehaviour behaviour, int openMs);
    void enter(const TPerson& person);
    void leave(const TPerson& person);
    void giveUp();
    void passed(const TPerson& person);

    TClassicLine& FLine;
    QString FAddress;
    TControllerFaults FFaults;
    TGateCounts FCounts;
    std::deque<TWaiting> FWaiting;
    bool FOpen = false;
    quint64 FOpening = 0; // number of the last opening
    quint64 FClosing = 0; // number of the action that will close the gate
    TLater FLater;
};

} // namespace tnv5::sim

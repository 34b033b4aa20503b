#pragma once

#include "sim/byte_stream.h"
#include "sim/classic_command.h"
#include "sim/classic_records.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <deque>
#include <memory>
#include <vector>

namespace tnv5::sim {

class TClassicController;

/// A line of classic turnstile and door controllers with people in front of them.
///
///     TPty pty(QStringLiteral("gates"));
///     TClassicLine line(pty);
///     line.addController(QStringLiteral("01A")); // a turnstile
///     line.addController(QStringLiteral("02D")); // a door
///     line.OnOpened = [](const QString& address) { ... };
///     line.readCard(QStringLiteral("01A"), QStringLiteral("12345678"));
///
/// A controller checks every command addressed to it. A right one is answered with "Relay" and the relay
/// number, and obeyed:
///
/// | relay | mode | time | what the controller does                                    |
/// |-------|------|------|-------------------------------------------------------------|
/// | 0     | any  | any  | refuses: the gate stays closed, or is closed                |
/// | other | any  | 1..9 | opens the gate for so many seconds                          |
/// | other | 2    | 0    | opens the gate until a command closes it                    |
/// | other | else | 0    | releases the relay: the gate is closed                      |
///
/// A wrong one is answered with "CRC-ERROR". The poll, address "000" with 900, is answered by every
/// controller with "Wait-Card". A command answers the person who has waited longest at its gate; without one,
/// a guest stands there who does as `Guest` says.
///
/// The hooks run on the main thread and may call back, or destroy the line. The stream must outlive it.
class TClassicLine final : public QObject
{
    Q_OBJECT

public:
    /// Readings and commands that are remembered; the oldest are forgotten first. Counts go on.
    static constexpr std::size_t kMaxRemembered = 4'096;
    /// People who may wait at one gate; one more sends the first away.
    static constexpr std::size_t kMaxWaiting = 64;

    explicit TClassicLine(TByteStream& stream);
    ~TClassicLine() override;

    /// Puts a controller on the line. The third character of the address is its channel: "A" is a turnstile,
    /// any other letter a door.
    /// @return false when the address is taken or is not two digits and a letter.
    bool addController(const QString& address);
    QStringList addresses() const;

    /// A person holds a card to the reader.
    /// @return number of the reading, 0 when there is no such controller, it is dead, or the card cannot be
    /// sent (not plain ASCII without control characters).
    quint64 readCard(const QString& address, const QString& card,
                     TBehaviour behaviour = TBehaviour::PassesThrough);
    /// A person presses the exit button ("Btn-Activ"). Returns as `readCard`.
    quint64 pressButton(const QString& address, TBehaviour behaviour = TBehaviour::PassesThrough);
    /// A person steps into the in-gate sensor ("InG-Activ"). Returns as `readCard`.
    quint64 inGate(const QString& address, TBehaviour behaviour = TBehaviour::PassesThrough);
    /// The controller restarts ("HardReset", then "Wait-Card"): the gate is closed, and whoever waited there
    /// gets no command.
    /// @return false when there is no such controller or it is dead.
    bool hardReset(const QString& address);

    /// Makes a controller misbehave, from now on; does nothing for an unknown address.
    void setFaults(const QString& address, const TControllerFaults& faults);

    TClassicDelays Delays;
    /// What someone does for whom a gate opens for a time although nobody asked.
    TBehaviour Guest = TBehaviour::PassesThrough;

    bool gateOpen(const QString& address) const;
    /// What happened at one gate; all zero for an unknown address.
    TGateCounts counts(const QString& address) const;
    /// What happened at all gates.
    TGateCounts totals() const;
    /// Right commands that no controller on this line was meant by.
    qint64 strayCommands() const { return FStray; }
    /// Wrong commands, whomever they were for.
    qint64 badCommands() const { return FBad; }

    /// The reading with that number; one with Id 0 when there is none or it is forgotten.
    TReading reading(quint64 id) const;
    /// The last readings and commands, oldest first.
    const std::deque<TReading>& readings() const { return FReadings; }
    const std::deque<TReceivedCommand>& commands() const { return FCommands; }

    std::function<void(const QString& address)> OnOpened;
    std::function<void(const QString& address)> OnClosed;
    std::function<void(const QString& address)> OnRefused;
    std::function<void(const QString& address)> OnPassed;
    std::function<void(const QString& address)> OnGaveUp;
    /// The fate of a reading is known.
    std::function<void(const TReading& reading)> OnFate;
    /// Any command, right or wrong, before it is obeyed.
    std::function<void(const TReceivedCommand& command)> OnCommand;
    /// A wrong command: wrong checksum, length or digits; without carriage return.
    std::function<void(const QByteArray& line)> OnBadCommand;

private:
    friend class TClassicController;

    TClassicController* find(const QString& address) const;
    void receive(const QByteArray& bytes);
    void handle(const QByteArray& line);
    void poll();
    bool send(const QByteArray& line);
    TReading& addReading();
    TReading* findReading(quint64 id);
    /// Calls a hook. @return false when it destroyed the line.
    template <class... Params, class... Args>
    bool fire(const std::function<void(Params...)>& hook, const Args&... args);

    TByteStream& FStream;
    TClassicFramer FFramer;
    std::vector<std::unique_ptr<TClassicController>> FControllers;
    std::deque<TReading> FReadings;
    std::deque<TReceivedCommand> FCommands;
    quint64 FLastReading = 0;
    qint64 FStray = 0;
    qint64 FBad = 0;
};

template <class... Params, class... Args>
bool TClassicLine::fire(const std::function<void(Params...)>& hook, const Args&... args)
{
    const QPointer<TClassicLine> self(this);
    if (const auto handler = hook) { // the hook may replace itself
        handler(args...);
    }
    return !self.isNull();
}

} // namespace tnv5::sim

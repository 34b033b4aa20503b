#pragma once

#include "sim/board_line.h"
#include "sim/board_records.h"
#include "sim/byte_stream.h"
#include "sim/classic_records.h"
#include "sim/later.h"
#include "tnv5/platform/timer.h"

#include <QHash>
#include <QPointer>
#include <QStringList>
#include <deque>
#include <memory>
#include <random>
#include <vector>

namespace tnv5::sim {

class TBoard;

/// A bus of networked boards with people in front of them.
///
///     TPty pty(QStringLiteral("boards"));
///     TBoardBus bus(pty);
///     bus.addPair(QStringLiteral("000"), 20, 0); // 000A with a display of 20 characters, 000B without
///     bus.setPingInterval(5'000);
///     bus.OnDisplay = [&](const QString& address) { show(bus.rows(address)); };
///     bus.readCard(QStringLiteral("000A"), QStringLiteral("12345678"));
///
/// Every line of a board ends in its checksum and a carriage return. A board
///
/// - pings once in each interval, the boards one after the other;
/// - answers "HW" with its display and its relays: side "A" has two, any other three;
/// - changes a relay over at "RL" without a time, and switches it on for a time with one;
/// - reports with "SS" what becomes of its relays, if it is one of those that do;
/// - confirms "GO" and "PH" with "ET"; at "GO" its gate opens, and the person who waits there (or a guest)
///   does as told: "PR" and "GR" for a passage, "FK" for nobody;
/// - keeps what its display shows.
///
/// The fourth character of an address is the side of a pair ("A", "B") or the type of a board that stands
/// alone: "G" a gate, "T" a turnstile, "D" a door, "I" a display with a reader and no gate, which neither
/// opens nor refuses. The exit button of a gate, a turnstile or a door opens it without asking anyone.
///
/// The checksum of every command is checked; a wrong one is noted and nothing else. The hooks run on the main
/// thread and may call back, or destroy the bus. The stream must outlive it.
class TBoardBus final : public QObject
{
    Q_OBJECT

public:
    /// Commands that are remembered; the oldest are forgotten first. Counts go on.
    static constexpr std::size_t kMaxRemembered = 4'096;
    static constexpr int kMaxWidth = 999;

    explicit TBoardBus(TByteStream& stream);
    ~TBoardBus() override;

    /// Puts one board on the bus.
    /// @param width characters of a row of its display; 0: it has none
    /// @return false when the address is taken or is not four capital letters and digits.
    bool addBoard(const QString& address, int width = 0);
    /// Puts sides A and B of a pair on the bus. Returns as `addBoard`.
    bool addPair(const QString& group, int widthA = 0, int widthB = 0);
    QStringList addresses() const;

    /// Milliseconds in which every board pings once; 0 (at first): none does.
    void setPingInterval(int ms);

    // People; each returns false when there is no such board or it does not speak.
    /// A card is held to the reader: "RQ" and the card, which must be plain ASCII without control characters.
    bool readCard(const QString& address, const QString& card,
                  TBehaviour behaviour = TBehaviour::PassesThrough);
    /// The exit button is pressed: "BT"; a gate, turnstile or door (not a board of a pair) opens by itself.
    bool pressButton(const QString& address, TBehaviour behaviour = TBehaviour::PassesThrough);
    /// Somebody walks through: an open gate reports "PR" and "GR", a closed one the crossing "GO".
    bool walkThrough(const QString& address);
    /// Somebody switches a relay at the board itself, which tells nobody unless it reports.
    /// @param relay by the board's own count, from 1
    /// @param ms how long it is on; 0: until told otherwise
    bool switchRelay(const QString& address, int relay, bool on, int ms = 0);
    /// A line of any kind: start character "$" or "#" and what follows the address.
    bool say(const QString& address, char start, const QByteArray& body);
    /// The board pings now, out of turn.
    bool ping(const QString& address);

    /// Makes a board misbehave, from now on; does nothing for an unknown address.
    void setFaults(const QString& address, const TBoardFaults& faults);

    /// Makes a board report every change of its relays from now on ("SS"), whoever changed them.
    void setReporting(const QString& address, bool reporting = true);
    /// A board loses its power for a moment: its relays fall off, its display goes blank, and what it was
    /// about to say or do is forgotten.
    void restart(const QString& address);

    TBoardDelays Delays;
    /// What someone does for whom a gate opens although nobody asked.
    TBehaviour Guest = TBehaviour::WalksAway;

    // What there is to see; nothing, off or zero for an unknown address.
    /// The four rows of a display, as wide as it is; empty without one.
    QStringList rows(const QString& address) const;
    bool relayOn(const QString& address, int relay) const;
    bool gateOpen(const QString& address) const;
    TBoardCounts counts(const QString& address) const;

    qint64 rightCommands() const { return FRight; }
    qint64 badCommands() const { return FBad; }
    /// Right commands for no board on this bus, or unknown to the boards.
    qint64 strayCommands() const { return FStray; }
    /// Bytes that belonged to no command.
    qint64 skippedBytes() const { return FFramer.skippedBytes(); }
    /// Lines said by all boards, noise included.
    qint64 linesSaid() const { return FSaid; }
    /// The last commands, oldest first.
    const std::deque<TReceivedCommand>& commands() const { return FCommands; }

    /// Any command, right or wrong, before it is obeyed.
    std::function<void(const TReceivedCommand& command)> OnCommand;
    std::function<void(const QString& address)> OnDisplay;
    std::function<void(const QString& address, int relay, bool on)> OnRelay;
    std::function<void(const QString& address)> OnOpened;
    std::function<void(const QString& address)> OnPassed;

private:
    friend class TBoard;

    TBoard* find(const QString& address) const { return FByAddress.value(address.toLatin1()); }
    void pacePings();
    void pingTick();
    void receive(const QByteArray& bytes);
    void handleAll(const QList<TBoardFramer::TFramed>& commands);
    void handle(const TBoardFramer::TFramed& framed);
    QList<TBoard*> meant(const TBoardCommand& command) const;
    void send(const QByteArray& line);
    QByteArray noise(qsizetype length);
    /// Calls a hook. @return false when it destroyed the bus.
    template <class... Params, class... Args>
    bool fire(const std::function<void(Params...)>& hook, const Args&... args);

    TByteStream& FStream;
    TBoardFramer FFramer;
    TLater FPause;
    std::vector<std::unique_ptr<TBoard>> FBoards;
    QHash<QByteArray, TBoard*> FByAddress;
    platform::TTimer FPingTimer;
    int FPingMs = 0;
    qint64 FPingDue = 0;   // boards that are to ping by now, times the interval
    std::size_t FNext = 0; // the board that pings next
    std::mt19937 FRandom;
    std::deque<TReceivedCommand> FCommands;
    qint64 FRight = 0;
    qint64 FBad = 0;
    qint64 FStray = 0;
    qint64 FSaid = 0;
};

template <class... Params, class... Args>
bool TBoardBus::fire(const std::function<void(Params...)>& hook, const Args&... args)
{
    const QPointer<TBoardBus> self(this);
    if (const auto handler = hook) { // the hook may replace itself
        handler(args...);
    }
    return !self.isNull();
}

} // namespace tnv5::sim

#pragma once

#include "sim/board_line.h"
#include "sim/board_records.h"
#include "sim/classic_records.h"
#include "sim/later.h"

#include <optional>
#include <vector>

namespace tnv5::sim {

class TBoardBus;

/// One board of a bus: its relays, its display, its gate and whoever stands there. Lives as long as the bus,
/// which any hook may destroy: what calls a hook tells whether the bus is still there.
class TBoard
{
public:
    static constexpr int kRows = 4;

    /// @param width characters of a row of its display; 0: it has none
    TBoard(TBoardBus& bus, QByteArray address, int width);

    const QByteArray& address() const { return FAddress; }
    int width() const { return FWidth; }
    bool open() const { return FOpen; }
    /// Boards of type "I" only have a display.
    bool hasGate() const { return !FAddress.endsWith('I'); }
    const TBoardCounts& counts() const { return FCounts; }
    const TBoardFaults& faults() const { return FFaults; }
    void setFaults(const TBoardFaults& faults) { FFaults = faults; }

    /// What a row shows, 1 to 4; empty when there is none.
    QString row(int number) const;
    /// Whether a relay is on, counted from 1.
    bool relay(int number) const;
    int relays() const { return static_cast<int>(FRelays.size()); }

    void ping();
    /// Says a line of this board's: start character, address, body, checksum.
    bool say(char start, const QByteArray& body);
    bool ask(const QByteArray& body, TBehaviour behaviour);
    bool pressButton(TBehaviour behaviour);
    bool walkThrough();
    bool switchRelay(int number, bool on, int ms);
    void setReporting(bool reporting) { FReporting = reporting; }
    /// Loses its power for a moment.
    void restart();
    void hear(const TBoardCommand& command);

private:
    void answer(char start, const QByteArray& body);
    QByteArray hardware() const;
    bool opensByButton() const;
    void refuse();
    bool openGate();
    void closeGate();
    void act(TBehaviour behaviour);
    void orderRelay(int number, int time);
    void setRelay(int number, bool on, int ms);
    void endRelayLater(int number, int ms);
    void reportRelay(int number, int ms);
    bool sayLine(const QByteArray& line);
    void showRow(int number, const QByteArray& text);
    void clearRows();

    TBoardBus& FBus;
    QByteArray FAddress;
    int FWidth;
    TBoardFaults FFaults;
    TBoardCounts FCounts;
    std::vector<bool> FRelays;
    std::vector<quint64> FRelayEnds; // the action that ends a relay's time
    QStringList FRows;
    bool FOpen = false;
    bool FReporting = false;            // tells every change of its relays
    std::optional<TBehaviour> FWaiting; // who asked to pass
    TLater FGate;                       // everything about the opening under way
    TLater FLater;
};

} // namespace tnv5::sim

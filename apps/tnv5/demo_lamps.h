#pragma once

#include "apps/tnv5/demo_club.h"
#include "sim/board_bus.h"
#include "sim/lines.h"
#include "sim/pty.h"
#include "tnv5/host/switch_host.h"
#include "tnv5/platform/serial_port.h"

#include <QJsonArray>

namespace tnv5::cli {

/// The sun lamps of the demo: simulated relay boards on a pseudo-terminal and those who buy time on them, on
/// the other side a real port, the components and the host. Minutes are short.
class TDemoLamps
{
public:
    /// @param lines get the lamps' line @param minuteMs length of a minute
    TDemoLamps(host::TDatabase& club, sim::TLines& lines, int minuteMs);

    /// @throws platform::Exception when the simulated bus cannot be opened
    void open();
    /// Nobody buys any more; what is bought is used up.
    void close() { FClosed = true; }
    switching::TSwitchDevice& device() { return FDevice; }
    const connector::TDeviceConnector& connector() const { return FConnector; }
    const platform::TSerialPort& port() const { return FPort; }
    /// The lamps, as the local socket shows them.
    QJsonArray states();
    /// Time has begun or ended.
    std::function<void(const host::TLampTime& time)> OnTime;

    /// No time is open and no lamp is on.
    bool quiet();

    /// Compares what the relays did with what had to come of every purchase, and with the books. How long
    /// anything took decides nothing, except that no lamp may go off before its time is over.
    /// @return one line for each difference; none: everything is as it must be.
    QStringList compare();
    /// Rows of the closing table.
    QStringList closingRows();

private:
    /// One change of a relay, as seen at its board.
    struct TChange
    {
        bool on;
        platform::TDateTime time;
    };
    /// A lamp, who comes to it, and what its relay did.
    struct TPlace
    {
        host::TLamp lamp;
        int relay = 0;            // by the board's own count
        QList<TLampVisit> visits; // who comes, again and again
        qsizetype next = 0;       // of them
        QList<TLampVisit> done;   // in the order of their orders
        QList<TChange> changes;
    };

    void serveAll();
    void serve(TPlace& place, const host::TLampState& state, bool open);
    QStringList compareBooks(const TPlace& place);
    QStringList compareRelay(const TPlace& place);
    QStringList compareAccounts();
    QList<host::TLampTime> timesOf(const TPlace& place);

    host::TDatabase& FClub;
    host::TLampBooks FBooks;
    std::map<QString, TPlace> FPlaces;   // by lamp
    std::map<QString, qint64> FBalances; // by card, at first

    sim::TPty FPty;
    sim::TBoardBus FBus;
    platform::TSerialPort FPort;
    connector::TDeviceConnector FConnector;
    switching::TSwitchDevice FDevice;
    host::TSwitchHost FHost;

    platform::TTimer FTimer;
    bool FClosed = false;
};

} // namespace tnv5::cli

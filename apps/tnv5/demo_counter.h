#pragma once

#include "apps/tnv5/demo_club.h"
#include "sim/lines.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "tnv5/host/goods_counter.h"
#include "tnv5/platform/serial_port.h"

#include <QJsonObject>

namespace tnv5::cli {

/// The fruit counter of the demo: a simulated scale on a pseudo-terminal and those who buy, on the other side
/// a real port, the component and the host's counter.
class TDemoCounter
{
public:
    /// @param lines get the scale's line
    TDemoCounter(host::TDatabase& club, sim::TLines& lines);

    /// @throws platform::Exception when the simulated scale cannot be opened
    void open();
    /// How many times as long the pauses between two who buy are.
    int Leisure = 1;
    /// Nobody begins anew; who is being served is served.
    void close() { FClosed = true; }
    /// Nobody is at the counter.
    bool quiet() const { return FState == TState::Nobody; }

    const platform::TSerialPort& port() const { return FPort; }
    /// The scale, as the local socket shows it.
    QJsonObject state() const;
    /// Something was sold.
    std::function<void(const host::TSale& sale)> OnSale;

    /// Compares every purchase with what had to come of it, in the sales and in the accounts.
    /// @return one line for each difference; none: everything is as it must be.
    QStringList compare() const;
    /// Rows of the closing table.
    QStringList closingRows() const;

private:
    enum class TState { Nobody, Filling, Leaving };

    void look();
    void stepUp();
    void put(int load);
    void onSold(const host::TSale& sale);
    const TPurchase& current() const { return FPurchases[FNext]; }

    host::TDatabase& FClub;
    const QList<TPurchase> FPurchases;
    std::map<QString, qint64> FBalances; // by card, at first
    const qint64 FFirstSale;             // what the sales held before

    sim::TPty FPty;
    sim::TSimulatedScale FScale;
    platform::TSerialPort FPort;
    scales::TScalesDevice FScales;
    host::TGoodsCounter FCounter;

    platform::TTimer FTimer;
    TState FState = TState::Nobody;
    int FSinceMs = 0; // in this state, or since something was put on
    qsizetype FNext = 0;
    qsizetype FPut = 0;            // how many of the loads are done
    QList<const TPurchase*> FDone; // purchases that the host says are sold
    bool FClosed = false;
    int FReading = 0; // of the scale
    int FAlikeMs = 0; // it has been the same that long
};

} // namespace tnv5::cli

#pragma once

#include "sim/bank_terminal.h"
#include "sim/lines.h"
#include "sim/pty.h"
#include "tnv5/host/payment_counter.h"
#include "tnv5/platform/serial_port.h"

#include <QJsonObject>

namespace tnv5::cli {

/// Somebody who buys a drink by card, and what must come of it; written down by hand.
struct TDrink
{
    QString name;
    qint64 cents;
    sim::TBankScenario scenario;
    host::TOutcome outcome;
};

/// The bar of the demo: a simulated bank terminal on a pseudo-terminal and those who buy, on the other side a
/// real port, the component and the host's counter.
class TDemoBar
{
public:
    /// @param lines where its line is on the way; the demo's time waits for them
    TDemoBar(host::TDatabase& club, sim::TLines& lines);

    /// @throws platform::Exception when the simulated terminal cannot be opened
    void open();
    /// How many times as long the pauses between two who buy are.
    int Leisure = 1;
    /// Nobody begins anew; who is being served is served.
    void close() { FClosed = true; }
    /// Nobody is at the bar.
    bool quiet() const { return !FServing; }

    const platform::TSerialPort& port() const { return FPort; }
    /// The terminal, as the local socket shows it.
    QJsonObject state() const;
    /// A payment has an outcome.
    std::function<void(const host::TPayment& payment)> OnPayment;

    /// Compares every drink with what had to come of it, in the payments and in the terminal's own book.
    /// @return one line for each difference; none: everything is as it must be.
    QStringList compare() const;
    /// Rows of the closing table.
    QStringList closingRows() const;

private:
    void look();
    const TDrink& current() const { return FDrinks[FNext]; }

    host::TDatabase& FClub;
    const QList<TDrink> FDrinks;
    const qint64 FFirstPayment; // what the payments held before

    sim::TPty FPty;
    sim::TSimulatedBankTerminal FTerminal;
    platform::TSerialPort FPort;
    bank::TBankPos FPos;
    host::TPaymentCounter FCounter;

    platform::TTimer FTimer;
    bool FServing = false;
    int FSinceMs = 0; // since the last one left
    qsizetype FNext = 0;
    QList<const TDrink*> FDone;
    bool FClosed = false;
    QString FStage; // of the payment
};

} // namespace tnv5::cli

#pragma once

#include "apps/tnv5/terminal_simulation.h"
#include "tnv5/bank/bank_pos.h"

namespace tnv5::cli {

/// The kiosk of the demo: a simulated terminal with a library, a process of its own, where a coffee is sold
/// before the club opens.
class TDemoKiosk
{
public:
    TDemoKiosk();

    /// Sells the coffee; returns when the payment is over.
    /// @throws platform::Exception when the terminal does not start
    void sell();

    /// Compares what was paid with the terminal's own day. @return one line for each difference
    QStringList compare() const;
    /// Rows of the closing table.
    QStringList closingRows() const;

private:
    bank::TBankPOS FPos;
    bool FPaid = false;
    QString FTold; // by the terminal's own report: number and amount of the day
};

} // namespace tnv5::cli

#pragma once

#include "tnv5/host/club/club_port.h"
#include "tnv5/host/goods_counter.h"
#include "tnv5/host/payment_counter.h"

namespace tnv5::host {

/// A scale of a running club: sells goods by weight as soon as its port is open.
class TClubScale
{
public:
    TClubScale(TClubSite& site, const TScalePlan& plan);
    /// An order that waits is withdrawn, and that is in the log.
    ~TClubScale();
    TClubScale(const TClubScale&) = delete;
    TClubScale& operator=(const TClubScale&) = delete;

    const TScalePlan& plan() const { return FPlan; }
    TClubPort& port() { return FPort; }
    /// Somebody takes what is on the platform. @return "" or why not
    QString sell(const QString& card, const QString& product);
    /// Forgets an order that still waits.
    void cancel() { FCounter.cancel(); }
    /// Why it cannot be taken away now; "" when it can.
    QString inUse() const;
    QJsonObject state() const;

private:
    void begin();

    TClubSite& FSite;
    TScalePlan FPlan;
    TClubPort FPort;
    scales::TScalesDevice FScales;
    TGoodsCounter FCounter;
    QString FTold; // by the counter, while it is asked to sell
};

/// A bank terminal of a running club.
class TClubTerminal
{
public:
    TClubTerminal(TClubSite& site, const TTerminalPlan& plan);
    ~TClubTerminal();
    TClubTerminal(const TClubTerminal&) = delete;
    TClubTerminal& operator=(const TClubTerminal&) = delete;

    const TTerminalPlan& plan() const { return FPlan; }
    TClubPort& port() { return FPort; }
    /// The terminal's next request gets this amount. @return "" or why not
    QString pay(qint64 cents);
    /// Withdraws an order, or refuses the next step of the payment under way.
    /// @return "" or what is not over by that
    QString cancel();
    /// Why it cannot be taken away now; "" when it can.
    QString inUse() const;
    /// A payment under way is unknown from now on, and that is in the log.
    void end() { FCounter.end(); }
    /// Payments whose outcome is not in the books.
    qsizetype unwritten() const { return FCounter.unwritten(); }
    QJsonObject state() const;

private:
    void showStage(const QString& text);

    TClubSite& FSite;
    TTerminalPlan FPlan;
    TClubPort FPort;
    bank::TBankPos FPos;
    TPaymentCounter FCounter;
    qint64 FCents = 0; // of the payment that is ordered or under way
    QString FStage;
    QString FTold;
};

} // namespace tnv5::host

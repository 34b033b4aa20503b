#pragma once

#include "apps/tnv5/demo_gates.h"
#include "tnv5/platform/timer.h"

#include <QElapsedTimer>
#include <map>

namespace tnv5::cli {

/// One step as it went.
struct TVisit
{
    QString name;
    TStep step;
    sim::TReading seen;  ///< at the gate
    double relayMs = -1; ///< from the card to the command; below 0: not measured
    QStringList display; ///< what the gate's display showed
};

/// The street in front of the demo's gates: lets one visitor at a time step up to each gate, and notes what
/// the gate does.
class TDemoStreet
{
public:
    /// @param ready whether a gate is ready for the next visitor, as far as the host knows
    TDemoStreet(TDemoGates& gates, std::function<bool(const QString& gate)> ready);

    void invite(const TVisitor& visitor);
    /// Nobody steps up until `resume`.
    void pause() { FPaused = true; }
    void resume() { FPaused = false; }
    /// Nobody begins anew; who is under way finishes.
    void close() { FClosed = true; }

    /// Nobody stands at a gate.
    bool quiet() const { return FAtGate.empty(); }
    /// Nobody stands at a gate and nobody wants to.
    bool empty() const { return FAtGate.empty() && FWaiting.isEmpty(); }

    /// How many times as long the pauses between visits are.
    int Leisure = 1;
    /// Off: times are not measured, because the cable itself delays lines.
    bool Measuring = true;

    /// A visit has ended.
    std::function<void(const TVisit& visit)> OnVisit;

    /// In the order in which they ended; at one gate, that in which they began.
    const QList<TVisit>& visits() const { return FVisits; }

private:
    struct TGuest
    {
        TVisitor visitor;
        qsizetype step = 0;
        qint64 notBeforeMs = 0;
        const TStep& next() const { return visitor.steps[step]; }
    };
    struct TAtGate
    {
        TGuest guest;
        TVisit visit;
        qint64 askedNs = 0;
        bool timed = false;
    };

    void look();
    void stepUp(const TGuest& guest);
    void onCommand(const QString& gate);
    void leave(const TAtGate& place);

    TDemoGates& FGates;
    std::function<bool(const QString&)> FReady;
    platform::TTimer FTimer;
    QElapsedTimer FWatch; // real time, for what is measured
    QList<TGuest> FWaiting;
    std::map<QString, TAtGate> FAtGate;
    std::map<QString, qint64> FFreeSinceMs;
    QList<TVisit> FVisits;
    bool FPaused = false;
    bool FClosed = false;
};

} // namespace tnv5::cli

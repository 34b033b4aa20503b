#include "model/kit/stage.h"

#include <QScopedValueRollback>

namespace tnv5::modelkit {

namespace {

constexpr int kDeepest = 3;
constexpr int kPortsDestroyed = 10; // in a thousand of their own operations, by a host that re-enters

} // namespace

QStringList TStage::play(const TStep& step)
{
    FTrace.clear();
    FDice = TDice(step.seed);
    FActs = step.acts;
    FFirst = step.first;
    apply(step, false);
    FGround->look();
    look();
    return FTrace;
}

void TStage::apply(const TStep& step, bool leaves)
{
    note("> " + shown(step, FNames));
    try {
        if (step.kind == Raise) {
            raise();
        } else if (!FGround->perform(step)) {
            perform(step);
        }
    } catch (...) {
        const QString text = FGround->caught();
        note("raised " + text);
        if (leaves && !text.startsWith(QLatin1String("what"))) {
            throw;
        }
    }
}

void TStage::nest(const TStep& step, bool leaves)
{
    const QScopedValueRollback deeper(FDepth, FDepth + 1);
    apply(step, leaves);
}

void TStage::react(const TTemper& how)
{
    for (const TStep& step : std::exchange(FFirst, {})) {
        nest(step, step.kind == Raise);
    }
    if (FDepth < kDeepest && FActs > 0 && FDice.permille(how.nested)) {
        --FActs;
        const bool leaves = FDice.chance(40);
        nest(any(FDice, true), leaves);
    }
    if (FActs > 0 && FDice.permille(how.raising)) {
        --FActs;
        raise();
    }
}

void TStage::raise()
{
    const auto kind = FDice.pick({ERaise::Exception, ERaise::Exception, ERaise::Exception, ERaise::Abort,
                                  ERaise::Standard, ERaise::Unknown});
    const QString text = FDice.text({"отказ & !", "host trouble", ""});
    note(QStringLiteral("raises %1 ").arg(int(kind)) + text);
    FGround->raise(kind, text);
}

void TStage::portEvent(int port, const QString& what, const QByteArray& bytes)
{
    note(QStringLiteral("port %1 ").arg(port) + what + (what.endsWith(u' ') ? shown(bytes) : QString()));
    if (FWild.nested > 0 && FActs > 0 && FDice.permille(kPortsDestroyed)) {
        nest({FDice.chance(50) ? DestroyPort : RenewPort, {}, port}, false);
    }
    react(FWild);
}

} // namespace tnv5::modelkit

#pragma once

#include "support/recorder.h"

#include <span>

namespace tnv5::tests {

/// A whole run of a component in a fixture of its own. It touches nothing that is gone.
template <class Fixture>
using TPlay = void (*)(Fixture&);

/// The undisturbed run.
template <class Fixture>
QStringList traceOf(TPlay<Fixture> play)
{
    Fixture fixture;
    play(fixture);
    return fixture.trace.take();
}

/// Plays once for each event of each run, and does something inside that event. `verify` gets the lines of
/// the undisturbed run up to that event.
template <class Fixture>
void disturbEach(std::span<const TPlay<Fixture>> plays, const std::function<void(Fixture&)>& disturb,
                 const std::function<void(Fixture&, const QStringList& before)>& verify)
{
    for (const TPlay<Fixture> play : plays) {
        const QStringList undisturbed = traceOf(play);
        for (qsizetype i = 0; i < undisturbed.size(); ++i) {
            SCOPED_TRACE(undisturbed[i].toStdString());
            Fixture fixture;
            qsizetype left = i;
            fixture.trace.OnLine = [&](const QString&) {
                if (left-- == 0) {
                    disturb(fixture);
                }
            };
            play(fixture);
            fixture.trace.OnLine = {};
            verify(fixture, undisturbed.mid(0, i + 1));
            if (::testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

} // namespace tnv5::tests

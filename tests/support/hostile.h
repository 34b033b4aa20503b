#pragma once

#include "support/recorder.h"

#include <span>
#include <type_traits>

namespace tnv5::tests {

/// A whole run of a component in a fixture of its own. It touches nothing that is gone.
template <class Fixture>
using TPlay = void (*)(Fixture&);

/// The undisturbed run.
template <class Fixture>
QStringList traceOf(const std::type_identity_t<std::function<void(Fixture&)>>& play)
{
    Fixture fixture;
    play(fixture);
    return fixture.trace.take();
}

/// Plays once for each event of a run, and does something inside that event. `verify` gets the lines of the
/// undisturbed run up to that event.
template <class Fixture>
void disturbEach(const std::function<void(Fixture&)>& play, const std::function<void(Fixture&)>& disturb,
                 const std::function<void(Fixture&, const QStringList& before)>& verify)
{
    const QStringList undisturbed = traceOf<Fixture>(play);
    for (qsizetype i = 0; i < undisturbed.size() && !::testing::Test::HasFailure(); ++i) {
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
    }
}

/// The same for each event of each run.
template <class Fixture>
void disturbEach(std::span<const TPlay<Fixture>> plays, const std::function<void(Fixture&)>& disturb,
                 const std::function<void(Fixture&, const QStringList& before)>& verify)
{
    for (const std::function<void(Fixture&)> play : plays) {
        disturbEach(play, disturb, verify);
    }
}

/// Something that a handler may do, and what a failed test calls it.
template <class Fixture>
struct TMischief
{
    const char* name;
    TPlay<Fixture> act;
};

/// Plays once for each of these at each event of a run; what came before is as it was.
/// @param verify what must hold in the end
/// @return events of the undisturbed run
template <class Fixture>
qsizetype surviveEach(std::span<const TMischief<Fixture>> mischiefs,
                      const std::function<void(Fixture&)>& play, const std::function<void(Fixture&)>& verify)
{
    for (const TMischief<Fixture>& mischief : mischiefs) {
        SCOPED_TRACE(mischief.name);
        disturbEach<Fixture>(play, mischief.act, [&](Fixture& fixture, const QStringList& before) {
            EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
            verify(fixture);
        });
    }
    return traceOf<Fixture>(play).size();
}

} // namespace tnv5::tests

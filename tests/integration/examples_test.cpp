// The first example, started as its comment says, at a simulated line.

#include "integration/program_run.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/wait.h"

#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

TEST(Examples, TheFirstGateOpensForMembersOnly)
{
    sim::TPty pty(QStringLiteral("gates"));
    sim::TClassicLine gates(pty);
    const QString gate = QStringLiteral("01A");
    gates.addController(gate);
    const TProgramRun program(QStringLiteral(TNV5_FIRST_EXAMPLE), {pty.path()});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));

    gates.Delays.ProgressMs = 0; // the person is quick, so that the gate is not closed too early
    gates.Delays.PassageMs = 0;
    gates.Delays.AnswerLimitMs = 3'600'000; // and patient
    const quint64 member = gates.readCard(gate, QStringLiteral("12345678"));
    EXPECT_TRUE(eventually([&] { return gates.reading(member).Fate != sim::TFate::Waiting; }));
    EXPECT_EQ(gates.reading(member).Fate, sim::TFate::Opened);
    EXPECT_TRUE(gates.reading(member).Passed);
    EXPECT_TRUE(eventually([&] { return !gates.gateOpen(gate); }));

    // the pass before is retired at a tick of the program; a card that comes sooner is not stored
    gates.Delays.AnswerLimitMs = 300;
    EXPECT_TRUE(eventually([&] {
        const quint64 stranger = gates.readCard(gate, QStringLiteral("11111111"));
        EXPECT_TRUE(eventually([&] { return gates.reading(stranger).Fate != sim::TFate::Waiting; }));
        EXPECT_NE(gates.reading(stranger).Fate, sim::TFate::Opened);
        return gates.reading(stranger).Fate == sim::TFate::Refused;
    }));
}

} // namespace
} // namespace tnv5::integration

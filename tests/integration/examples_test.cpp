// The first example, started as its comment says, at a simulated line.

#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/wait.h"

#include <QProcess>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

TEST(Examples, TheFirstGateOpensForMembersOnly)
{
    sim::TPty pty(QStringLiteral("gates"));
    sim::TClassicLine gates(pty);
    gates.addController(QStringLiteral("01A"));
    QProcess program;
    program.start(QStringLiteral(TNV5_FIRST_EXAMPLE), {pty.path()});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));

    const quint64 member = gates.readCard(QStringLiteral("01A"), QStringLiteral("12345678"));
    EXPECT_TRUE(eventually([&] { return gates.reading(member).Passed; }));
    EXPECT_EQ(gates.reading(member).Fate, sim::TFate::Opened);

    const auto refused = [&] {
        const quint64 stranger = gates.readCard(QStringLiteral("01A"), QStringLiteral("11111111"));
        EXPECT_TRUE(eventually([&] { return gates.reading(stranger).Fate != sim::TFate::Waiting; }));
        EXPECT_NE(gates.reading(stranger).Fate, sim::TFate::Opened);
        return gates.reading(stranger).Fate == sim::TFate::Refused;
    };
    // the pass before is retired at the next tick; a card that comes sooner is not stored
    EXPECT_TRUE(eventually([&] { return !gates.gateOpen(QStringLiteral("01A")); }));
    EXPECT_TRUE(refused() || refused());

    program.kill();
    program.waitForFinished();
}

} // namespace
} // namespace tnv5::integration

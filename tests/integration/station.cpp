#include "integration/station.h"

#include "support/wait.h"

namespace tnv5::integration {

namespace {

/// The club must be there before the host, which asks it for its gates.
host::TDatabase& furnished(host::TDatabase& club)
{
    club.setGate({QStringLiteral("01A"), QStringLiteral("hall"), host::TDirection::In});
    club.setGate({QStringLiteral("02A"), QStringLiteral("hall"), host::TDirection::In});
    club.setGate({QStringLiteral("03A"), QStringLiteral("hall"), host::TDirection::Out});
    club.setGate({QStringLiteral("04D"), QStringLiteral("hall"), host::TDirection::Inner});
    const QDate today = host::dayOf(platform::Now());
    for (int number = 1; number <= 9; ++number) {
        const qint64 id = club.addMember(QStringLiteral("Member %1").arg(number));
        club.addCard(QStringLiteral("M%1").arg(number), id);
        club.addMembership(id, {today.addDays(-1), today.addDays(1), {QStringLiteral("hall")}});
    }
    return club;
}

} // namespace

TStation::TStation(TTime time)
    : clock(time == TTime::LockStep ? std::optional<testkit::TManualClock>(std::in_place) : std::nullopt),
      club(FDirectory.filePath(QStringLiteral("club.sqlite"))),
      pty(QStringLiteral("gates")),
      cable(pty, 42),
      gates(cable),
      host(line, furnished(club)),
      keeper(port)
{
    if (clock) {
        lockStep.emplace(*clock, pty, port);
    }
    for (const host::TGate& gate : club.gates()) {
        gates.addController(gate.address);
    }
    gates.Delays.AcknowledgeMs = 5;
    gates.Delays.ProgressMs = 20;
    gates.Delays.PassageMs = 20;
    gates.Delays.GiveUpMs = 50;
    gates.Delays.AnswerLimitMs = 1'000;
    port.SetPort(pty.path());
    line.SetComport(&port);
    line.SetTimeDelayOpen(0);
    host.OnTrouble = [this](const QString& text) { troubles.append(text); };
    EXPECT_TRUE(keeper.start());
    EXPECT_TRUE(until([this] { return pty.opened(); }));
}

bool TStation::until(const std::function<bool()>& condition)
{
    return lockStep ? lockStep->until(condition) : eventually(condition);
}

sim::TReading TStation::visit(const QString& gate, const QString& card, sim::TBehaviour behaviour)
{
    const quint64 id = gates.readCard(gate, card, behaviour);
    EXPECT_TRUE(until([&] {
        return gates.reading(id).Fate != sim::TFate::Waiting && !gates.gateOpen(gate) && idle(gate);
    }));
    return gates.reading(id);
}

bool TStation::getsThrough(const QString& gate, const QString& card)
{
    const sim::TReading seen = visit(gate, card);
    return seen.Fate == sim::TFate::Opened && seen.Passed;
}

QList<host::TPass> TStation::journal()
{
    host.close();
    return club.passesAfter(0, 1'000);
}

} // namespace tnv5::integration

#include "apps/tnv5/demo_gates.h"

#include "tnv5/common/messages.h"

namespace tnv5::cli {

using sim::TFate;

namespace {

constexpr double kPatience = 10'000.0 / static_cast<double>(platform::kMsPerDay); // of a person at a board

template <class Gates>
auto ask(Gates& gates, const TStep& step)
{
    return step.card == common::kCardButton ? gates.pressButton(step.gate, step.behaviour)
                                            : gates.readCard(step.gate, step.card, step.behaviour);
}

} // namespace

TDemoGates::TDemoGates(sim::TClassicLine& line, sim::TBoardBus& bus) : FLine(line), FBus(bus)
{
    FLine.OnCommand = [this](const sim::TReceivedCommand& command) {
        if (OnCommand) {
            OnCommand(QString::fromLatin1(command.Line.mid(1, 3)));
        }
    };
    FBus.OnCommand = [this](const sim::TReceivedCommand& command) { onBoardCommand(command); };
}

void TDemoGates::onBoardCommand(const sim::TReceivedCommand& command)
{
    const auto order = sim::parseBoardCommand(command.Line);
    if (OnCommand && order &&
        (order->Order == sim::TBoardOrder::Open || order->Order == sim::TBoardOrder::Refuse)) {
        OnCommand(QString::fromLatin1(order->Address));
    }
}

void TDemoGates::stepUp(const TStep& step)
{
    if (isBoard(step.gate)) {
        FBefore[step.gate] = FBus.counts(step.gate);
        FAsked[step.gate] = platform::Now();
        ask(FBus, step);
    } else {
        FReadings[step.gate] = ask(FLine, step);
    }
}

bool TDemoGates::done(const QString& gate) const
{
    const bool open = isBoard(gate) ? FBus.gateOpen(gate) : FLine.gateOpen(gate);
    return !open && seen(gate).Fate != TFate::Waiting;
}

sim::TReading TDemoGates::seen(const QString& gate) const
{
    if (!isBoard(gate)) {
        return FLine.reading(FReadings.at(gate));
    }
    const sim::TBoardCounts& before = FBefore.at(gate);
    const sim::TBoardCounts now = FBus.counts(gate);
    sim::TReading reading;
    reading.Address = gate;
    reading.Asked = FAsked.at(gate);
    reading.Passed = now.Passed > before.Passed;
    if (now.Opened > before.Opened) {
        reading.Fate = TFate::Opened;
    } else if (now.Refused > before.Refused) {
        reading.Fate = TFate::Refused;
    } else if (platform::Now() - reading.Asked > kPatience) {
        reading.Fate = TFate::NoCommand;
    }
    return reading;
}

QStringList TDemoGates::display(const QString& gate) const
{
    QStringList rows = FBus.rows(gate);
    for (QString& row : rows) {
        row = row.trimmed();
    }
    return rows;
}

} // namespace tnv5::cli

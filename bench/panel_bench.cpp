// The gate panel: gates built, a state shown, a gate selected, the box scrolled by a gate and drawn; and the
// ini file of many gates. On the offscreen platform, whose drawing is the processor's.

#include "tnv5/panel/gate_ini.h"
#include "tnv5/panel/turn_styler.h"

#include <QApplication>
#include <QScrollBar>
#include <benchmark/benchmark.h>

namespace tnv5::bench {

namespace {

using panel::TTurnStyler;

constexpr int kButtonSize = 48;
constexpr int kGateHeight = kButtonSize + 5;

struct TBox
{
    explicit TBox(int count)
    {
        for (const auto colour : {Qt::red, Qt::green}) {
            QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
            image.fill(colour);
            states.Add(image);
        }
        box.resize(400, 900);
        gates.SetScrollBox(&box);
        gates.SetImages(&states);
        gates.SetImagesBtn(&states);
        gates.SetButtonSize(kButtonSize);
        for (int i = 0; i < count; ++i) {
            auto* const gate = gates.TurnStylerList()->Add();
            gate->SetCaption(QStringLiteral("Gate %1").arg(i));
            gate->SetGateA(QStringLiteral("%1A").arg(i));
            gate->SetGateB(QStringLiteral("%1B").arg(i));
        }
        box.show();
        QCoreApplication::processEvents();
    }

    panel::TImageList states;
    QScrollArea box;
    TTurnStyler gates;
};

/// All gates, until they stand in the box and the visible ones are drawn.
void GatesBuilt(benchmark::State& state)
{
    TBox shown(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        shown.gates.SetUpItems();
        QCoreApplication::processEvents();
        state.PauseTiming();
        shown.gates.ClearItems();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

/// One gate further down, drawn.
void BoxScrolled(benchmark::State& state)
{
    TBox shown(static_cast<int>(state.range(0)));
    shown.gates.SetUpItems();
    QCoreApplication::processEvents();
    QScrollBar* const bar = shown.box.verticalScrollBar();
    for (auto _ : state) {
        const int next = bar->value() + kGateHeight;
        bar->setValue(next > bar->maximum() ? 0 : next);
        QCoreApplication::processEvents();
    }
}

/// A state of a gate that can be seen, drawn.
void StatesShown(benchmark::State& state)
{
    TBox shown(static_cast<int>(state.range(0)));
    shown.gates.SetUpItems();
    QCoreApplication::processEvents();
    int picture = 0;
    for (auto _ : state) {
        picture = 1 - picture;
        shown.gates.Setitemstate(QStringLiteral("0A"), picture,
                                 picture != 0 ? QStringLiteral("OPEN") : QString());
        QCoreApplication::processEvents();
    }
}

/// A line around another gate, drawn.
void GatesSelected(benchmark::State& state)
{
    TBox shown(static_cast<int>(state.range(0)));
    shown.gates.SetUpItems();
    QCoreApplication::processEvents();
    int index = 0;
    for (auto _ : state) {
        index = 1 - index;
        shown.gates.SetSelectedIndex(index);
        QCoreApplication::processEvents();
    }
}

void IniWrittenAndRead(benchmark::State& state)
{
    const std::vector<panel::TGateRecord> gates(std::size_t(state.range(0)),
                                                {"01A", "02A", "Main entrance", 1, 2});
    const QString section = QStringLiteral("Gates");
    QByteArray text;
    for (auto _ : state) {
        text = panel::writtenGates(text, section, gates);
        if (panel::readGates(text, section).size() != gates.size()) {
            state.SkipWithError("gates were lost");
        }
    }
}

BENCHMARK(GatesBuilt)->Unit(benchmark::kMillisecond)->ArgName("gates")->Arg(10)->Arg(500);
BENCHMARK(BoxScrolled)->Unit(benchmark::kMicrosecond)->ArgName("gates")->Arg(500);
BENCHMARK(StatesShown)->Unit(benchmark::kMicrosecond)->ArgName("gates")->Arg(500);
BENCHMARK(GatesSelected)->Unit(benchmark::kMicrosecond)->ArgName("gates")->Arg(500);
BENCHMARK(IniWrittenAndRead)->Unit(benchmark::kMillisecond)->ArgName("gates")->Arg(500)->Arg(10'000);

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

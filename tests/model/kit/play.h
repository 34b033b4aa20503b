#pragma once

#include "model/kit/stage.h"

/// The kit of the reference models. A model is a second, plain telling of what a component does, without any
/// of the module's code; random scenarios are played to both, and whatever the host can notice must be the
/// same. A model is its rules, its vocabulary and its stage:
///
///     class TLampModel : public TModel {                     // the rules, under the component's names
///     public:
///         TLampModel(TModelWorld& world, bool designing) : TModel(world, designing) {}
///         void SetComport(TModelPort* port) { FPort = port; }
///         void SetOnLog(std::function<void(TLampModel*, const QString&)> event) { FOnLog = event; }
///         void Switch(bool on) { operation([&] {             // what the host calls
///             if (!living(FPort)) { hit<"no port">(); return; }
///             callOut([&] { FPort->Write(either<"on", "off">(on) ? "1" : "0"); });
///             fire(FOnLog, this, on ? "on" : "off"); }); }
///         ...
///     };
///     TNV5_STEPS(Switch, SetPort, Handler)                   // what a scenario does beside the kit's own
///     steps template <class World> class TLampStage : public TStage {
///         TStep any(TDice& d, bool inside) override {        // the vocabulary
///             if (d.chance(20)) { return {Advance, {}, d.below(999)}; }
///             return {d.below(3), {}, d.below(2)}; }
///         void perform(const TStep& step) override {         // one telling for both sides: the names are
///         the same
///             if (step.kind == Switch) { lamp->Switch(step.a != 0); } ... }
///         void look() override { note(...); }                // what can be seen after each step
///         TGround<World> ground{*this, kToday};
///         std::shared_ptr<std::conditional_t<World::isModel, TLampModel, TLamp>> lamp;
///     };
///     TEST(LampModel, ...) { compare<TLampStage>(400, {"splitter: a search raises", ...}); }
///
/// Handlers that a stage assigns call `heard`, and the kit makes the host re-enter, raise and destroy as
/// `FWild` says. TNV5_SCENARIOS is how many are played, TNV5_SEED the first seed, TNV5_BRANCHES=1 prints how
/// often each branch was reached. A difference is shrunk to the fewest steps before it is shown.
namespace tnv5::modelkit {

class TRealWorld;

using TMakeStage = std::unique_ptr<TStage> (*)(quint64 seed);

/// Plays scenarios to both sides; fails at the first difference, or when a branch was never reached that is
/// not one of `elsewhere`; a name there that ends in "*" stands for all that begin so.
void compare(int scenarios, TMakeStage component, TMakeStage model, const QStringList& elsewhere);

/// Branches of a splitter that is given no positions by a handler.
inline const QStringList kOnlyWithPositions{"splitter: a read in a search",
                                            "splitter: gone in a search",
                                            "splitter: attached in a search",
                                            "splitter: start position",
                                            "splitter: stop position",
                                            "splitter: stop string behind a start position",
                                            "splitter: stop position behind a start string",
                                            "splitter: a search raises"};

template <template <class> class Stage>
void compare(int scenarios, const QStringList& elsewhere)
{
    compare(
        scenarios,
        [](quint64 seed) -> std::unique_ptr<TStage> { return std::make_unique<Stage<TRealWorld>>(seed); },
        [](quint64 seed) -> std::unique_ptr<TStage> { return std::make_unique<Stage<TModelWorld>>(seed); },
        elsewhere);
}

} // namespace tnv5::modelkit

#pragma once

#include "support/hostile.h"

#include <stdexcept>

namespace tnv5::tests {

/// What the handlers of every controller may do, each at each event of whole runs. A room gives a struct:
///
///     using Fixture = ...;                       // with trace, clock, inject() and attach()
///     static auto& component(Fixture&);          // a std::unique_ptr
///     static std::span<const TPlay<Fixture>> plays();
///     static constexpr char kBye[] = "...";      // a line that is logged before anything else
///     static QString read(const QString& line);  // how it is logged
///     static void dropLink(Fixture&);            // destroys what the component sends through
///     static void clear(Fixture&);               // takes all handlers away
///     static bool isSent(const QString& line);   // what goes on without handlers
///     static void expectAlive(Fixture&);         // the component works as if nothing had been
///
/// and says INSTANTIATE_TYPED_TEST_SUITE_P(Name, HostileController, TItsStruct).
template <class Room>
class HostileController : public ::testing::Test
{
protected:
    using F = typename Room::Fixture;

    void each(const std::function<void(F&)>& disturb,
              const std::function<void(F&, const QStringList& before)>& verify)
    {
        disturbEach<F>(Room::plays(), disturb, verify);
    }

    /// Whatever happens, what came before is as it was, and the component works on.
    void expectHarmless(const std::function<void(F&)>& disturb, int raised = 0)
    {
        each(disturb, [raised](F& fixture, const QStringList& before) {
            const QStringList lines = fixture.trace.take();
            EXPECT_EQ(lines.mid(0, before.size()), before);
            EXPECT_LE(lines.filter(QStringLiteral("raised")).size(), raised);
            Room::expectAlive(fixture);
        });
    }
};

TYPED_TEST_SUITE_P(HostileController);

TYPED_TEST_P(HostileController, MayDestroyTheComponent)
{
    this->each([](auto& fixture) { TypeParam::component(fixture).reset(); },
               [](auto& fixture, const QStringList& before) {
                   fixture.trace.expect(before); // and not a word more
                   fixture.inject(TypeParam::kBye);
                   fixture.clock.advance(10'000);
                   fixture.trace.expect({});
               });
}

TYPED_TEST_P(HostileController, MayDestroyTheComponentAndRaise)
{
    this->each(
        [](auto& fixture) {
            TypeParam::component(fixture).reset();
            throw std::runtime_error("host trouble");
        },
        [](auto& fixture, const QStringList& before) {
            QStringList lines = fixture.trace.take();
            EXPECT_LE(lines.removeAll(raised("host trouble")), 1);
            EXPECT_EQ(lines, before);
        });
}

TYPED_TEST_P(HostileController, MayDestroyTheComponentInAPumpedLine)
{
    this->each(
        [](auto& fixture) {
            fixture.trace.each(TypeParam::read(TypeParam::kBye),
                               [&fixture] { TypeParam::component(fixture).reset(); });
            TypeParam::component(fixture)->p_hw_ProtocolIn(TypeParam::kBye);
        },
        [](auto& fixture, const QStringList& before) {
            fixture.trace.expect(before + QStringList(TypeParam::read(TypeParam::kBye)));
        });
}

TYPED_TEST_P(HostileController, MayDestroyBoth)
{
    const auto expectTheEnd = [](auto& fixture, const QStringList& before) { fixture.trace.expect(before); };
    this->each(
        [](auto& fixture) {
            TypeParam::dropLink(fixture);
            TypeParam::component(fixture).reset();
        },
        expectTheEnd);
    this->each(
        [](auto& fixture) {
            TypeParam::component(fixture).reset();
            TypeParam::dropLink(fixture);
        },
        expectTheEnd);
}

TYPED_TEST_P(HostileController, MayClearAllHandlers)
{
    this->each([](auto& fixture) { TypeParam::clear(fixture); },
               [](auto& fixture, const QStringList& before) {
                   QStringList lines = fixture.trace.take();
                   EXPECT_EQ(lines.mid(0, before.size()), before);
                   lines = lines.mid(before.size());
                   lines.removeIf(TypeParam::isSent);
                   EXPECT_EQ(lines, QStringList());
                   fixture.attach();
                   TypeParam::expectAlive(fixture);
               });
}

TYPED_TEST_P(HostileController, MayReplaceThemselves)
{
    for (const auto play : TypeParam::plays()) {
        typename TypeParam::Fixture fixture;
        fixture.trace.OnLine = [&](const QString&) { fixture.attach(); };
        play(fixture);
        fixture.trace.expect(traceOf<typename TypeParam::Fixture>(play));
    }
}

TYPED_TEST_P(HostileController, MayRaise)
{
    this->expectHarmless([](auto&) { throw std::runtime_error("host trouble"); }, 1);
}

TYPED_TEST_P(HostileController, MayFeedALine)
{
    this->expectHarmless([](auto& fixture) {
        fixture.inject(TypeParam::kBye);
        EXPECT_EQ(fixture.trace.countOf(TypeParam::read(TypeParam::kBye)), 1);
    });
}

TYPED_TEST_P(HostileController, MayLetTimePass)
{
    this->expectHarmless([](auto& fixture) { fixture.clock.advance(5'000); });
}

TYPED_TEST_P(HostileController, MayRunThePassThemselves)
{
    this->expectHarmless([](auto& fixture) { TypeParam::component(fixture)->p_hw_CallStackArray(); });
}

REGISTER_TYPED_TEST_SUITE_P(HostileController, MayDestroyTheComponent, MayDestroyTheComponentAndRaise,
                            MayDestroyTheComponentInAPumpedLine, MayDestroyBoth, MayClearAllHandlers,
                            MayReplaceThemselves, MayRaise, MayFeedALine, MayLetTimePass,
                            MayRunThePassThemselves);

} // namespace tnv5::tests

#include "tnv5/platform/component.h"

#include "support/fixture.h"

#include <memory>
#include <stdexcept>

namespace {

using namespace tnv5::platform;

class TProbe : public TComponent
{
public:
    using TEvent = std::function<void(TComponent*, int)>;

    using TComponent::TComponent;

    TEvent OnEvent;
    int completed = 0;

    int run(int depth)
    {
        return Operation(
            [this, depth] {
                if (depth > 0) {
                    run(depth - 1);
                    ++completed; // must not happen once the component is gone
                } else {
                    Fire(OnEvent, 7);
                }
                return 1;
            },
            -1);
    }
};

TEST(Component, DesignStateComesFromTheScopeOrTheOwner)
{
    TProbe ordinary;
    EXPECT_FALSE(ordinary.Designing());
    std::unique_ptr<TProbe> form;
    {
        const TDesignScope scope;
        form = std::make_unique<TProbe>();
    }
    EXPECT_TRUE(form->Designing());
    EXPECT_TRUE((new TProbe(form.get()))->Designing());
    EXPECT_FALSE((new TProbe(&ordinary))->Designing());
}

TEST(Component, FirePassesTheSenderAndArguments)
{
    TProbe probe;
    TComponent* sender = nullptr;
    int value = 0;
    probe.OnEvent = [&](TComponent* from, int number) {
        sender = from;
        value = number;
    };
    EXPECT_EQ(probe.run(0), 1);
    EXPECT_EQ(sender, &probe);
    EXPECT_EQ(value, 7);
}

TEST(Component, AHandlerMayReplaceItself)
{
    TProbe probe;
    int first = 0;
    int second = 0;
    probe.OnEvent = [&](TComponent*, int) {
        probe.OnEvent = [&](TComponent*, int) { ++second; };
        ++first; // the handler under way is still whole
    };
    probe.run(0);
    probe.run(0);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(Component, AHandlerMayDestroyTheComponentAtAnyDepth)
{
    for (int depth = 0; depth < 3; ++depth) {
        auto* probe = new TProbe;
        probe->OnEvent = [&probe](TComponent*, int) {
            delete probe;
            probe = nullptr;
        };
        EXPECT_EQ(probe->run(depth), -1);
        EXPECT_EQ(probe, nullptr);
    }
}

TEST(Component, AHandlerThatCallsBackAndDestroysEndsBothOperations)
{
    auto* probe = new TProbe;
    int inner = 0;
    probe->OnEvent = [&](TComponent*, int) {
        probe->OnEvent = [&](TComponent*, int) {
            delete probe;
            probe = nullptr;
        };
        inner = probe->run(1);
    };
    EXPECT_EQ(probe->run(2), -1);
    EXPECT_EQ(inner, -1);
    EXPECT_EQ(probe, nullptr);
}

TEST(Component, WhatAHandlerRaisesReachesTheCaller)
{
    TProbe probe;
    probe.OnEvent = [](TComponent*, int) { throw std::runtime_error("handler"); };
    EXPECT_THROW(probe.run(2), std::runtime_error);
    probe.OnEvent = nullptr;
    EXPECT_EQ(probe.run(2), 1); // and leaves nothing behind
}

TEST(Component, AHandlerThatDestroysAndRaisesIsReportedAndEndsQuietly)
{
    tnv5::tests::TFixture host;
    auto* probe = new TProbe;
    probe->OnEvent = [&probe](TComponent*, int) {
        delete probe;
        throw std::runtime_error("last words");
    };
    EXPECT_EQ(probe->run(1), -1);
    host.trace.expect({"raised last words"});
}

} // namespace

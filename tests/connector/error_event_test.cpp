// Who has a port's one error event, when several connectors and the host want it.

#include "connector_fixture.h"

#include "support/text_printers.h"

#include <QPointer>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TComExceptionKind;

class ErrorEvent : public TConnectorTest
{
protected:
    ErrorEvent()
    {
        other = std::make_unique<TDeviceConnector>();
        other->SetOnError(
            [this](TComponent*, const QString& text) { trace.add(QStringLiteral("other ") + text); });
    }

    void fail(TMemoryPort& which) { which.raiseError(TComExceptionKind::Unknown, "x", 5, ""); }
    void fail() { fail(*port); }

    std::unique_ptr<TDeviceConnector> other;
};

TEST_F(ErrorEvent, BelongsToTheConnectorThatWasAssignedLast)
{
    other->SetComport(port.get());
    fail();
    trace.expect({"other [08] x"});
}

TEST_F(ErrorEvent, StaysWithItWhenTheFirstIsDestroyed)
{
    other->SetComport(port.get());
    bus.reset();
    ASSERT_TRUE(port->OnException);
    fail();
    trace.expect({"other [08] x"});
    EXPECT_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""), platform::EAbort);
    trace.expect({"other [08] x"});
}

TEST_F(ErrorEvent, IsNobodysWhenItsOwnerIsDestroyed)
{
    other->SetComport(port.get());
    other.reset();
    EXPECT_FALSE(port->OnException);
    fail();
    trace.expect({}); // it is not given back
    bus.reset();
    EXPECT_FALSE(port->OnException);
}

TEST_F(ErrorEvent, IsClearedByAConnectorThatLeavesForAnotherPort)
{
    TMemoryPort second;
    other->SetComport(port.get());
    bus->SetComport(&second);
    EXPECT_FALSE(port->OnException); // though it was the other's
    fail();
    trace.expect({});
    fail(second);
    trace.expect({"error [08] x"});
}

TEST_F(ErrorEvent, IsClearedByAConnectorThatLeavesForNone)
{
    other->SetComport(port.get());
    bus->SetComport(nullptr);
    EXPECT_FALSE(port->OnException);
}

TEST_F(ErrorEvent, IsTakenAgainByAnotherAssignmentOnly)
{
    other->SetComport(port.get());
    bus->SetComport(port.get()); // the same port: nothing happens
    fail();
    trace.expect({"other [08] x"});
    bus->SetComport(nullptr);
    bus->SetComport(port.get());
    fail();
    trace.expect({"error [08] x"});
}

TEST_F(ErrorEvent, OfAHostOutlivesTheConnector)
{
    int errors = 0;
    port->OnException = [&errors](auto&&...) { ++errors; };
    bus.reset();
    ASSERT_TRUE(port->OnException);
    fail();
    EXPECT_EQ(errors, 1);
}

TEST_F(ErrorEvent, ThatAHostWrapsIsTheHosts)
{
    int errors = 0;
    port->OnException = [&errors, inner = port->OnException](auto&&... report) {
        ++errors;
        inner(report...);
    };
    fail();
    trace.expect({"error [08] x"});
    bus.reset();
    fail(); // what it wraps does nothing any more
    trace.expect({});
    EXPECT_EQ(errors, 2);
}

TEST_F(ErrorEvent, ThatWasMovedToAnotherPortDoesNothingAfterwards)
{
    TMemoryPort second;
    second.OnException = port->OnException;
    fail(second);
    trace.expect({"error [08] x"});
    bus.reset();
    fail(second);
    trace.expect({});
}

TEST_F(ErrorEvent, IsKeptWhenAHandlerOfItDestroysTheOtherConnector)
{
    other->SetComport(port.get());
    trace.once("other ", [this] { bus.reset(); });
    fail();
    fail();
    trace.expect({"other [08] x", "other [08] x"});
}

TEST_F(ErrorEvent, GoesWithAConnectorThatItsHandlerDestroys)
{
    other->SetComport(port.get());
    trace.once("other ", [this] { other.reset(); });
    fail();
    trace.expect({"other [08] x"});
    EXPECT_FALSE(port->OnException);
}

} // namespace

// Errors that the operating system reports on the port.

#include "connector_fixture.h"

#include <stdexcept>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TComExceptionKind;

using PortError = TConnectorTest;

TEST_F(PortError, IsReportedWithThePortsOwnText)
{
    port->raiseError(TComExceptionKind::Resource, "Порт отключён", 5, "system text");
    trace.expect({"error [08] Порт отключён"});
    EXPECT_TRUE(port->Connected()); // unchanged
    EXPECT_EQ(bus->ComPort(), port.get());
}

TEST_F(PortError, AnyNumberButZeroCounts)
{
    for (const qint64 number : {qint64(1), qint64(-1), qint64(1) << 32, std::numeric_limits<qint64>::min()}) {
        port->raiseError(TComExceptionKind::Unknown, "x", number, "");
        trace.expect({"error [08] x"});
    }
}

TEST_F(PortError, WithoutANumberIsIgnored)
{
    for (const auto kind : {TComExceptionKind::Open, TComExceptionKind::Write, TComExceptionKind::Resource,
                            TComExceptionKind::Unknown}) {
        port->raiseError(kind, "x", 0, "text");
    }
    EXPECT_NO_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 0, "text"));
    trace.expect({});
}

TEST_F(PortError, EveryKindIsReportedAlike)
{
    for (const auto kind : {TComExceptionKind::Open, TComExceptionKind::Write, TComExceptionKind::Resource,
                            TComExceptionKind::Unknown}) {
        port->raiseError(kind, "x", 5, "text");
        trace.expect({"error [08] x"});
    }
}

TEST_F(PortError, MayHaveNoText)
{
    port->raiseError(TComExceptionKind::Unknown, "", 5, "text");
    trace.expect({"error [08] "});
}

TEST_F(PortError, AbortsTheOperationUnderWay)
{
    EXPECT_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""), platform::EAbort);
    trace.expect({"error [08] x"});
}

TEST_F(PortError, AbortsWithoutAHandlerToo)
{
    bus->SetOnError({});
    EXPECT_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""), platform::EAbort);
    port->raiseError(TComExceptionKind::Write, "x", 5, ""); // silent
    trace.expect({});
}

TEST_F(PortError, DoesNotDependOnTheType)
{
    bus->SetConnectorType(connector::podEmpty);
    port->raiseError(TComExceptionKind::Write, "x", 5, "");
    trace.expect({"error [08] x"});
}

TEST_F(PortError, InsideAWriteAbortsTheCommand)
{
    port->OnWriting = [this] { port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""); };
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), platform::EAbort);
    trace.expect({"error [08] x"}); // nothing written, nothing logged
    EXPECT_THROW(bus->SendDirectCommand("0.0.0.0", "$000AX"), platform::EAbort);
    trace.expect({"error [08] x"});
}

TEST_F(PortError, InsideADisplayCommandAbortsItWithoutTheClosingLog)
{
    giveDisplay("000A", 20);
    int writes = 0;
    port->OnWriting = [&] {
        if (++writes == 2) {
            port->raiseErrorInside(TComExceptionKind::Write, "x", 5, "");
        }
    };
    EXPECT_THROW(bus->SendCommand("SH0.0.0.0:000A|a|b||||"), platform::EAbort);
    trace.expect(sent("$000ACS") + QStringList("error [08] x"));
}

TEST_F(PortError, InsideAnAnswerToAPingEndsTheLineSilently)
{
    port->OnWriting = [this] { port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""); };
    port->feed("$000APING\r$000AX\r");
    trace.expect(QStringList("error [08] x") + routed("$0.0.0.0:000AX"));
}

TEST_F(PortError, WithoutANumberInsideAWriteChangesNothing)
{
    port->OnWriting = [this] { port->raiseErrorInside(TComExceptionKind::Write, "x", 0, ""); };
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(sent("$000AGO"));
}

TEST_F(PortError, RaisingHandlerTakesThePlaceOfTheAbort)
{
    bus->SetOnError([](TComponent*, const QString&) { throw std::runtime_error("host"); });
    EXPECT_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, ""), std::runtime_error);
    port->raiseError(TComExceptionKind::Write, "x", 5, "");
    trace.expect({"raised host"});
}

} // namespace

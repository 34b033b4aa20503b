// Handlers that raise: where the exception goes, and what has been done before it.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Raising = TScalesTest;

const QString kTrouble = raised("host trouble");

TEST_F(Raising, AtThePacketLosesItButNotItsTime)
{
    use(3);
    ask();
    clock.advance(3'000);
    trace.raiseOnce("log [03]");
    const QByteArray& bytes = sampleOf(3).bytes;
    feed(bytes);
    trace.expect(received(bytes) + QStringList{kTrouble});
    EXPECT_EQ(scales->LastWeight(), 0);
    clock.advance(3'900);
    scales->GetWeight(true);
    trace.expect(sent("\x00\x00\x03"_b)); // in time
    feed(bytes);
    EXPECT_EQ(scales->LastWeight(), 1500);
}

TEST_F(Raising, AtTheFieldLosesTheWeight)
{
    use(5);
    trace.raiseOnce("log 00100");
    feed("<xx00100><xx00200>");
    trace.expect(received("xx00100") + QStringList{"log 00100", kTrouble} + received("xx00200") +
                 QStringList{"log 00200", "log 200"});
}

TEST_F(Raising, AtTheNumberKeepsTheWeight)
{
    use(5);
    trace.raiseOnce("log 100");
    feed("<xx00100>");
    trace.expect(received("xx00100") + QStringList{"log 00100", "log 100", kTrouble});
    EXPECT_EQ(scales->LastWeight(), 100);
}

TEST_F(Raising, AtTheClosingLineKeepsTheWeight)
{
    use(8);
    trace.raiseOnce("log 100 100%");
    feed("W100kg");
    trace.expect(received("100") + QStringList{"log 100 100%", kTrouble});
    EXPECT_EQ(scales->LastWeight(), 100);
}

TEST_F(Raising, AtTheSecondRequestOfMassaLeavesTheHandshake)
{
    use(1);
    ask();
    trace.raiseOnce("log [05]");
    feed("\x80\x00"_b);
    trace.expect(received("\x80\x00"_b) + sent("E") + QStringList{kTrouble});
    feed("\x80\x00"_b);
    trace.expect(received("\x80\x00"_b) + sent("E"));
}

TEST_F(Raising, AtTheSecondRequestOfCasExpectsTheWeight)
{
    use(2);
    ask();
    trace.raiseOnce("log [05]");
    feed("\x06");
    trace.expect(received("\x06") + sent("\x11") + QStringList{kTrouble});
    feed("\x01\x02S 000100kg\x04");
    EXPECT_EQ(scales->LastWeight(), 100);
}

TEST_F(Raising, AtTheAskLineHasEndedTheHandshake)
{
    use(3);
    trace.raiseOnce("log Ask  ");
    feed(sampleOf(3).bytes);
    EXPECT_EQ(scales->LastWeight(), 0);
    scales->SetScalesType(1);
    scales->SetComport(port.get());
    feed("\x05\x01"_b);
    EXPECT_EQ(scales->LastWeight(), 0x105);
}

TEST_F(Raising, AtTheDifferenceOfMassaRaisesNoWeight)
{
    use(1);
    ask();
    feed("\x80\x00"_b);
    trace.take();
    trace.raiseOnce("log 0 12345");
    feed("90");
    trace.expect(received("90") + QStringList{"log 0 12345", kTrouble});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Raising, AtARequestLeavesToTheHost)
{
    use(3);
    trace.raiseOnce("log [05]");
    EXPECT_THROW(scales->GetWeight(true), std::runtime_error);
    EXPECT_EQ(port->takeWrites().size(), 1);
}

TEST_F(Raising, AtTheResetLineLeavesToTheHostWhenAllIsDone)
{
    use(8);
    port->Close();
    trace.raiseOnce("log [07]");
    EXPECT_THROW(scales->Reset(), std::runtime_error);
    EXPECT_TRUE(port->Connected());
    feed("W100kg");
    EXPECT_EQ(scales->LastWeight(), 100);
}

TEST_F(Raising, AtAFailedOpeningLeavesToTheHost)
{
    port->Close();
    port->OpenFailure = QStringLiteral("COM7: busy");
    trace.raiseOnce("error");
    EXPECT_THROW(scales->SetConnection(true), std::runtime_error);
    trace.expect({"error COM7: busy"});
    scales->SetComport(nullptr);
    trace.raiseOnce("error");
    EXPECT_THROW(scales->SetConnection(true), std::runtime_error);
    trace.expect({kNoPort});
}

TEST_F(Raising, AtARefusalOfCasEndsItsPacketOnly)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    trace.raiseOnce("error");
    feed("\x01\x02"
         "F 000000kg\x04");
    trace.expect(received("\x01\x02"
                          "F 000000kg\x04") +
                 QStringList{kOverload, kTrouble});
    feed("\x01\x02S 000100kg\x04");
    EXPECT_EQ(scales->LastWeight(), 100);
}

TEST_F(Raising, AnAbortIsSilent)
{
    use(5);
    trace.once("log 00100", [] { throw platform::EAbort(); });
    feed("<xx00100>");
    trace.expect(received("xx00100") + QStringList{"log 00100"});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Raising, InsideAWaitGoesToTheExceptionHandlerAndTheWaitGoesOn)
{
    use(5);
    trace.raiseOnce("log [03]");
    Waits = {arrives("<xx00100>"), arrives("<xx00200>")};
    EXPECT_EQ(scales->GetWeight(false), 200);
    EXPECT_EQ(trace.countOf("raised"), 1);
}

} // namespace

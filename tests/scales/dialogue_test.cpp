// Decoding of the two families that talk in two steps.

#include "tnv5/scales/families.h"
#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Massa : public TScalesTest
{
protected:
    Massa()
    {
        use(1);
        ask();
    }

    void handshake()
    {
        feed("\x80\x00"_b);
        trace.take();
    }
};

TEST_F(Massa, OnlyBitSevenOfTheFirstByteCounts)
{
    for (const QByteArray& packet : {"\x00\x00"_b, "\x7F\xFF"_b, "\x00\x80"_b}) {
        feed(packet);
        trace.expect(received(packet)); // still a handshake
    }
    feed("\x80\x00"_b);
    trace.expect(received("\x80\x00"_b) + sent("E"));
}

TEST_F(Massa, AHandshakeIsAnsweredOnce)
{
    feed("\xFF\xFF");
    trace.expect(received("\xFF\xFF") + sent("E"));
    feed("\xFF\xFF");
    trace.expect(received("\xFF\xFF") + QStringList{"log 0 65535", weighed(65'535)});
}

TEST_F(Massa, PacketsOfOtherLengthsAreIgnored)
{
    for (const QByteArray& packet : {"\x80"_b, "\x80\x00\x00"_b, "\x80\x00\x80\x00"_b}) {
        feed(packet);
        trace.expect(received(packet));
    }
    handshake();
    for (const QByteArray& packet : {"\x80"_b, "\x80\x00\x00"_b}) {
        feed(packet);
        trace.expect(received(packet));
    }
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Massa, WeightIsLittleEndianAndUnsigned)
{
    handshake();
    const std::pair<QByteArray, int> cases[] = {{"\x39\x30"_b, 12'345}, {"\x00\x01"_b, 256},
                                                {"\xFF\x7F"_b, 32'767}, {"\x80\x00"_b, 128},
                                                {"\x00\x80"_b, 32'768}, {"\xFF\xFF"_b, 65'535}};
    int before = 0;
    for (const auto& [packet, weight] : cases) {
        feed(packet);
        QStringList lines =
            received(packet) + QStringList{QStringLiteral("log %1 %2").arg(before).arg(weight)};
        trace.expect(lines << weighed(weight));
        EXPECT_EQ(scales->LastWeight(), weight);
        before = weight;
    }
}

TEST_F(Massa, HysteresisIsThreeUnits)
{
    handshake();
    feed("\x02\x00"_b);
    trace.expect(received("\x02\x00"_b) + QStringList{"log 0 2"});
    EXPECT_EQ(scales->LastWeight(), 0);
    feed("\x03\x00"_b);
    trace.expect(received("\x03\x00"_b) + QStringList{"log 0 3", weighed(3)});
    feed("\x64\x00"_b);
    trace.expect(received("\x64\x00"_b) + QStringList{"log 3 100", weighed(100)});
    for (const char low : {'\x62', '\x63', '\x64', '\x65', '\x66'}) { // 98 to 102
        feed(QByteArray(1, low) + '\0');
        EXPECT_EQ(trace.countOf("weight"), 0) << int(low);
        EXPECT_EQ(scales->LastWeight(), 100) << int(low);
    }
    trace.take();
    feed("\x61\x00"_b);
    trace.expect(received("\x61\x00"_b) + QStringList{"log 100 97", weighed(97)});
}

TEST_F(Massa, ZeroIsStoredAndNeverRaised)
{
    handshake();
    feed("\x64\x00"_b);
    trace.take();
    feed("\x00\x00"_b);
    trace.expect(received("\x00\x00"_b) + QStringList{"log 100 0"});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Massa, WritesBeforeItExpectsTheWeight)
{
    port->WriteFailure = QStringLiteral("line gone");
    feed("\x80\x00"_b);
    trace.expect(received("\x80\x00"_b) + QStringList{raised("line gone")});
    port->WriteFailure.reset();
    feed("\x80\x00"_b); // still a handshake
    trace.expect(received("\x80\x00"_b) + sent("E"));
}

TEST_F(Massa, RequestBeginsTheDialogueAnew)
{
    handshake();
    scales->GetWeight(true);
    trace.expect(sent("D"));
    feed("\x80\x01"_b);
    trace.expect(received("\x80\x01"_b) + sent("E"));
}

class Cas : public TScalesTest
{
protected:
    Cas()
    {
        use(2);
        ask();
    }

    void handshake()
    {
        feed("\x06");
        trace.take();
    }

    /// What a packet makes of the component, in the weighing step.
    void expectAfter(const QByteArray& packet, const QStringList& lines,
                     TSourceLine where = TSourceLine::current())
    {
        feed(packet);
        trace.expect(received(packet) + lines, where);
    }
};

TEST_F(Cas, AckIsAnsweredByDc1)
{
    feed("\x06");
    trace.expect(received("\x06") + sent("\x11"));
}

TEST_F(Cas, ExpectsTheWeightBeforeItWrites)
{
    port->WriteFailure = QStringLiteral("line gone");
    feed("\x06");
    trace.expect(received("\x06") + QStringList{raised("line gone")});
    port->WriteFailure.reset();
    expectAfter("\x01\x02S 000100kg\x04", {weighed(100)});
}

TEST_F(Cas, StableAndUnstableWeights)
{
    handshake();
    expectAfter("\x01\x02S 01.234kg*\x03\x04", {weighed(1'234)});
    expectAfter("\x01\x02U 01.300kg*\x03\x04", {weighed(1'300)});
    expectAfter("\x01\x02S+999999kg*\x03\x04", {weighed(999'999)});
    expectAfter("\x01\x02S  12.5 kg*\x03\x04", {weighed(125)});
    expectAfter("\x01\x02"
                "S0     7kg*\x03\x04",
                {weighed(7)});
}

TEST_F(Cas, OnlyTheBytesFourToNineAreTheWeight)
{
    handshake();
    expectAfter("\x01\x02S9      99999\x04", {});
    expectAfter("\x01\x02S91    299999\x04", {weighed(12)});
    expectAfter("\x01\x02S 5\x04", {weighed(5)}); // shorter: what there is
}

TEST_F(Cas, OtherStatesAreNoWeights)
{
    handshake();
    for (const char state : {'s', 'u', 'f', ' ', '0', 'E', '\x02'}) {
        expectAfter("\x01\x02" + QByteArray(1, state) + " 001234kg\x04", {});
    }
    expectAfter("\x01S 001234kg\x04", {}); // the state is byte 2, not byte 1
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Cas, OverloadIsReportedAndNoWeight)
{
    handshake();
    expectAfter("\x01\x02"
                "F 001234kg\x04",
                {kOverload});
    expectAfter("\x01\x02"
                "F-001234kg\x04",
                {kOverload}); // the sign is not looked at
    EXPECT_EQ(scales->LastWeight(), 0);
    scales->SetOnError({});
    expectAfter("\x01\x02"
                "F 001234kg\x04",
                {});
}

TEST_F(Cas, NegativeWeightIsReportedAndNoWeight)
{
    handshake();
    expectAfter("\x01\x02S-001234kg\x04", {kNegative});
    expectAfter("\x01\x02U-001234kg\x04", {kNegative});
    expectAfter("\x01\x02X-001234kg\x04", {}); // no weight at all
    EXPECT_EQ(scales->LastWeight(), 0);
    scales->SetOnError({});
    expectAfter("\x01\x02S-001234kg\x04", {});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Cas, ReportsInTheLanguageOfTheHost)
{
    handshake();
    scales->SetIDLang(0);
    expectAfter("\x01\x02"
                "F 001234kg\x04",
                {QStringLiteral("error [2] Весы перегружены!")});
    expectAfter("\x01\x02S-001234kg\x04", {QStringLiteral("error [3] Отрицательный вес!")});
    scales->SetIDLang(1);
    expectAfter("\x01\x02"
                "F 001234kg\x04",
                {QStringLiteral("error [2] Вага перевантажена!")});
    expectAfter("\x01\x02S-001234kg\x04", {QStringLiteral("error [3] Від`ємна вага!")});
    scales->SetIDLang(3);
    expectAfter("\x01\x02S-001234kg\x04", {"error "});
}

TEST_F(Cas, RefusalsKeepTheWeight)
{
    handshake();
    expectAfter("\x01\x02S 000500kg\x04", {weighed(500)});
    feed("\x01\x02"
         "F 001234kg\x04");
    feed("\x01\x02S-001234kg\x04");
    feed("\x01\x02S   .   kg\x04");
    feed("\x01\x04");
    EXPECT_EQ(scales->LastWeight(), 500);
}

TEST_F(Cas, FieldsWithoutDigitsAreNoWeights)
{
    handshake();
    expectAfter("\x01\x02S       kg\x04", {});
    expectAfter("\x01\x02S ------kg\x04", {});
    expectAfter("\x01\x02S \xB2\xB3zzzzkg\x04", {});
}

TEST_F(Cas, ShortPacketsAreNoWeights)
{
    handshake();
    for (const QByteArray& packet : {"\x01\x04"_b, "\x01\x02\x04"_b, "\x01\x02S\x04"_b, "\x01\x02S \x04"_b}) {
        expectAfter(packet, {});
    }
    expectAfter("\x01\x02"
                "F\x04",
                {kOverload});
    expectAfter("\x01\x02S-\x04", {kNegative});
}

TEST_F(Cas, HysteresisIsThreeUnits)
{
    handshake();
    expectAfter("\x01\x02S 000002kg\x04", {});
    expectAfter("\x01\x02S 000003kg\x04", {weighed(3)});
    expectAfter("\x01\x02S 000100kg\x04", {weighed(100)});
    for (const char* near : {"000098", "000099", "000100", "000101", "000102"}) {
        expectAfter(QByteArray("\x01\x02S ") + near + "kg\x04", {});
        EXPECT_EQ(scales->LastWeight(), 100);
    }
    expectAfter("\x01\x02S 000103kg\x04", {weighed(103)});
    expectAfter("\x01\x02S 000000kg\x04", {});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Cas, ManyWeightsAfterOneHandshake)
{
    handshake();
    for (int weight = 10; weight < 100; weight += 10) {
        expectAfter(QByteArray("\x01\x02S 0000") + QByteArray::number(weight) + "kg\x04", {weighed(weight)});
    }
}

TEST_F(Cas, AckInsteadOfAWeightIsNoise)
{
    handshake();
    feed("\x06");
    trace.expect({kStart});
}

TEST(SecondRequest, TakesTheTimeAfterItWrote)
{
    for (const int type : {1, 2}) {
        TScalesFixture fixture;
        fixture.use(type);
        fixture.ask();
        fixture.port->OnWritten = [&](const QByteArray&) { fixture.clock.advance(2'000); };
        fixture.feed(sampleOf(type).answer);
        fixture.port->OnWritten = {};
        fixture.clock.advance(3'500);
        fixture.trace.take();
        fixture.scales->GetWeight(true);
        EXPECT_EQ(fixture.trace.countOf("log [07]"), 0) << type;
    }
}

// The decision itself.

TEST(Decision, OfTheTwoSteps)
{
    using scales::TStep;
    const auto massa = scales::familyOf(1)->decode;
    EXPECT_EQ(massa(TStep::Hey, "\x80\x00"_b, 0).write, "E");
    EXPECT_TRUE(massa(TStep::Hey, "\x80\x00"_b, 0).askOnceWritten);
    EXPECT_FALSE(massa(TStep::Hey, "\x80\x00"_b, 0).ask);
    EXPECT_EQ(massa(TStep::Ask, "\x39\x30"_b, 5).log, QStringList{"5 12345"});
    EXPECT_EQ(massa(TStep::Ask, "\x39\x30"_b, 5).change, 12'345);
    const auto cas = scales::familyOf(2)->decode;
    EXPECT_EQ(cas(TStep::Hey, "\x06", 0).write, "\x11");
    EXPECT_TRUE(cas(TStep::Hey, "\x06", 0).ask);
    EXPECT_FALSE(cas(TStep::Hey, "\x06", 0).askOnceWritten);
    EXPECT_EQ(cas(TStep::Ask, "\x01\x02S 01.234kg*\x03\x04", 0).change, 1234);
}

} // namespace

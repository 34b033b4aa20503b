// Where packets begin and end, family by family, and what is logged on the way.

#include "tnv5/scales/families.h"
#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Framing = TScalesTest;

TEST_F(Framing, MassaEveryReadIsAPacket)
{
    use(1);
    feed("x");
    trace.expect(received("x"));
    feed("\x80\x00"_b);
    trace.expect(received("\x80\x00"_b) + sent("E"));
    feed("abcd");
    trace.expect(received("abcd"));
}

TEST_F(Framing, CasHandshakeIsTheLastAck)
{
    use(2);
    feed("\x01\x04\x15");
    trace.expect({kStart});
    feed("a\x06"
         "b\x06"
         "c");
    trace.expect(received("\x06") + sent("\x11") + QStringList{kStart}); // "c" is no beginning of a weight
}

TEST_F(Framing, CasWeightIsFromTheLastSohToTheLastEot)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    feed("\x06\x04zz");
    trace.expect({kStart});
    feed("\x01"
         "ignored\x04\x01\x02S 00010\x04"
         "0\x04zz");
    trace.expect(received("\x01\x02S 00010\x04"
                          "0\x04") +
                 QStringList{weighed(10), kStart}); // one of the six bytes of the weight is EOT
}

TEST_F(Framing, CasStartIsNotAskedAgainInsideAPacket)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    feed("\x01\x02S 00");
    trace.expect({kStart, kStop});
    feed("0500kg\x01\x04");
    trace.expect({kStop, got("\x01\x02S 000500kg\x01\x04"), weighed(500)});
}

TEST_F(Framing, CasHandshakeAndWeightInOneRead)
{
    use(2);
    ask();
    feed("\x06\x01\x02U 02.500kg\x04");
    trace.expect(received("\x06") + sent("\x11") + received("\x01\x02U 02.500kg\x04") +
                 QStringList{weighed(2500)});
}

TEST_F(Framing, BaTakesEverythingFromEighteenBytesOn)
{
    use(3);
    feed("12345678901234567");
    trace.expect({kStart, kStop});
    feed("8");
    trace.expect(
        {kStop, got("123456789012345678"), "log Ask  123456789012345678", "log 654321", "log 654321"});
    feed("1234567890123456789012345");
    trace.expect(received("1234567890123456789012345") +
                 QStringList{"log Ask  1234567890123456789012345", "log 654321", "log 654321"});
}

TEST_F(Framing, BpTakesEverythingFromSeventeenBytesOn)
{
    use(4);
    feed("1234567890123456");
    trace.expect({kStart, kStop});
    feed("7");
    trace.expect({kStop, got("12345678901234567"), "log 654321", "log 654321"});
    feed("1234567890123456789012345");
    trace.expect(received("1234567890123456789012345") + QStringList{"log 654321", "log 654321"});
}

TEST_F(Framing, BhStandsBetweenItsBrackets)
{
    use(5);
    feed("ab>cd");
    trace.expect({kStart});
    feed("ab<!!00100><!!00200>x");
    trace.expect(received("!!00100") + QStringList{"log 00100", "log 100"} + received("!!00200") +
                 QStringList{"log 00200", "log 200", kStart});
    feed("<!!<0300>");
    trace.expect(received("!!<0300") + QStringList{"log <0300", raised("EConvertError")});
    feed("<>");
    trace.expect(received(""));
}

TEST_F(Framing, DigiIsFromTheLastBToTheLastLineEnd)
{
    use(6);
    feed("12\r\n");
    trace.expect({kStart});
    feed("xB1B00100\r\n");
    trace.expect(received("B00100\r") + QStringList{"log 00100", "log 100", kStart});
    feed("B001\r");
    trace.expect({kStart, kStop});
    feed("B\n");
    trace.expect({kStop});
    feed("00\r\nB2\r\nB");
    trace.expect({kStop, got("B001\rB\n00\r\nB2\r"), "log 001002", "log 1002", kStart, kStop});
}

TEST_F(Framing, AxisStandsBetweenStxAndLineEnd)
{
    use(7);
    feed("1\r\n");
    trace.expect({kStart});
    feed("x\x02"
         "a\x02\r\n\x02"
         "b\rc\nd\r\n");
    trace.expect(received("a\x02") + QStringList{kStart, kStop, got("b\rc\nd")});
}

TEST_F(Framing, UpaStandsBetweenWAndKg)
{
    use(8);
    feed("12kg");
    trace.expect({kStart});
    feed("w1kgW2KGW3kgWkkg");
    trace.expect(received("2KGW3") + QStringList{"log 2KGW3 23%"} + received("k") + QStringList{"log k 0%"});
}

TEST_F(Framing, WithoutAFamilyTheStringsThatWereSetDecide)
{
    use(0);
    feed("<1>W1kg\x02\r\n");
    trace.expect({kStart});
    use(8);
    for (const int type : noFamilies()) {
        use(type);
        feed("W1kg");
        trace.expect(received("1")); // heard, but nobody knows what it means
    }
}

TEST_F(Framing, OtherFamiliesLeaveTheStringsAsTheyWere)
{
    use(5);
    for (const int type : {1, 2, 3, 4, 6, 0}) {
        use(type);
    }
    feed("W1kg<a>\x02"
         "b\r\n");
    trace.expect(received("a") + QStringList{kStart});
}

TEST_F(Framing, StringsChangeWithTheFamily)
{
    const QByteArray all = "<!!00001>\x02"
                           "2\r\nW3kg";
    for (const int type : {5, 7, 8, 7, 5, 8}) {
        use(type);
        feed(all);
        EXPECT_EQ(trace.countOf(got(type == 5 ? "!!00001" : type == 7 ? "2" : "3")), 1) << type;
        EXPECT_EQ(trace.countOf("log [03]"), 1) << type;
        scales->SetUpComport();
    }
}

TEST_F(Framing, PacketsAreLoggedByteForByte)
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        all += char(byte);
    }
    use(3);
    QString packet;
    scales->SetOnLog([&](TComponent*, const QString& text) {
        if (text.startsWith("[03] Get from port ")) {
            packet = text.mid(qstrlen("[03] Get from port "));
        }
    });
    feed(all);
    ASSERT_EQ(packet.size(), 256);
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(packet[byte].unicode(), byte);
    }
}

TEST_F(Framing, WithoutALogHandlerItIsTheSame)
{
    scales->SetOnLog({});
    for (const TSample& sample : samples()) {
        use(sample.type);
        scales->GetWeight(true);
        if (!sample.answer.isEmpty()) {
            feed(sample.answer);
        }
        feed(sample.bytes);
        EXPECT_EQ(scales->LastWeight(), sample.weight) << sample.type;
    }
}

// The pure pieces, without a port.

qsizetype startOf(int type, const QByteArray& buffer, scales::TStep step = scales::TStep::Hey)
{
    return scales::familyOf(type)->findStart(step, buffer);
}

qsizetype stopOf(int type, const QByteArray& buffer, scales::TStep step = scales::TStep::Hey)
{
    return scales::familyOf(type)->findStop(step, buffer);
}

TEST(Positions, OfBothStepsOfCas)
{
    using scales::TStep;
    const QByteArray buffer = "\x06z\x01z\x04\x06z\x01z\x04z";
    EXPECT_EQ(startOf(2, buffer, TStep::Hey), 6);
    EXPECT_EQ(stopOf(2, buffer, TStep::Hey), 6);
    EXPECT_EQ(startOf(2, buffer, TStep::Ask), 8);
    EXPECT_EQ(stopOf(2, buffer, TStep::Ask), 10);
    for (const TStep step : {TStep::Hey, TStep::Ask}) {
        EXPECT_EQ(startOf(2, "none", step), 0);
        EXPECT_EQ(stopOf(2, "none", step), 0);
    }
}

TEST(Positions, OfTheOthers)
{
    EXPECT_EQ(startOf(1, "ab"), 1);
    EXPECT_EQ(stopOf(1, "abc"), 3);
    EXPECT_EQ(startOf(3, "a"), 1);
    EXPECT_LE(stopOf(3, QByteArray(17, '0')), 0);
    EXPECT_EQ(stopOf(3, QByteArray(18, '0')), 18);
    EXPECT_EQ(stopOf(3, QByteArray(40, '0')), 40);
    EXPECT_EQ(startOf(4, "a"), 1);
    EXPECT_LE(stopOf(4, QByteArray(16, '0')), 0);
    EXPECT_EQ(stopOf(4, QByteArray(17, '0')), 17);
    EXPECT_EQ(stopOf(4, QByteArray(40, '0')), 40);
    EXPECT_EQ(startOf(6, "aBcBd"), 4);
    EXPECT_EQ(startOf(6, "abcd"), 0);
    EXPECT_EQ(stopOf(6, "B\r\n1\r\n2"), 5);
    EXPECT_EQ(stopOf(6, "B\r1\n2"), 0);
    for (const int type : {5, 7, 8}) {
        EXPECT_EQ(startOf(type, "<W\x02"), -1) << type;
        EXPECT_EQ(stopOf(type, ">kg\r\n"), -1) << type;
    }
}

} // namespace

// Packets out of reads: pieces, repetitions, noise, and the corners of the frame.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Framing : public TBankTest
{
protected:
    QStringList finished() const { return {packet(kFinish), bare("FINISH")}; }
};

TEST_F(Framing, EveryCutGivesTheSamePacket)
{
    const QByteArray frame = framed(kCardBody);
    const QStringList whole = {packet(frame), told("START", kCardValues, false), kAck};
    for (qsizetype at = 1; at < frame.size(); ++at) {
        feed(frame.first(at));
        feed(frame.mid(at));
        trace.expect(whole);
    }
    port->feedInPieces(frame, 1);
    trace.expect(whole);
}

TEST_F(Framing, NoiseBetweenFramesIsDropped)
{
    feed("xyz!\x03\x06");
    feed("abc" + kFinish);
    trace.expect(finished());
    feed("\x03\x03\x03");
    feed(kFinish);
    trace.expect(finished());
}

TEST_F(Framing, RepeatedFramesAreAnsweredEachTime)
{
    feed(framed(kCardBody));
    const QStringList once = trace.take();
    feed(framed(kCardBody));
    trace.expect(once);
}

TEST_F(Framing, OfTwoFramesInOneReadTheLastIsHeard)
{
    feed(framed(kCardBody) + kFinish);
    trace.expect(finished());
}

TEST_F(Framing, AFrameBehindAnUnfinishedOneSpoilsBoth)
{
    feed("\x02"
         "01=1");
    feed(kFinish);
    trace.expect({kNak});
    feed(kFinish);
    trace.expect(finished());
}

TEST_F(Framing, TheCheckByteIsWaitedFor)
{
    feed("\x02\x05\x03");
    trace.expect({});
    feed("\x06");
    EXPECT_EQ(trace.take().first(), packet(kAskAmount));
}

TEST_F(Framing, TheStartIsAskedOnce)
{
    feed("\x02"
         "01=1\x1C");
    feed("06=\x02"
         "5\x03");
    trace.expect({});
    const QByteArray whole = framed("01=1\x1C"
                                    "06=\x02"
                                    "5");
    feed(whole.right(1));
    EXPECT_EQ(trace.take().first(), packet(whole)) << "the second STX is content";
}

TEST_F(Framing, ACheckByteThatIsEtx)
{
    const QByteArray frame = "\x02\x03\x03"; // an empty body
    feed(frame);
    trace.expect({packet(frame)});
    port->feedInPieces(frame, 1);
    trace.expect({packet(frame)});
    const QByteArray longer = framed("ab\x03"
                                     "ab"); // the first ETX ends the body
    feed(longer);
    trace.expect({kNak});
    const QByteArray even = framed("aabb\x1C\x1C");
    ASSERT_EQ(even.back(), 0x03);
    feed(even);
    trace.expect({packet(even)});
    feed(even.chopped(1));
    trace.expect({});
    feed(even.right(1));
    trace.expect({packet(even)});
}

TEST_F(Framing, ACheckByteThatIsEot)
{
    const QByteArray frame = framed("\x07"); // 7 ^ 3 = 4
    ASSERT_EQ(frame.back(), 0x04);
    feed(frame);
    trace.expect({packet(frame), bare("FINISH")}); // it holds an EOT
    port->feedInPieces(frame, 1);
    trace.expect({packet(frame), bare("FINISH")});
}

TEST_F(Framing, ACheckByteThatIsStxIsLostInOneReadOnly)
{
    const QByteArray frame = framed("\x01");
    ASSERT_EQ(frame.back(), 0x02);
    feed(frame);
    trace.expect({}); // the check byte has become the start of the next packet
    feed(kFinish);
    trace.expect({kNak});
    feed(kFinish);
    trace.expect(finished());
    feed(frame.first(2));
    feed(frame.mid(2));
    trace.expect({packet(frame)});
}

TEST_F(Framing, ACheckByteThatIsZero)
{
    const QByteArray zero = framed("a" + QByteArray(1, char('a' ^ 0x03)));
    ASSERT_EQ(zero.back(), 0x00);
    feed(zero);
    trace.expect({packet(zero)});
}

TEST_F(Framing, EotAloneInAFrameFinishes)
{
    feed(kFinish);
    trace.expect(finished());
    feed("\x02");
    feed("\x04\x03");
    trace.expect({}); // an ETX follows the EOT: the check byte is awaited
    feed("\x07");
    trace.expect(finished());
}

TEST_F(Framing, ABareEotIsNoPacket)
{
    feed("\x04");
    trace.expect({});
    feed("ab\x04");
    trace.expect({});
    feed(kFinish);
    trace.expect(finished());
}

TEST_F(Framing, StxEotIsRefused)
{
    feed("\x02\x04");
    trace.expect({kNak});
}

TEST_F(Framing, AnEotBehindTheCheckByteSpoilsTheFrameInTheSameRead)
{
    feed(framed(kCardBody) + "\x04");
    trace.expect({kNak});
    feed(framed(kCardBody));
    EXPECT_EQ(trace.take().size(), 3);
    feed("\x04");
    trace.expect({});
}

TEST_F(Framing, FinishCutBehindItsEotIsRefused)
{
    feed("\x02\x04");
    feed("\x03\x07");
    trace.expect({kNak});
}

TEST_F(Framing, TheLastEotEndsThePacket)
{
    feed("\x02"
         "a\x04"
         "b\x04"
         "c");
    trace.expect({kNak}); // without ETX no check is right
}

TEST_F(Framing, BytesBehindTheCheckByteAreDropped)
{
    feed(kFinish + "abc");
    trace.expect(finished());
    feed(kFinish);
    trace.expect(finished());
}

TEST_F(Framing, AnEndlessPacketDoesNotGrow)
{
    feed("\x02");
    for (int i = 0; i < 300; ++i) {
        feed(QByteArray(1000, 'x'));
    }
    trace.expect({});
    feed("\x03x");
    trace.take();
    feed(kFinish);
    trace.expect(finished());
}

} // namespace

// However the stream is cut into reads, the same happens; and nothing that comes in does harm.

#include "turnstile_fixture.h"

#include <algorithm>
#include <random>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const std::map<int, QVariant> kAnswers{{0, 1}, {1, 1}, {2, 1}, {3, 1}};

/// What the component does when the reads come in, and in the minute after them.
QStringList traceOf(const QByteArrayList& reads)
{
    TTurnstileFixture fixture;
    fixture.Answers = kAnswers;
    fixture.serve();
    for (const QByteArray& bytes : reads) {
        fixture.port->feed(bytes);
    }
    fixture.clock.advance(60'000);
    return fixture.trace.take();
}

QByteArrayList singleBytes(const QByteArray& stream)
{
    QByteArrayList reads;
    for (const char byte : stream) {
        reads << QByteArray(1, byte);
    }
    return reads;
}

QByteArrayList cutAt(const QByteArray& stream, qsizetype position)
{
    return {stream.left(position), stream.mid(position)};
}

/// Lines of one kind among those that were read.
QStringList linesRead(const QStringList& trace, QChar start)
{
    return trace.filter("log %Считано с порта% " + QString(start));
}

const QByteArray kEvents = "$01AR12345678\r$01AP\r$02AR1\r$01AG\r$000900\r$01DR5\r$01DP\r$03AX\r";
const QByteArray kMessages =
    "#01AHardReset\r#01DBtn-Activ\r#01DRelay 3\r#05ARelay 2\r#01AInG-Activ\r#01DGate-Open\r";

TEST(Cut, EveryPositionOfEventLinesGivesTheSame)
{
    const QStringList whole = traceOf({kEvents});
    EXPECT_EQ(linesRead(whole, u'$').size(), 8);
    for (qsizetype i = 0; i <= kEvents.size(); ++i) {
        ASSERT_EQ(traceOf(cutAt(kEvents, i)), whole) << i;
    }
    EXPECT_EQ(traceOf(singleBytes(kEvents)), whole);
}

TEST(Cut, EveryPositionOfMessageLinesGivesTheSame)
{
    const QStringList whole = traceOf({kMessages});
    EXPECT_EQ(linesRead(whole, u'#').size(), 6);
    for (qsizetype i = 0; i <= kMessages.size(); ++i) {
        ASSERT_EQ(traceOf(cutAt(kMessages, i)), whole) << i;
    }
    EXPECT_EQ(traceOf(singleBytes(kMessages)), whole);
}

TEST(Cut, EveryPositionOfOneCardGivesTheSame)
{
    const QByteArray line = "noise$01AR12345678\rnoise";
    const QStringList whole = traceOf({line});
    for (qsizetype i = 0; i <= line.size(); ++i) {
        for (qsizetype j = i; j <= line.size(); ++j) {
            ASSERT_EQ(traceOf({line.left(i), line.mid(i, j - i), line.mid(j)}), whole) << i << ' ' << j;
        }
    }
}

TEST(Cut, CoalescedLinesGoToTheEventSplitterFirst)
{
    TTurnstileFixture fixture;
    fixture.port->feed("#01AOne\r$01AX\r#01ATwo\r$01AY\r");
    fixture.trace.expect({read("$01AX"), read("$01AY"), read("#01AOne"), heard("01A", "One"), read("#01ATwo"),
                          heard("01A", "Two")});
}

TEST(Cut, EachSplitterSeesTheWholeStream)
{
    TTurnstileFixture fixture;
    fixture.port->feed("#01Aa$02AX\r");
    fixture.trace.expect({read("$02AX"), read("#01Aa$02AX"), heard("01A", "a$02AX")});
    fixture.port->feed("$01AX#y\r");
    fixture.trace.expect({read("$01AX#y"), read("#y"), heard("y", "")});
}

TEST(Cut, StartInsideALineIsContent)
{
    TTurnstileFixture fixture;
    fixture.Answers = kAnswers;
    fixture.port->feed("$01AX$02AY\r");
    fixture.trace.expect({read("$01AX$02AY")});
    fixture.port->feed("##\r");
    fixture.trace.expect({read("##"), heard("#", "")});
}

TEST(Cut, NoiseBeforeALineIsDropped)
{
    TTurnstileFixture fixture;
    fixture.port->feed("\r\r\n junk \xFF $01AX\r\n");
    fixture.port->feed("more\r#01AOne\rend");
    fixture.trace.expect({read("$01AX"), read("#01AOne"), heard("01A", "One")});
}

TEST(Cut, EmptyLinesAreLines)
{
    TTurnstileFixture fixture;
    fixture.port->feed("$\r#\r");
    fixture.trace.expect({read("$"), "error [02] Device not found ", read("#"), heard("", "")});
}

TEST(Cut, LineFeedBelongsToTheLine)
{
    TTurnstileFixture fixture;
    fixture.port->feed("#01AOne\n\r");
    fixture.trace.expect({read("#01AOne\n"), heard("01A", "One\n")});
}

TEST(Cut, HighBytesAreTextInTheCodePage)
{
    TTurnstileFixture fixture;
    fixture.port->feed("#01A\xC4\xE0\r");
    fixture.trace.expect({read("#01AДа"), heard("01A", "Да")});
}

TEST(Cut, ZeroBytesAreContent)
{
    TTurnstileFixture fixture;
    fixture.port->feed(QByteArray("#01A\0x\r", 7));
    const QStringList lines = fixture.trace.take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0].size(), read("#01A?x").size());
    EXPECT_EQ(lines[0].at(lines[0].size() - 2), QChar(u'\0'));
}

TEST(Cut, OverlongLineIsDroppedAndReadingResumes)
{
    for (const qsizetype piece : {qsizetype(1'000'000), qsizetype(4'096)}) {
        TTurnstileFixture fixture;
        fixture.port->feedInPieces("$01A" + QByteArray(200'000, 'x') + "\r$01AX\r", piece);
        fixture.trace.expect({read("$01AX")});
    }
}

TEST(Cut, EndlessNoiseDoesNotGrowAnything)
{
    TTurnstileFixture fixture;
    const QByteArray noise(65'536, '$');
    for (int i = 0; i < 100; ++i) {
        fixture.port->feed(noise);
    }
    fixture.port->feed("\r$01AX\r");
    EXPECT_EQ(fixture.trace.take().last(), read("$01AX"));
}

/// Random streams that look enough like the real thing to reach every branch.
class RandomStream
{
public:
    explicit RandomStream(unsigned seed) : FRandom(seed) {}

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(FRandom); }

    QByteArray make(const QByteArrayList& words, int count)
    {
        QByteArray stream;
        for (int i = 0; i < count; ++i) {
            const int choice = below(int(words.size()) + 1);
            stream += choice < words.size() ? words[choice] : QByteArray(1, anyByte(words));
        }
        return stream;
    }

    QByteArrayList cut(const QByteArray& stream, int longest)
    {
        QByteArrayList reads;
        for (qsizetype i = 0; i < stream.size();) {
            reads << stream.mid(i, 1 + below(longest));
            i += reads.last().size();
        }
        return reads;
    }

private:
    /// Any byte but the start of a kind of line that the words leave out.
    char anyByte(const QByteArrayList& words)
    {
        const QByteArray all = words.join();
        const char byte = char(below(256));
        return (byte == '$' || byte == '#') && !all.contains(byte) ? 'x' : byte;
    }

    std::mt19937 FRandom;
};

const QByteArrayList kEventWords{"$01AR",   "$01DR",   "$02A",     "$",         "R",        "P",
                                 "G",       "F",       "\r",       "\r",        "$01AP\r",  "$01AG\r",
                                 "$01DP\r", "$01AF\r", "$02AR7\r", "$000900\r", "12345678", "$0x"};
const QByteArrayList kMessageWords{"#01A",
                                   "#01D",
                                   "#02A",
                                   "#",
                                   "\r",
                                   "\r",
                                   "Relay 1\r",
                                   "HardReset\r",
                                   "Wait-Card\r",
                                   "CRC-ERROR\r",
                                   "#01DGate-Open\r",
                                   "#01DBtn-Activ\r",
                                   "#02AInG-Activ\r",
                                   "btn-activ\r",
                                   "#xyD",
                                   "ReLaY"};

TEST(RandomCut, OneKindOfLineGivesTheSameTrace)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        RandomStream random(seed);
        const QByteArray stream = random.make(seed % 2 ? kEventWords : kMessageWords, 60);
        const QStringList whole = traceOf({stream});
        for (const int longest : {2, 7, 40}) {
            ASSERT_EQ(traceOf(random.cut(stream, longest)), whole) << "seed " << seed;
        }
    }
}

TEST(RandomCut, BothKindsGiveTheSameTraceWhenNoReadEndsTwoLines)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        RandomStream random(seed);
        const QByteArray stream = random.make(kEventWords + kMessageWords, 80);
        QByteArrayList lines;
        for (qsizetype i = 0, end = 0; i < stream.size(); i = end) {
            end = stream.indexOf('\r', i) + 1;
            end = end > 0 ? end : stream.size();
            lines << stream.mid(i, end - i);
        }
        const QStringList byLine = traceOf(lines);
        ASSERT_EQ(traceOf(singleBytes(stream)), byLine) << "seed " << seed;
        QByteArrayList pieces;
        for (const QByteArray& line : lines) {
            pieces += random.cut(line, 5);
        }
        ASSERT_EQ(traceOf(pieces), byLine) << "seed " << seed;
    }
}

TEST(RandomCut, BothKindsGiveTheSameLinesHoweverCut)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        RandomStream random(seed);
        const QByteArray stream = random.make(kEventWords + kMessageWords, 80);
        const QStringList whole = traceOf({stream});
        const QStringList cut = traceOf(random.cut(stream, 30));
        for (const QChar start : {u'$', u'#'}) {
            ASSERT_EQ(linesRead(cut, start), linesRead(whole, start)) << "seed " << seed;
        }
    }
}

TEST(RandomCut, NothingBreaksWhateverTheHostDoes)
{
    for (unsigned seed = 1; seed <= 100; ++seed) {
        RandomStream random(seed);
        TTurnstileFixture fixture;
        for (int mode = 0; mode <= 3; ++mode) {
            fixture.Answers[mode] = random.below(4) == 0 ? QVariant("x") : QVariant(random.below(3) - 1);
        }
        fixture.gate->SetDoorIndex(QStringList{"A", "D", "", "DD"}.at(random.below(4)));
        fixture.gate->SetTimeOut(random.below(10) - 3);
        fixture.gate->SetRelayOpen(random.below(14) - 2);
        int depth = 0;
        fixture.trace.OnLine = [&](const QString&) {
            if (depth < 2 && random.below(10) == 0) {
                ++depth;
                fixture.port->feed(random.make(kEventWords + kMessageWords, 3));
                fixture.clock.advance(random.below(300));
                --depth;
            }
            if (random.below(20) == 0) {
                throw std::runtime_error("no");
            }
        };
        for (const QByteArray& bytes : random.cut(random.make(kEventWords + kMessageWords, 60), 20)) {
            fixture.port->feed(bytes);
            fixture.clock.advance(random.below(1'000));
            if (random.below(15) == 0) {
                fixture.port->Connected() ? fixture.port->Close() : fixture.port->Open();
            }
        }
        fixture.trace.OnLine = {};
        fixture.Answers = {{0, 0}, {1, 1}, {2, 1}, {3, 1}};
        if (fixture.gate->StackItemsCount() > 0) {
            fixture.gate->p_hw_ProtocolIn("x"); // the gate still works, and the table empties itself
        }
        fixture.clock.advance(100'000);
        for (int i = 0; i < fixture.gate->StackItemsCount(); ++i) {
            // what is left cannot time out: a pass of another channel, or in progress at a door
            EXPECT_NE(fixture.statusOf(i), "NEW") << "seed " << seed;
        }
    }
}

} // namespace

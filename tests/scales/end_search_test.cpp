// The end of a packet is looked for at every read, but not in the same bytes again.

#include "wire_samples.h"

#include "support/text_printers.h"
#include "tnv5/scales/end_search.h"

#include <random>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using scales::TEndSearch;
using scales::TFamily;
using scales::TStep;

qint64 looked = 0; // bytes that a counting family was asked about

/// A family that counts the bytes it is asked about.
template <int Type>
TFamily counting()
{
    TFamily family = *scales::familyOf(Type);
    family.findStop = [](TStep step, const QByteArray& buffer) {
        looked += buffer.size();
        return scales::familyOf(Type)->findStop(step, buffer);
    };
    looked = 0;
    return family;
}

/// Hands a packet that does not end over byte by byte.
void feedEndless(const TFamily& family, TStep step, qsizetype size)
{
    TEndSearch search;
    QByteArray buffer;
    while (buffer.size() < size) {
        buffer += '\r'; // may be the first byte of an end
        EXPECT_EQ(search.find(family, step, buffer), 0);
    }
}

TEST(EndSearch, LooksAtEveryByteOfFamilyTwoOnce)
{
    constexpr qsizetype kSize = 50'000;
    feedEndless(counting<2>(), TStep::Ask, kSize);
    EXPECT_EQ(looked, kSize);
    feedEndless(counting<2>(), TStep::Hey, kSize);
    EXPECT_EQ(looked, kSize);
}

TEST(EndSearch, LooksAtEveryByteOfFamilySixTwice)
{
    constexpr qsizetype kSize = 50'000;
    feedEndless(counting<6>(), TStep::Ask, kSize);
    EXPECT_EQ(looked, 2 * kSize - 1); // the last one may be the first half of the end
}

TEST(EndSearch, GivesAllTheBytesToOthers)
{
    TEndSearch search;
    QByteArray buffer;
    for (const TSample& sample : samples()) {
        const TFamily& family = *scales::familyOf(sample.type);
        if (family.endSize > 0) {
            continue;
        }
        search.restart();
        buffer.clear();
        for (int i = 0; i < 40; ++i) {
            buffer += '1';
            EXPECT_EQ(search.find(family, TStep::Ask, buffer), family.findStop(TStep::Ask, buffer))
                << sample.type << ' ' << i;
        }
    }
}

TEST(EndSearch, FindsAnEndThatComesInTwoReads)
{
    const TFamily& family = *scales::familyOf(6);
    TEndSearch search;
    EXPECT_EQ(search.find(family, TStep::Ask, "B1\r"), 0);
    EXPECT_EQ(search.find(family, TStep::Ask, "B1\r\n"), 3);
}

TEST(EndSearch, BeginsAnewWithThePacket)
{
    const TFamily& family = *scales::familyOf(2);
    TEndSearch search;
    EXPECT_EQ(search.find(family, TStep::Ask, "\x01 a long one"), 0);
    search.restart();
    EXPECT_EQ(search.find(family, TStep::Ask, "\x01\x04"), 2);
    EXPECT_EQ(search.find(family, TStep::Ask, "\x01\x04z"), 2); // and after it was found
}

TEST(EndSearch, LooksEverywhereForSomethingElse)
{
    const TFamily& two = *scales::familyOf(2);
    const TFamily& six = *scales::familyOf(6);
    TEndSearch search;
    EXPECT_EQ(search.find(two, TStep::Ask, "B\x06\r\n1"), 0);
    EXPECT_EQ(search.find(two, TStep::Hey, "B\x06\r\n12"), 2);
    search.restart();
    EXPECT_EQ(search.find(two, TStep::Ask, "B\x06\r\n1"), 0);
    EXPECT_EQ(search.find(six, TStep::Ask, "B\x06\r\n12"), 3);
}

TEST(EndSearch, FindsTheSameAsInTheWholeBuffer)
{
    std::mt19937 random(20260301);
    const QByteArray alphabet = "\x01\x04\x06\r\nB123";
    int found = 0;
    for (int round = 0; round < 3'000; ++round) {
        const TFamily& family = *scales::familyOf(random() % 2 == 0 ? 2 : 6);
        const TStep step = random() % 2 == 0 ? TStep::Hey : TStep::Ask;
        TEndSearch search;
        QByteArray buffer;
        for (int read = 0; read < 8; ++read) {
            for (auto size = 1 + random() % 6; size > 0; --size) {
                buffer += alphabet[qsizetype(random() % unsigned(alphabet.size()))];
            }
            const qsizetype expected = family.findStop(step, buffer);
            found += expected > 0 ? 1 : 0;
            ASSERT_EQ(search.find(family, step, buffer), expected) << shown(buffer).toStdString();
        }
    }
    EXPECT_GT(found, 1'000);
}

class LongPackets : public TScalesTest
{
protected:
    /// Family 2, expecting a weight.
    void expectWeight()
    {
        use(2);
        ask();
        feed("\x06");
        trace.take();
    }
};

TEST_F(LongPackets, LogASearchAtEveryRead)
{
    expectWeight();
    const QByteArray packet = "\x01\x02S 01.234kg" + QByteArray(5'000, '*') + '\x04';
    port->feedInPieces(packet, 1);
    EXPECT_EQ(trace.countOf(kStart), 1);
    EXPECT_EQ(trace.countOf(kStop), packet.size());
    EXPECT_EQ(trace.countOf(got(packet)), 1);
    EXPECT_EQ(scales->LastWeight(), 1234);
}

TEST_F(LongPackets, OfDigiEndWhereverTheEndIsCut)
{
    use(6);
    const QByteArray packet = 'B' + QByteArray(5'000, '\r') + "12\r\n";
    port->feedInPieces(packet, 1);
    EXPECT_EQ(trace.countOf(kStop), packet.size());
    EXPECT_EQ(scales->LastWeight(), 12);
}

TEST_F(LongPackets, ARequestInsideOneLooksForTheHandshakeInAllOfIt)
{
    expectWeight();
    feed("\x01"
         "ab\x06"
         "c");
    trace.expect({kStart, kStop});
    ask();
    feed("d");
    trace.expect(QStringList{kStop, got("\x01"
                                        "ab\x06")} +
                 sent("\x11") + QStringList{kStart}); // "cd" is no beginning of a weight
}

TEST_F(LongPackets, AnotherFamilyLooksForItsEndInAllOfIt)
{
    use(6);
    feed("B12\x04"
         "3");
    trace.expect({kStart, kStop});
    scales->SetScalesType(2); // the step is that of a request
    feed("\x06z");
    trace.expect(QStringList{kStop, got("B12\x04"
                                        "3\x06")} +
                 sent("\x11") + QStringList{kStart});
}

TEST_F(LongPackets, OneThatIsTooLongIsDroppedAndTheNextOneFound)
{
    expectWeight();
    port->feedInPieces('\x01' + QByteArray(platform::TComDataPacket::kMaxPacket - 1, '*'), 4'096);
    trace.take();
    feed("\x01\x02S 01.234kg\x04");
    trace.expect(received("\x01\x02S 01.234kg\x04") + QStringList{weighed(1234)});
}

TEST_F(LongPackets, AttachingInsideTheSearchBeginsAnew)
{
    expectWeight();
    feed("\x01" + QByteArray(100, '*'));
    trace.take();
    trace.once(kStop, [this] { scales->SetComport(port.get()); });
    feed("*");
    trace.take();
    feed("\x01\x02S 01.234kg\x04");
    trace.expect(received("\x01\x02S 01.234kg\x04") + QStringList{weighed(1234)});
}

} // namespace

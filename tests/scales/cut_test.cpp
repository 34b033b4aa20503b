// The same packets come out however the stream is cut into reads.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

INSTANTIATE_TEST_SUITE_P(Families, TEveryFamily, ::testing::Range(1, int(samples().size()) + 1));

TEST(Samples, EveryFamilyHasOne)
{
    ASSERT_EQ(samples().size() + 1, scales::families().size());
    for (int type = 1; type <= int(samples().size()); ++type) {
        EXPECT_EQ(sampleOf(type).type, type);
    }
}

/// Lines other than those of the search, which there are as many of as reads.
QStringList withoutSearch(const QStringList& lines)
{
    QStringList result;
    for (const QString& line : lines) {
        if (line != kStart && line != kStop) {
            result << line;
        }
    }
    return result;
}

TEST_P(TEveryFamily, WeighsInOneRead)
{
    use(GetParam());
    EXPECT_EQ(scales->GetWeight(true), 0);
    trace.expect(requested());
    if (!sample().answer.isEmpty()) {
        feed(sample().answer);
        trace.expect(received(sample().answer) + sent(sample().second));
    }
    EXPECT_EQ(scales->LastWeight(), 0);
    feed(sample().bytes);
    trace.expect(weighedAtOnce());
    EXPECT_EQ(scales->LastWeight(), sample().weight);
}

TEST_P(TEveryFamily, WeighsInEveryCut)
{
    if (everyReadIsAPacket()) {
        return;
    }
    const QByteArray& bytes = sample().bytes;
    const QStringList expected = withoutSearch(weighedAtOnce());
    for (qsizetype first = 1; first < bytes.size(); ++first) {
        for (qsizetype second = first; second < bytes.size(); ++second) {
            prepare();
            feed(bytes.first(first));
            if (second > first) {
                feed(bytes.mid(first, second - first));
            }
            EXPECT_EQ(withoutSearch(trace.take()), QStringList()) << first << ' ' << second;
            feed(bytes.mid(second));
            EXPECT_EQ(withoutSearch(trace.take()), expected) << first << ' ' << second;
            EXPECT_EQ(scales->LastWeight(), sample().weight);
        }
    }
}

TEST_P(TEveryFamily, AsksForTheStartOnceAndForTheEndAtEveryByte)
{
    if (everyReadIsAPacket()) {
        return;
    }
    prepare();
    port->feedInPieces(sample().bytes, 1);
    QStringList expected{kStart};
    for (qsizetype i = 0; i < sample().bytes.size(); ++i) {
        expected << kStop;
    }
    expected << got(sample().packet) << sample().decoded;
    if (sample().rest > 0) {
        expected << kStart;
    }
    trace.expect(expected);
}

TEST_P(TEveryFamily, IgnoresGarbageBetweenPackets)
{
    if (anyByteBegins()) {
        return;
    }
    prepare();
    const QByteArray garbage = "\x00\xFF?!\r"_b;
    for (int i = 0; i < 3; ++i) {
        feed(garbage);
        feed(garbage + sample().bytes + garbage);
        EXPECT_EQ(withoutSearch(trace.take()).filter("[03]"), QStringList{got(sample().packet)}) << i;
        EXPECT_EQ(scales->LastWeight(), sample().weight);
    }
}

TEST_P(TEveryFamily, NoiseNeverGrowsNorHarms)
{
    prepare();
    scales->SetOnLog({});
    quint32 seed = 12'345u * quint32(GetParam());
    const auto random = [&] {
        seed = seed * 1'664'525u + 1'013'904'223u;
        return seed >> 24;
    };
    for (int i = 0; i < 2'000; ++i) {
        QByteArray noise;
        for (quint32 size = random() % 40; size > 0; --size) {
            noise += char(random());
        }
        feed(noise);
    }
    trace.take();
    scales->Reset(); // the next one is whole again
    prepare();
    feed(sample().bytes);
    EXPECT_EQ(scales->LastWeight(), sample().weight);
}

TEST(Flood, ManyPacketsInOneReadAreAllServed)
{
    TScalesFixture fixture;
    fixture.use(8);
    int packets = 0;
    fixture.scales->SetOnLog(
        [&](TComponent*, const QString& text) { packets += text.startsWith("[03]") ? 1 : 0; });
    fixture.feed(QByteArray("W1kg").repeated(15'000) + "W7kg");
    EXPECT_EQ(packets, 15'001);
    EXPECT_EQ(fixture.scales->LastWeight(), 7);
}

TEST(MassaCut, AnAnswerInTwoReadsIsLost)
{
    TScalesFixture fixture;
    fixture.use(1);
    fixture.ask();
    fixture.port->feedInPieces("\x80\x00"_b, 1);
    fixture.trace.expect(received("\x80") + received("\x00"_b));
}

} // namespace

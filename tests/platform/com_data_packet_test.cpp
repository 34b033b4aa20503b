#include "tnv5/platform/com_data_packet.h"

#include "support/fixture.h"

#include <memory>
#include <random>
#include <stdexcept>

namespace {

using namespace tnv5::platform;
using tnv5::testkit::TMemoryPort;

class PacketTest : public tnv5::tests::TTestOn<tnv5::tests::TPortFixture>
{
protected:
    PacketTest() : packet(make("$", "\r")) {}

    std::unique_ptr<TComDataPacket> make(const QByteArray& start, const QByteArray& stop)
    {
        auto made = std::make_unique<TComDataPacket>();
        made->SetStartString(start);
        made->SetStopString(stop);
        made->OnPacket = [this](TComDataPacket*, const QByteArray& body) { packets << body; };
        made->SetComPort(port.get());
        return made;
    }

    /// What is cut out of one read.
    QByteArrayList cut(const QByteArray& bytes)
    {
        feed(bytes);
        return std::exchange(packets, {});
    }

    QByteArrayList packets;
    std::unique_ptr<TComDataPacket> packet;
};

using L = QByteArrayList;

TEST_F(PacketTest, DeliversWhatStandsBetweenStartAndStop)
{
    EXPECT_EQ(cut("$01AR123\r"), L({"01AR123"}));
    EXPECT_EQ(cut("noise$1\rmore$2\r\n$3\r"), L({"1", "2", "3"}));
    EXPECT_EQ(packet->buffered(), 0);
}

TEST_F(PacketTest, DropsWhatStandsBeforeAStart)
{
    EXPECT_EQ(cut("01A\r\r\r"), L());
    EXPECT_EQ(packet->buffered(), 0);
    EXPECT_EQ(cut("$x\r"), L({"x"}));
}

TEST_F(PacketTest, AStartInsideAPacketIsContent)
{
    EXPECT_EQ(cut("$01A$02A\r"), L({"01A$02A"}));
}

TEST_F(PacketTest, DeliversEmptyPackets)
{
    EXPECT_EQ(cut("$\r$\r"), L({"", ""}));
}

TEST_F(PacketTest, WaitsForTheRest)
{
    EXPECT_EQ(cut("$01"), L());
    EXPECT_EQ(cut("A"), L());
    EXPECT_EQ(cut("R\r$"), L({"01AR"}));
    EXPECT_EQ(cut("2\r"), L({"2"}));
}

TEST_F(PacketTest, AnUnfinishedPacketSurvivesClosingAndReopening)
{
    cut("$01");
    port->Close();
    port->Open();
    EXPECT_EQ(cut("A\r"), L({"01A"}));
}

TEST_F(PacketTest, AttachingEmptiesTheBufferAlsoToTheSamePort)
{
    cut("$01");
    packet->SetComPort(port.get());
    EXPECT_EQ(packet->buffered(), 0);
    EXPECT_EQ(cut("A\r"), L());
    EXPECT_EQ(cut("$2\r"), L({"2"}));
}

TEST_F(PacketTest, ADetachedSplitterHearsNothing)
{
    packet->SetComPort(nullptr);
    EXPECT_EQ(cut("$1\r"), L());
    EXPECT_EQ(packet->ComPort(), nullptr);
}

TEST_F(PacketTest, LongStartAndStopStrings)
{
    const auto longer = make("<<", "kg\r\n");
    packet->SetComPort(nullptr);
    EXPECT_EQ(cut("a<b<<12kg\rkg\r\n<"), L({"12kg\r"}));
    EXPECT_EQ(longer->buffered(), 1) << "what may be the beginning of a start string is kept";
    EXPECT_EQ(cut("<34k"), L());
    EXPECT_EQ(cut("g\r\n"), L({"34"}));
}

TEST_F(PacketTest, ANewStopStringIsLookedForInWhatIsThereAlready)
{
    EXPECT_EQ(cut("$0050kg"), L());
    packet->SetStopString("kg");
    EXPECT_EQ(cut("x"), L({"0050"}));
}

TEST_F(PacketTest, TheStopStringIsLookedForBehindTheStartString)
{
    const auto same = make("||", "||");
    packet->SetComPort(nullptr);
    EXPECT_EQ(cut("|||||"), L({""}));
    EXPECT_EQ(same->buffered(), 1);
}

TEST_F(PacketTest, EmptyStringsAreNeverFound)
{
    packet->SetStartString("");
    EXPECT_EQ(cut("$1\r"), L());
    EXPECT_EQ(packet->buffered(), 0);
    packet->SetStartString("$");
    packet->SetStopString("");
    EXPECT_EQ(cut("$1\r"), L());
    EXPECT_EQ(packet->buffered(), 3);
}

TEST_F(PacketTest, EachReadGoesWholeToOneSplitterThenToTheNext)
{
    QByteArrayList order;
    packet->OnPacket = [&](TComDataPacket*, const QByteArray& body) { order << "$" + body; };
    const auto second = make("#", "\r");
    second->OnPacket = [&](TComDataPacket*, const QByteArray& body) { order << "#" + body; };
    cut("#1\r$2\r#3\r$4\r");
    EXPECT_EQ(order, L({"$2", "$4", "#1", "#3"}));
}

TEST_F(PacketTest, AHandlerThatPumpsKeepsEverySplittersOrder)
{
    QByteArrayList order;
    bool pumped = false;
    packet->OnPacket = [&](TComDataPacket*, const QByteArray& body) {
        order << "$" + body;
        if (!std::exchange(pumped, true)) {
            feed("$3\r#c\r");
        }
    };
    const auto second = make("#", "\r");
    second->OnPacket = [&](TComDataPacket*, const QByteArray& body) { order << "#" + body; };
    cut("$1\r#a\r$2\r#b\r");
    EXPECT_EQ(order, L({"$1", "#a", "#b", "$2", "$3", "#c"}));
}

TEST_F(PacketTest, AnExceptionEndsThatPacketOnly)
{
    packet->OnPacket = [this](TComDataPacket*, const QByteArray& body) {
        if (body == "bad") {
            throw std::runtime_error("bad packet");
        }
        packets << body;
    };
    EXPECT_EQ(cut("$1\r$bad\r$2\r"), L({"1", "2"}));
    trace.expect({"raised bad packet"});
}

TEST_F(PacketTest, AHandlerMayDestroyItsSplitter)
{
    packet->OnPacket = [this](TComDataPacket*, const QByteArray& body) {
        packets << body;
        packet.reset();
    };
    EXPECT_EQ(cut("$1\r$2\r"), L({"1"}));
    EXPECT_EQ(cut("$3\r"), L());
}

TEST_F(PacketTest, AHandlerMayDestroyThePort)
{
    auto other = std::make_unique<TMemoryPort>();
    packet->SetComPort(other.get());
    packet->OnPacket = [&](TComDataPacket*, const QByteArray& body) {
        packets << body;
        other.reset();
    };
    other->feed("$1\r$2\r");
    EXPECT_EQ(packets, L({"1", "2"})) << "what was read before is served";
    EXPECT_EQ(packet->ComPort(), nullptr);
}

TEST_F(PacketTest, AHandlerMayAttachAnew)
{
    packet->OnPacket = [this](TComDataPacket* self, const QByteArray& body) {
        packets << body;
        self->SetComPort(port.get());
    };
    EXPECT_EQ(cut("$1\r$2\r"), L({"1"})) << "attaching empties the buffer";
    EXPECT_EQ(cut("$3\r"), L({"3"}));
}

TEST_F(PacketTest, SettingTheStringsInsideAHandlerCountsForTheNextPacket)
{
    packet->OnPacket = [this](TComDataPacket* self, const QByteArray& body) {
        packets << body;
        self->SetStartString("#");
    };
    EXPECT_EQ(cut("$1\r$2\r#3\r"), L({"1", "3"}));
}

TEST_F(PacketTest, AnOverlongPacketIsDroppedAndCounted)
{
    const QByteArray tooLong = "$" + QByteArray(TComDataPacket::kMaxPacket - 1, 'x') + "\r";
    EXPECT_EQ(cut(tooLong + "$1\r"), L({"1"}));
    EXPECT_EQ(packet->dropped(), 1);
    const QByteArray longest(TComDataPacket::kMaxPacket - 2, 'x');
    EXPECT_EQ(cut("$" + longest + "\r$2\r"), L({longest, "2"}));
    EXPECT_EQ(packet->dropped(), 1);
}

TEST_F(PacketTest, AnEndlessPacketDoesNotGrowTheBuffer)
{
    cut("$");
    for (int i = 0; i < 1'000; ++i) {
        cut(QByteArray(1'000, 'x'));
        ASSERT_LE(packet->buffered(), TComDataPacket::kMaxPacket);
    }
    EXPECT_EQ(packet->dropped(), 1);
    EXPECT_EQ(cut("\r$1\r"), L({"1"}));
}

TEST_F(PacketTest, OverlongPacketsComeOutTheSameHoweverTheStreamIsCut)
{
    const QByteArray stream =
        "$" + QByteArray(70'000, 'x') + "$in\r$1\r" + "$" + QByteArray(200'000, 'y') + "\r$2\r";
    const QByteArrayList whole = cut(stream);
    EXPECT_EQ(whole, L({"in", "1", "2"}));
    for (const qsizetype size : {1, 7, 4'096, 65'535, 65'536, 65'537}) {
        port->feedInPieces(stream, size);
        EXPECT_EQ(std::exchange(packets, {}), whole) << size;
    }
}

TEST_F(PacketTest, AnyStreamInAnyCutGivesTheSamePackets)
{
    std::mt19937 random(20260105);
    const QByteArray alphabet = "$$\r\r<>ab";
    const auto wide = make("<>", "ab");
    for (int round = 0; round < 500; ++round) {
        QByteArray stream;
        const int length = static_cast<int>(random() % 200);
        for (int i = 0; i < length; ++i) {
            stream += alphabet[static_cast<qsizetype>(random()) % alphabet.size()];
        }
        packet->SetComPort(port.get());
        wide->SetComPort(port.get());
        QByteArrayList narrowWhole;
        QByteArrayList wideWhole;
        packet->OnPacket = [&](TComDataPacket*, const QByteArray& body) { narrowWhole << body; };
        wide->OnPacket = [&](TComDataPacket*, const QByteArray& body) { wideWhole << body; };
        feed(stream);

        packet->SetComPort(port.get());
        wide->SetComPort(port.get());
        QByteArrayList narrowCut;
        QByteArrayList wideCut;
        packet->OnPacket = [&](TComDataPacket*, const QByteArray& body) { narrowCut << body; };
        wide->OnPacket = [&](TComDataPacket*, const QByteArray& body) { wideCut << body; };
        for (qsizetype at = 0; at < stream.size();) {
            const auto size = 1 + static_cast<qsizetype>(random() % 9);
            feed(stream.mid(at, size));
            at += size;
        }
        ASSERT_EQ(narrowCut, narrowWhole) << stream.toStdString();
        ASSERT_EQ(wideCut, wideWhole) << stream.toStdString();
    }
}

// --- custom positions
// -------------------------------------------------------------------------------------------

TEST_F(PacketTest, CustomPositionsCountFromOneAndIncludeTheEnd)
{
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 2; };
    packet->OnCustomStop = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.size() >= 3 ? 3 : 0;
    };
    EXPECT_EQ(cut("abcdefgh"), L({"bcd", "fgh"}));
    EXPECT_EQ(packet->buffered(), 0);
}

TEST_F(PacketTest, CustomHandlersArePresetToLeaveItToTheStrings)
{
    qsizetype startPreset = 0;
    qsizetype stopPreset = 0;
    packet->OnCustomStart = [&](TComDataPacket*, const QByteArray&, qsizetype& pos) { startPreset = pos; };
    packet->OnCustomStop = [&](TComDataPacket*, const QByteArray&, qsizetype& pos) { stopPreset = pos; };
    EXPECT_EQ(cut("x$1\r"), L({"1"}));
    EXPECT_EQ(startPreset, -1);
    EXPECT_EQ(stopPreset, -1);
}

TEST_F(PacketTest, ACustomStartThatFindsNothingEmptiesTheBuffer)
{
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.lastIndexOf('B') + 1;
    };
    EXPECT_EQ(cut("abc"), L());
    EXPECT_EQ(packet->buffered(), 0);
    EXPECT_EQ(cut("BaB1\r"), L({"B1"}));
}

TEST_F(PacketTest, TheStartStaysRememberedWhileTheStopIsNotFound)
{
    int asked = 0;
    packet->OnCustomStart = [&](TComDataPacket*, const QByteArray&, qsizetype& pos) {
        ++asked;
        pos = 1;
    };
    packet->OnCustomStop = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.size() >= 5 ? buffer.size() : 0;
    };
    EXPECT_EQ(cut("ab"), L());
    EXPECT_EQ(cut("cd"), L());
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(cut("ef"), L({"abcdef"}));
}

TEST_F(PacketTest, TheStopHandlerSeesTheBufferFromThePacketOn)
{
    QByteArray seen;
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.indexOf('!') + 1;
    };
    packet->OnCustomStop = [&](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        seen = buffer;
        pos = 0;
    };
    cut("junk!abc");
    EXPECT_EQ(seen, "!abc");
}

TEST_F(PacketTest, StartByPositionAndStopByStringKeepsTheFirstByte)
{
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 1; };
    EXPECT_EQ(cut("$1\r"), L({"$1"}));
}

TEST_F(PacketTest, StartByStringAndStopByPositionKeepsTheStartString)
{
    packet->OnCustomStop = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.size();
    };
    EXPECT_EQ(cut("x$1\r"), L({"$1\r"}));
}

TEST_F(PacketTest, PositionsOutsideTheBufferDoNoHarm)
{
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 100; };
    EXPECT_EQ(cut("abc"), L());
    EXPECT_EQ(packet->buffered(), 0);
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 1; };
    packet->OnCustomStop = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 100; };
    EXPECT_EQ(cut("abc"), L({"abc"}));
    packet->OnCustomStop = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = -7; };
    EXPECT_EQ(cut("abc"), L());
    EXPECT_EQ(packet->buffered(), 3);
}

TEST_F(PacketTest, ACustomHandlerThatRaisesFindsNothing)
{
    packet->OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype&) {
        throw std::runtime_error("start");
    };
    EXPECT_EQ(cut("$1\r"), L());
    trace.expect({"raised start"});
    packet->OnCustomStart = nullptr;
    EXPECT_EQ(cut("$2\r"), L({"2"}));
}

TEST_F(PacketTest, ACustomHandlerMayPumpOrDestroy)
{
    bool pumped = false;
    packet->OnCustomStop = [&](TComDataPacket*, const QByteArray&, qsizetype&) {
        if (!std::exchange(pumped, true)) {
            feed("2\r$3\r");
        }
    };
    EXPECT_EQ(cut("$1"), L({"12", "3"}));
    packet->OnCustomStart = [&](TComDataPacket*, const QByteArray&, qsizetype&) { packet.reset(); };
    EXPECT_EQ(cut("$1\r"), L());
}

} // namespace

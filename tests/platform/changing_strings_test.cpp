// A splitter whose start or stop string is changed while a packet is under way.

#include "tnv5/platform/com_data_packet.h"

#include "support/text_printers.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::platform;
using tnv5::testkit::TMemoryPort;

class ChangingStrings : public testing::Test
{
protected:
    ChangingStrings()
    {
        packet.SetStartString("$");
        packet.SetStopString("\r");
        packet.OnPacket = [this](TComDataPacket*, const QByteArray& body) { packets << body; };
        packet.SetComPort(&port);
    }

    QByteArrayList feed(const QByteArray& bytes)
    {
        port.feed(bytes);
        return std::exchange(packets, {});
    }

    TMemoryPort port;
    TComDataPacket packet;
    QByteArrayList packets;
};

using L = QByteArrayList;

TEST_F(ChangingStrings, ALongerStartTakesNothingFromThePacketUnderWay)
{
    EXPECT_EQ(feed("$ab"), L());
    packet.SetStartString("<<<<");
    EXPECT_EQ(feed("c\r"), L({"abc"}));
    EXPECT_EQ(feed("$d\r<<<<e\r"), L({"e"}));
}

TEST_F(ChangingStrings, AStartLongerThanThePacketDoesNotHideItsEnd)
{
    EXPECT_EQ(feed("$a"), L());
    packet.SetStartString("<<<<<<<<");
    EXPECT_EQ(feed("\r"), L({"a"}));
    EXPECT_EQ(packet.buffered(), 0);
}

TEST_F(ChangingStrings, AShorterStartAddsNothingToThePacketUnderWay)
{
    packet.SetStartString("<<<");
    EXPECT_EQ(feed("<<<ab"), L());
    packet.SetStartString("$");
    EXPECT_EQ(feed("c\r"), L({"abc"}));
    packet.SetStartString("<<<");
    EXPECT_EQ(feed("<<<d"), L());
    packet.SetStartString("");
    EXPECT_EQ(feed("\r"), L({"d"}));
}

TEST_F(ChangingStrings, AStopInsideTheOldStartIsNotTheEnd)
{
    packet.SetStartString("\r$");
    EXPECT_EQ(feed("\r$a"), L());
    packet.SetStartString("");
    EXPECT_EQ(feed("b\r"), L({"ab"}));
}

TEST_F(ChangingStrings, APacketThatAPositionBeganHasNoStartString)
{
    packet.OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 1; };
    EXPECT_EQ(feed("$a"), L());
    packet.OnCustomStart = {};
    packet.SetStartString("#!");
    EXPECT_EQ(feed("\r#!b\r"), L({"$a", "b"}));
}

TEST_F(ChangingStrings, AStartThatChangesWhileTheEndIsLookedForChangesNothingEither)
{
    packet.OnCustomStop = [](TComDataPacket* self, const QByteArray&, qsizetype&) {
        self->SetStartString("##");
    };
    EXPECT_EQ(feed("$a\r##b\r"), L({"a", "b"}));
}

TEST_F(ChangingStrings, OverlongPacketsAreCountedAsBefore)
{
    EXPECT_EQ(feed("$" + QByteArray(TComDataPacket::kMaxPacket - 2, 'x')), L());
    packet.SetStartString("<<<<");
    EXPECT_EQ(feed("\r"), L({QByteArray(TComDataPacket::kMaxPacket - 2, 'x')}));
    EXPECT_EQ(packet.dropped(), 0);
}

} // namespace

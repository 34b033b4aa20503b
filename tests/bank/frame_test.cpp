// The pure functions of the frame, as tables.

#include "tnv5/bank/bank_frame.h"

#include "bank_fixture.h"
#include "tnv5/testing/wire.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::bank;
using tests::framed;
using tests::operator""_b;

QString text(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes);
}

TEST(Frame, StartIsTheLastStx)
{
    EXPECT_EQ(frameStart(""), 0);
    EXPECT_EQ(frameStart("abc"), 0);
    EXPECT_EQ(frameStart("\x02"), 1);
    EXPECT_EQ(frameStart("ab\x02"), 3);
    EXPECT_EQ(frameStart("\x02\x05\x03\x06\x02"
                         "a"),
              5);
}

TEST(Frame, EndIsTheCheckByteBehindTheLastEtx)
{
    const struct
    {
        QByteArray buffer;
        qsizetype end;
    } table[] = {
        {"", 0},
        {"\x02", 0},
        {"\x02"
         "01=1",
         0},
        {"\x02"
         "a\x03",
         0}, // its check byte is awaited
        {"\x02"
         "a\x03"
         "b",
         4},
        {"\x02"
         "a\x03"
         "bcd",
         4}, // what follows is not of this packet
        {"\x02"
         "a\x03"
         "b\x03"
         "cd",
         6},                 // the last one decides
        {"\x02\x03\x03", 3}, // the last byte is the check byte of an earlier ETX
        {"\x02"
         "a\x03"
         "b\x03",
         5}, // the same with something between
        {"\x02\x04", 2},
        {"\x02\x04"
         "ab\x04"
         "c",
         5},                 // the last EOT
        {"\x02\x04\x03", 0}, // an ETX follows: a frame whose check byte is awaited
        {"\x02\x04\x03\x07", 4},
        {"\x02"
         "a\x03"
         "b\x04",
         5}, // an EOT with no ETX behind it
        {"\x02"
         "a\x03\x04",
         4}, // the check byte may be one
        {"\x02\x04\x03\x03", 4},
        {"\x02\x00\x03\x03\x00"_b, 5},
    };
    for (const auto& row : table) {
        EXPECT_EQ(frameEnd(row.buffer), row.end) << testkit::readable(row.buffer).toStdString();
    }
}

TEST(Frame, SoundWithExactlyItsCheckByte)
{
    EXPECT_TRUE(isSound(text("\x02\x05\x03\x06")));
    EXPECT_TRUE(isSound(text("\x02\x04\x03\x07")));
    EXPECT_TRUE(isSound(text("\x02\x03\x03"))); // an empty body
    EXPECT_TRUE(isSound(text(framed("01=4111"))));
    EXPECT_TRUE(isSound(text("\x02\x03\x03")));
    EXPECT_TRUE(isSound(text("\x02\x01\x02\x03\x00"_b))); // the check byte may be 0
    EXPECT_TRUE(isSound(text("\x02\xFC\x03\xFF")));
    EXPECT_FALSE(isSound(text("\x02\x05\x03\x07")));
    EXPECT_FALSE(isSound(text("\x02\x05\x03")));
    EXPECT_FALSE(isSound(text("\x02\x05\x03\x06\x06")));
    EXPECT_FALSE(isSound(text("\x02\x05\x03\x06\x04")));
    EXPECT_FALSE(isSound(text("\x02"
                              "a\x03"
                              "b\x03"
                              "c")));
    EXPECT_FALSE(isSound(text("\x02\x04")));
    EXPECT_FALSE(isSound(text("\x02")));
    EXPECT_FALSE(isSound({}));
}

TEST(Frame, CheckIsOverEveryByteUpToTheFirstEtx)
{
    QByteArray body;
    for (int byte = 4; byte < 256; ++byte) {
        body += char(byte);
    }
    const QByteArray frame = framed(body);
    EXPECT_TRUE(isSound(text(frame)));
    for (qsizetype at = 1; at < frame.size(); ++at) { // the STX is not checked
        QByteArray spoilt = frame;
        spoilt[at] = char(spoilt[at] ^ 0x10);
        EXPECT_FALSE(isSound(text(spoilt))) << at;
    }
}

TEST(Frame, KindsExcludeOneAnotherInTheirOrder)
{
    const struct
    {
        QByteArray packet;
        TPacketKind kind;
    } table[] = {
        {"\x02\x05\x03\x06", TPacketKind::AmountRequest},
        {"\x02"
         "01=1 06=2 03= 10=\x04\x02\x05\x03x",
         TPacketKind::AmountRequest},
        {"\x02\x05 \x03", TPacketKind::Unknown},
        {"\x05\x03\x06", TPacketKind::Unknown},
        {"01=06=", TPacketKind::Answer},
        {"06=\x1C"
         "01=",
         TPacketKind::Answer},
        {"01=03=10=06=\x04", TPacketKind::Answer},
        {"01=03=10=", TPacketKind::CardRead},
        {"10=\x1C"
         "03=\x1C"
         "01=\x04",
         TPacketKind::CardRead},
        {"01=03=", TPacketKind::Unknown},
        {"01=10=", TPacketKind::Unknown},
        {"03=10=", TPacketKind::Unknown},
        {"06=03=10=", TPacketKind::Unknown},
        {"06=03=10=\x04", TPacketKind::EndOfDialogue},
        {"\x04", TPacketKind::EndOfDialogue},
        {"01=\x04", TPacketKind::EndOfDialogue},
        {"", TPacketKind::Unknown},
    };
    for (const auto& row : table) {
        EXPECT_EQ(kindOf(text(row.packet)), row.kind) << testkit::readable(row.packet).toStdString();
    }
}

TEST(Frame, ValueRunsToTheNextSeparator)
{
    const struct
    {
        QByteArray packet;
        QString tag;
        QString value;
    } table[] = {
        {"01=4111\x1C"
         "02=x\x03?",
         "01=", "4111"},
        {"01=4111\x1C"
         "02=x\x03?",
         "02=", "x"},
        {"01=4111\x1C"
         "02=x\x03?",
         "03=", ""},
        {"01=\x1C"
         "02=x\x03?",
         "01=", ""},
        {"01=1\x1C"
         "01=2",
         "01=", "1"}, // the first occurrence wins
        {"02=01=7\x1C"
         "01=2",
         "01=", "7"}, // wherever it stands
        {"1101=7", "01=", "7"},
        {"06=00", "06=", "00"}, // no separator: everything
        {"06=", "06=", ""},
        {"06=a\x04"
         "b\x02"
         "c\x03",
         "06=",
         "a\x04"
         "b\x02"
         "c"}, // only FS and ETX end it
        {"06=1", "", ""},
        {"", "06=", ""},
        {"06", "06=", ""},
    };
    for (const auto& row : table) {
        EXPECT_EQ(valueOf(text(row.packet), row.tag), row.value)
            << testkit::readable(row.packet).toStdString();
    }
}

TEST(Frame, ValueLooksAtAThousandCharacters)
{
    const auto value = [](int length, const QString& after) {
        return valueOf("01=" + QString(length, u'x') + after, u"01=").size();
    };
    EXPECT_EQ(value(999, "\x1C"), 999);
    EXPECT_EQ(value(1000, "\x1C"), 1000);
    EXPECT_EQ(value(1001, "\x1C"), 1000);
    EXPECT_EQ(value(1001, ""), 1000);
    EXPECT_EQ(value(5000, "\x03"), 1000);
    EXPECT_EQ(value(999, ""), 999);
    EXPECT_EQ(value(999, "yz"), 1000);
}

TEST(Frame, AmountIsPaddedToTwelve)
{
    EXPECT_EQ(padded(5), "000000000005");
    EXPECT_EQ(padded(0), "000000000000");
    EXPECT_EQ(padded(1250), "000000001250");
    EXPECT_EQ(padded(std::numeric_limits<int>::max()), "002147483647");
    EXPECT_EQ(padded(-5), "0000000000-5"); // as text
    EXPECT_EQ(padded(std::numeric_limits<int>::min()), "0-2147483648");
    EXPECT_EQ(padded(123'456'789'012), "123456789012");
    EXPECT_EQ(padded(1'234'567'890'123), "1234567890123"); // unpadded
    EXPECT_EQ(padded(-12'345'678'901), "-12345678901");
}

TEST(Frame, AmountMessage)
{
    EXPECT_EQ(amountFrame(5, 0).toLatin1(), "\x02"
                                            "05=000000000005\x03>");
    EXPECT_EQ(amountFrame(1250, 0).toLatin1(), "\x02"
                                               "05=000000001250\x03=");
    EXPECT_EQ(amountFrame(1250, 100).toLatin1(), "\x02"
                                                 "05=000000001250\x1C"
                                                 "41=000000000100\x03\x18");
    EXPECT_EQ(amountFrame(0, 1).toLatin1(), framed("05=000000000000\x1C"
                                                   "41=000000000001"));
    EXPECT_EQ(amountFrame(7, -1).toLatin1(), framed("05=000000000007"));
    EXPECT_EQ(amountFrame(-5, 2).toLatin1(), framed("05=0000000000-5\x1C"
                                                    "41=000000000002"));
}

TEST(Frame, ControlBytes)
{
    EXPECT_EQ(int(kStx), 0x02);
    EXPECT_EQ(int(kEtx), 0x03);
    EXPECT_EQ(int(kEot), 0x04);
    EXPECT_EQ(int(kEnq), 0x05);
    EXPECT_EQ(int(kFs), 0x1C);
    EXPECT_EQ(kAccepted, 0x06);
    EXPECT_EQ(kRefused, '!');
}

} // namespace

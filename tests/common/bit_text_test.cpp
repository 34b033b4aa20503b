// Numbers as texts of bits.

#include "tnv5/common/bit_text.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::common;

TEST(Bits, ByteToTextHasTheMostSignificantBitFirst)
{
    EXPECT_EQ(ByteToBinStr(0), "00000000");
    EXPECT_EQ(ByteToBinStr(1), "00000001");
    EXPECT_EQ(ByteToBinStr(0x80), "10000000");
    EXPECT_EQ(ByteToBinStr(0x39), "00111001");
    EXPECT_EQ(ByteToBinStr(255), "11111111");
}

TEST(Bits, TextToNumberTakesAnyLength)
{
    EXPECT_EQ(BitToint(""), 0);
    EXPECT_EQ(BitToint("1"), 1);
    EXPECT_EQ(BitToint("10"), 2);
    EXPECT_EQ(BitToint("0011000000111001"), 0x3039);
    EXPECT_EQ(BitToint("000000000000000000000000000000000000000101"), 5);
    EXPECT_EQ(BitToint("1000000000000000"), 32768);
    EXPECT_EQ(BitToint("01111111111111111111111111111111"), 0x7FFFFFFF);
}

TEST(Bits, AnyOtherCharacterClearsItsBit)
{
    EXPECT_EQ(BitToint("1x1"), 5);
    EXPECT_EQ(BitToint(" 1"), 1);
    EXPECT_EQ(BitToint("1 "), 2);
    EXPECT_EQ(BitToint("212"), 2);
    EXPECT_EQ(BitToint(QStringLiteral("١")), 0);
    EXPECT_EQ(BinStrToByte("abc1d"), 2);
}

TEST(Bits, TextToByte)
{
    EXPECT_EQ(BinStrToByte(""), 0);
    EXPECT_EQ(BinStrToByte("1"), 1);
    EXPECT_EQ(BinStrToByte("10000000"), 128);
    EXPECT_EQ(BinStrToByte("0000000011111111"), 255);
}

TEST(Bits, EveryByteComesBack)
{
    for (int value = 0; value < 256; ++value) {
        const QString bits = ByteToBinStr(uchar(value));
        EXPECT_EQ(bits.size(), 8);
        EXPECT_EQ(BitToint(bits), value);
        EXPECT_EQ(BinStrToByte(bits), value);
    }
}

TEST(Bits, AVeryLongTextDoesNoHarm)
{
    EXPECT_EQ(BitToint(QString(10'000, u'0') + "110"), 6);
    EXPECT_EQ(BinStrToByte(QString(10'000, u'0') + "110"), 6);
    BitToint(QString(10'000, u'1'));
    BinStrToByte(QString(10'000, u'1'));
}

} // namespace

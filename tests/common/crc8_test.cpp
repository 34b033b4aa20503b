#include "tnv5/common/crc8.h"

#include "support/text_printers.h"
#include "tnv5/platform/code_page.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace tnv5;
using namespace tnv5::common;

static_assert(Crc8("123456789") == 0xF7);
static_assert(Crc8("") == 0xFF);

quint8 bitByBit(const QByteArray& bytes)
{
    unsigned crc = 0xFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x80U) != 0 ? ((crc << 1U) & 0xFFU) ^ 0x31U : crc << 1U;
        }
    }
    return static_cast<quint8>(crc);
}

TEST(Crc8, KnownValues)
{
    EXPECT_EQ(Crc8("123456789"), 0xF7);
    EXPECT_EQ(Crc8(""), 0xFF); // the initial value, not changed at the end
    EXPECT_EQ(Crc8("A"), 0xA0);
    EXPECT_EQ(Crc8(QByteArray(1, '\0')), 0xAC);
    EXPECT_EQ(Crc8("$000AECHO"), 0xB6);
    EXPECT_EQ(Crc8("#0.0.0.0:000APING"), 0x22);
    EXPECT_EQ(Crc8("$000ARL200N"), 0x02);
}

TEST(Crc8, EveryByteAsBitByBit)
{
    for (int value = 0; value < 256; ++value) {
        const QByteArray one(1, static_cast<char>(value));
        EXPECT_EQ(Crc8(one), bitByBit(one)) << value;
        EXPECT_EQ(Crc8("$0" + one + "A"), bitByBit("$0" + one + "A")) << value;
    }
}

TEST(Crc8, RandomBytesAsBitByBit)
{
    std::mt19937 random(20260105);
    for (int round = 0; round < 2'000; ++round) {
        QByteArray bytes(static_cast<qsizetype>(random() % 80), Qt::Uninitialized);
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        ASSERT_EQ(Crc8(bytes), bitByBit(bytes)) << bytes.toHex().toStdString();
    }
}

TEST(Crc8, SeesOrderAndLeadingZeros)
{
    EXPECT_NE(Crc8("12"), Crc8("21"));
    EXPECT_NE(Crc8("\0A"), Crc8("A"));
}

TEST(Crc8Digits, AreTwoUpperCaseHexadecimalDigits)
{
    EXPECT_EQ(Crc8Digits(u"123456789"), "F7");
    EXPECT_EQ(Crc8Digits(u""), "FF");
    EXPECT_EQ(Crc8Digits(u"$000ARL200N"), "02"); // a leading zero stays
    EXPECT_EQ(Crc8Digits(u"$000ARL200N02"), "CC");
}

TEST(Crc8Digits, AreTakenOverTheBytesOfTheCodePage)
{
    EXPECT_EQ(Crc8Digits(u"Привет"), "06");
    EXPECT_EQ(Crc8Digits(u"Ж"), "4D");
    EXPECT_EQ(Crc8Digits(u"Ж"), HexByte(bitByBit("\xC6")));
    EXPECT_EQ(Crc8Digits(u"日"), Crc8Digits(u"?")); // not in the code page
    EXPECT_EQ(Crc8Digits(u"\u00ff"), "47");         // a character, not byte 255
}

TEST(Crc8Digits, FollowTheCodePage)
{
    const QByteArray before = platform::codePage();
    platform::setCodePage("IBM866");
    const QString digits = Crc8Digits(u"Ж");
    platform::setCodePage(before);
    EXPECT_EQ(digits, HexByte(bitByBit("\x86")));
}

TEST(HexByte, EveryValue)
{
    for (int value = 0; value < 256; ++value) {
        const QString expected = QString::asprintf("%02X", static_cast<unsigned>(value));
        EXPECT_EQ(HexByte(static_cast<quint8>(value)), expected);
    }
}

} // namespace

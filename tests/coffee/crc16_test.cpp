#include "tnv5/coffee/crc16.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace tnv5::coffee;

static_assert(Crc16("123456789") == 0xBB3D);
static_assert(Crc16("") == 0);
static_assert(crc16_table.size() == 256);

/// Without a table, from the polynomial as it is written, most significant bit first, and turned round after.
quint16 bitByBit(const QByteArray& bytes)
{
    const auto turned = [](unsigned value, int width) {
        unsigned result = 0;
        for (int bit = 0; bit < width; ++bit) {
            result |= (value >> bit & 1U) << (width - 1 - bit);
        }
        return result;
    };
    unsigned crc = 0;
    for (const char byte : bytes) {
        crc ^= turned(static_cast<quint8>(byte), 8) << 8U;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000U) != 0 ? ((crc << 1U) ^ 0x8005U) & 0xFFFFU : crc << 1U;
        }
    }
    return static_cast<quint16>(turned(crc, 16));
}

TEST(Crc16Table, KnownEntries)
{
    EXPECT_EQ(crc16_table[0], 0x0000);
    EXPECT_EQ(crc16_table[1], 0xC0C1);
    EXPECT_EQ(crc16_table[2], 0xC181);
    EXPECT_EQ(crc16_table[128], 0xA001);
    EXPECT_EQ(crc16_table[255], 0x4040);
}

TEST(Crc16Table, EveryEntryIsTheCrcOfItsByte)
{
    for (int value = 0; value < 256; ++value) {
        const QByteArray one(1, static_cast<char>(value));
        EXPECT_EQ(crc16_table[static_cast<std::size_t>(value)], bitByBit(one)) << value;
        EXPECT_EQ(Crc16(one), bitByBit(one)) << value;
    }
}

TEST(Crc16, KnownValues)
{
    EXPECT_EQ(Crc16("123456789"), 0xBB3D);
    EXPECT_EQ(Crc16(""), 0x0000);
    EXPECT_EQ(Crc16("A"), 0x30C0);
    EXPECT_EQ(Crc16(QByteArray(14, '\0')), 0x0000);
    EXPECT_NE(Crc16("12"), Crc16("21"));
}

TEST(Crc16, RandomBytesAsBitByBit)
{
    std::mt19937 random(20260105);
    for (int round = 0; round < 2'000; ++round) {
        QByteArray bytes(static_cast<qsizetype>(random() % 40), Qt::Uninitialized);
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        ASSERT_EQ(Crc16(bytes), bitByBit(bytes)) << bytes.toHex().toStdString();
    }
}

} // namespace

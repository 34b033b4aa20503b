#include "tnv5/coffee/qr_block.h"

#include "tnv5/coffee/crc16.h"

#include <QByteArray>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using namespace tnv5::coffee;

constexpr int kLargest = std::numeric_limits<int>::max();
constexpr int kSmallest = std::numeric_limits<int>::min();

/// Bytes `first` to `last` of the block, as hexadecimal digits.
std::string bytesOf(const TBlock& block, int first, int last)
{
    const QByteArray bytes(reinterpret_cast<const char*>(block.data()), qsizetype(block.size()));
    return bytes.mid(first, last - first + 1).toHex().toStdString();
}

std::string partsOf(int part1, int part2, int part3)
{
    return bytesOf(QrBlock(part1, part2, part3, 0, 0, 0), 1, 3);
}

std::string valuesOf(int value1, int value2)
{
    return bytesOf(QrBlock(0, 0, 0, value1, value2, 0), 9, 12);
}

TEST(QrBlock, WholeBlocks)
{
    EXPECT_EQ(bytesOf(QrBlock(1, 2, 3, 250, 1, 1'767'614'400), 0, 15), "83004203695ba7c00100fa0001005692");
    EXPECT_EQ(bytesOf(QrBlock(0, 0, 0, 0, 0, 0), 0, 15).substr(0, 28), "8300000000000000010000000000");
    EXPECT_EQ(bytesOf(QrBlock(-1, -1, -1, -1, -1, 0xFFFFFFFF), 0, 15).substr(0, 28),
              "83ffffffffffffff01ffffffff00");
}

TEST(QrBlock, PartsShareThreeBytes)
{
    EXPECT_EQ(partsOf(1, 0, 0), "004000");
    EXPECT_EQ(partsOf(0, 1, 0), "000100");
    EXPECT_EQ(partsOf(0, 0, 1), "000001");
    EXPECT_EQ(partsOf(512, 0, 0), "800000");
    EXPECT_EQ(partsOf(0, 32, 0), "002000");
    EXPECT_EQ(partsOf(0, 0, 128), "000080");
    EXPECT_EQ(partsOf(1023, 0, 0), "ffc000");
    EXPECT_EQ(partsOf(0, 63, 0), "003f00");
    EXPECT_EQ(partsOf(0, 0, 255), "0000ff");
    EXPECT_EQ(partsOf(1023, 63, 255), "ffffff");
}

TEST(QrBlock, HigherBitsOfPartsAreDropped)
{
    EXPECT_EQ(partsOf(1024, 0, 0), partsOf(0, 0, 0));
    EXPECT_EQ(partsOf(1025, 0, 0), partsOf(1, 0, 0));
    EXPECT_EQ(partsOf(0, 64, 0), "000000");
    EXPECT_EQ(partsOf(0, 65, 0), "000100");
    EXPECT_EQ(partsOf(0, 0, 256), "000000");
    EXPECT_EQ(partsOf(0, 0, 257), "000001");
    EXPECT_EQ(partsOf(kLargest, kLargest, kLargest), "ffffff");
    EXPECT_EQ(partsOf(kSmallest, kSmallest, kSmallest), "000000");
    EXPECT_EQ(partsOf(-1, 0, 0), "ffc000");
    EXPECT_EQ(partsOf(0, -1, 0), "003f00");
    EXPECT_EQ(partsOf(0, 0, -1), "0000ff");
    EXPECT_EQ(partsOf(-1023, -63, -255), "004101");
}

TEST(QrBlock, ValuesAreTwoBytesEach)
{
    EXPECT_EQ(valuesOf(0x1234, 0xABCD), "1234abcd");
    EXPECT_EQ(valuesOf(1, 0), "00010000");
    EXPECT_EQ(valuesOf(0, 1), "00000001");
    EXPECT_EQ(valuesOf(0x8000, 0x8000), "80008000");
    EXPECT_EQ(valuesOf(65536, 65536), "00000000");
    EXPECT_EQ(valuesOf(65537, 131'074), "00010002");
    EXPECT_EQ(valuesOf(-1, -2), "fffffffe");
    EXPECT_EQ(valuesOf(kLargest, kSmallest), "ffff0000");
}

TEST(QrBlock, StampIsFourBytes)
{
    const auto stampOf = [](quint32 stamp) { return bytesOf(QrBlock(0, 0, 0, 0, 0, stamp), 4, 7); };
    EXPECT_EQ(stampOf(0), "00000000");
    EXPECT_EQ(stampOf(1), "00000001");
    EXPECT_EQ(stampOf(0x12345678), "12345678");
    EXPECT_EQ(stampOf(0x80000000), "80000000");
    EXPECT_EQ(stampOf(0xFFFFFFFF), "ffffffff");
}

TEST(QrBlock, FixedBytesAndCrcWhateverTheNumbers)
{
    std::mt19937 random(20260105);
    const auto any = [&] { return static_cast<int>(random()); };
    for (int round = 0; round < 2'000; ++round) {
        const TBlock block = QrBlock(any(), any(), any(), any(), any(), random());
        ASSERT_EQ(block[0], 0x83);
        ASSERT_EQ(block[8], 0x01);
        ASSERT_EQ(block[13], 0x00);
        ASSERT_EQ(block[14] << 8 | block[15], Crc16({block.data(), 14}));
    }
}

TEST(QrBlock, CrcKeepsItsLeadingZeros)
{
    const quint32 noon = 1'767'614'400;
    EXPECT_EQ(bytesOf(QrBlock(1, 2, 3, 4096, 16384, noon), 14, 15), "0963");
    EXPECT_EQ(bytesOf(QrBlock(1, 2, 3, 256, 24580, noon), 14, 15), "009c");
    EXPECT_EQ(bytesOf(QrBlock(1, 2, 3, 16, 25088, noon), 14, 15), "0006");
    EXPECT_EQ(bytesOf(QrBlock(1, 2, 3, 1, 41924, noon), 14, 15), "0000");
}

TEST(UnixStamp, StartsIn1970)
{
    EXPECT_EQ(UnixStartDate, 25'569.0);
    EXPECT_EQ(UnixStamp(UnixStartDate), 0U);
    EXPECT_EQ(UnixStamp(UnixStartDate + 1.0), 86'400U);
    EXPECT_EQ(UnixStamp(46'027.5), 1'767'614'400U);
}

TEST(UnixStamp, IsTheNearestSecond)
{
    constexpr double kSecond = 1.0 / 86'400;
    EXPECT_EQ(UnixStamp(46'027.5 + 0.499 * kSecond), 1'767'614'400U);
    EXPECT_EQ(UnixStamp(46'027.5 + 0.501 * kSecond), 1'767'614'401U);
    EXPECT_EQ(UnixStamp(46'027.5 - 0.499 * kSecond), 1'767'614'400U);
    EXPECT_EQ(UnixStamp(46'027.5 - 0.501 * kSecond), 1'767'614'399U);
    EXPECT_EQ(UnixStamp(UnixStartDate - 0.499 * kSecond), 0U);
    EXPECT_EQ(UnixStamp(UnixStartDate - 0.501 * kSecond), 0xFFFFFFFFU);
}

TEST(UnixStamp, AnExactHalfGoesToTheEvenSecond)
{
    constexpr double k337AndAHalf = 1.0 / 256; // seconds as a fraction of a day that a double holds exactly
    const auto half = [&](int odd) { return UnixStartDate + odd * k337AndAHalf; };
    EXPECT_EQ((half(1) - UnixStartDate) * 86'400, 337.5);
    EXPECT_EQ(UnixStamp(half(1)), 338U);
    EXPECT_EQ((half(3) - UnixStartDate) * 86'400, 1012.5);
    EXPECT_EQ(UnixStamp(half(3)), 1012U);
    EXPECT_EQ(UnixStamp(half(-1)), 0U - 338U);
    EXPECT_EQ(UnixStamp(half(-3)), 0U - 1012U);
}

TEST(UnixStamp, TakesTheDoubleAsItStands)
{
    // the nearest doubles below and above half a second past noon: no allowance for noise
    const double half = 46'027.5 + 0.5 / 86'400;
    const double below = std::nextafter(std::nextafter(half, 0), 0);
    const double above = std::nextafter(std::nextafter(half, 50'000), 50'000);
    EXPECT_EQ(UnixStamp(below), 1'767'614'400U);
    EXPECT_EQ(UnixStamp(above), 1'767'614'401U);
}

TEST(UnixStamp, KeepsTheLow32Bits)
{
    constexpr double kStampsInDays = 4'294'967'296.0 / 86'400;
    EXPECT_EQ(UnixStamp(UnixStartDate - 1.0), 0U - 86'400U);
    EXPECT_EQ(UnixStamp(0.0), 0U - 25'569U * 86'400U);
    EXPECT_EQ(UnixStamp(-1000.0), 0U - 26'569U * 86'400U);
    EXPECT_EQ(UnixStamp(UnixStartDate + kStampsInDays), 0U);
    EXPECT_EQ(UnixStamp(UnixStartDate + kStampsInDays + 1.0), 86'400U);
    EXPECT_EQ(UnixStamp(UnixStartDate + 49'710.0), 4'294'944'000U);
    EXPECT_EQ(UnixStamp(UnixStartDate + 49'711.0), 63'104U);
    EXPECT_EQ(UnixStamp(UnixStartDate - 49'711.0), 0U - 63'104U);
    EXPECT_EQ(UnixStamp(UnixStartDate + 1e8), static_cast<quint32>(8'640'000'000'000));
}

TEST(UnixStamp, AddsMinutes)
{
    EXPECT_EQ(UnixStamp(46'027.5, 0), 1'767'614'400U);
    EXPECT_EQ(UnixStamp(46'027.5, 3), 1'767'614'580U);
    EXPECT_EQ(UnixStamp(46'027.5, -120), 1'767'607'200U);
    EXPECT_EQ(UnixStamp(UnixStartDate, -1), 0U - 60U);
    EXPECT_EQ(UnixStamp(UnixStartDate, kLargest), static_cast<quint32>(60LL * kLargest));
    EXPECT_EQ(UnixStamp(UnixStartDate, kSmallest), static_cast<quint32>(60LL * kSmallest));
}

TEST(UnixStamp, WhatIsNoTimeIsNoTrouble)
{
    EXPECT_EQ(UnixStamp(std::numeric_limits<double>::quiet_NaN()), 0U);
    EXPECT_EQ(UnixStamp(std::numeric_limits<double>::infinity()), 0U);
    EXPECT_EQ(UnixStamp(-std::numeric_limits<double>::infinity()), 0U);
    EXPECT_EQ(UnixStamp(std::numeric_limits<double>::max()), 0U); // more seconds than a double can hold
    EXPECT_EQ(UnixStamp(std::ldexp(1.0, 200)), 0U);
}

} // namespace

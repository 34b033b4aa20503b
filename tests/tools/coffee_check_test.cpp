#include "tnv5/tools/coffee_check.h"

#include "support/text_printers.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace tnv5;
using namespace tnv5::tools;

const QString kKey = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c");
const QString kNoonText =
    QStringLiteral("O45931B4A9A54D107AFCD2FC67ED244D9S"); // 1 2 3 250 1, noon of 2026-01-05

TEST(CoffeeCheck, ShowsWhatIsInAText)
{
    const TCoffeeFields fields = checkCoffeeText(kNoonText, kKey);
    EXPECT_EQ(fields.Part1, 1);
    EXPECT_EQ(fields.Part2, 2);
    EXPECT_EQ(fields.Part3, 3);
    EXPECT_EQ(fields.Value1, 250);
    EXPECT_EQ(fields.Value2, 1);
    EXPECT_EQ(fields.Stamp, 1'767'614'400U);
    EXPECT_TRUE(fields.FixedBytes);
    EXPECT_TRUE(fields.Crc);
    EXPECT_TRUE(fields.good());
}

TEST(CoffeeCheck, ShowsWhateverWasPutIn)
{
    std::mt19937 random(20260105);
    testkit::TManualClock clock;
    for (int round = 0; round < 500; ++round) {
        const auto any = [&] { return static_cast<int>(random()); };
        const int part1 = any(), part2 = any(), part3 = any(), value1 = any(), value2 = any();
        clock.advance(1'000LL * (random() % 100'000'000));
        const QByteArray text = coffee::_qrcodestr(part1, part2, part3, value1, value2, kKey);
        const TCoffeeFields fields = checkCoffeeText(QString::fromLatin1(text), kKey);
        ASSERT_EQ(fields.Part1, part1 & 1023);
        ASSERT_EQ(fields.Part2, part2 & 63);
        ASSERT_EQ(fields.Part3, part3 & 255);
        ASSERT_EQ(fields.Value1, value1 & 65535);
        ASSERT_EQ(fields.Value2, value2 & 65535);
        ASSERT_EQ(fields.Stamp, coffee::UnixStamp(platform::Now()));
        ASSERT_TRUE(fields.good());
    }
}

TEST(CoffeeCheck, AnotherKeyShows)
{
    const TCoffeeFields fields = checkCoffeeText(kNoonText, QString(32, u'0'));
    EXPECT_FALSE(fields.Crc);
    EXPECT_FALSE(fields.FixedBytes);
    EXPECT_FALSE(fields.good());
}

/// Deciphers texts whose blocks are 83...01......00 with one thing wrong; made with
/// printf BLOCK | xxd -r -p | openssl enc -aes-128-ecb -nopad -K KEY | xxd -p -u
TEST(CoffeeCheck, FixedBytesAndCrcAreToldApart)
{
    const TCoffeeFields crcOnly = checkCoffeeText(QStringLiteral("O4E1A3B6A137051461C78B597913920CBS"), kKey);
    EXPECT_TRUE(crcOnly.FixedBytes);
    EXPECT_FALSE(crcOnly.Crc);
    EXPECT_FALSE(crcOnly.good());
    for (const char* text : {"O03F92C2892C543A781FCAB88A02BB455S", "O2F409B602E3379E337FEA90A9A47A93BS",
                             "O4DB2F9BC0007D6299F181254A7D09FD0S"}) {
        const TCoffeeFields fields = checkCoffeeText(QString::fromLatin1(text), kKey);
        EXPECT_FALSE(fields.FixedBytes) << text;
        EXPECT_TRUE(fields.Crc) << text;
        EXPECT_FALSE(fields.good()) << text;
        EXPECT_EQ(fields.Value1, 250) << text;
    }
}

TEST(CoffeeCheck, RefusesWhatIsNoText)
{
    for (const char* text :
         {"", "O", "OS", "O45931B4A9A54D107AFCD2FC67ED244D9", "45931B4A9A54D107AFCD2FC67ED244D9S",
          "o45931B4A9A54D107AFCD2FC67ED244D9S", "O45931B4A9A54D107AFCD2FC67ED244D9s",
          "O45931b4a9a54d107afcd2fc67ed244d9S", "O45931B4A9A54D107AFCD2FC67ED244DS",
          "O45931B4A9A54D107AFCD2FC67ED244D90S", "O45931B4A9A54D107AFCD2FC67ED244DGS",
          " O45931B4A9A54D107AFCD2FC67ED244D9S", "O45931B4A9A54D107AFCD2FC67ED244D9S\n"}) {
        EXPECT_THROW(checkCoffeeText(QString::fromLatin1(text), kKey), ECoffeeText) << text;
    }
}

TEST(CoffeeCheck, RefusesWhatIsNoKey)
{
    EXPECT_THROW(checkCoffeeText(kNoonText, kKey + u'x'), platform::EConvertError);
}

TEST(CoffeeCheck, StampsAsDateAndTime)
{
    EXPECT_EQ(stampText(0), QStringLiteral("1970-01-01 00:00:00"));
    EXPECT_EQ(stampText(1'767'614'400), QStringLiteral("2026-01-05 12:00:00"));
    EXPECT_EQ(stampText(0xFFFFFFFF), QStringLiteral("2106-02-07 06:28:15"));
}

TEST(CoffeeCheck, AgeOfAStamp)
{
    const auto ageOf = [](qint64 seconds) {
        return ageText(1'000'000'000, quint32(1'000'000'000 + seconds));
    };
    EXPECT_EQ(ageOf(0), QStringLiteral("0 s ago"));
    EXPECT_EQ(ageOf(1), QStringLiteral("1 s ago"));
    EXPECT_EQ(ageOf(119), QStringLiteral("119 s ago"));
    EXPECT_EQ(ageOf(120), QStringLiteral("2 min ago"));
    EXPECT_EQ(ageOf(7'199), QStringLiteral("119 min ago"));
    EXPECT_EQ(ageOf(7'200), QStringLiteral("2 h ago"));
    EXPECT_EQ(ageOf(172'799), QStringLiteral("47 h ago"));
    EXPECT_EQ(ageOf(172'800), QStringLiteral("2 days ago"));
    EXPECT_EQ(ageOf(-1), QStringLiteral("in 1 s"));
    EXPECT_EQ(ageOf(-7'200), QStringLiteral("in 2 h"));
    EXPECT_EQ(ageText(0xFFFFFFFF, 9), QStringLiteral("10 s ago")); // across 2106
    EXPECT_EQ(ageText(0x80000000, 0), QStringLiteral("in 24855 days"));
}

} // namespace

#include "sim/classic_command.h"
#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::sim;

QByteArray checksum(const char* command)
{
    return classicChecksum(command).value_or("none");
}

TEST(ClassicChecksum, KnownValues)
{
    EXPECT_EQ(checksum("$01A103"), "66");
    EXPECT_EQ(checksum("$01A000"), "64");
    EXPECT_EQ(checksum("$000900"), "1D");
    EXPECT_EQ(checksum("$02D323"), "60");
}

TEST(ClassicChecksum, HasTwoCharactersEvenForASmallSum)
{
    EXPECT_EQ(checksum("$36\x03"
                       "003"),
              "00");
    EXPECT_EQ(checksum("$00.000"), "0A");
}

TEST(ClassicChecksum, TheAddressDigitsCountAsOneDecimalNumber)
{
    EXPECT_EQ(checksum("$99A000"), "06"); // 36 xor 99 xor 65
}

TEST(ClassicChecksum, NeedsSevenCharactersAndDigitsInTheirPlaces)
{
    for (const char* wrong : {"", "$", "$01A10", "$01A1034", "$X1A103", "$0XA103", "$01AX03", "$01A1X3",
                              "$01A10X", "$01A10:", "$01A10/"}) {
        EXPECT_FALSE(classicChecksum(wrong)) << wrong;
    }
}

TEST(ClassicCommand, IsCutIntoItsFields)
{
    const auto command = parseClassicCommand("$02D32360");
    ASSERT_TRUE(command);
    EXPECT_EQ(command->Address, "02D");
    EXPECT_EQ(command->Relay, 3);
    EXPECT_EQ(command->Mode, 2);
    EXPECT_EQ(command->Time, 3);
    EXPECT_FALSE(command->broadcast());
    EXPECT_TRUE(parseClassicCommand("$0009001D")->broadcast());
}

TEST(ClassicCommand, EverySingleWrongCharacterIsNoticed)
{
    const QByteArray right("$01A10366");
    ASSERT_TRUE(parseClassicCommand(right));
    for (qsizetype at = 0; at < right.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            QByteArray wrong = right;
            wrong[at] = char(value);
            EXPECT_EQ(parseClassicCommand(wrong).has_value(), wrong == right) << at << ' ' << value;
        }
    }
}

TEST(ClassicCommand, TheChecksumIsInUpperCase)
{
    EXPECT_FALSE(parseClassicCommand("$0009001d"));
}

TEST(ClassicCommand, HasOneCharacterForEachField)
{
    EXPECT_FALSE(parseClassicCommand("$01A120367")); // relay 12
    EXPECT_FALSE(parseClassicCommand("$01A1036"));
    EXPECT_FALSE(parseClassicCommand(""));
}

TEST(ClassicFramer, GivesTheSameCommandsHoweverTheBytesAreCut)
{
    const QByteArray bytes("noise\r$01A10366\r\n\xff$$000$0009001D\r#x\r$\r");
    const QByteArrayList expected{"$01A10366", "$0009001D", "$"};
    for (qsizetype first = 0; first <= bytes.size(); ++first) {
        for (qsizetype second = first; second <= bytes.size(); ++second) {
            TClassicFramer framer;
            QByteArrayList commands = framer.take(bytes.left(first));
            commands += framer.take(bytes.mid(first, second - first));
            commands += framer.take(bytes.mid(second));
            EXPECT_EQ(commands, expected);
        }
    }
}

TEST(ClassicFramer, SkipsWhatGoesOnTooLong)
{
    TClassicFramer framer;
    const qsizetype flood = 1'000'000;
    EXPECT_TRUE(framer.take("$" + QByteArray(flood, 'x') + "\r").isEmpty());
    EXPECT_EQ(framer.skippedBytes(), flood + 2);
    EXPECT_EQ(framer.take("$01A10366\r"), QByteArrayList{"$01A10366"});
    const QByteArray longest = "$" + QByteArray(TClassicFramer::kMaxCommand - 1, '1');
    EXPECT_EQ(framer.take(longest + '\r'), QByteArrayList{longest});
}

} // namespace

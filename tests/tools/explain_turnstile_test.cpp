#include "support/text_printers.h"
#include "tnv5/tools/explanation.h"

#include <gtest/gtest.h>
#include <random>

namespace tnv5::tools {

namespace {

struct TRow
{
    const char* piece;
    char direction;
    TChecksum checksum;
    const char* meaning;
};

constexpr TChecksum kNone = TChecksum::None;
constexpr TChecksum kRight = TChecksum::Right;
constexpr TChecksum kWrong = TChecksum::Wrong;

const TRow kRows[] = {
    {"$01AR12345678\r", '<', kNone, "card 12345678 read at turnstile 01A"},
    {"$02DR5\r", '<', kNone, "card 5 read at door 02D"},
    {"$02ER\r", '<', kNone, "card  read at channel 02E"},
    {"$01AP\r", '<', kNone, "passage under way at turnstile 01A"},
    {"$01AG\r", '<', kNone, "passage done at turnstile 01A"},
    {"$01AF\r", '<', kNone, "nobody came at turnstile 01A"},
    {"$01AX1\r", '<', kNone, "turnstile 01A reports an unknown event"},
    {"$000900\r", '<', kNone, "request for a status poll"},
    {"#01AHardReset\r", '<', kNone, "turnstile 01A has started"},
    {"#01Await-card\r", '<', kNone, "turnstile 01A waits for a card"},
    {"#02DRelay 3\r", '<', kNone, "door 02D confirms a command"},
    {"#01ACRC-ERROR\r", '<', kNone, "turnstile 01A got a damaged command"},
    {"#02DGate-Open\r", '<', kNone, "door 02D is open"},
    {"#02DBtn-Activ\r", '<', kNone, "door 02D: exit button pressed"},
    {"#01AInG-Activ\r", '<', kNone, "turnstile 01A: somebody is in the gate"},
    {"#01AHello\r", '<', kNone, "turnstile 01A says \"Hello\""},
    {"$0009001D\r", '>', kRight, "asks all controllers for their state"},
    {"$01A10366\r", '>', kRight, "open turnstile 01A for 3, relay 1"},
    {"$01A10367\r", '>', kWrong, "open turnstile 01A for 3, relay 1"},
    {"$02D32360\r", '>', kRight, "open door 02D for 3, relay 3"},
    {"$01A00064\r", '>', kRight, "refuse at turnstile 01A"},
    {"$01A20066\r", '>', kRight, "switch relay 2 of turnstile 01A"},
    {"$02D32063\r", '>', kRight, "switch relay 3 of door 02D on"},
    {"$02D30061\r", '>', kRight, "switch relay 3 of door 02D off"},
    {"$01A120367\r", '>', kRight, "command 1203 to turnstile 01A (a number above 9 in it)"},
    {"$XXA10366\r", '>', kWrong, "open turnstile XXA for 3, relay 1"},
    {"$01A10366", '?', kNone, "no line of a classic controller"},
    {"noise\r", '?', kNone, "no line of a classic controller"},
    {"$01\r", '?', kNone, "no line of a classic controller"},
    {"", '?', kNone, "no line of a classic controller"},
};

TEST(ExplainTurnstile, EveryKindOfLine)
{
    for (const TRow& row : kRows) {
        const TExplanation told = explainTurnstile(row.piece);
        EXPECT_EQ(directionMark(told.Direction), row.direction) << row.piece;
        EXPECT_EQ(told.Checksum, row.checksum) << row.piece;
        EXPECT_EQ(told.Meaning, QString::fromLatin1(row.meaning)) << row.piece;
    }
}

TEST(ExplainTurnstile, RandomBytesAreAlwaysExplained)
{
    std::mt19937 random(11);
    for (int i = 0; i < 50'000; ++i) {
        QByteArray piece = i % 2 == 0 ? "$" : "#";
        for (unsigned length = random() % 16; length > 0; --length) {
            piece += static_cast<char>(i % 3 == 0 ? random() % 256 : '0' + random() % 20);
        }
        EXPECT_FALSE(explainTurnstile(piece).Meaning.isEmpty());
        EXPECT_FALSE(explainTurnstile(piece + '\r').Meaning.isEmpty());
    }
}

TEST(ExplanationLine, ShowsBytesAsTheyAre)
{
    const QByteArray piece = "$01AR%1%2%3%4\r";
    EXPECT_EQ(
        explanationLine(piece, explainTurnstile(piece)),
        QStringLiteral("< -     $01AR%1%2%3%4\\r                   card %1%2%3%4 read at turnstile 01A"));
}

} // namespace
} // namespace tnv5::tools

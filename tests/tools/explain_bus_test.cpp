#include "support/text_printers.h"
#include "tnv5/tools/explanation.h"

#include "tnv5/common/crc8.h"

#include <gtest/gtest.h>
#include <random>

namespace tnv5::tools {

namespace {

constexpr TChecksum kNone = TChecksum::None;
constexpr TChecksum kRight = TChecksum::Right;
constexpr TChecksum kWrong = TChecksum::Wrong;

QByteArray checked(const QByteArray& line)
{
    return line + common::HexByte(common::Crc8(line)).toLatin1();
}

void expectMeaning(const QByteArray& piece, char direction, TChecksum checksum, const char* meaning)
{
    const TExplanation told = explainBus(piece);
    EXPECT_EQ(directionMark(told.Direction), direction) << piece.constData();
    EXPECT_EQ(told.Checksum, checksum) << piece.constData();
    EXPECT_EQ(told.Meaning, QString::fromUtf8(meaning)) << piece.constData();
}

struct TLine
{
    const char* line;
    const char* meaning;
};

} // namespace

TEST(ExplainBus, Commands)
{
    const TLine lines[] = {
        {"$000AECHO", "answers the ping of board 000A"},
        {"$000AHW", "asks board 000A for its display and relays"},
        {"$000AGO", "open board 000A"},
        {"$000APH", "refuse at board 000A"},
        {"$000ASDG", "SDG command to board 000A"},
        {"$000ACS", "clear the display of board 000A"},
        {"$000ARL200N", "switch relay 2 of board 000A"},
        {"$000BRL120N", "switch relay 1 of board 000B for 20"},
        {"$000BRL320N", "alarm at board 000B: relay 3 for 20"},
        {"$000APSN1002  Hello $5 ", "display row 2 of board 000A shows \"  Hello $5 \""},
        {"$000BFL1", "light at boards 000A and 000B"},
        {"$000BES", "sound at boards 000A and 000B"},
    };
    for (const TLine& each : lines) {
        expectMeaning(checked(each.line), '>', kRight, each.meaning);
        expectMeaning(each.line + QByteArray("zz"), '>', kWrong, each.meaning);
    }
    expectMeaning(checked("$000AXYZ"), '>', kRight, "unknown command");
    expectMeaning("$000AXYZzz", '?', kNone, "no line of a board");
    expectMeaning("$000APSN1005zz", '?', kNone, "no line of a board");
}

TEST(ExplainBus, LinesOfBoardsWithChecksum)
{
    const TLine lines[] = {
        {"$000APING", "board 000A pings"},
        {"$001TRQ12345678", "card 12345678 read at board 001T"},
        {"$001TPR", "passage under way at board 001T"},
        {"$001TGR", "passage done at board 001T"},
        {"$001TFK", "nobody came at board 001T"},
        {"$001TET", "board 001T confirms a command"},
        {"$001T5ET7", "board 001T reports an event: \"5ET7\""},
        {"$000ASS1N", "board 000A reports relay 1 on"},
        {"$000ASS2F", "board 000A reports relay 2 off"},
        {"$000AHello", "board 000A says \"Hello\""},
        {"#000ABT", "exit button pressed at board 000A"},
        {"#000AETBT", "exit button pressed at board 000A"},
        {"#000AET5", "board 000A reports an event: \"ET5\""},
        {"#000AHWGX=n020x4/GR=NY/", "board 000A has display \"n020x4\", relay 1 off, relay 2 on"},
        {"#000BHWGX=N/GR=NNN/", "board 000B has no display, relay 1 off, relay 2 off, relay 3 off"},
        {"#000AGO", "somebody crossed at board 000A"},
        {"#000AHello", "board 000A says \"Hello\", which is passed to nobody"},
    };
    for (const TLine& each : lines) {
        expectMeaning(checked(each.line) + '\r', '<', kRight, each.meaning);
    }
}

TEST(ExplainBus, LinesOfBoardsWithoutOrWithWrongChecksum)
{
    expectMeaning("$000APING\r", '<', kNone, "board 000A pings");
    expectMeaning("  \r", '?', kNone, "no line of a board");
    expectMeaning("#000ABT\r", '<', kNone, "exit button pressed at board 000A");
    expectMeaning("#000AGO\r", '<', kNone, "somebody crossed at board 000A");
    expectMeaning("#000AHWGX=N/GR=NN/\r", '<', kNone, "board 000A has no display, relay 1 off, relay 2 off");
    expectMeaning("$000AHello\r", '<', kNone, "board 000A says \"Hello\"");
    expectMeaning("$001TRQ12345678AB\r", '<', kWrong, "card 12345678 read at board 001T");
    expectMeaning("$000APING00\r", '<', kWrong, "board 000A pings");
    expectMeaning("$\r", '?', kNone, "too short for a line of a board");
    expectMeaning("$000A\r", '?', kNone, "too short for a line of a board");
    expectMeaning("", '?', kNone, "no line of a board");
    expectMeaning("$", '?', kNone, "no line of a board");
}

TEST(ExplainBus, RandomBytesAreAlwaysExplained)
{
    std::mt19937 random(5);
    const QByteArray letters = "$#ABTEHWGOPINRL0123=/x";
    for (int i = 0; i < 50'000; ++i) {
        QByteArray piece = i % 2 == 0 ? "$" : "#";
        for (unsigned length = random() % 24; length > 0; --length) {
            piece += i % 3 == 0
                         ? static_cast<char>(random() % 256)
                         : letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
        }
        EXPECT_FALSE(explainBus(piece).Meaning.isEmpty());
        EXPECT_FALSE(explainBus(piece + '\r').Meaning.isEmpty());
        EXPECT_FALSE(explainBus(checked(piece)).Meaning.isEmpty());
    }
}

} // namespace tnv5::tools

#include "tnv5/tools/explain_scales.h"

#include "support/bytes.h"
#include "support/text_printers.h"
#include "tnv5/tools/line_cutter.h"

#include <gtest/gtest.h>

namespace tnv5::tools {
namespace {

using tests::operator""_b;

/// Direction and meaning.
QString told(int family, const QByteArray& piece)
{
    const TExplanation explanation = explain(TProtocol::Scales, piece, family);
    EXPECT_EQ(explanation.Checksum, TChecksum::None);
    return QLatin1Char(directionMark(explanation.Direction)) + (u' ' + explanation.Meaning);
}

TEST(ExplainScales, TellsTheWeightOfEveryFamily)
{
    EXPECT_EQ(told(1, "\x39\x30"_b), QStringLiteral("< after \"D\": not settled; after \"E\": weight 12345"));
    EXPECT_EQ(told(1, "\x80\x00"_b), QStringLiteral("< after \"D\": settled; after \"E\": weight 128"));
    EXPECT_EQ(told(2, "\x01\x02S 01.234kge\x03\x04"), QStringLiteral("< weight 1234"));
    EXPECT_EQ(told(3, "005100000001000000"), QStringLiteral("< weight 1500"));
    EXPECT_EQ(told(4, "52000-00000000000"), QStringLiteral("< weight -25"));
    EXPECT_EQ(told(5, "<\x00!00750\x0D>"_b), QStringLiteral("< weight 750"));
    EXPECT_EQ(told(6, "B 00.850 kg\r\n"), QStringLiteral("< weight 850"));
    EXPECT_EQ(told(7, "\x02ST  01250 g NET\r\n"), QStringLiteral("< weight 1250"));
    EXPECT_EQ(told(8, "W 02.340kg"), QStringLiteral("< weight 2340"));
}

TEST(ExplainScales, TellsRequestsAndHandshakes)
{
    EXPECT_EQ(told(1, "D"), QStringLiteral("> asks the scale"));
    EXPECT_EQ(told(1, "E"), QStringLiteral("> asks for the weight"));
    EXPECT_EQ(told(2, "\x05"), QStringLiteral("> asks the scale"));
    EXPECT_EQ(told(2, "\x06"), QStringLiteral("< ready to tell the weight"));
    EXPECT_EQ(told(2, "\x11"), QStringLiteral("> asks for the weight"));
    EXPECT_EQ(told(3, "\x00\x00\x03"_b), QStringLiteral("> asks the scale"));
    EXPECT_EQ(told(5, "<\x00!>"_b), QStringLiteral("> asks the scale"));
    EXPECT_EQ(told(6, "\x05\r"), QStringLiteral("> asks the scale"));
}

TEST(ExplainScales, TellsWhatIsNoWeight)
{
    EXPECT_EQ(told(2, "\x01\x02"
                      "F --.---kg7\x03\x04"),
              QStringLiteral("< [2] Scales are overvalue!"));
    EXPECT_EQ(told(2, "\x01\x02S-00.050kg7\x03\x04"), QStringLiteral("< [3] Weight <0!"));
    EXPECT_EQ(told(3, "      000000000000"), QStringLiteral("< no weight"));
    EXPECT_EQ(told(3, "00x100000001000000"), QStringLiteral("< \"001x00\", which is no weight"));
    EXPECT_EQ(told(7, "\x02ST  -0040 g NET\r\n"), QStringLiteral("< weight -40"));
    EXPECT_EQ(told(7, "\x02short\r\n"), QStringLiteral("< no weight"));
}

TEST(ExplainScales, TellsWhatIsNoPacket)
{
    for (int family = 0; family <= 9; ++family) {
        EXPECT_EQ(told(family, ""), QStringLiteral("? no packet of this scale")) << family;
        EXPECT_EQ(told(family, "zz."), QStringLiteral("? no packet of this scale")) << family;
    }
}

TEST(ExplainScales, ALineIsCutWhereTheFamilyEndsItsPackets)
{
    const auto cut = [](int family, const QByteArray& bytes) {
        TLineCutter cutter(TProtocol::Scales, family);
        QByteArrayList pieces;
        for (const char byte : bytes) {
            pieces += cutter.take(QByteArrayView(&byte, 1));
        }
        return pieces + cutter.pause();
    };
    EXPECT_EQ(cut(1, "\x80\x00"_b), QByteArrayList({"\x80\x00"_b}));
    EXPECT_EQ(cut(2, "x\x05\x06\x11\x01\x02S\x06\x04\x05"),
              QByteArrayList({"x", "\x05", "\x06", "\x11", "\x01\x02S\x06\x04", "\x05"}));
    EXPECT_EQ(cut(3, "005100000001000000"), QByteArrayList({"005100000001000000"}));
    EXPECT_EQ(cut(5, "<\x00!><\x00!00750\x0D>"_b), QByteArrayList({"<\x00!>"_b, "<\x00!00750\x0D>"_b}));
    EXPECT_EQ(cut(6, "B 1\r\nB 2\r\nB"), QByteArrayList({"B 1\r\n", "B 2\r\n", "B"}));
    EXPECT_EQ(cut(7, "\x02"
                     "1\r\n\x02"
                     "2\r\n"),
              QByteArrayList({"\x02"
                              "1\r\n",
                              "\x02"
                              "2\r\n"}));
    EXPECT_EQ(cut(8, "W 1kgW 2kg"), QByteArrayList({"W 1kg", "W 2kg"}));
    EXPECT_EQ(cut(3, QByteArray(10'000, '0')).size(), 3);
}

} // namespace
} // namespace tnv5::tools

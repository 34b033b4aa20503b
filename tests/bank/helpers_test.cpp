// The helpers that the component offers.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(Helpers, CutValueNeedsAVersion)
{
    TBankPos pos;
    const QString packet = "01=4111\x1C"
                           "06=00";
    for (const int type : {0, 4, -1, 1000}) {
        pos.SetPosType(type);
        EXPECT_EQ(pos.CutValue(packet, "01="), "") << type;
    }
    for (const int type : {1, 2, 3}) {
        pos.SetPosType(type);
        EXPECT_EQ(pos.CutValue(packet, "01="), "4111") << type;
        EXPECT_EQ(pos.CutValue(packet, "06="), "00");
        EXPECT_EQ(pos.CutValue(packet, "02="), "");
        EXPECT_EQ(pos.CutValue(packet, "="), "4111");
    }
}

TEST(Helpers, MakeStr)
{
    EXPECT_EQ(TBankPos::MakeStr(u'0', 3), "000");
    EXPECT_EQ(TBankPos::MakeStr(u'x', 1), "x");
    EXPECT_EQ(TBankPos::MakeStr(u'0', 0), "");
    EXPECT_EQ(TBankPos::MakeStr(u'0', -1), "");
    EXPECT_EQ(TBankPos::MakeStr(u'0', std::numeric_limits<int>::min()), "");
}

TEST(Helpers, StringLrc)
{
    EXPECT_EQ(TBankPos::StringLRC(""), 0);
    EXPECT_EQ(TBankPos::StringLRC("AB"), 3);
    EXPECT_EQ(TBankPos::StringLRC("\x05\x03"), 6);
    EXPECT_EQ(TBankPos::StringLRC("\x04\x03"), 7);
    EXPECT_EQ(TBankPos::StringLRC(QString(QChar(0x430))), 0x30);
}

TEST(Helpers, ConversionsThatNobodyCalls)
{
    EXPECT_EQ(TBankPos::ReplaceStr("a,b,c", ",", "--"), "a--b--c");
    EXPECT_EQ(TBankPos::ReplaceStr("abc", "", "x"), "abc");
    EXPECT_EQ(TBankPos::ByteToBinStr(0x39), "00111001");
    EXPECT_EQ(TBankPos::BitToint("0011000000111001"), 0x3039);
    EXPECT_EQ(TBankPos::BinStrToByte("0000000011111110"), 254);
}

} // namespace

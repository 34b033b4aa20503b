#include "support/text_printers.h"
#include "tnv5/bank/bank_pos.h"

#include <gtest/gtest.h>

namespace {

using tnv5::bank::TBankPOS;

struct TRow
{
    const char* text;
    int number;
    const char* field;
};

const TRow kRows[] = {
    {"a;b;c", 1, "a"},     {"a;b;c", 2, "b"},    {"a;b;c", 3, "c"},   {"a;b;c", 4, "-1"},
    {"a;b;c", 0, "-1"},    {"a;b;c", -1, "-1"},  {"ab;cd", 1, "ab"},  {"ab;cd", 2, "cd"},
    {"a;;b", 1, "a"},      {"a;;b", 2, "-1"},    {"a;;b", 3, "b"},    {"a;;b", 4, "-1"},
    {"a;;;b", 1, "a"},     {"a;;;b", 2, "-1"},   {"a;;;b", 3, "b"},   {"a;;;b", 4, "-1"},
    {"a;;;;b", 3, "-1"},   {"a;;;;b", 4, "b"},   {"a;;;;b", 5, "-1"}, {"a;;;;;b", 5, "b"},
    {"a;;;bc;d", 3, "bc"}, {"a;;;bc;d", 4, "d"}, {"", 1, "-1"},       {";", 1, "-1"},
    {";", 2, "-1"},        {";;", 3, "-1"},      {";;;", 3, "-1"},    {";a", 1, "-1"},
    {";a", 2, "a"},        {";;a", 3, "a"},      {";;;a", 3, "a"},    {"a;", 1, "a"},
    {"a;", 2, "-1"},       {"a;;", 2, "-1"},     {"a;;", 3, "-1"},    {"abc", 1, "abc"},
    {"a b;c d", 2, "c d"}, {"a;-1;c", 2, "-1"},
};

TEST(Fields, OfAResponse)
{
    for (const TRow& row : kRows) {
        EXPECT_EQ(TBankPOS::parseblue(row.text, row.number), row.field) << row.text << ' ' << row.number;
    }
}

TEST(Fields, OfAFieldAreSplitTheSameWayOnBlanks)
{
    for (const TRow& row : kRows) {
        const QString text = QString(row.text).replace(u' ', u'_').replace(u';', u' ');
        const QString field = QString(row.field).replace(u' ', u'_');
        EXPECT_EQ(TBankPOS::parseblueex(text, row.number), field) << row.text << ' ' << row.number;
    }
    EXPECT_EQ(TBankPOS::parseblueex("3 1250;0 0", 2), "1250;0");
}

const std::pair<int, const char*> kErrors[] = {
    {0, " no error"},
    {1, " some error"},
    {2, " no valid command or subcommand code"},
    {3, " invalid paremeter"},
    {4, " address is outside limits"},
    {5, " value is outside limits"},
    {6, " length is outside limiuts"},
    {7, " the action is not permit in current state"},
    {8, " there is no data to be returned"},
    {9, " timeout is occur"},
    {10, " invalid key number"},
    {11, " invalid key attributes(ussage)"},
    {12, " calling of non-existing device"},
    {13, " (no used in this FW version)"},
    {14, " Pin entering limit exceed"},
    {15, " some error in flash commands"},
    {16, " some hardware error"},
    {17, " (no used in this FW version)"},
    {18, " the button \"CANCEL\" is pressed"},
    {19, " invalid signature"},
    {20, " invalid data in header"},
    {21, " incorrent password"},
    {22, " invalid key format"},
    {23, " some error in smart card reader"},
    {24, " error code is returned from HAL functions"},
    {25, " invalid key (may be no pressent)"},
    {26, " the PIN length is <4 or >12"},
    {27, " Issuer or ICC key invalid remainder length"},
    {28, " (no used in this FW version)"},
    {29, " (no used in this FW version)"},
    {30, " (no used in this FW version)"},
    {31, " The action is not permited"},
    {32, " TMK is not loaded. The action cannot be executed"},
    {33, " Wrong kek format"},
    {34, " Dublicated key"},
    {35, " general keyboard error"},
    {36, " the keyboard is no calibrated"},
    {37, " keyboard bug detected"},
    {38, " the device is busy, tray again"},
    {39, " the devicete in security tampered"},
    {40, " error in encrypted head"},
    {41, " the button \"OK\" is pressed"},
    {42, " wrong PAN"},
    {43, " no enought memory"},
    {44, " some EMV error"},
    {45, " cryptographic error"},
    {46, " something is received"},
    {47, " wrong version. update to old firmware for example"},
    {48, " printer is out of paper"},
    {49, " printer is overheating"},
    {50, " the device is not connected"},
    {51, " use the chip reader"},
    {52, " end the day first"},
    {56, " error open socket"},
};

TEST(Errors, HaveTheirTexts)
{
    std::map<int, const char*> texts(std::begin(kErrors), std::end(kErrors));
    for (int code = -10; code < 300; ++code) {
        const auto found = texts.find(code);
        EXPECT_EQ(TBankPOS::errorblue(QString::number(code)), found == texts.end() ? "" : found->second)
            << code;
    }
    EXPECT_EQ(texts.size(), 54U);
}

TEST(Errors, OfWhatIsNoCodeIsEmpty)
{
    for (const char* code : {"", "x", "05", " 5", "5 ", "+5", "-5", "1.0"}) {
        EXPECT_EQ(TBankPOS::errorblue(code), "") << code;
    }
}

} // namespace

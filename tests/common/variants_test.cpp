#include "tnv5/common/variants.h"

#include "tnv5/platform/errors.h"

#include <QDate>
#include <gtest/gtest.h>
#include <limits>

namespace {

using tnv5::common::VariantToInteger;
using tnv5::common::VariantToText;
using tnv5::platform::EConvertError;

TEST(VariantToInteger, ReadsNumbersAndNumericTexts)
{
    EXPECT_EQ(VariantToInteger(1), 1);
    EXPECT_EQ(VariantToInteger(-1LL), -1);
    EXPECT_EQ(VariantToInteger(1.0), 1);
    EXPECT_EQ(VariantToInteger(0.6), 1);
    EXPECT_EQ(VariantToInteger(QStringLiteral("1")), 1);
    EXPECT_EQ(VariantToInteger(QStringLiteral("-7")), -7);
    EXPECT_EQ(VariantToInteger(true), 1);
    EXPECT_EQ(VariantToInteger(false), 0);
    EXPECT_EQ(VariantToInteger(2'147'483'647LL), 2'147'483'647);
    EXPECT_EQ(VariantToInteger(-2'147'483'648LL), std::numeric_limits<int>::min());
}

TEST(VariantToInteger, RefusesEverythingElse)
{
    EXPECT_THROW(VariantToInteger(QVariant()), EConvertError);
    EXPECT_THROW(VariantToInteger(QString()), EConvertError);
    EXPECT_THROW(VariantToInteger(QStringLiteral("yes")), EConvertError);
    EXPECT_THROW(VariantToInteger(QStringLiteral("1x")), EConvertError);
    EXPECT_THROW(VariantToInteger(2'147'483'648LL), EConvertError);
    EXPECT_THROW(VariantToInteger(-2'147'483'649LL), EConvertError);
    EXPECT_THROW(VariantToInteger(std::numeric_limits<double>::quiet_NaN()), EConvertError);
    EXPECT_THROW(VariantToInteger(QVariantList{1}), EConvertError);
}

TEST(VariantToText, KeepsAllDigitsOfWholeNumbers)
{
    EXPECT_EQ(VariantToText(3e9), "3000000000");
    EXPECT_EQ(VariantToText(1e6F), "1000000");
    EXPECT_EQ(VariantToText(-0.0), "0");
    EXPECT_EQ(VariantToText(9'007'199'254'740'992.0), "9007199254740992");
    EXPECT_EQ(VariantToText(-9'007'199'254'740'992.0), "-9007199254740992");
}

TEST(VariantToText, LeavesEverythingElseAsItIs)
{
    EXPECT_EQ(VariantToText(2.5), "2.5");
    EXPECT_EQ(VariantToText(1e21), "1e+21");
    EXPECT_EQ(VariantToText(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(VariantToText(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(VariantToText(7), "7");
    EXPECT_EQ(VariantToText(true), "true");
    EXPECT_EQ(VariantToText(" x "), " x ");
    EXPECT_EQ(VariantToText(QVariant()), "");
    EXPECT_EQ(VariantToText(QDate(2026, 1, 2)), "2026-01-02");
    EXPECT_EQ(VariantToText(QVariantList{1}), "");
}

} // namespace

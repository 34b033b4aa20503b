#include "tnv5/common/variants.h"

#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using tnv5::common::VariantToInteger;
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

} // namespace

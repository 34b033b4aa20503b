// Date-times as texts: the default format, and the host's.

#include "tnv5/common/date_time_text.h"
#include "tnv5/testing/manual_clock.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5;
using common::DateTimeToText;
using common::TextToDateTime;

/// A date-time by its parts.
double at(int days, int hour = 0, int minute = 0, int second = 0, int ms = 0)
{
    return (days * 86'400'000.0 + ((hour * 60 + minute) * 60 + second) * 1000.0 + ms) / 86'400'000.0;
}

constexpr int kDay = 46'027; // 2026-01-05

TEST(DateTimeText, Reads)
{
    const std::pair<const char*, double> rows[] = {
        {"5.1.2026", at(kDay)},
        {"05.01.2026", at(kDay)},
        {"5.1.26", at(kDay)},
        {"1.3.00", at(36'586)}, // 2000
        {"2026-01-05", at(kDay)},
        {"2026-1-5", at(kDay)},
        {"5.1.2026 7:3", at(kDay, 7, 3)},
        {"5.1.26 07:03:09", at(kDay, 7, 3, 9)},
        {"2026-01-05 23:59:59.999", at(kDay, 23, 59, 59, 999)},
        {"5.1.2026   7:03", at(kDay, 7, 3)},
        {"  5.1.2026 7:03\t", at(kDay, 7, 3)},
        {"0:00", 0},
        {"12:05", at(0, 12, 5)},
        {"12:05:00", at(0, 12, 5)},
        {"1:2:3.004", at(0, 1, 2, 3, 4)},
        {"29.2.2024", at(45'351)},
        {"31.12.9999", at(2'958'465)},
        {"30.12.1899 12:00", 0.5},
    };
    for (const auto& [text, value] : rows) {
        const auto read = TextToDateTime(QString(text));
        ASSERT_TRUE(read) << text;
        EXPECT_DOUBLE_EQ(*read, value) << text;
    }
}

TEST(DateTimeText, DoesNotReadWhatItIsNot)
{
    for (const char* text : {"",
                             " ",
                             "x",
                             "5",
                             "5.1",
                             "5.1.",
                             "5.1.2",
                             "5.1.202",
                             "5.1.20266",
                             "005.1.2026",
                             "5.001.2026",
                             "0.1.2026",
                             "32.1.2026",
                             "5.13.2026",
                             "5.0.2026",
                             "29.2.2026",
                             "1.1.0000",
                             "2026-13-01",
                             "2026-02-30",
                             "26-01-05",
                             "5-1-2026",
                             "2026.1.5",
                             "5/1/2026",
                             "5.1.2026x",
                             "5.1.2026 x",
                             "5.1.2026 12",
                             "5.1.2026 12:",
                             "5.1.2026 24:00",
                             "5.1.2026 12:60",
                             "5.1.2026 12:00:60",
                             "5.1.2026 12:00:00.",
                             "5.1.2026 12:00:00.1",
                             "5.1.2026 12:00:00.1234",
                             "5.1.2026 12:00:00 x",
                             "5.1.202612:00",
                             "5.1.2026T12:00",
                             "12",
                             "12:",
                             ":12",
                             "24:00",
                             "12:60",
                             "012:00",
                             "12:000",
                             "-1:00",
                             "+1:00",
                             "1:-1",
                             "12:00 5.1.2026",
                             "5.1.2026 12:00AB",
                             "٥.1.2026",
                             "99999999999.1.2026"}) {
        EXPECT_FALSE(TextToDateTime(QString(text))) << text;
    }
}

TEST(DateTimeText, Prints)
{
    EXPECT_EQ(DateTimeToText(0), "30.12.1899 00:00:00");
    EXPECT_EQ(DateTimeToText(0.5), "30.12.1899 12:00:00");
    EXPECT_EQ(DateTimeToText(at(kDay, 1, 2, 3)), "05.01.2026 01:02:03");
    EXPECT_EQ(DateTimeToText(at(kDay, 23, 59, 59, 999)), "05.01.2026 23:59:59");
    EXPECT_EQ(DateTimeToText(-0.25), "29.12.1899 18:00:00");
}

TEST(DateTimeText, PrintsWholeSecondsAsTheyAre)
{
    for (int second = 0; second < 86'400; ++second) { // a double has most of them a little too small
        const QString expected = QStringLiteral("05.01.2026 %1:%2:%3")
                                     .arg(second / 3600, 2, 10, QLatin1Char('0'))
                                     .arg(second / 60 % 60, 2, 10, QLatin1Char('0'))
                                     .arg(second % 60, 2, 10, QLatin1Char('0'));
        ASSERT_EQ(DateTimeToText(kDay + second / 86'400.0), expected);
        ASSERT_EQ(DateTimeToText(kDay + second * (1.0 / 86'400)), expected);
    }
}

TEST(DateTimeText, WhatIsNoTimeIsTheFirstMoment)
{
    for (const double value :
         {std::numeric_limits<double>::infinity(), -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(DateTimeToText(value), "30.12.1899 00:00:00");
        EXPECT_EQ(common::TimeOfDayMs(value), 0);
    }
}

TEST(DateTimeText, TheHostsFormatReplacesIt)
{
    const auto before =
        common::setDateTimeFormat({[](double value) { return QString::number(value); },
                                   [](QStringView text) -> std::optional<double> {
                                       return text == u"soon" ? std::optional<double>(7) : std::nullopt;
                                   }});
    EXPECT_FALSE(before.print);
    EXPECT_FALSE(before.read);
    EXPECT_EQ(DateTimeToText(0.5), "0.5");
    EXPECT_EQ(TextToDateTime(u"soon"), 7);
    EXPECT_FALSE(TextToDateTime(u"5.1.2026"));
    common::setDateTimeFormat({});
    EXPECT_EQ(DateTimeToText(0.5), "30.12.1899 12:00:00");
    EXPECT_EQ(TextToDateTime(u"12:00"), 0.5);
}

} // namespace

#include "support/text_printers.h"
#include "tnv5/host/club.h"
#include "tnv5/host/picture.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

using testkit::TManualClock;

TEST(ClubWords, EveryWordReadsBack)
{
    for (int value = 0; value <= static_cast<int>(TRefusal::HostFault); ++value) {
        EXPECT_EQ(toRefusal(toText(static_cast<TRefusal>(value))), static_cast<TRefusal>(value)) << value;
    }
    for (int value = 0; value <= static_cast<int>(TEnding::Abandoned); ++value) {
        EXPECT_EQ(toEnding(toText(static_cast<TEnding>(value))), static_cast<TEnding>(value)) << value;
    }
    for (int value = 0; value <= static_cast<int>(TDirection::Inner); ++value) {
        EXPECT_EQ(toDirection(toText(static_cast<TDirection>(value))), static_cast<TDirection>(value))
            << value;
    }
    EXPECT_EQ(toDirection(u"sideways"), std::nullopt);
}

TEST(ClubTimes, ReadBackToTheMillisecond)
{
    const TManualClock clock(TManualClock::at(23, 59, 59, 999));
    const QString text = toText(platform::Now());
    EXPECT_EQ(text, QStringLiteral("2026-01-05 23:59:59.999"));
    EXPECT_EQ(toText(toDateTime(text)), text);
    EXPECT_EQ(dayOf(platform::Now()), QDate(2026, 1, 5));
}

TEST(ClubTimes, NoTimeIsAnEmptyText)
{
    EXPECT_EQ(toText(platform::TDateTime{0}), QString());
    EXPECT_EQ(toText(toDateTime(QStringLiteral("2026-01-05 12:10:07"))), "2026-01-05 12:10:07.000")
        << "as other programs write it";
    EXPECT_EQ(toText(toDateTime(QStringLiteral("2026-01-05T12:10:07"))), "2026-01-05 12:10:07.000");
    EXPECT_EQ(toDateTime(QStringLiteral("2026-01-05 12:10")), 0);
    EXPECT_EQ(toDateTime(QString()), 0);
    EXPECT_EQ(toDateTime(QStringLiteral("2026-13-05 12:00:00.000")), 0);
}

TEST(ClubWords, Amounts)
{
    EXPECT_EQ(amountText(0), QStringLiteral("0.00"));
    EXPECT_EQ(amountText(5), QStringLiteral("0.05"));
    EXPECT_EQ(amountText(-5), QStringLiteral("-0.05"));
    EXPECT_EQ(amountText(-12'345), QStringLiteral("-123.45"));
    EXPECT_EQ(amountText(std::numeric_limits<qint64>::min()), QStringLiteral("-92233720368547758.08"));
}

TEST(GateText, AddressZoneAndDirection)
{
    const auto gate = toGate(QStringLiteral("04D:sauna:inner"));
    ASSERT_TRUE(gate);
    EXPECT_EQ(gate->address, QStringLiteral("04D"));
    EXPECT_EQ(gate->zone, QStringLiteral("sauna"));
    EXPECT_EQ(gate->direction, TDirection::Inner);
}

TEST(GateText, AnythingElseIsNone)
{
    for (const char* text : {"", "01A", "01A:hall", "01A:hall:up", "01A::in", "1A:hall:in", "01:hall:in",
                             "01AA:hall:in", "01A:hall:in:more", "xxA:hall:in", "01a:hall:in"}) {
        EXPECT_FALSE(toGate(QString::fromLatin1(text))) << text;
    }
}

TEST(LogLine, SaysWhenWhereWhoAndWhy)
{
    const TManualClock clock(TManualClock::at(8, 30, 1, 250));
    TPass pass;
    pass.began = platform::Now();
    pass.gate = QStringLiteral("01A");
    pass.card = QStringLiteral("12345678");
    pass.refusal = TRefusal::UnknownCard;
    EXPECT_EQ(logLine(pass), QStringLiteral("08:30:01.250  01A  card (12345678)  refused: unknown card"));

    pass.name = QStringLiteral("Anna 50%1 Berg");
    pass.refusal = TRefusal::None;
    EXPECT_EQ(logLine(pass), QStringLiteral("08:30:01.250  01A  Anna 50%1 Berg (12345678)  opened"));
    pass.ending = TEnding::TimedOut;
    EXPECT_EQ(logLine(pass), QStringLiteral("08:30:01.250  01A  Anna 50%1 Berg (12345678)  timed out"));

    pass.card = QStringLiteral("-2-2-2-2-2");
    EXPECT_EQ(logLine(pass), QStringLiteral("08:30:01.250  01A  exit button  timed out"));
}

TEST(Picture, IsDrawnWithoutAGraphicalApplication)
{
    const QImage anna = holderPicture({1, QStringLiteral("Anna Berg"), false, false});
    EXPECT_EQ(anna.size(), QSize(160, 200));
    EXPECT_NE(anna.pixelColor(80, 70), anna.pixelColor(1, 1)) << "a head before a background";
    EXPECT_EQ(anna, holderPicture({1, QStringLiteral("Anna Berg"), true, true})) << "always the same";
    EXPECT_NE(anna, holderPicture({2, QStringLiteral("Anna Berg"), false, false}));
}

TEST(Picture, Initials)
{
    EXPECT_EQ(initialsOf(QStringLiteral("Anna Maria Berg")), QStringLiteral("AB"));
    EXPECT_EQ(initialsOf(QStringLiteral("  anna ")), QStringLiteral("A"));
    EXPECT_EQ(initialsOf(QStringLiteral("Юлия Ким")), QStringLiteral("ЮК"));
    EXPECT_EQ(initialsOf(QString()), QString());
}

} // namespace
} // namespace tnv5::host

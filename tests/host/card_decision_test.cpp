#include "support/text_printers.h"
#include "tnv5/host/card_decision.h"

#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

const QDate kToday(2026, 1, 5);
const TGate kIn = {QStringLiteral("01A"), QStringLiteral("hall"), TDirection::In};
const TGate kOut = {QStringLiteral("02A"), QStringLiteral("hall"), TDirection::Out};
const TGate kInner = {QStringLiteral("03D"), QStringLiteral("hall"), TDirection::Inner};

TMembership hall(int from, int to)
{
    return {kToday.addDays(from), kToday.addDays(to), {QStringLiteral("hall")}};
}

THolder holderWith(const QList<TMembership>& memberships)
{
    THolder holder;
    holder.member = {1, QStringLiteral("Anna Berg"), false, false};
    holder.memberships = memberships;
    return holder;
}

TEST(CardDecision, OpensForAValidMembershipOfTheZone)
{
    EXPECT_EQ(decide(kIn, holderWith({hall(-1, 1)}), kToday), TRefusal::None);
}

TEST(CardDecision, FirstAndLastDayCount)
{
    EXPECT_EQ(decide(kIn, holderWith({hall(0, 5)}), kToday), TRefusal::None);
    EXPECT_EQ(decide(kIn, holderWith({hall(-5, 0)}), kToday), TRefusal::None);
}

TEST(CardDecision, UnknownGateIsRefusedBeforeAnythingElse)
{
    EXPECT_EQ(decide(std::nullopt, std::nullopt, kToday), TRefusal::UnknownGate);
    EXPECT_EQ(decide(std::nullopt, holderWith({hall(-1, 1)}), kToday), TRefusal::UnknownGate);
}

TEST(CardDecision, UnknownCard)
{
    EXPECT_EQ(decide(kIn, std::nullopt, kToday), TRefusal::UnknownCard);
    EXPECT_EQ(decide(kOut, std::nullopt, kToday), TRefusal::UnknownCard);
}

TEST(CardDecision, NoMembership)
{
    EXPECT_EQ(decide(kIn, holderWith({}), kToday), TRefusal::NoMembership);
}

TEST(CardDecision, ExpiredSinceYesterday)
{
    EXPECT_EQ(decide(kIn, holderWith({hall(-30, -1)}), kToday), TRefusal::Expired);
}

TEST(CardDecision, ValidFromTomorrow)
{
    EXPECT_EQ(decide(kIn, holderWith({hall(1, 30)}), kToday), TRefusal::NotYetValid);
    EXPECT_EQ(decide(kIn, holderWith({hall(-30, -1), hall(1, 30)}), kToday), TRefusal::NotYetValid)
        << "a renewal that begins tomorrow tells more than the old end";
}

TEST(CardDecision, WrongZone)
{
    TMembership pool = hall(-1, 1);
    pool.zones = {QStringLiteral("pool")};
    EXPECT_EQ(decide(kIn, holderWith({pool}), kToday), TRefusal::WrongZone);
    EXPECT_EQ(decide(kIn, holderWith({pool, hall(-30, -1)}), kToday), TRefusal::WrongZone)
        << "an old membership of the zone does not help";
    EXPECT_EQ(decide(kIn, holderWith({pool, hall(-1, 1)}), kToday), TRefusal::None) << "any one is enough";
}

TEST(CardDecision, SuspendedComesBeforeTheMembership)
{
    THolder holder = holderWith({hall(-30, -1)});
    holder.member.suspended = true;
    EXPECT_EQ(decide(kIn, holder, kToday), TRefusal::Suspended);
}

TEST(CardDecision, AlreadyInsideOnTheWayInOnly)
{
    THolder holder = holderWith({hall(-1, 1)});
    holder.member.inside = true;
    EXPECT_EQ(decide(kIn, holder, kToday), TRefusal::AlreadyInside);
    EXPECT_EQ(decide(kInner, holder, kToday), TRefusal::None);
    EXPECT_EQ(decide(kOut, holder, kToday), TRefusal::None);
}

TEST(CardDecision, InnerDoorsAskForTheZone)
{
    TMembership pool = hall(-1, 1);
    pool.zones = {QStringLiteral("pool")};
    EXPECT_EQ(decide(kInner, holderWith({pool}), kToday), TRefusal::WrongZone);
}

TEST(CardDecision, WhoeverIsKnownGetsOut)
{
    THolder holder = holderWith({hall(-30, -1)});
    holder.member.suspended = true;
    EXPECT_EQ(decide(kOut, holder, kToday), TRefusal::None);
    EXPECT_EQ(decide(kOut, holderWith({}), kToday), TRefusal::None);
}

} // namespace
} // namespace tnv5::host

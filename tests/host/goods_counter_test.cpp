#include "club_fixture.h"
#include "scale_fixture.h"
#include "tnv5/host/goods_counter.h"

namespace tnv5::host {
namespace {

const QString kAnnasCard = QStringLiteral("10000001");
const QString kApples = QStringLiteral("apples");

class TGoodsCounterTest : public TClubFixture, protected TScaleFixture
{
protected:
    TGoodsCounterTest() : anna(addMember(QStringLiteral("Anna Berg"), kAnnasCard)), counter(scales, club)
    {
        club.setBalance(anna, 1'000);
        club.setProduct(kApples, 320);
        counter.OnSold = [this](const TSale& sale) { sold << logLine(sale).mid(14); };
        counter.OnTrouble = [this](const QString& text) { troubles << text; };
        counter.open();
        questions(1);
    }

    void questions(int count) { clock.advance(count * TScaleReader::kAskMs); }
    qint64 balance() { return club.holderOf(kAnnasCard)->member.balance; }

    qint64 anna;
    TGoodsCounter counter;
    QStringList sold;
    QStringList troubles;
};

TEST_F(TGoodsCounterTest, SellsWhatHasComeToRest)
{
    EXPECT_TRUE(counter.sell(kAnnasCard, kApples));
    EXPECT_TRUE(counter.waiting());
    load = 200; // still being filled
    questions(2);
    load = 450;
    questions(3);
    EXPECT_EQ(sold, QStringList());
    questions(1);
    EXPECT_EQ(sold,
              QStringList({QStringLiteral("scale  Anna Berg (10000001)  450 g apples at 3.20/kg: 1.44")}));
    EXPECT_FALSE(counter.waiting());
    EXPECT_EQ(balance(), 856);
    EXPECT_EQ(club.salesAfter(0, 10).size(), 1);
    EXPECT_EQ(troubles, QStringList());
}

TEST_F(TGoodsCounterTest, TheOrderMayComeWhenTheWeightIsThere)
{
    load = 450;
    questions(10);
    EXPECT_EQ(sold.size(), 0);
    counter.sell(kAnnasCard, kApples);
    questions(1);
    EXPECT_EQ(sold.size(), 1);
}

TEST_F(TGoodsCounterTest, TheSameGoodsAreNeverSoldTwice)
{
    load = 450;
    counter.sell(kAnnasCard, kApples);
    questions(5);
    counter.sell(kAnnasCard, kApples);
    questions(5);
    load = 500; // more on top of what is paid for
    questions(5);
    load = kOverload;
    questions(5);
    load = kNegative;
    questions(5);
    load = 450;
    questions(5);
    EXPECT_EQ(sold.size(), 1);
    EXPECT_FALSE(counter.empty());

    load = 0;
    questions(4);
    EXPECT_TRUE(counter.empty());
    load = 500;
    questions(5);
    EXPECT_EQ(sold.size(), 2);
    EXPECT_EQ(balance(), 1'000 - 144 - 160);
}

TEST_F(TGoodsCounterTest, AnAnswerOrTwoWithoutAWeightIsNoEmptyPlatform)
{
    load = 450;
    counter.sell(kAnnasCard, kApples);
    questions(5);
    ASSERT_EQ(sold.size(), 1);
    for (const int answers : {1, 2, 1, 2}) { // goods that are moved, or noise
        counter.sell(kAnnasCard, kApples);
        load = 0;
        questions(answers);
        load = 450;
        questions(5);
    }
    EXPECT_EQ(sold.size(), 1);
    EXPECT_FALSE(counter.empty());
    load = 0;
    questions(TScaleReader::kSteadyReadings);
    load = 450;
    questions(5);
    EXPECT_EQ(sold.size(), 2);
}

TEST_F(TGoodsCounterTest, AnOverloadIsToldOnceAndNothingIsSold)
{
    load = kOverload;
    counter.sell(kAnnasCard, kApples);
    questions(10);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("[2] Scales are overvalue!")}));
    EXPECT_EQ(sold.size(), 0);
    load = 450;
    questions(4);
    EXPECT_EQ(sold.size(), 1);
    load = kOverload;
    questions(2);
    EXPECT_EQ(troubles.size(), 2) << "told again when it happens again";
}

TEST_F(TGoodsCounterTest, UnknownCardsAndGoods)
{
    EXPECT_FALSE(counter.sell(QStringLiteral("99999999"), kApples));
    EXPECT_FALSE(counter.sell(kAnnasCard, QStringLiteral("gold")));
    EXPECT_FALSE(counter.waiting());
    EXPECT_EQ(troubles, QStringList({QStringLiteral("card 99999999 is unknown, nothing is sold"),
                                     QStringLiteral("nothing is sold as \"gold\"")}));
}

TEST_F(TGoodsCounterTest, NobodyTakesThePlaceOfWhoeverWaits)
{
    const QString boris = QStringLiteral("10000002");
    addMember(QStringLiteral("Boris Klein"), boris);
    EXPECT_TRUE(counter.sell(kAnnasCard, kApples));
    EXPECT_FALSE(counter.sell(boris, kApples));
    EXPECT_FALSE(counter.sell(kAnnasCard, kApples));
    const QString waits = QStringLiteral("the scale waits for Anna Berg already");
    EXPECT_EQ(troubles, QStringList({waits, waits}));
    load = 450;
    questions(5);
    ASSERT_EQ(sold.size(), 1);
    EXPECT_TRUE(sold[0].contains(QStringLiteral("Anna Berg")));
    EXPECT_EQ(balance(), 1'000 - 144);
    EXPECT_TRUE(counter.sell(boris, kApples));
    counter.cancel();
    EXPECT_TRUE(counter.sell(boris, kApples)) << "what was withdrawn waits no more";
}

TEST_F(TGoodsCounterTest, AnOrderCanBeForgotten)
{
    counter.sell(kAnnasCard, kApples);
    counter.cancel();
    load = 450;
    questions(5);
    EXPECT_EQ(sold.size(), 0);
}

TEST_F(TGoodsCounterTest, ASaleThatCannotBeWrittenIsTriedAgain)
{
    elsewhere(QStringLiteral("CREATE TRIGGER fail BEFORE INSERT ON sale BEGIN"
                             " SELECT raise(ABORT, 'disk full'); END"));
    load = 450;
    counter.sell(kAnnasCard, kApples);
    questions(10);
    EXPECT_EQ(troubles,
              QStringList({QStringLiteral("the sale cannot be written, nothing is charged: disk full")}));
    EXPECT_EQ(balance(), 1'000);
    EXPECT_EQ(sold.size(), 0);
    elsewhere(QStringLiteral("DROP TRIGGER fail"));
    questions(1);
    EXPECT_EQ(sold.size(), 1);
    EXPECT_EQ(balance(), 856);
}

TEST_F(TGoodsCounterTest, ASilentScaleIsTold)
{
    answering = false;
    counter.sell(kAnnasCard, kApples);
    clock.advance(60'000);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("the scale does not answer")}));
    answering = true;
    load = 450;
    questions(5);
    EXPECT_EQ(sold.size(), 1);
}

TEST_F(TGoodsCounterTest, AHandlerOfASaleMayOrderAgainOrClose)
{
    counter.OnSold = [this](const TSale& sale) {
        sold << sale.product;
        if (sold.size() == 1) {
            counter.sell(kAnnasCard, kApples);
        } else {
            counter.close();
        }
    };
    load = 450;
    counter.sell(kAnnasCard, kApples);
    questions(5);
    load = 0;
    questions(4);
    load = 450;
    questions(20);
    EXPECT_EQ(sold.size(), 2);
}

TEST_F(TGoodsCounterTest, ClosedItSellsNothing)
{
    load = 450;
    counter.sell(kAnnasCard, kApples);
    counter.close();
    questions(10);
    EXPECT_EQ(sold.size(), 0);
    EXPECT_FALSE(counter.waiting());
    EXPECT_EQ(troubles, QStringList(QStringLiteral(
                            "nothing is weighed any more: the order of Anna Berg for apples is withdrawn")));
    counter.close();
    EXPECT_EQ(troubles.size(), 1);
}

} // namespace
} // namespace tnv5::host

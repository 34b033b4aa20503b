#include "host/club_fixture.h"
#include "support/text_printers.h"

namespace tnv5::host {
namespace {

class TSalesTest : public TClubFixture
{
protected:
    TSalesTest() : anna(addMember(QStringLiteral("Anna Berg"), QStringLiteral("10000001")))
    {
        club.setProduct(QStringLiteral("apples"), 320);
    }

    TSale someSale() const
    {
        TSale sale;
        sale.sold = 46'027.5;
        sale.card = QStringLiteral("10000001");
        sale.member = anna;
        sale.name = QStringLiteral("Anna Berg");
        sale.product = QStringLiteral("apples");
        sale.centsPerKg = 320;
        sale.grams = 450;
        sale.cents = 144;
        return sale;
    }

    qint64 balance() { return club.holderOf(QStringLiteral("10000001"))->member.balance; }

    qint64 anna;
};

TEST(SalePrice, IsRoundedToTheNearestCentHalvesUp)
{
    EXPECT_EQ(priceFor(0, 320), 0);
    EXPECT_EQ(priceFor(1, 499), 0);
    EXPECT_EQ(priceFor(1, 500), 1);
    EXPECT_EQ(priceFor(450, 320), 144);
    EXPECT_EQ(priceFor(333, 299), 100);
    EXPECT_EQ(priceFor(1'000, 299), 299);
    EXPECT_EQ(priceFor(std::numeric_limits<int>::max(), 1'000'000'000), 2'147'483'647'000'000);
}

TEST_F(TSalesTest, LogLine)
{
    EXPECT_EQ(logLine(someSale()),
              QStringLiteral("12:00:00.000  scale  Anna Berg (10000001)  450 g apples at 3.20/kg: 1.44"));
}

TEST_F(TSalesTest, PricesCanBeChanged)
{
    EXPECT_EQ(club.priceOf(QStringLiteral("apples")), 320);
    club.setProduct(QStringLiteral("apples"), 280);
    EXPECT_EQ(club.priceOf(QStringLiteral("apples")), 280);
    EXPECT_EQ(club.priceOf(QStringLiteral("pears")), std::nullopt);
    EXPECT_THROW(club.setProduct(QStringLiteral("pears"), -1), EDatabase);
    EXPECT_THROW(club.setProduct(QStringLiteral("pears"), 1'000'000'001), EDatabase);
}

TEST_F(TSalesTest, ASaleIsWrittenAndCharged)
{
    club.setBalance(anna, 100);
    TSale sale = someSale();
    club.sell(sale);
    EXPECT_EQ(sale.id, club.lastSale());
    EXPECT_EQ(balance(), -44) << "an account may go below 0";

    const QList<TSale> sales = club.salesAfter(0, 10);
    ASSERT_EQ(sales.size(), 1);
    EXPECT_EQ(sales[0].id, sale.id);
    EXPECT_EQ(toText(sales[0].sold), QStringLiteral("2026-01-05 12:00:00.000"));
    EXPECT_EQ(sales[0].card, sale.card);
    EXPECT_EQ(sales[0].member, anna);
    EXPECT_EQ(sales[0].product, sale.product);
    EXPECT_EQ(sales[0].centsPerKg, 320);
    EXPECT_EQ(sales[0].grams, 450);
    EXPECT_EQ(sales[0].cents, 144);
    EXPECT_TRUE(club.salesAfter(sale.id, 10).isEmpty());
}

TEST_F(TSalesTest, NothingIsChargedWhenTheSaleCannotBeWritten)
{
    elsewhere(QStringLiteral("CREATE TRIGGER fail BEFORE UPDATE ON member BEGIN"
                             " SELECT raise(ABORT, 'disk full'); END"));
    TSale sale = someSale();
    EXPECT_THROW(club.sell(sale), EDatabase);
    EXPECT_EQ(sale.id, 0);
    EXPECT_EQ(club.lastSale(), 0) << "both or neither";
    EXPECT_EQ(balance(), 0);
}

TEST_F(TSalesTest, NobodysAccountCannotBeCharged)
{
    TSale sale = someSale();
    sale.member = 999;
    EXPECT_THROW(club.sell(sale), EDatabase);
    EXPECT_EQ(club.lastSale(), 0);
}

TEST_F(TSalesTest, NothingWeighsNothing)
{
    TSale sale = someSale();
    sale.grams = 0;
    EXPECT_THROW(club.sell(sale), EDatabase);
    EXPECT_EQ(balance(), 0);
}

} // namespace
} // namespace tnv5::host

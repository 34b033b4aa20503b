// What counters do over the local socket.

#include "local_fixture.h"
#include "tnv5/host/local/local_request.h"

namespace tnv5::tests {
namespace {

/// A club with one of each counter.
class TSellingClub final : public TMemoryClub
{
public:
    QString sellGoods(const QString& scale, const QString& card, const QString& product) override
    {
        return note({scale, card, product});
    }
    QString sellTime(const QString& lamp, const QString& card, int minutes) override
    {
        return note({lamp, card, QString::number(minutes)});
    }
    QString sellAmount(const QString& terminal, qint64 cents) override
    {
        return note({terminal, QString::number(cents)});
    }
    QString cancelSale(const QString& device) override { return note({device}); }

    QStringList Sold;

private:
    QString note(const QStringList& words)
    {
        Sold << words.join(u'|');
        return Trouble;
    }
};

std::string answer(host::IClubControl& club, const char* request)
{
    return text(host::answerTo(club, json(request), QStringLiteral("desk1")));
}

TEST(LocalSell, GoodsTimeAndAmounts)
{
    TSellingClub club;
    EXPECT_EQ(answer(club, R"({"do":"sell","scale":"fruit","card":"7","product":"apples"})"),
              R"({"ok":true})");
    EXPECT_EQ(answer(club, R"({"do":"sell","lamp":"Sun","card":"7","minutes":5})"), R"({"ok":true})");
    EXPECT_EQ(answer(club, R"({"do":"sell","terminal":"bar","cents":1250})"), R"({"ok":true})");
    EXPECT_EQ(answer(club, R"({"do":"cancel","device":"bar"})"), R"({"ok":true})");
    EXPECT_EQ(club.Sold, QStringList({QStringLiteral("fruit|7|apples"), QStringLiteral("Sun|7|5"),
                                      QStringLiteral("bar|1250"), QStringLiteral("bar")}));
    club.Trouble = QStringLiteral("The bar is closed.");
    EXPECT_EQ(answer(club, R"({"do":"sell","terminal":"bar","cents":1})"),
              R"({"error":"The bar is closed.","ok":false})");
}

TEST(LocalSell, WhatIsNotSaidOrNotThere)
{
    TSellingClub club;
    EXPECT_EQ(answer(club, R"({"do":"sell","card":"7"})"),
              R"({"error":"What is to be sold at which scale, lamp or terminal?","ok":false})");
    EXPECT_EQ(club.Sold, QStringList());
    TMemoryClub without;
    EXPECT_EQ(answer(without, R"({"do":"sell","scale":"fruit","card":"7","product":"apples"})"),
              R"({"error":"there is no scale here","ok":false})");
    EXPECT_EQ(answer(without, R"({"do":"sell","lamp":"Sun","card":"7","minutes":5})"),
              R"({"error":"there is no lamp here","ok":false})");
    EXPECT_EQ(answer(without, R"({"do":"sell","terminal":"bar","cents":1})"),
              R"({"error":"there is no terminal here","ok":false})");
    EXPECT_EQ(answer(without, R"({"do":"cancel","device":"bar"})"),
              R"({"error":"there is nothing to withdraw here","ok":false})");
}

} // namespace
} // namespace tnv5::tests

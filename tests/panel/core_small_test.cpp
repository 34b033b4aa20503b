// Sizes, texts and the search: what the panel computes.

#include "support/text_printers.h"
#include "tnv5/panel/gate_search.h"
#include "tnv5/panel/image_list.h"
#include "tnv5/panel/panel_sizes.h"
#include "tnv5/panel/panel_texts.h"
#include "tnv5/panel/turn_styler_list.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5::panel;

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

TEST(PanelSizes, CaptionIsAQuarterHalvesToTheEvenNeighbour)
{
    const int quarters[] = {0, 0, 0, 1, 1, 1, 2, 2, 2, 2, 2, 3, 3, 3, 4, 4, 4, 4, 4, 5, 5, 5, 6};
    for (int size = 0; size < int(std::size(quarters)); ++size) {
        EXPECT_EQ(captionHeight(size), quarters[size]) << size;
    }
    EXPECT_EQ(captionHeight(48), 12);
    EXPECT_EQ(captionHeight(50), 12);
    EXPECT_EQ(captionHeight(54), 14);
    EXPECT_EQ(captionHeight(-1), 0);
    EXPECT_EQ(captionHeight(-6), 0);
    EXPECT_EQ(captionHeight(kLeast), 0);
}

TEST(PanelSizes, FollowFromTheButtons)
{
    EXPECT_EQ(mainHeight(48), 53);
    EXPECT_EQ(sideWidth(48), 48);
    EXPECT_EQ(buttonExtent(48), 47);
    EXPECT_EQ(mainHeight(0), 5);
    EXPECT_EQ(sideWidth(0), 0);
    EXPECT_EQ(buttonExtent(0), 0);
    EXPECT_EQ(buttonExtent(1), 0);
    EXPECT_EQ(buttonExtent(2), 1);
}

TEST(PanelSizes, NoneIsBelowNothingOrAboveWhatAWidgetCanBe)
{
    EXPECT_EQ(mainHeight(-4), 1);
    EXPECT_EQ(mainHeight(-5), 0);
    EXPECT_EQ(mainHeight(-6), 0);
    EXPECT_EQ(sideWidth(-1), 0);
    EXPECT_EQ(buttonExtent(kLeast), 0);
    EXPECT_EQ(mainHeight(kLeast), 0);
    EXPECT_EQ(mainHeight(kMost), 16'777'215);
    EXPECT_EQ(sideWidth(kMost), 16'777'215);
    EXPECT_EQ(buttonExtent(kMost), 16'777'215);
    EXPECT_EQ(captionHeight(kMost), 4'194'304);
}

TEST(PanelTexts, AreTheSystemsOwn)
{
    EXPECT_EQ(kItemsCount, "ItemsCount");
    EXPECT_EQ(kGateA, "GateA");
    EXPECT_EQ(kGateB, "GateB");
    EXPECT_EQ(kCaption, "Caption");
    EXPECT_EQ(kEntryA, "EntryA");
    EXPECT_EQ(kEntryB, "EntryB");
}

TEST(PanelTexts, StateStandsInBracketsBehindTheCaption)
{
    EXPECT_EQ(stateCaption("Main entrance", "OPEN"), "Main entrance [OPEN]");
    EXPECT_EQ(stateCaption("", ""), " []");
    EXPECT_EQ(stateCaption("%1 %2", "%1"), "%1 %2 [%1]");
}

struct TGates
{
    TGates& add(const QString& a, const QString& b, int entryA = 0, int entryB = 0)
    {
        list.Add()->setRecord({a, b, {}, entryA, entryB});
        return *this;
    }
    int find(const QString& address) const { return indexOfGate(list.items(), address); }
    TTurnStylerList list;
};

TEST(GateSearch, FindsTheFirstByEitherDirection)
{
    TGates gates;
    gates.add("01A", "02A").add("03D", "01A").add("04A", "04B");
    EXPECT_EQ(gates.find("01A"), 0);
    EXPECT_EQ(gates.find("02A"), 0);
    EXPECT_EQ(gates.find("03D"), 1);
    EXPECT_EQ(gates.find("04B"), 2);
    EXPECT_EQ(gates.find("05A"), -1);
    EXPECT_EQ(TGates().find(""), -1);
}

TEST(GateSearch, IsExact)
{
    TGates gates;
    gates.add("01a", " 02A");
    EXPECT_EQ(gates.find("01A"), -1);
    EXPECT_EQ(gates.find("02A"), -1);
    EXPECT_EQ(gates.find("01"), -1);
    EXPECT_EQ(gates.find(" 02A"), 0);
}

TEST(GateSearch, NoAddressIsFoundWhereADirectionHasNone)
{
    TGates gates;
    gates.add("01A", "02A").add("03D", "").add("", "");
    EXPECT_EQ(gates.find(""), 1);
    EXPECT_EQ(gates.find(QString()), 1);
}

TEST(GateSearch, EntryIsThatOfTheDirection)
{
    TGates gates;
    gates.add("01A", "02A", 5, 6).add("03D", "03D", 7, 8);
    const auto& first = *gates.list.GetTurnStylerItem(0);
    EXPECT_EQ(entryOf(first, "01A"), 5);
    EXPECT_EQ(entryOf(first, "02A"), 6);
    EXPECT_EQ(entryOf(*gates.list.GetTurnStylerItem(1), "03D"), 8);
}

TEST(ImageList, NumbersItsPictures)
{
    TImageList list;
    QImage red(2, 3, QImage::Format_RGB32);
    red.fill(Qt::red);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.Add(red), 0);
    EXPECT_EQ(list.Add(QImage(1, 1, QImage::Format_RGB32)), 1);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list.GetBitmap(0), red);
    EXPECT_EQ(list.GetBitmap(1).width(), 1);
    EXPECT_TRUE(list.GetBitmap(2).isNull());
    EXPECT_TRUE(list.GetBitmap(-1).isNull());
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
}

} // namespace

// The list and its items, with a desk that only writes down what it hears.

#include "support/published.h"
#include "support/text_printers.h"
#include "tnv5/panel/turn_styler_list.h"

#include <QPointer>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

struct TDesk final : IGateDesk
{
    void directionClicked(TTurnStylerItem& item, const QString& AGate) override
    {
        heard << item.Caption() + u' ' + AGate;
    }
    void pictureClicked(TTurnStylerItem& item) override { heard << item.Caption() + " picture"; }
    void abandoned(std::unique_ptr<IGateView> view) override { views.push_back(std::move(view)); }
    void reordered() override { heard << "reordered"; }

    QStringList heard;
    std::vector<std::unique_ptr<IGateView>> views;
};

struct TView final : IGateView
{
    explicit TView(int& AFreed) : freed(AFreed) {}
    ~TView() override { ++freed; }
    Q_DISABLE_COPY_MOVE(TView)
    QFrame* MainPanel() const override { return nullptr; }
    QLabel* CaptionPanel() const override { return nullptr; }
    QLabel* StateImage() const override { return nullptr; }
    int& freed;
};

class GateList : public ::testing::Test
{
protected:
    TTurnStylerItem* add(const QString& caption)
    {
        TTurnStylerItem* const item = list.Add();
        item->SetCaption(caption);
        return item;
    }
    static QString captions(const TTurnStylerList& of)
    {
        QStringList texts;
        for (const auto* const item : of.items()) {
            texts << item->Caption();
        }
        return texts.join(u' ');
    }
    QString captions() const { return captions(list); }

    TDesk desk;
    TTurnStylerList list{&desk};
};

TEST(GateItem, PublishesWhatItIs)
{
    const tests::TPublishedTable table{{"Caption", QString()}, {"GateA", QString()}, {"GateB", QString()},
                                       {"EntryA", 0},          {"EntryB", 0},        {"IP", QString()}};
    tests::expectPublished(TTurnStylerItem::staticMetaObject, table);
    tests::expectTypes(TTurnStylerItem::staticMetaObject, table);
    TTurnStylerItem item;
    tests::expectDefaults(item, table);
    tests::expectKeepsNumbers(item, table);
    for (const char* name : {"Caption", "GateA", "GateB", "IP"}) {
        EXPECT_TRUE(item.setProperty(name, QString(name)));
    }
    for (const char* name : {"Caption", "GateA", "GateB", "IP"}) {
        EXPECT_EQ(item.property(name).toString(), name);
    }
    EXPECT_EQ(item.record(), (TGateRecord{"GateA", "GateB", "Caption", 101, 102}));
}

TEST(GateItem, HasNothingOnScreenAtFirst)
{
    const TTurnStylerItem item;
    EXPECT_EQ(item.MainPanel(), nullptr);
    EXPECT_EQ(item.CaptionPanel(), nullptr);
    EXPECT_EQ(item.StateImage(), nullptr);
    EXPECT_EQ(item.Index(), -1);
    EXPECT_EQ(item.List(), nullptr);
}

TEST(GateItem, OfNoListIsDeafToClicks)
{
    TTurnStylerItem item;
    item.GateABtnclick(nullptr);
    item.GateBBtnclick(nullptr);
    item.imgBtnclick(nullptr);
    TTurnStylerList list;
    EXPECT_EQ(list.GetOwner(), nullptr);
    list.Add()->GateABtnclick(nullptr);
}

TEST_F(GateList, AddsAtTheEnd)
{
    EXPECT_EQ(list.Count(), 0);
    TTurnStylerItem* const first = add("a");
    TTurnStylerItem* const second = add("b");
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list.property("Count").toInt(), 2);
    EXPECT_EQ(list.GetTurnStylerItem(0), first);
    EXPECT_EQ(list.GetTurnStylerItem(1), second);
    EXPECT_EQ(second->Index(), 1);
    EXPECT_EQ(second->List(), &list);
    EXPECT_EQ(second->parent(), &list); // so that no script engine collects it
    EXPECT_EQ(list.GetTurnStylerItem(2), nullptr);
    EXPECT_EQ(list.GetTurnStylerItem(-1), nullptr);
    const auto* const third = new TTurnStylerItem(&list);
    EXPECT_EQ(third->Index(), 2);
}

TEST_F(GateList, ClicksReachTheDesk)
{
    TTurnStylerItem* const item = add("a");
    item->SetGateA("01A");
    item->SetGateB("02A");
    item->GateABtnclick(item);
    item->GateBBtnclick(nullptr);
    item->imgBtnclick(nullptr);
    EXPECT_EQ(desk.heard.join(u',').toStdString(), "a 01A,a 02A,a picture");
}

TEST_F(GateList, RemovingAGateFreesItsControls)
{
    int freed = 0;
    add("a");
    const QPointer<TTurnStylerItem> second = add("b");
    TTurnStylerItem* const third = add("c");
    second->setView(std::make_unique<TView>(freed));
    list.Delete(3);
    list.Delete(-1);
    EXPECT_EQ(captions(), "a b c");
    list.Delete(1);
    EXPECT_TRUE(second.isNull());
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(captions(), "a c");
    delete third;
    EXPECT_EQ(captions(), "a");
    EXPECT_TRUE(desk.views.empty());
}

TEST_F(GateList, ClearingLeavesTheControlsToTheDesk)
{
    int freed = 0;
    const QPointer<TTurnStylerItem> first = add("a");
    first->setView(std::make_unique<TView>(freed));
    add("b");
    list.Clear();
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(freed, 0);
    EXPECT_EQ(desk.views.size(), 1U);
    list.Clear();
    EXPECT_EQ(desk.views.size(), 1U);
    desk.views.clear();
    EXPECT_EQ(freed, 1);
}

TEST(GateListAlone, FreesItsGates)
{
    int freed = 0;
    QPointer<TTurnStylerItem> item;
    {
        TTurnStylerList list;
        item = list.Add();
        item->setView(std::make_unique<TView>(freed));
        list.Add();
    }
    EXPECT_TRUE(item.isNull());
    EXPECT_EQ(freed, 1);
    TTurnStylerList nobodys;
    nobodys.Add()->setView(std::make_unique<TView>(freed));
    nobodys.Clear();
    EXPECT_EQ(freed, 2);
}

TEST_F(GateList, APlaceTakesANewGate)
{
    int freed = 0;
    add("a");
    const QPointer<TTurnStylerItem> former = add("b");
    former->setView(std::make_unique<TView>(freed));
    add("c");
    auto* const fresh = new TTurnStylerItem;
    fresh->SetCaption("x");
    list.SetTurnStylerItem(1, fresh);
    EXPECT_EQ(captions(), "a x c");
    EXPECT_TRUE(former.isNull());
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(fresh->List(), &list);
    EXPECT_EQ(fresh->parent(), &list);
    EXPECT_EQ(fresh->Index(), 1);
    EXPECT_EQ(desk.heard, QStringList{"reordered"});
}

TEST_F(GateList, APlaceTakesAnotherGateOfTheList)
{
    add("a");
    add("b");
    TTurnStylerItem* const c = add("c");
    int freed = 0;
    c->setView(std::make_unique<TView>(freed));
    list.SetTurnStylerItem(0, c);
    EXPECT_EQ(captions(), "c b");
    list.SetTurnStylerItem(1, c);
    EXPECT_EQ(captions(), "c");
    EXPECT_EQ(freed, 0); // it keeps its controls
}

TEST_F(GateList, APlaceTakesAGateOfAnotherList)
{
    add("a");
    TTurnStylerList other;
    TTurnStylerItem* const foreign = other.Add();
    foreign->SetCaption("x");
    int freed = 0;
    foreign->setView(std::make_unique<TView>(freed));
    list.SetTurnStylerItem(0, foreign);
    EXPECT_EQ(captions(), "x");
    EXPECT_EQ(captions(other), "");
    EXPECT_EQ(foreign->List(), &list);
    EXPECT_EQ(freed, 1);
}

TEST_F(GateList, APlaceKeepsItsGate)
{
    TTurnStylerItem* const item = add("a");
    list.SetTurnStylerItem(0, item);
    list.SetTurnStylerItem(0, nullptr);
    auto fresh = std::make_unique<TTurnStylerItem>();
    list.SetTurnStylerItem(1, fresh.get());
    list.SetTurnStylerItem(-1, fresh.get());
    EXPECT_EQ(captions(), "a");
    EXPECT_EQ(list.GetTurnStylerItem(0), item);
    EXPECT_EQ(fresh->List(), nullptr);
    EXPECT_TRUE(desk.heard.isEmpty());
}

} // namespace

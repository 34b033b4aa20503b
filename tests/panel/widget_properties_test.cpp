#include "support/published_suite.h"
#include "widget_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::panel;
using namespace tnv5::tests;

struct TPanelRoom
{
    using Component = TTurnStyler;
    static TPublishedTable table()
    {
        TPublishedTable rows{{"IniSection", QString()},
                             {"IniFile", QString()},
                             {"TurnStylerList", static_cast<TTurnStylerList*>(nullptr), TPublished::ReadOnly},
                             {"OnTurnStylerBtnClick", TTurnStylerBtnClick()},
                             {"Images", static_cast<TImageList*>(nullptr)},
                             {"ScrollBox", static_cast<QScrollArea*>(nullptr)},
                             {"ImagesBtn", static_cast<TImageList*>(nullptr)},
                             {"DefaultImage", 0},
                             {"ASelectedIndex", -1},
                             {"ButtonSize", 0}};
        rows[2].isDefault = [](const QVariant& value) {
            const auto* const list = value.value<TTurnStylerList*>();
            return list != nullptr && list->Count() == 0; // its own
        };
        return rows;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(GatePanel, Published, TPanelRoom);

using TPanelProperties = TPanelTest;

TEST_F(TPanelProperties, KeepTheirOwn)
{
    EXPECT_TRUE(gates->setProperty("IniSection", " a "));
    EXPECT_TRUE(gates->setProperty("IniFile", " b "));
    EXPECT_EQ(gates->IniSection(), " a ");
    EXPECT_EQ(gates->IniFile(), " b ");
    EXPECT_EQ(gates->property("Images").value<TImageList*>(), &states);
    EXPECT_EQ(gates->property("ImagesBtn").value<TImageList*>(), &glyphs);
    EXPECT_EQ(gates->property("ScrollBox").value<QScrollArea*>(), box.get());
    EXPECT_EQ(gates->TurnStylerList()->GetOwner(), gates.get());
    EXPECT_TRUE(gates->setProperty("ButtonSize", -7));
    EXPECT_EQ(gates->ButtonSize(), -7);
}

TEST_F(TPanelProperties, EventIsAProperty)
{
    const auto event = gates->property("OnTurnStylerBtnClick").value<TTurnStylerBtnClick>();
    event(add("Main", "", ""), 5, "ip", "gate");
    trace.expect({"click Main 5 ip gate"});
    EXPECT_TRUE(gates->setProperty("OnTurnStylerBtnClick", QVariant::fromValue(TTurnStylerBtnClick())));
    gates->CTurnStylerBtnClick(item(0), 1, "a", "b");
    trace.expect({});
}

TEST_F(TPanelProperties, WhatIsDestroyedCountsAsNone)
{
    auto own = std::make_unique<TImageList>();
    gates->SetImages(own.get());
    gates->SetImagesBtn(own.get());
    own.reset();
    box.reset();
    EXPECT_EQ(gates->Images(), nullptr);
    EXPECT_EQ(gates->ImagesBtn(), nullptr);
    EXPECT_EQ(gates->ScrollBox(), nullptr);
    addThree();
    gates->SetUpItems();
    EXPECT_EQ(item(0)->MainPanel(), nullptr);
}

} // namespace

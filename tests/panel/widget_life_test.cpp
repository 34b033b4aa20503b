// What is freed when, and handlers that raise, free or destroy.

#include "widget_fixture.h"

#include <QCheckBox>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

using PanelLife = TPanelTest;
using PanelHandler = TPanelTest;

TEST_F(PanelLife, ClearingFreesTheControls)
{
    show();
    const QPointer<QFrame> panels[] = {item(0)->MainPanel(), item(1)->MainPanel(), item(2)->MainPanel()};
    gates->ClearItem(1);
    EXPECT_TRUE(panels[1].isNull());
    EXPECT_EQ(item(1)->MainPanel(), nullptr);
    EXPECT_EQ(item(1)->CaptionPanel(), nullptr);
    EXPECT_EQ(item(1)->StateImage(), nullptr);
    EXPECT_FALSE(panels[0].isNull());
    gates->ClearItem(3);
    gates->ClearItem(-1);
    EXPECT_FALSE(panels[0].isNull());
    EXPECT_FALSE(panels[2].isNull());
    gates->ClearItems();
    EXPECT_TRUE(panels[0].isNull());
    EXPECT_TRUE(panels[2].isNull());
    gates->ClearItems();
    EXPECT_EQ(gates->TurnStylerList()->Count(), 3);
    EXPECT_TRUE(box->widget()->findChildren<QWidget*>().isEmpty());
}

TEST_F(PanelLife, AClearedGateIsBuiltAnew)
{
    show();
    gates->Setitemstate("01A", 1, "OPEN");
    item(0)->SetGateA(" ");
    gates->SetButtonSize(20);
    gates->ClearItem(0);
    gates->SetUpItems();
    settle();
    EXPECT_EQ(captionTexts()[0], "Main");
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(0)));
    EXPECT_FALSE(button(0, 0)->isEnabled());
    EXPECT_EQ(item(0)->MainPanel()->geometry(), QRect(0, 0, 398, 25));
    EXPECT_EQ(item(1)->MainPanel()->geometry(), QRect(0, 25, 398, 53));
}

TEST_F(PanelLife, ClearingTheListLeavesDeadPanels)
{
    show();
    const QPointer<QFrame> panel = item(0)->MainPanel();
    QPushButton* const dead = button(0, 0);
    QLabel* const picture = item(0)->StateImage();
    gates->TurnStylerList()->Clear();
    ASSERT_FALSE(panel.isNull());
    EXPECT_TRUE(panel->isVisible());
    click(dead);
    click(picture);
    trace.expect({});
    EXPECT_EQ(gates->ASelectedIndex(), -1);
    add("New", "05A", "");
    gates->SetUpItems();
    settle();
    EXPECT_EQ(item(0)->MainPanel()->y(), 159); // below the dead ones
    gates->ClearItems();
    gates->SetSelectedIndex(0);
    EXPECT_FALSE(panel.isNull());
    gates.reset();
    EXPECT_TRUE(panel.isNull());
}

TEST_F(PanelLife, RemovingAGateFreesItsPanel)
{
    show();
    const QPointer<QFrame> panel = item(1)->MainPanel();
    gates->TurnStylerList()->Delete(1);
    EXPECT_TRUE(panel.isNull());
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Main", "Pool"}));
    EXPECT_EQ(item(1)->MainPanel()->y(), 53);
    click(button(1, 0));
    trace.expect({"click Pool 1 10.0.0.3 04A"});
}

TEST_F(PanelLife, TheComponentsEndFreesAll)
{
    show();
    const QPointer<QFrame> panel = item(0)->MainPanel();
    const QPointer<TTurnStylerItem> gate = item(0);
    gates.reset();
    EXPECT_TRUE(panel.isNull());
    EXPECT_TRUE(gate.isNull());
    EXPECT_TRUE(box->widget()->findChildren<QWidget*>().isEmpty());
}

TEST_F(PanelLife, TheBoxMayGoFirst)
{
    show();
    gates->TurnStylerList()->Clear();
    addThree();
    gates->SetUpItems();
    box = std::make_unique<QScrollArea>();
    EXPECT_EQ(item(0)->MainPanel(), nullptr);
    gates->Setitemstate("01A", 1, "x");
    gates->SetSelectedIndex(0);
    gates->SetUpItems();
    EXPECT_EQ(item(0)->MainPanel(), nullptr);
    gates->SetScrollBox(box.get());
    gates->SetUpItems();
    EXPECT_EQ(item(0)->MainPanel()->parentWidget(), box->widget());
    gates->TurnStylerList()->Clear();
    gates->ClearItems();
}

TEST_F(PanelLife, PartsThatAHostDestroysAreMissed)
{
    show();
    delete item(0)->CaptionPanel();
    delete item(0)->StateImage();
    gates->Setitemstate("01A", 1, "x");
    gates->SetUpItems();
    gates->SetSelectedIndex(0);
    delete TGateParts(item(1)).centre;
    gates->Setitemstate("03D", 1, "x");
    EXPECT_EQ(bordered(), "0");
    delete box->widget();
    gates->SetUpItems();
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Main", "Staff", "Pool"}));
}

TEST_F(PanelHandler, RaisesAndTheSelectionStands)
{
    show();
    trace.raiseOnce("click");
    click(button(1, 0));
    EXPECT_EQ(bordered(), "1");
    trace.expect({"click Staff 1 10.0.0.2 03D", tests::raised("host trouble")});
    click(button(0, 0));
    trace.expect({"click Main 0 10.0.0.1 01A"});
}

TEST_F(PanelHandler, RaisesToItsCaller)
{
    show();
    trace.OnLine = [](const QString&) { throw std::runtime_error("host trouble"); };
    EXPECT_THROW(item(2)->GateBBtnclick(nullptr), std::runtime_error);
    EXPECT_THROW(gates->CTurnStylerBtnClick(nullptr, 0, "", ""), std::runtime_error);
    EXPECT_EQ(bordered(), "2");
    trace.expect({"click Pool 2 10.0.0.3 04B", "click nobody 0  "});
}

TEST_F(PanelHandler, ReplacesTheHandler)
{
    show();
    trace.OnLine = [this](const QString&) { gates->SetOnTurnStylerBtnClick(nullptr); };
    click(button(0, 0));
    click(button(0, 0));
    trace.expect({"click Main 0 10.0.0.1 01A"});
}

/// Clicks in each way on the first gate, with a handler that does something; nothing that is gone is touched.
void expectSurvived(const std::function<void(TPanelFixture&)>& act,
                    const std::function<void(TPanelFixture&)>& verify)
{
    const std::function<void(TPanelFixture&)> ways[] = {
        [](TPanelFixture& f) { f.click(f.button(0, 0)); },
        [](TPanelFixture& f) { QTest::keyClick(f.button(0, 1), Qt::Key_Space); },
        [](TPanelFixture& f) { f.button(0, 0)->click(); },
        [](TPanelFixture& f) { f.item(0)->GateABtnclick(nullptr); }};
    for (const auto& way : ways) {
        for (const bool raises : {false, true}) {
            TPanelFixture fixture;
            fixture.show();
            fixture.trace.OnLine = [&](const QString& line) {
                if (line.startsWith("click")) {
                    act(fixture);
                    if (raises) {
                        throw platform::EAbort();
                    }
                }
            };
            try {
                way(fixture);
            } catch (const platform::EAbort&) { // to the caller of the gate's method
            }
            EXPECT_EQ(fixture.trace.take().size(), 1);
            verify(fixture);
            fixture.settle();
            verify(fixture);
        }
    }
}

TEST_F(PanelHandler, ClearsItsGate)
{
    QPointer<QFrame> panel;
    expectSurvived(
        [&](TPanelFixture& f) {
            panel = f.item(0)->MainPanel();
            f.gates->ClearItem(0);
            // it leaves the box at once
            EXPECT_EQ(f.box->widget()->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly).size(),
                      2);
            EXPECT_TRUE(panel.isNull() || (panel->parent() == nullptr && !panel->isVisible()));
        },
        [](TPanelFixture& f) {
            EXPECT_EQ(f.item(0)->MainPanel(), nullptr);
            EXPECT_NE(f.item(1)->MainPanel(), nullptr);
        });
    EXPECT_TRUE(panel.isNull());
}

TEST_F(PanelHandler, ControlsOutliveTheirClick)
{
    show();
    const QPointer<QPushButton> clicked = button(0, 0);
    trace.OnLine = [&](const QString&) {
        gates->ClearItems();
        EXPECT_FALSE(clicked.isNull()); // Qt is not done with it
    };
    click(clicked);
    trace.expect({"click Main 0 10.0.0.1 01A"});
    settle();
    EXPECT_TRUE(clicked.isNull());
}

TEST_F(PanelHandler, DeadControlsStayDead)
{
    show();
    QPushButton* const clicked = button(0, 0);
    trace.OnLine = [&](const QString&) {
        gates->TurnStylerList()->Delete(0);
        clicked->click();
    };
    click(clicked);
    trace.expect({"click Main 0 10.0.0.1 01A"});
}

TEST_F(PanelHandler, ClearsAndBuildsAnew)
{
    expectSurvived(
        [](TPanelFixture& f) {
            f.gates->ClearItems();
            f.gates->SetUpItems();
        },
        [](TPanelFixture& f) {
            EXPECT_EQ(f.captionTexts(), (QStringList{"Main", "Staff", "Pool"}));
            EXPECT_EQ(f.box->widget()->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly).size(),
                      3);
        });
}

TEST_F(PanelHandler, RemovesItsGate)
{
    expectSurvived([](TPanelFixture& f) { f.gates->TurnStylerList()->Delete(0); },
                   [](TPanelFixture& f) {
                       EXPECT_EQ(f.captionTexts(), (QStringList{"Staff", "Pool"}));
                   });
}

TEST_F(PanelHandler, ClearsTheList)
{
    expectSurvived(
        [](TPanelFixture& f) { f.gates->TurnStylerList()->Clear(); },
        [](TPanelFixture& f) {
            EXPECT_EQ(f.box->widget()->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly).size(),
                      3);
        });
}

TEST_F(PanelHandler, DestroysTheComponent)
{
    expectSurvived(
        [](TPanelFixture& f) { f.gates.reset(); },
        [](TPanelFixture& f) { EXPECT_TRUE(f.box->widget()->findChildren<QWidget*>().isEmpty()); });
}

TEST_F(PanelHandler, DestroysTheBox)
{
    expectSurvived([](TPanelFixture& f) { f.box.reset(); },
                   [](TPanelFixture& f) { EXPECT_EQ(f.item(0)->MainPanel(), nullptr); });
}

TEST_F(PanelHandler, DestroysTheComponentAndTheBox)
{
    expectSurvived(
        [](TPanelFixture& f) {
            f.gates.reset();
            f.box.reset();
        },
        [](TPanelFixture&) {});
}

TEST_F(PanelHandler, PumpsMessagesAndClicksAgain)
{
    show();
    trace.once("click Main", [this] {
        click(button(0, 1));
        gates->ClearItems();
        settle();
        item(1)->GateABtnclick(nullptr);
    });
    click(button(0, 0));
    settle();
    trace.expect({"click Main 0 10.0.0.1 01A", "click Main 0 10.0.0.1 02A", "click Staff 1 10.0.0.2 03D"});
}

} // namespace

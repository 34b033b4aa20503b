// States, selection and clicks.

#include "widget_fixture.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

using PanelState = TPanelTest;
using PanelSelection = TPanelTest;
using PanelClick = TPanelTest;

const QStringList kCaptions{"Main", "Staff", "Pool"};

TEST_F(PanelState, PictureAndText)
{
    show();
    gates->Setitemstate("02A", 1, "OPEN");
    EXPECT_EQ(captionTexts(), (QStringList{"Main [OPEN]", "Staff", "Pool"}));
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(1)));
    EXPECT_TRUE(shows(item(1)->StateImage(), states.GetBitmap(0)));
    gates->Setitemstate("04A", 2, "");
    EXPECT_EQ(captionTexts(), (QStringList{"Main [OPEN]", "Staff", "Pool []"}));
    EXPECT_TRUE(shows(item(2)->StateImage(), states.GetBitmap(2)));
    EXPECT_EQ(item(0)->Caption(), "Main");
}

TEST_F(PanelState, ANewCaptionIsSeenWithTheNextState)
{
    show();
    item(0)->SetCaption("Renamed");
    EXPECT_EQ(captionTexts(), kCaptions);
    gates->Setitemstate("01A", 0, "x");
    EXPECT_EQ(captionTexts()[0], "Renamed [x]");
}

TEST_F(PanelState, OfAnUnknownGateChangesNothing)
{
    show();
    gates->Setitemstate("09A", 1, "OPEN");
    gates->Setitemstate("01a", 1, "OPEN");
    EXPECT_EQ(captionTexts(), kCaptions);
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(0)));
}

TEST_F(PanelState, OfNoAddressIsThatOfTheFirstGateWithoutOne)
{
    show();
    gates->Setitemstate("", 1, "x");
    EXPECT_EQ(captionTexts(), (QStringList{"Main", "Staff [x]", "Pool"}));
}

TEST_F(PanelState, WithoutPicturesChangesNothing)
{
    show();
    gates->SetImages(nullptr);
    gates->Setitemstate("01A", 1, "OPEN");
    EXPECT_EQ(captionTexts(), kCaptions);
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(0)));
}

TEST_F(PanelState, WithoutSuchAPictureShowsTheText)
{
    show();
    for (const int none : {-1, 3, 2'147'483'647}) {
        gates->Setitemstate("01A", 1, "y");
        EXPECT_FALSE(item(0)->StateImage()->pixmap().isNull());
        gates->Setitemstate("01A", none, "x");
        EXPECT_EQ(captionTexts()[0], "Main [x]");
        EXPECT_TRUE(item(0)->StateImage()->pixmap().isNull()) << none;
    }
}

TEST_F(PanelState, OfAGateThatIsNotBuiltChangesNothing)
{
    addThree();
    gates->Setitemstate("01A", 1, "OPEN");
    gates->SetUpItems();
    EXPECT_EQ(captionTexts(), kCaptions);
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(0)));
}

TEST_F(PanelState, OfTheFirstOfTwoGates)
{
    add("a", "01A", "x");
    add("b", "x", "01A");
    gates->SetUpItems();
    gates->Setitemstate("01A", 1, "1");
    gates->Setitemstate("x", 1, "2");
    EXPECT_EQ(captionTexts(), (QStringList{"a [2]", "b"}));
}

TEST_F(PanelState, FindsGatesAndEntries)
{
    show();
    item(0)->SetEntryA(5);
    item(0)->SetEntryB(6);
    EXPECT_EQ(gates->FindItemByGate("02A"), 0);
    EXPECT_EQ(gates->FindItemByGate("04B"), 2);
    EXPECT_EQ(gates->FindItemByGate("04b"), -1);
    EXPECT_EQ(gates->FindItemByGateEntry("01A"), 5);
    EXPECT_EQ(gates->FindItemByGateEntry("02A"), 6);
    EXPECT_EQ(gates->FindItemByGateEntry("03D"), 0);
    EXPECT_EQ(gates->FindItemByGateEntry("none"), -1);
    item(0)->SetGateA("02A");
    EXPECT_EQ(gates->FindItemByGateEntry("02A"), 6);
}

TEST_F(PanelSelection, OneGateHasALine)
{
    show();
    EXPECT_EQ(bordered(), "");
    gates->SetSelectedIndex(2);
    EXPECT_EQ(bordered(), "2");
    gates->SetSelectedIndex(0);
    EXPECT_EQ(bordered(), "0");
    EXPECT_EQ(gates->ASelectedIndex(), 0);
    EXPECT_TRUE(gates->setProperty("ASelectedIndex", 1));
    EXPECT_EQ(bordered(), "1");
}

TEST_F(PanelSelection, AnIndexWithoutAGateRemovesTheLine)
{
    show();
    for (const int none : {-1, 3, 4, -2, -2'147'483'647}) {
        gates->SetSelectedIndex(1);
        gates->SetSelectedIndex(none);
        EXPECT_EQ(bordered(), "") << none;
        EXPECT_EQ(gates->ASelectedIndex(), none);
    }
}

TEST_F(PanelSelection, TheSameIndexDrawsAnew)
{
    show();
    gates->SetSelectedIndex(1);
    gates->ClearItem(1);
    gates->SetUpItems();
    EXPECT_EQ(bordered(), "");
    gates->SetSelectedIndex(1);
    EXPECT_EQ(bordered(), "1");
}

TEST_F(PanelSelection, OfAGateThatIsNotBuilt)
{
    show();
    gates->SetSelectedIndex(0);
    gates->ClearItem(1);
    gates->SetSelectedIndex(1);
    EXPECT_EQ(bordered(), "");
}

TEST_F(PanelSelection, TheLineTakesItsPlace)
{
    show();
    gates->SetSelectedIndex(0);
    settle();
    const TGateParts parts(item(0));
    EXPECT_EQ(item(0)->MainPanel()->geometry(), QRect(0, 0, 398, 53));
    EXPECT_EQ(parts.left->geometry(), QRect(1, 1, 48, 51));
    EXPECT_EQ(parts.right->geometry(), QRect(349, 1, 48, 51));
    EXPECT_EQ(button(0, 0)->geometry(), QRect(0, 0, 47, 47));
    gates->SetSelectedIndex(-1);
    settle();
    EXPECT_EQ(parts.left->geometry(), QRect(0, 0, 48, 53));
}

TEST_F(PanelClick, ByMouse)
{
    show();
    click(button(0, 1));
    EXPECT_EQ(bordered(), "0");
    trace.expect({"click Main 0 10.0.0.1 02A"});
    click(button(2, 0));
    EXPECT_EQ(bordered(), "2");
    trace.expect({"click Pool 2 10.0.0.3 04A"});
    click(button(1, 1)); // disabled
    EXPECT_EQ(bordered(), "2");
    trace.expect({});
}

TEST_F(PanelClick, ByTheSpaceKeyOnceItHasTheFocus)
{
    show();
    box->activateWindow();
    EXPECT_FALSE(button(0, 0)->hasFocus());
    click(button(0, 0));
    trace.expect({"click Main 0 10.0.0.1 01A"});
    EXPECT_TRUE(button(0, 0)->hasFocus());
    gates->SetSelectedIndex(-1);
    QTest::keyClick(box.get()->window()->focusWidget(), Qt::Key_Space);
    trace.expect({"click Main 0 10.0.0.1 01A"});
    EXPECT_EQ(bordered(), "0");
}

TEST_F(PanelClick, OnThePictureOnlySelects)
{
    show();
    click(item(1)->StateImage());
    EXPECT_EQ(bordered(), "1");
    trace.expect({});
}

TEST_F(PanelClick, OnThePictureIsOneOfTheLeftButtonInsideIt)
{
    show();
    QLabel* const image = item(1)->StateImage();
    QTest::mouseClick(image, Qt::RightButton);
    QTest::mousePress(image, Qt::LeftButton);
    EXPECT_EQ(bordered(), "");
    QTest::mouseRelease(image, Qt::LeftButton, {}, QPoint(-5, -5));
    EXPECT_EQ(bordered(), "");
    QTest::mouseRelease(image, Qt::LeftButton);
    EXPECT_EQ(bordered(), "");
    QTest::mousePress(image, Qt::LeftButton);
    QTest::mouseRelease(image, Qt::RightButton);
    EXPECT_EQ(bordered(), "");
    QTest::mouseRelease(image, Qt::LeftButton);
    EXPECT_EQ(bordered(), "1");
}

TEST_F(PanelClick, OnTheRestDoesNothing)
{
    show();
    click(item(1)->CaptionPanel());
    click(TGateParts(item(1)).centre);
    EXPECT_EQ(bordered(), "");
    trace.expect({});
}

TEST_F(PanelClick, TakesTheValuesOfThatMoment)
{
    show();
    item(0)->SetGateA("77A");
    item(0)->SetIP("::1");
    item(0)->SetCaption("x");
    gates->TurnStylerList()->SetTurnStylerItem(1, item(0));
    click(button(0, 0));
    trace.expect({"click x 0 ::1 77A"});
}

TEST_F(PanelClick, OnTheSelectedGateDrawsTheLineAnew)
{
    show();
    click(button(0, 0));
    gates->ClearItem(0);
    gates->SetUpItems();
    EXPECT_EQ(bordered(), "");
    click(button(0, 0));
    EXPECT_EQ(bordered(), "0");
}

TEST_F(PanelClick, WithoutAHandlerSelects)
{
    show();
    gates->SetOnTurnStylerBtnClick(nullptr);
    click(button(2, 1));
    EXPECT_EQ(bordered(), "2");
}

TEST_F(PanelClick, TheSelectionIsThereWhenTheHandlerIsCalled)
{
    show();
    trace.OnLine = [this](const QString&) { trace.note("selected " + bordered()); };
    click(button(2, 1));
    trace.expect({"click Pool 2 10.0.0.3 04B", "selected 2"});
}

TEST_F(PanelClick, MethodsOfTheGateAreTheSame)
{
    show();
    item(0)->GateABtnclick(nullptr);
    item(0)->GateBBtnclick(box.get());
    item(1)->imgBtnclick(nullptr);
    trace.expect({"click Main 0 10.0.0.1 01A", "click Main 0 10.0.0.1 02A"});
    EXPECT_EQ(bordered(), "1");
    gates->ClearItems();
    item(2)->GateABtnclick(nullptr); // nothing of it need be built
    trace.expect({"click Pool 2 10.0.0.3 04A"});
    EXPECT_EQ(gates->ASelectedIndex(), 2);
}

TEST_F(PanelClick, EventIsCalledWithWhatItIsGiven)
{
    show();
    gates->CTurnStylerBtnClick(item(1), 7, "ip", "gate");
    gates->CTurnStylerBtnClick(nullptr, -1, "", "");
    trace.expect({"click Staff 7 ip gate", "click nobody -1  "});
    EXPECT_EQ(bordered(), "");
}

} // namespace

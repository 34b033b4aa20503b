// What SetUpItems builds: order, sizes, alignment, colours, enabled states.

#include "widget_fixture.h"

#include <QDialog>
#include <QLayout>
#include <QScrollBar>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

using PanelBuild = TPanelTest;

void expectPlain(const QWidget* widget)
{
    const auto* const panel = qobject_cast<const QFrame*>(widget);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->frameStyle(), QFrame::NoFrame);
    EXPECT_EQ(panel->frameWidth(), 0);
}

TEST_F(PanelBuild, MainPanelHoldsThreePanelsInTheirOrder)
{
    show();
    const TGateParts parts(item(0));
    ASSERT_EQ(parts.children.size(), 3);
    EXPECT_EQ(item(0)->MainPanel()->geometry(), QRect(0, 0, 398, 53)); // the box has a line of its own
    EXPECT_EQ(parts.left->geometry(), QRect(0, 0, 48, 53));
    EXPECT_EQ(parts.right->geometry(), QRect(350, 0, 48, 53));
    EXPECT_EQ(parts.centre->geometry(), QRect(48, 0, 302, 53));
    for (const QWidget* const panel : parts.children) {
        expectPlain(panel);
    }
    expectPlain(item(0)->MainPanel());
    EXPECT_EQ(item(0)->MainPanel()->parentWidget(), box->widget());
}

TEST_F(PanelBuild, CentreHoldsCaptionAndPicture)
{
    show();
    const TGateParts parts(item(0));
    EXPECT_EQ(parts.centre->findChildren<QWidget*>(),
              (QList<QWidget*>{item(0)->CaptionPanel(), item(0)->StateImage()}));
    EXPECT_EQ(item(0)->CaptionPanel()->geometry(), QRect(0, 0, 302, 12));
    EXPECT_EQ(item(0)->StateImage()->geometry(), QRect(0, 12, 302, 41));
    expectPlain(item(0)->CaptionPanel());
    EXPECT_EQ(item(0)->CaptionPanel()->text(), "Main");
}

TEST_F(PanelBuild, CaptionIsNearlyWhiteOnGreyInBothThemes)
{
    show();
    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::yellow);
    const QPalette light = box->palette();
    box->setPalette(dark);
    QLabel* const caption = item(0)->CaptionPanel();
    EXPECT_TRUE(caption->autoFillBackground());
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        EXPECT_EQ(caption->palette().color(group, QPalette::Window), QColor(0x8A, 0x8A, 0x8A));
        EXPECT_EQ(caption->palette().color(group, QPalette::WindowText), QColor(0xFC, 0xFC, 0xFC));
    }
    EXPECT_EQ(caption->backgroundRole(), QPalette::Window);
    EXPECT_EQ(caption->foregroundRole(), QPalette::WindowText);
    EXPECT_EQ(caption->grab().toImage().pixelColor(0, 0), QColor(0x8A, 0x8A, 0x8A));
    box->setPalette(light);
}

TEST_F(PanelBuild, CaptionIsPlainText)
{
    add("<b>R&D</b> &x", "01A", "");
    gates->SetUpItems();
    EXPECT_EQ(item(0)->CaptionPanel()->text(), "<b>R&D</b> &x");
    EXPECT_EQ(item(0)->CaptionPanel()->textFormat(), Qt::PlainText);
    EXPECT_EQ(item(0)->CaptionPanel()->alignment(), Qt::AlignCenter);
    EXPECT_EQ(item(0)->CaptionPanel()->buddy(), nullptr);
}

TEST_F(PanelBuild, SizesFollowFromTheButtons)
{
    const struct
    {
        int size, main, side, button, caption;
    } rows[] = {{-100, 0, 0, 0, 0},   {-4, 1, 0, 0, 0},     {0, 5, 0, 0, 0},       {1, 6, 1, 0, 0},
                {2, 7, 2, 1, 0},      {6, 11, 6, 5, 2},     {10, 15, 10, 9, 2},    {32, 37, 32, 31, 8},
                {50, 55, 50, 49, 12}, {54, 59, 54, 53, 14}, {99, 104, 99, 98, 25}, {150, 155, 150, 149, 38}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        TPanelFixture fixture(row.size);
        fixture.show();
        const TGateParts parts(fixture.item(1));
        const int width = fixture.box->viewport()->width(); // there may be a scroll bar
        EXPECT_EQ(fixture.item(1)->MainPanel()->size(), QSize(width, row.main));
        EXPECT_EQ(fixture.item(1)->MainPanel()->y(), row.main);
        EXPECT_EQ(parts.left->geometry(), QRect(0, 0, row.side, row.main));
        EXPECT_EQ(parts.right->geometry(), QRect(width - row.side, 0, row.side, row.main));
        EXPECT_EQ(parts.centre->geometry(), QRect(row.side, 0, width - 2 * row.side, row.main));
        EXPECT_EQ(fixture.button(1, 0)->geometry(), QRect(0, 0, row.button, row.button));
        EXPECT_EQ(fixture.button(1, 1)->geometry(), QRect(0, 0, row.button, row.button));
        EXPECT_EQ(fixture.item(1)->CaptionPanel()->geometry(),
                  QRect(0, 0, width - 2 * row.side, row.caption));
        EXPECT_EQ(fixture.item(1)->StateImage()->geometry(),
                  QRect(0, row.caption, width - 2 * row.side, row.main - row.caption));
    }
}

TEST_F(PanelBuild, EverythingIsInItsPlaceBeforeTheBoxIsSeen)
{
    addThree();
    gates->SetUpItems();
    EXPECT_EQ(item(2)->MainPanel()->geometry(), QRect(0, 106, item(0)->MainPanel()->width(), 53));
    EXPECT_GT(item(2)->MainPanel()->width(), 96);
    const TGateParts parts(item(2));
    EXPECT_EQ(parts.left->geometry(), QRect(0, 0, 48, 53));
    EXPECT_EQ(item(2)->CaptionPanel()->geometry(), QRect(0, 0, parts.centre->width(), 12));
    EXPECT_EQ(item(2)->StateImage()->geometry(), QRect(0, 12, parts.centre->width(), 41));
    EXPECT_TRUE(item(2)->StateImage()->isVisibleTo(box.get()));
}

TEST_F(PanelBuild, InAVisibleBoxGatesAreSeenAtOnce)
{
    show();
    add("New", "05A", "");
    gates->SetUpItems();
    EXPECT_TRUE(item(3)->StateImage()->isVisible());
    EXPECT_EQ(item(3)->MainPanel()->geometry(), QRect(0, 159, 398, 53));
}

TEST_F(PanelBuild, EnterInADialogPressesNoGate)
{
    QDialog dialog;
    dialog.resize(400, 300);
    box->setParent(&dialog);
    show();
    dialog.show();
    dialog.activateWindow();
    QPushButton* const gate = button(0, 0);
    gate->setFocus();
    EXPECT_FALSE(gate->isDefault());
    QTest::keyClick(&dialog, Qt::Key_Return);
    trace.expect({});
    box->setParent(nullptr);
}

TEST_F(PanelBuild, LongTextsAndLargePicturesWidenNothing)
{
    add(QString(500, u'W'), "01A", "02A");
    states.Add(picture(1000, Qt::black));
    gates->SetDefaultImage(3);
    gates->SetUpItems();
    box->show();
    settle();
    EXPECT_EQ(item(0)->MainPanel()->geometry(), QRect(0, 0, 398, 53));
    EXPECT_EQ(item(0)->CaptionPanel()->geometry(), QRect(0, 0, 302, 12));
    EXPECT_EQ(item(0)->StateImage()->geometry(), QRect(0, 12, 302, 41));
}

TEST_F(PanelBuild, ButtonsAreEnabledWithAnAddress)
{
    add("a", "01A", "02A");
    add("b", "", " \t\n");
    add("c", " x ", "");
    gates->SetUpItems();
    EXPECT_TRUE(button(0, 0)->isEnabled());
    EXPECT_TRUE(button(0, 1)->isEnabled());
    EXPECT_FALSE(button(1, 0)->isEnabled());
    EXPECT_FALSE(button(1, 1)->isEnabled());
    EXPECT_TRUE(button(2, 0)->isEnabled());
    EXPECT_FALSE(button(2, 1)->isEnabled());
    EXPECT_TRUE(button(0, 0)->text().isEmpty());
}

TEST_F(PanelBuild, ButtonsHaveNoTabStop)
{
    show();
    EXPECT_EQ(button(0, 0)->focusPolicy(), Qt::ClickFocus);
    EXPECT_EQ(button(0, 1)->focusPolicy(), Qt::ClickFocus);
    EXPECT_FALSE(button(0, 0)->autoDefault());
    EXPECT_EQ(item(0)->StateImage()->focusPolicy(), Qt::NoFocus);
}

QImage glyphOf(const QPushButton* button)
{
    return button->icon().pixmap(button->iconSize()).toImage().convertToFormat(QImage::Format_ARGB32);
}

TEST_F(PanelBuild, ButtonsShowTheirGlyphs)
{
    show();
    EXPECT_EQ(glyphOf(button(0, 0)), glyphs.GetBitmap(0));
    EXPECT_EQ(glyphOf(button(0, 1)), glyphs.GetBitmap(1));
    EXPECT_EQ(button(0, 0)->iconSize(), QSize(16, 16));
    EXPECT_EQ(button(0, 1)->iconSize(), QSize(20, 20));
}

TEST_F(PanelBuild, ButtonsWithoutGlyphs)
{
    addThree();
    gates->SetImagesBtn(nullptr);
    gates->SetUpItems();
    EXPECT_TRUE(button(0, 0)->icon().isNull());
    TImageList one;
    one.Add(picture(16, Qt::red));
    gates->ClearItems();
    gates->SetImagesBtn(&one);
    gates->SetUpItems();
    EXPECT_FALSE(button(0, 0)->icon().isNull());
    EXPECT_TRUE(button(0, 1)->icon().isNull());
}

TEST_F(PanelBuild, ShowsTheDefaultPicture)
{
    show();
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(0)));
    EXPECT_EQ(item(0)->StateImage()->alignment(), Qt::AlignCenter);
    EXPECT_FALSE(item(0)->StateImage()->hasScaledContents());
    EXPECT_FALSE(item(0)->StateImage()->autoFillBackground());
    gates->ClearItems();
    gates->SetDefaultImage(1);
    gates->SetUpItems();
    EXPECT_TRUE(shows(item(0)->StateImage(), states.GetBitmap(1)));
}

TEST_F(PanelBuild, ShowsNoDefaultPicture)
{
    addThree();
    for (const int none : {-1, -2, 3}) {
        gates->SetDefaultImage(none);
        gates->SetUpItems();
        EXPECT_TRUE(item(0)->StateImage()->pixmap().isNull()) << none;
        gates->ClearItems();
    }
    gates->SetDefaultImage(0);
    gates->SetImages(nullptr);
    gates->SetUpItems();
    EXPECT_TRUE(item(0)->StateImage()->pixmap().isNull());
}

TEST_F(PanelBuild, PicturesAreCopies)
{
    show();
    states.Clear();
    glyphs.Clear();
    EXPECT_TRUE(shows(item(0)->StateImage(), picture(10, Qt::red)));
    EXPECT_EQ(glyphOf(button(0, 0)), picture(16, Qt::yellow));
}

TEST_F(PanelBuild, WithoutABoxNothing)
{
    addThree();
    gates->SetScrollBox(nullptr);
    gates->SetUpItems();
    EXPECT_EQ(item(0)->MainPanel(), nullptr);
    EXPECT_EQ(box->widget(), nullptr);
}

TEST_F(PanelBuild, WhatIsBuiltStaysAsItIs)
{
    show();
    const QFrame* const before = item(0)->MainPanel();
    gates->SetSelectedIndex(1);
    gates->Setitemstate("01A", 1, "OPEN");
    item(0)->SetCaption("Renamed");
    item(1)->SetGateB("09B");
    gates->SetButtonSize(20);
    add("New", "05A", "");
    gates->SetUpItems();
    settle();
    EXPECT_EQ(item(0)->MainPanel(), before);
    EXPECT_EQ(item(0)->MainPanel()->height(), 53);
    EXPECT_FALSE(button(1, 1)->isEnabled());
    EXPECT_EQ(bordered(), "1");
    EXPECT_EQ(captionTexts(), (QStringList{"Main [OPEN]", "Staff", "Pool", "New"}));
    EXPECT_EQ(item(3)->MainPanel()->geometry(), QRect(0, 159, 398, 25));
}

TEST_F(PanelBuild, EarlierSelectionsAreNotShown)
{
    addThree();
    gates->SetSelectedIndex(1);
    gates->SetUpItems();
    EXPECT_EQ(gates->ASelectedIndex(), 1);
    EXPECT_EQ(bordered(), "");
}

TEST_F(PanelBuild, GatesStandInTheListsOrder)
{
    show();
    gates->ClearItem(0);
    gates->SetUpItems();
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Main", "Staff", "Pool"}));
    // the box's children are in the order in which they were made
    QList<QWidget*> panels = box->widget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_EQ(panels, (QList<QWidget*>{item(1)->MainPanel(), item(2)->MainPanel(), item(0)->MainPanel()}));
    gates->TurnStylerList()->SetTurnStylerItem(0, item(2));
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Pool", "Staff"}));
    EXPECT_EQ(item(0)->MainPanel()->y(), 0);
}

TEST_F(PanelBuild, ANewGateInAPlaceIsBuiltThere)
{
    show();
    auto* const fresh = new TTurnStylerItem;
    fresh->SetCaption("New");
    gates->TurnStylerList()->SetTurnStylerItem(1, fresh);
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Main", "Pool"}));
    gates->SetUpItems();
    settle();
    EXPECT_EQ(onScreen(), (QStringList{"Main", "New", "Pool"}));
}

TEST_F(PanelBuild, AWidgetOfTheHostsInTheBoxIsUsed)
{
    auto* const content = new QWidget;
    auto* const layout = new QVBoxLayout(content);
    layout->addWidget(new QLabel("Gates"));
    box->setWidget(content);
    box->setWidgetResizable(true);
    show();
    EXPECT_EQ(box->widget(), content);
    EXPECT_EQ(item(0)->MainPanel()->parentWidget(), content);
    EXPECT_EQ(layout->count(), 4);
}

TEST_F(PanelBuild, AWidgetOfTheHostsThatTheBoxDoesNotResizeGrows)
{
    box->setWidget(new QWidget);
    box->widget()->resize(300, 100);
    for (int i = 0; i < 5; ++i) {
        add(QString::number(i), "01A", "");
    }
    gates->SetUpItems();
    box->show();
    settle();
    EXPECT_EQ(box->widget()->height(), 5 * 53);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(item(i)->MainPanel()->y(), i * 53);
    }
}

TEST_F(PanelBuild, TheBoxScrolls)
{
    for (int i = 0; i < 20; ++i) {
        add(QString::number(i), "01A", "");
    }
    gates->SetUpItems();
    box->show();
    settle();
    EXPECT_EQ(box->widget()->height(), 20 * 53);
    EXPECT_EQ(box->verticalScrollBar()->maximum(), 20 * 53 - box->viewport()->height());
    box->verticalScrollBar()->setValue(53);
    EXPECT_EQ(item(1)->MainPanel()->mapTo(box->viewport(), QPoint()), QPoint(0, 0));
}

TEST_F(PanelBuild, AnotherBoxHoldsWhatIsBuiltFromThenOn)
{
    show();
    QScrollArea other;
    gates->SetScrollBox(&other);
    add("New", "05A", "");
    gates->SetUpItems();
    EXPECT_EQ(item(0)->MainPanel()->parentWidget(), box->widget());
    EXPECT_EQ(item(3)->MainPanel()->parentWidget(), other.widget());
    gates->ClearItems();
}

} // namespace

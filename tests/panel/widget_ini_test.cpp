// load and save of the component.

#include "widget_fixture.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

struct TFileFixture : TPanelFixture
{
    QByteArray content() const
    {
        QFile file(gates->IniFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }
    void put(const QByteArray& content) const
    {
        QFile file(gates->IniFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QString captions() const
    {
        QStringList texts;
        for (const auto* const item : gates->TurnStylerList()->items()) {
            texts << item->Caption();
        }
        return texts.join(u' ');
    }
};

using PanelFile = tests::TTestOn<TFileFixture>;

TEST_F(PanelFile, SavesAndLoads)
{
    addThree();
    item(0)->SetEntryA(1);
    item(2)->SetEntryB(-2);
    gates->save();
    EXPECT_EQ(
        content(),
        "[Gates]\nItemsCount=3\nGateA1=01A\nGateB1=02A\nCaption1=Main\nEntryA1=1\nEntryB1=0\nGateA2=03D\n"
        "GateB2=\nCaption2=Staff\nEntryA2=0\nEntryB2=0\nGateA3=04A\nGateB3=04B\nCaption3=Pool\nEntryA3=0\n"
        "EntryB3=-2\n");
    TTurnStyler other;
    other.SetIniFile(gates->IniFile());
    other.SetIniSection("gates ");
    other.load();
    ASSERT_EQ(other.TurnStylerList()->Count(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(other.TurnStylerList()->GetTurnStylerItem(i)->record(), item(i)->record());
        EXPECT_EQ(other.TurnStylerList()->GetTurnStylerItem(i)->IP(), ""); // not in the file
    }
    EXPECT_EQ(other.ASelectedIndex(), -1);
}

TEST_F(PanelFile, WithoutASectionNothing)
{
    for (const char* const none : {"", " ", " \t\r\n "}) {
        gates->SetIniSection(none);
        addThree();
        gates->save();
        EXPECT_EQ(content(), "none");
        put("[ ]\nItemsCount=0\n");
        gates->load();
        EXPECT_EQ(captions(), "Main Staff Pool");
        EXPECT_EQ(content(), "[ ]\nItemsCount=0\n");
        gates->TurnStylerList()->Clear();
        QFile::remove(gates->IniFile());
    }
    trace.expect({});
}

TEST_F(PanelFile, WithoutAFileLoadsNothing)
{
    addThree();
    gates->load();
    gates->SetIniFile("");
    gates->load();
    gates->SetIniFile(folder.path());
    gates->load();
    EXPECT_EQ(captions(), "Main Staff Pool");
    trace.expect({});
}

TEST_F(PanelFile, WithoutACountTheListIsEmptied)
{
    addThree();
    put("[Gates]\nGateA1=01A\n");
    gates->load();
    EXPECT_EQ(captions(), "");
    addThree();
    put("");
    gates->load();
    EXPECT_EQ(captions(), "");
    trace.expect({});
}

TEST_F(PanelFile, LoadingLeavesDeadPanels)
{
    show();
    gates->save();
    const QPointer<QFrame> panel = item(0)->MainPanel();
    QPushButton* const dead = button(0, 0);
    gates->SetSelectedIndex(1);
    gates->load();
    EXPECT_EQ(captions(), "Main Staff Pool");
    EXPECT_EQ(item(0)->MainPanel(), nullptr);
    EXPECT_EQ(gates->ASelectedIndex(), 1);
    ASSERT_FALSE(panel.isNull());
    click(dead);
    trace.expect({});
}

TEST_F(PanelFile, LoadingInsideAClick)
{
    show();
    gates->save();
    trace.once("click", [this] { gates->load(); });
    click(button(0, 0));
    trace.expect({"click Main 0 10.0.0.1 01A"});
    EXPECT_EQ(captions(), "Main Staff Pool");
}

TEST_F(PanelFile, AFailingLoadChangesNothingAndTellsTheHost)
{
    show();
    gates->SetIniFile("/proc/self/mem");
    gates->load();
    EXPECT_EQ(captions(), "Main Staff Pool");
    EXPECT_NE(item(0)->MainPanel(), nullptr);
    const QStringList told = trace.take();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].startsWith(tests::raised("Cannot read \"/proc/self/mem\": ")));
}

TEST_F(PanelFile, AFailingSaveChangesNothingAndTellsTheHost)
{
    show();
    gates->SetIniFile(folder.filePath("none/club.ini"));
    gates->save();
    EXPECT_EQ(captions(), "Main Staff Pool");
    const QStringList told = trace.take();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].startsWith(tests::raised("Cannot write \"" + gates->IniFile() + "\": ")));
}

} // namespace

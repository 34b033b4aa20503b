// The gate panel from a script.

#include "script_fixture.h"
#include "tnv5/panel/turn_styler.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TPanelScriptFixture : TScriptFixture
{
    TPanelScriptFixture() { run("var panel = new TTurnStyler()"); }
};
using ScriptPanel = TTestOn<TPanelScriptFixture>;

TEST_F(ScriptPanel, GatesAreAddedAndFoundByIndex)
{
    EXPECT_EQ(run("var list = panel.TurnStylerList; var item = Add(list); item.Caption = 'Hall';"
                  "item.GateA = '01A'; item.EntryA = 1;"
                  "[list.Count, list.Items[0] === item, list.Items[0].Caption, list.Items === list.Items]")
                  .toList(),
              (QVariantList{1, true, "Hall", true}));
    EXPECT_EQ(run("panel.FindItemByGate('01A')").isValid(), true);
    EXPECT_EQ(failing("list.Items.first"), "club.js:1: TypeError: TTurnStylerList.Items needs an integer");
    EXPECT_EQ(failing("list.Items[1.5]"), "club.js:1: TypeError: TTurnStylerList.Items needs an integer");
    EXPECT_EQ(failing("list.Items[0] = 5"),
              "club.js:1: TypeError: '5' is not an object of the class TTurnStylerItem");
    EXPECT_EQ(run("'Items' in list && !('Items' in panel)").toBool(), true);
}

TEST_F(ScriptPanel, AListOfNobodysIsTakenOver)
{
    const int before = engine->componentCount();
    run("var own = Create(null); Add(own).Caption = 'x'");
    EXPECT_EQ(engine->componentCount(), before + 1);
    run("Create(panel)"); // the panel's
    EXPECT_EQ(engine->componentCount(), before + 1);
    EXPECT_EQ(failing("Add(null)"), "club.js:1: TypeError: There is no list to add to");
}

TEST_F(ScriptPanel, ItemsHaveTheirMethods)
{
    EXPECT_EQ(run("var item = Add(panel.TurnStylerList);"
                  "[typeof item.GateABtnclick, typeof item.GateBBtnclick, typeof item.imgBtnclick].join()")
                  .toString(),
              "function,function,function");
    EXPECT_EQ(failing("item.GateABtnclick()"), "club.js:1: TypeError: GateABtnclick takes 1 argument, not 0");
}

TEST_F(ScriptPanel, ClicksReachTheScript)
{
    QScrollArea box;
    engine->RegisterObject("box", &box);
    run("panel.ScrollBox = box; var item = Add(panel.TurnStylerList); item.GateA = '01A'; item.EntryA = 1;"
        "panel.SetUpItems(); panel.OnTurnStylerBtnClick = (...args) => print(args.length, args[0] === item);"
        "item.GateABtnclick(null)");
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].endsWith(" true")) << qPrintable(lines[0]);
}

TEST_F(ScriptPanel, ListsAreSavedAndLoaded)
{
    const QTemporaryDir folder;
    run("panel.IniFile = '" + folder.filePath("club.ini") +
        "'; panel.IniSection = 'Gates';"
        "Add(panel.TurnStylerList).GateA = '01A'; var item = Add(panel.TurnStylerList);"
        "item.GateB = '02B'; item.EntryB = 7; panel.save();"
        "var other = new TTurnStyler(); other.IniFile = panel.IniFile; other.IniSection = 'Gates'; "
        "other.load()");
    EXPECT_EQ(
        run("[other.TurnStylerList.Count, other.FindItemByGate('02B'), other.FindItemByGateEntry('02B')]")
            .toList(),
        (QVariantList{2, 1, 7}));
}

TEST_F(ScriptPanel, ControlsAreBuiltShowStatesAndGo)
{
    QScrollArea box;
    panel::TImageList states;
    engine->RegisterObject("box", &box);
    engine->RegisterObject("states", &states);
    const auto captions = [&] {
        QString texts;
        for (const QLabel* const label : box.findChildren<QLabel*>()) {
            texts += label->text();
        }
        return texts;
    };
    run("panel.ScrollBox = box; panel.Images = states; var item = Add(panel.TurnStylerList);"
        "item.Caption = 'Hall'; item.GateA = '01A'; panel.SetUpItems()");
    EXPECT_FALSE(box.findChildren<QPushButton*>().isEmpty());
    EXPECT_FALSE(captions().contains("came in"));
    run("panel.Setitemstate('01A', 0, 'came in')");
    EXPECT_TRUE(captions().contains("came in")) << qPrintable(captions());
    run("panel.ClearItems()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(box.findChildren<QPushButton*>().isEmpty());
    endEngine(); // the panel goes before its box
}

TEST_F(ScriptPanel, TheExampleShowsItsGates)
{
    QScrollArea box;
    engine->RegisterObject("box", &box);
    runExample("panel.js");
    trace.expect({"print 0: Hall", "print 1: Sauna"});
    const auto buttons = box.findChildren<QPushButton*>();
    ASSERT_FALSE(buttons.isEmpty());
    for (QPushButton* const button : buttons) {
        button->click();
    }
    const QStringList clicks = trace.take();
    EXPECT_TRUE(clicks.contains("print open 01A") && clicks.contains("print open 03A"))
        << qPrintable(clicks.join(u'\n'));
    EXPECT_EQ(failures, QStringList());
    endEngine(); // the panel goes before its box
}

} // namespace

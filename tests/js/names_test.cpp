// What a script finds in the global object.

#include "script_fixture.h"

#include <QDateTime>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using ScriptNames = TScriptTest;

TEST_F(ScriptNames, ConstantsOfAllUnitsAreThere)
{
    EXPECT_EQ(run("[podEmpty, podComPort, podNet]").toList(), (QVariantList{0, 1, 2}));
    EXPECT_EQ(run("[podNone, podServer, PodClient]").toList(), (QVariantList{0, 1, 2}));
    EXPECT_EQ(run("[podlog, podError, PodState, podState]").toList(), (QVariantList{0, 1, 2, 2}));
    EXPECT_EQ(run("[DoorDelay, ByTimer]").toList(), (QVariantList{2, false}));
    EXPECT_EQ(run("[UnixStartDate, UnixDateDelta, SecPerMin, SecPerHour, SecPerDay]").toList(),
              (QVariantList{25569, 25569, 60, 3600, 86400}));
    EXPECT_EQ(run("MinDayFraction").toDouble(), 1.0 / 1440);
    EXPECT_EQ(run("typeof UnixStartDate").toString(), "number");
}

TEST_F(ScriptNames, AreCaseSensitive)
{
    engine->RegisterConst("abc", 1);
    engine->RegisterConst("Abc", 2);
    EXPECT_EQ(run("[abc, Abc, typeof aBc]").toList(), (QVariantList{1, 2, "undefined"}));
    EXPECT_EQ(run("typeof podclient").toString(), "undefined");
}

TEST_F(ScriptNames, ConstantsCannotBeWritten)
{
    EXPECT_EQ(failing("podServer = 5"), "club.js:1: TypeError: podServer cannot be written");
    EXPECT_EQ(failing("'use strict';\npodServer = 5"), "club.js:2: TypeError: podServer cannot be written");
    EXPECT_EQ(failing("TScalesDevice = 5"), "club.js:1: TypeError: TScalesDevice cannot be written");
    EXPECT_EQ(run("podServer").toInt(), 1);
}

TEST_F(ScriptNames, ADateTimeIsANumberOfDays)
{
    engine->RegisterConst("noon", QDateTime(QDate(1900, 1, 1), QTime(12, 0)));
    engine->RegisterConst("quarter", QTime(6, 0));
    engine->RegisterConst("day", QDate(1899, 12, 31));
    EXPECT_EQ(run("[noon, quarter, day]").toList(), (QVariantList{2.5, 0.25, 1}));
}

TEST_F(ScriptNames, OfTheSameNameTheNewestIsSeen)
{
    const int first = engine->RegisterConst("same", 1);
    const int second = engine->RegisterConst("same", 2);
    const int third = engine->RegisterConst("same", 3);
    EXPECT_TRUE(first != second && second != third && first != third);
    EXPECT_EQ(run("same").toInt(), 3);
    engine->UnregisterConst(second);
    EXPECT_EQ(run("same").toInt(), 3);
    engine->UnregisterConst(third);
    EXPECT_EQ(run("same").toInt(), 1);
    engine->UnregisterConst(first);
    EXPECT_EQ(run("typeof same").toString(), "undefined");
    engine->UnregisterConst(first); // unknown by now
}

TEST_F(ScriptNames, UnloadingRemovesThemAll)
{
    const QString all =
        "Object.keys(this).filter(name => /^(T[A-Z]|pod|Pod|Unix|Sec|Min|Door|By|Create|Add|_qr)/"
        ".test(name)).length";
    EXPECT_EQ(run(all).toInt(), 31);
    registration::unload();
    EXPECT_EQ(run(all).toInt(), 0);
    EXPECT_EQ(failing("new TScalesDevice()"), "club.js:1: ReferenceError: TScalesDevice is not defined");
    registration::load(*engine);
    EXPECT_EQ(run(all).toInt(), 31);
    EXPECT_EQ(run("new TScalesDevice().IsConnected()").toBool(), false);
}

TEST_F(ScriptNames, ObjectsOfUnloadedUnitsKeepTheirPropertiesOnly)
{
    run("var scales = new TScalesDevice(); var weigh = scales.GetWeight;");
    registration::unload();
    EXPECT_EQ(run("scales.IDLang").toInt(), 0);
    EXPECT_EQ(failing("scales.GetWeight(true)"),
              "club.js:1: TypeError: TScalesDevice has no property 'GetWeight'");
    EXPECT_EQ(failing("weigh.call(scales, true)"), "club.js:1: Error: The method is not registered any more");
    registration::load(*engine);
    EXPECT_EQ(run("scales.GetWeight(true)").toInt(), -1);
}

TEST_F(ScriptNames, AClassRegisteredTwiceStaysUntilItIsRemovedTwice)
{
    const script::TScriptClasses classes{script::scriptClass<platform::TComponent>()};
    engine->RegisterClassesInScript(classes);
    engine->RegRegisterMethod(
        classes[0],
        {"first", {}, script::TScriptType::Integer, [](QObject*, QVariantList&) { return QVariant(1); }});
    engine->RegisterClassesInScript(classes);
    engine->RegRegisterMethod(
        classes[0],
        {"second", {}, script::TScriptType::Integer, [](QObject*, QVariantList&) { return QVariant(2); }});
    EXPECT_EQ(run("var c = new TComponent(); [c.first(), c.second()]").toList(), (QVariantList{1, 2}));
    engine->UnRegisterClassesInScript(classes);
    EXPECT_EQ(run("['first' in c, 'second' in c, c.first()]").toList(), (QVariantList{true, false, 1}));
    EXPECT_EQ(run("typeof TComponent").toString(), "function");
    engine->UnRegisterClassesInScript(classes);
    EXPECT_EQ(run("['first' in c, typeof TComponent]").toList(), (QVariantList{false, "undefined"}));
    engine->UnRegisterClassesInScript(classes);
    EXPECT_THROW(engine->RegRegisterMethod(classes[0], {}), platform::Exception);
}

TEST_F(ScriptNames, NothingThatWaitsOrRunsLaterIsThere)
{
    EXPECT_EQ(run("[typeof Promise, typeof Atomics, typeof SharedArrayBuffer]").toList(),
              (QVariantList{"undefined", "undefined", "undefined"}));
}

TEST_F(ScriptNames, AListOfWhatOnlyScriptsHaveIsNoResultAndNoFailure)
{
    EXPECT_FALSE(run("[{id: 4711, name: 'Anna'}].sort()").isValid());
    EXPECT_EQ(run("[1, 'a']").toList(), (QVariantList{1, "a"}));
    EXPECT_EQ(failures, QStringList());
}

TEST_F(ScriptNames, PrintAndTheConsoleGoToTheHost)
{
    run("print('a', 1, null, [1, 2]); console.log('b'); console.error('c'); print(new TScalesDevice())");
    trace.expect({"print a 1 null 1,2", "print b", "print c", "print [object TScalesDevice]"});
    engine->OnPrint = {};
    run("print('nobody hears')");
}

} // namespace

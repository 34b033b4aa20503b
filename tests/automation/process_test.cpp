// Classes registered in the process, and the object in memory that tests make of them.

#include "tnv5/platform/automation/dbus_provider.h"
#include "tnv5/testing/memory_library.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::platform::automation;
using tnv5::testkit::TMemoryLibrary;

/// No bus, whatever the machine has.
struct TNoBus
{
    TNoBus() { setAutomationBus("unix:path=/nonexistent/bus"); }
    ~TNoBus() { setAutomationBus({}); }
};

std::u16string refusal(const std::u16string& progId)
{
    try {
        CreateOleObject(progId);
    } catch (const EOleError& error) {
        return error.message();
    }
    return u"none";
}

TEST(Registered, IsMadeByItsProgId)
{
    const TNoBus nowhere;
    const TRegisteredClass first(u"A.First", [] { return std::make_shared<TMemoryLibrary>(); });
    const auto second = std::make_shared<TMemoryLibrary>();
    const TRegisteredClass other(u"A.Second", [&] { return second; });
    EXPECT_EQ(CreateOleObject(u"A.Second"), second);
    EXPECT_NE(CreateOleObject(u"A.First"), CreateOleObject(u"A.First"));
    EXPECT_EQ(refusal(u"a.first"), u"\"a.first\": no class of this process, and there is no bus");
}

TEST(Registered, TheLastOneComesFirstWhileItLives)
{
    const TNoBus nowhere;
    const auto one = std::make_shared<TMemoryLibrary>();
    const auto two = std::make_shared<TMemoryLibrary>();
    {
        const TRegisteredClass first(u"A.B", [&] { return one; });
        {
            const TRegisteredClass second(u"A.B", [&] { return two; });
            EXPECT_EQ(CreateOleObject(u"A.B"), two);
        }
        EXPECT_EQ(CreateOleObject(u"A.B"), one);
    }
    EXPECT_EQ(refusal(u"A.B"), u"\"A.B\": no class of this process, and there is no bus");
}

TEST(Registered, AFailingClassIsNotPassedOver)
{
    const TRegisteredClass none(u"A.None", [] { return nullptr; });
    const TRegisteredClass empty(u"A.Empty", {});
    const TRegisteredClass raising(u"A.Raising", []() -> TObjectPtr { throw EOleError(u"no licence"); });
    EXPECT_EQ(refusal(u"A.None"), u"\"A.None\": the class of this process makes none");
    EXPECT_EQ(refusal(u"A.Empty"), u"\"A.Empty\": the class of this process makes none");
    EXPECT_EQ(refusal(u"A.Raising"), u"no licence");
}

TEST(Registered, AClassMayRegisterOthers)
{
    const auto made = std::make_shared<TMemoryLibrary>();
    std::vector<std::unique_ptr<TRegisteredClass>> others;
    const TRegisteredClass outer(u"A.Outer", [&] {
        for (int i = 0; i < 100; ++i) {
            others.push_back(std::make_unique<TRegisteredClass>(u"A.Inner", [&] { return made; }));
        }
        return CreateOleObject(u"A.Inner");
    });
    EXPECT_EQ(CreateOleObject(u"A.Outer"), made);
}

TEST(MemoryLibrary, AnswersAndKeeps)
{
    using std::chrono::milliseconds;
    TMemoryLibrary library;
    TArguments arguments{1, byRef(2)};
    EXPECT_EQ(library.call(u"Anything", arguments, milliseconds(5)), TValue());
    EXPECT_EQ(library.lastLimit(), milliseconds(5));
    library.OnCall = [](const std::u16string& name, TArguments& given) {
        given[1].value = u"changed";
        return TValue(name);
    };
    EXPECT_EQ(library.call(u"Pay", arguments, kLongestCall), TValue(u"Pay"));
    EXPECT_EQ(arguments[1].value, TValue(u"changed"));
    library.put(u"Speed", 9'600);
    EXPECT_EQ(library.get(u"Speed"), TValue(9'600));
    EXPECT_THROW(library.get(u"speed"), EOleError);
    library.Constants[u"YES"] = 1;
    EXPECT_EQ(library.constant(u"YES"), TValue(1));
    EXPECT_THROW(library.constant(u"Speed"), EOleError);
}

TEST(MemoryLibrary, RaisesEventsWhileSomebodyListens)
{
    TMemoryLibrary library;
    library.raiseEvent(u"Nobody", {});
    std::u16string heard;
    library.setEventHandler([&](std::u16string_view name, const TArguments& arguments) {
        heard += std::u16string(name) + arguments.at(0).value.toText();
    });
    EXPECT_TRUE(library.listenedTo());
    library.raiseEvent(u"Card", {7});
    library.setEventHandler({});
    EXPECT_FALSE(library.listenedTo());
    library.raiseEvent(u"Card", {8});
    EXPECT_EQ(heard, u"Card7");
}

} // namespace

// Automation objects of Windows: those that the system brings, and one whose manners are known. Built and run
// by scripts/test-windows.sh; no part of the other tests.

#include "test_object.h"
#include "tnv5/platform/automation/com_provider_windows.h"

#include <cstdio>
#include <limits>

namespace {

using namespace tnv5::platform::automation;
using namespace tnv5::tests;

int failures = 0;
int checks = 0;

void check(bool holds, const char* what, int line)
{
    ++checks;
    if (!holds) {
        ++failures;
        std::printf("com_test.cpp:%d: %s\n", line, what);
    }
}
#define CHECK(...) check((__VA_ARGS__), #__VA_ARGS__, __LINE__)

TValue call(const TObjectPtr& object, std::u16string_view name, TArguments arguments = {})
{
    return object->call(name, arguments, kLongestCall);
}

template <class Call>
std::u16string refusal(const Call& body)
{
    try {
        body();
    } catch (const EOleError& error) {
        return error.message();
    }
    return u"none";
}

void dictionary()
{
    const TObjectPtr object = CreateOleObject(u"Scripting.Dictionary");
    call(object, u"Add", {u"ключ", 12});
    call(object, u"Add", {u"two", u"значення"});
    CHECK(object->get(u"Count") == TValue(2));
    CHECK(call(object, u"Count") == TValue(2)); // a call without arguments may be a property
    CHECK(call(object, u"Exists", {u"ключ"}).toBool());
    CHECK(!call(object, u"Exists", {u"none"}).toBool());
    CHECK(call(object, u"Item", {u"two"}) == TValue(u"значення"));
}

void dictionaryKeepsValues()
{
    const TObjectPtr object = CreateOleObject(u"Scripting.Dictionary");
    object->put(u"CompareMode", 1); // letters of both cases are the same
    CHECK(object->get(u"CompareMode") == TValue(1));
    call(object, u"Add", {u"KEY", 1});
    CHECK(call(object, u"Exists", {u"key"}).toBool());
    const std::u16string again = refusal([&] { call(object, u"Add", {u"key", 2}); });
    CHECK(again != u"none");
    CHECK(!again.empty());
    call(object, u"RemoveAll");
    CHECK(object->get(u"Count") == TValue(0));
    CHECK(refusal([&] { call(object, u"NoSuchMethod", {1}); }) == u"Unknown name: NoSuchMethod");
}

void fileSystem()
{
    const TObjectPtr object = CreateOleObject(u"Scripting.FileSystemObject");
    CHECK(call(object, u"BuildPath", {u"C:\\club", u"журнал.log"}) == TValue(u"C:\\club\\журнал.log"));
    CHECK(call(object, u"GetExtensionName", {u"a.txt"}) == TValue(u"txt"));
    CHECK(call(object, u"FolderExists", {u"C:\\windows"}) == TValue(true));
    CHECK(call(object, u"FileExists", {u"C:\\no such file"}) == TValue(false));
    const TObjectPtr folder = call(object, u"GetFolder", {u"C:\\windows"}).toObject();
    CHECK(folder != nullptr);
    CHECK(folder->get(u"Path").toText() == u"C:\\windows");
    CHECK(refusal([&] { call(object, u"GetFolder", {u"C:\\no such folder"}); }) != u"none");
}

void creation()
{
    const std::u16string nobody = refusal([] { CreateOleObject(u"No.Body"); });
    CHECK(nobody.rfind(u"\"No.Body\": no class of this process, and ", 0) == 0);
    CHECK(nobody.size() > 42);
    const TRegisteredClass own(u"Scripting.Dictionary", [] { return nullptr; });
    CHECK(refusal([] { CreateOleObject(u"Scripting.Dictionary"); }) ==
          u"\"Scripting.Dictionary\": the class of this process makes none");
}

void references()
{
    const TObjectPtr object = CreateOleObject(u"Tnv5.TestObject");
    TArguments numbers{byRef(1), byRef(2)};
    CHECK(object->call(u"Swap", numbers, kLongestCall) == TValue(u"swapped"));
    CHECK(numbers[0].value == TValue(2));
    CHECK(numbers[1].value == TValue(1));
    TArguments plain{1, 2};
    CHECK(refusal([&] { object->call(u"Swap", plain, kLongestCall); }) != u"none");
    CHECK(plain[0].value == TValue(1));
    TArguments texts{byRef(u"old"), byRef(TValue())};
    object->call(u"Fill", texts, kLongestCall);
    CHECK(texts[0].value == TValue(u"new"));
    CHECK(texts[1].value == TValue(7));
    TArguments empty{byRef(u""), byRef(TValue())};
    object->call(u"Fill", empty, kLongestCall);
    CHECK(empty[0].value == TValue(u"new"));
}

void values()
{
    const TObjectPtr object = CreateOleObject(u"Tnv5.TestObject");
    const TValue all[] = {TValue(),
                          TValue(true),
                          TValue(false),
                          TValue(std::numeric_limits<std::int32_t>::min()),
                          TValue(std::int64_t{1} << 40),
                          TValue(2.5),
                          TValue(u""),
                          TValue(std::u16string(u"a\0b", 3)),
                          TValue(u"Оплата \U0001F4B3")};
    for (const TValue& value : all) {
        CHECK(call(object, u"Echo", {value}) == value);
    }
    const TObjectPtr same = call(object, u"Echo", {object}).toObject();
    CHECK(same != nullptr && same->get(u"Version") == TValue(u"1.0"));
    CHECK(object->get(u"Version") == TValue(u"1.0"));
    CHECK(call(object, u"Version") == TValue(u"1.0"));
    object->put(u"Speed", 115'200);
    CHECK(object->get(u"Speed") == TValue(115'200));
    CHECK(object->constant(u"Speed") == TValue(115'200));
    CHECK(object->get(u"Child").toObject()->get(u"Speed") == TValue(9'600));
}

void failing()
{
    const TObjectPtr object = CreateOleObject(u"Tnv5.TestObject");
    CHECK(refusal([&] { call(object, u"Fail"); }) == u"немає паперу");
    CHECK(refusal([&] { call(object, u"FailLater"); }) == u"told later");
    const std::u16string denied = refusal([&] { call(object, u"FailBare"); });
    CHECK(denied != u"none" && !denied.empty());
    CHECK(refusal([&] { call(object, u"FailSource"); }) == u"printer: " + denied);
    CHECK(refusal([&] { object->get(u"version"); }) == u"Unknown name: version");
}

void events()
{
    std::u16string heard;
    const TObjectPtr object = CreateOleObject(u"Tnv5.TestObject");
    const auto handler = [&](std::u16string_view name, const TArguments& arguments) {
        heard += std::u16string(name) + u'(';
        for (const TArgument& argument : arguments) {
            heard += argument.value.toText() + u';';
        }
        heard += u')';
    };
    object->setEventHandler(handler);
    call(object, u"Tell", {u"insert card"});
    CHECK(heard == u"OnMsgReceived(insert card;99;)OnTrxComplete(51;99;)");
    heard.clear();
    call(object, u"TellByName", {u"x"});
    call(object, u"TellByName", {u"y"});
    CHECK(heard == u"OnElse(x;99;)OnElse(y;99;)");
    heard.clear();
    object->setEventHandler(handler); // takes the place of the other
    call(object, u"Tell", {u"again"});
    CHECK(heard == u"OnMsgReceived(again;99;)OnTrxComplete(51;99;)");
    heard.clear();
    object->setEventHandler({});
    call(object, u"Tell", {u"nobody"});
    CHECK(heard.empty());
    object->setEventHandler([&](std::u16string_view, const TArguments&) -> void {
        object->setEventHandler({});
        heard += u"once ";
        throw 7; // nothing unwinds through the library
    });
    call(object, u"Tell", {u"z"});
    CHECK(heard == u"once ");
    const TObjectPtr silent = CreateOleObject(u"Scripting.Dictionary");
    silent->setEventHandler({});
    CHECK(refusal([&] { silent->setEventHandler(handler); }) == u"the object has no events");
}

void nothingIsLeft()
{
    CHECK(testObjects() == 0);
    {
        const TObjectPtr object = CreateOleObject(u"Tnv5.TestObject");
        object->setEventHandler([](std::u16string_view, const TArguments&) {});
        CHECK(testObjects() == 1);
        call(object, u"Echo", {object});
        const TObjectPtr child = object->get(u"Child").toObject();
        CHECK(testObjects() == 2);
        IDispatch* const bare = makeTestObject();
        const TObjectPtr wrapped = fromDispatch(bare);
        bare->Release();
        CHECK(testObjects() == 3);
        CHECK(wrapped->get(u"Version") == TValue(u"1.0"));
    }
    CHECK(testObjects() == 0);
}

void texts()
{
    CHECK(toUtf8(u"Оплата \U0001F4B3\xD800") == "Оплата \xF0\x9F\x92\xB3\xEF\xBF\xBD");
    CHECK(TValue(u" 12 ").toInt() == 12);
    CHECK(TValue(2.5).toInt() == 2);
    CHECK(TValue(0.1).toText() == u"0.1");
}

} // namespace

int main()
{
    const DWORD registration = registerTestClass();
    const std::pair<const char*, void (*)()> tests[] = {{"texts", texts},
                                                        {"dictionary", dictionary},
                                                        {"dictionaryKeepsValues", dictionaryKeepsValues},
                                                        {"fileSystem", fileSystem},
                                                        {"creation", creation},
                                                        {"references", references},
                                                        {"values", values},
                                                        {"failing", failing},
                                                        {"events", events},
                                                        {"nothingIsLeft", nothingIsLeft}};
    for (const auto& [name, test] : tests) {
        try {
            test();
        } catch (const std::exception& error) {
            ++failures;
            std::printf("%s raised: %s\n", name, error.what());
        }
    }
    unregisterTestClass(registration);
    std::printf("automation on Windows: %d checks, %d failed\n", checks, failures);
    return failures == 0 ? 0 : 1;
}

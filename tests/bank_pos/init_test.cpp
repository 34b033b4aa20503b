// Creating the library's object, and the end of the component.

#include "pos_cases.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(PosInit, CreatesTheObjectOfEachType)
{
    for (int type = 0; type < 5; ++type) {
        TPosFixture fixture(type, false);
        EXPECT_FALSE(fixture.pos->IsInit());
        EXPECT_EQ(fixture.pos->Instance(), nullptr);
        EXPECT_TRUE(fixture.pos->Init());
        EXPECT_TRUE(fixture.pos->IsInit());
        EXPECT_EQ(fixture.pos->Instance(), fixture.library);
        EXPECT_EQ(fixture.library->listenedTo(), type == 2);
        const QStringList lines = fixture.trace.take();
        EXPECT_EQ(lines[0], kLogInit);
        EXPECT_EQ(lines[1], "create " + QString::fromStdU16String(kProgIds[type]));
    }
}

TEST(PosInit, ASecondOneOnlyConfiguresAgain)
{
    TPosFixture fixture(1);
    fixture.pos->SetLanguage(5);
    EXPECT_TRUE(fixture.pos->Init());
    fixture.trace.expect(
        {kLogInit, "call LibraryVersion()", "call useLogging(0, \"\")", "call SetErrorLang(5)"});
    fixture.pos->SetPosType(4); // the object stays what it is
    EXPECT_TRUE(fixture.pos->Init());
    fixture.trace.expect({kLogInit, "call pos_get(POS_SOFT_VER)"});
}

TEST(PosInit, ThatCannotCreateSaysWhy)
{
    TPosFixture fixture(3, false);
    const TRegisteredClass broken(u"BluePad50v2.Borica", []() -> platform::automation::TObjectPtr {
        throw EOleError(u"not licensed");
    });
    EXPECT_FALSE(fixture.pos->Init());
    EXPECT_FALSE(fixture.pos->IsInit());
    fixture.trace.expect({kLogInit, error(-1, "Неможливо створити OLE об'єкт. not licensed")});
    EXPECT_EQ(fixture.pos->GetLastError(), -1);
    EXPECT_EQ(fixture.pos->LastErrorMsg(), "Неможливо створити OLE об'єкт. not licensed");
}

TEST(PosInit, WithoutALibrarySaysSo)
{
    TPosFixture fixture(0, false);
    TBankPOS other;
    QString heard;
    other.SetOnError([&](TComponent*, int code, const QString& text) { heard = error(code, text); });
    const TRegisteredClass none(u"ECRCommX.ECRLibSgn", [] { return nullptr; });
    EXPECT_FALSE(other.Init());
    EXPECT_EQ(heard,
              error(-1, "Неможливо створити OLE об'єкт. \"ECRCommX.ECRLibSgn\": the class of this process "
                        "makes none"));
}

TEST(PosInit, WhoseSettingsFailKeepsTheObject)
{
    TPosFixture fixture(1, false);
    fixture.raises["SetErrorLang"] = "no such language";
    EXPECT_FALSE(fixture.pos->Init());
    EXPECT_TRUE(fixture.pos->IsInit());
    EXPECT_EQ(fixture.trace.take().last(), error(-1, kOle + "no such language"));
    EXPECT_TRUE(fixture.pos->Init());
    EXPECT_EQ(fixture.trace.countOf("create"), 0);
}

TEST(PosInit, OfTheControlFailsWhenItsEventsCannotBeHad)
{
    TPosFixture fixture(2, false);
    fixture.library->OnListen = [](bool) { throw EOleError(u"no events"); };
    EXPECT_FALSE(fixture.pos->Init());
    EXPECT_FALSE(fixture.pos->IsInit());
    fixture.trace.expect(
        {kLogInit, "create TAxECRClass98", error(-1, "Неможливо створити OLE об'єкт. no events")});
}

TEST(PosInit, DoesNothingInTheFormDesigner)
{
    TPosFixture fixture(0, false);
    const auto pos = [] {
        const platform::TDesignScope designing;
        return std::make_unique<TBankPOS>();
    }();
    fixture.trace.attach(*pos);
    EXPECT_FALSE(pos->Init());
    EXPECT_FALSE(pos->IsInit());
    fixture.trace.expect({kLogInit});
}

TEST(PosEvents, OfTheControlAreHeard)
{
    TPosFixture fixture(2);
    fixture.library->raiseEvent(u"OnMsgReceived", {u"insert card"});
    fixture.library->raiseEvent(u"OnMsgReceived", {7, u"more"});
    fixture.library->raiseEvent(u"OnTrxComplete", {u"51"});
    fixture.library->raiseEvent(u"OnTrxComplete", {});
    fixture.library->raiseEvent(u"OnMsgReceived", {});
    fixture.library->raiseEvent(u"onmsgreceived", {u"another's"});
    fixture.library->raiseEvent(u"OnElse", {u"x"});
    fixture.trace.expect({status(0, "insert card"), status(0, "7")});
    EXPECT_EQ(fixture.pos->GetLastError(), 51);
    EXPECT_EQ(fixture.pos->LastErrorMsg(), "");
    fixture.library->raiseEvent(u"OnTrxComplete", {u"soon"});
    fixture.trace.expect({raised("The value \"soon\" is no number")});
}

TEST(PosEvents, WhoseHandlersRaiseDoNotReachTheLibrary)
{
    TPosFixture fixture(2);
    fixture.trace.raiseOnce("status");
    EXPECT_NO_THROW(fixture.library->raiseEvent(u"OnMsgReceived", {u"x"}));
    fixture.trace.expect({status(0, "x"), raised("host trouble")});
}

TEST(PosEvents, EndWithTheComponent)
{
    TPosFixture fixture(2);
    fixture.pos.reset();
    EXPECT_FALSE(fixture.library->listenedTo());
    fixture.library->raiseEvent(u"OnMsgReceived", {u"x"});
    fixture.trace.expect({"log Заверщення роботи"});
}

TEST(PosEnd, IsLogged)
{
    for (const bool init : {false, true}) {
        TPosFixture fixture(0, init);
        fixture.pos.reset();
        fixture.trace.expect({"log Заверщення роботи"});
        EXPECT_EQ(fixture.library.use_count(), 1) << "kept by nobody but the test";
    }
}

TEST(PosEnd, MayBeRaisedIn)
{
    TPosFixture fixture(2);
    fixture.trace.raiseOnce("log");
    fixture.library->OnListen = [](bool) { throw EOleError(u"gone already"); };
    EXPECT_NO_THROW(fixture.pos.reset());
    fixture.trace.expect({"log Заверщення роботи", raised("host trouble"), raised("gone already")});
    fixture.library->OnListen = {};
}

TEST(PosEnd, InTheFormDesignerToo)
{
    auto pos = [] {
        const platform::TDesignScope designing;
        return std::make_unique<TBankPOS>();
    }();
    TPosFixture fixture;
    fixture.trace.attach(*pos);
    pos.reset();
    fixture.trace.expect({"log Заверщення роботи"});
}

} // namespace

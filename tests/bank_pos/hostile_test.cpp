// Handlers, libraries and message loops that destroy the component, raise, re-enter or replace, at each
// event, call and turn of every operation.

#include "pos_cases.h"
#include "support/hostile.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Does something inside one event of a case. @return whether there was such an event
bool disturb(const TPosCase& each, qsizetype at, const std::function<void(TPosFixture&)>& mischief,
             const std::function<void(TPosFixture&, const QVariant&)>& verify)
{
    TPosFixture fixture(each.type);
    each.setUp(fixture);
    qsizetype left = at;
    bool done = false;
    fixture.trace.OnLine = [&](const QString&) {
        if (left-- == 0) {
            done = true;
            fixture.trace.OnLine = {};
            mischief(fixture);
        }
    };
    QVariant result;
    platform::guarded([&] { result = each.operate(*fixture.pos); });
    fixture.trace.OnLine = {};
    verify(fixture, result);
    return done;
}

void disturbEverywhere(
    const std::function<void(TPosFixture&)>& mischief,
    const std::function<void(const TPosCase&, qsizetype, TPosFixture&, const QVariant&)>& verify)
{
    for (const TPosCase& each : posCases()) {
        for (qsizetype at = 0; at < each.lines.size() && !::testing::Test::HasFailure(); ++at) {
            SCOPED_TRACE(std::to_string(each.type) + " " + each.name + ", " + each.lines[at].toStdString());
            EXPECT_TRUE(disturb(each, at, mischief, [&](TPosFixture& fixture, const QVariant& result) {
                verify(each, at, fixture, result);
            }));
        }
    }
}

TEST(PosHostile, ADestroyedComponentSaysNothingMore)
{
    disturbEverywhere(
        [](TPosFixture& fixture) { fixture.pos.reset(); },
        [](const TPosCase& each, qsizetype at, TPosFixture& fixture, const QVariant& result) {
            QStringList expected = each.lines.first(at + 1) + QStringList{"log Заверщення роботи"};
            fixture.trace.expect(expected);
            EXPECT_EQ(result, each.result.typeId() == QMetaType::QString ? QVariant("-1") : QVariant(false));
        });
}

TEST(PosHostile, DestroyingAndRaisingIsReported)
{
    disturbEverywhere(
        [](TPosFixture& fixture) {
            fixture.pos.reset();
            throw std::runtime_error("host trouble");
        },
        [](const TPosCase& each, qsizetype at, TPosFixture& fixture, const QVariant&) {
            fixture.trace.expect(each.lines.first(at + 1) +
                                 QStringList{"log Заверщення роботи", raised("host trouble")});
        });
}

TEST(PosHostile, WhatAHandlerRaisesGoesToTheCallerAndNotIntoTheErrors)
{
    disturbEverywhere([](TPosFixture&) { throw std::runtime_error("host trouble"); },
                      [](const TPosCase& each, qsizetype at, TPosFixture& fixture, const QVariant& result) {
                          const QString line = each.lines[at];
                          if (line.startsWith("call") || line.startsWith("put")) {
                              return; // a failing library, which has a test of its own
                          }
                          const QStringList lines = fixture.trace.take();
                          EXPECT_EQ(lines.mid(0, at + 1), each.lines.first(at + 1));
                          if (each.type != 2 ||
                              !line.startsWith("status 0")) { // inside an event of the control
                              EXPECT_EQ(lines.mid(at + 1).join(u'|'), raised("host trouble"));
                              EXPECT_FALSE(result.isValid());
                          }
                      });
}

const TMischief<TPosFixture> kMischiefs[] = {
    {"clears the handlers",
     [](TPosFixture& f) {
         f.pos->SetOnLog({});
         f.pos->SetOnError({});
         f.pos->SetOnStatus({});
     }},
    {"chooses no type", [](TPosFixture& f) { f.pos->SetPosType(-1); }},
    {"chooses another type", [](TPosFixture& f) { f.pos->SetPosType((f.pos->PosType() + 1) % 5); }},
    {"initialises again", [](TPosFixture& f) { f.pos->Init(); }},
    {"pays again", [](TPosFixture& f) { f.pos->Purchase(7, 0, 0); }},
    {"disconnects", [](TPosFixture& f) { f.pos->Disconnect(); }},
    {"reports", [](TPosFixture& f) { f.pos->ShowError(5, "five"); }},
    {"raises an event of the control",
     [](TPosFixture& f) { f.library->raiseEvent(u"OnMsgReceived", {u"late"}); }},
    {"lets the library fail from now on",
     [](TPosFixture& f) { f.OnCall = [](const QString&) { throw EOleError(u"broken"); }; }},
    {"aborts", [](TPosFixture&) { throw platform::EAbort(); }},
    {"raises something unknown", [](TPosFixture&) { throw 7; }},
    {"pays again and destroys the component",
     [](TPosFixture& f) {
         f.trace.once("call", [&f] { f.pos.reset(); });
         f.pos->Purchase(7, 0, 0);
     }},
};

TEST(PosHostile, SurvivesEverythingAtEveryEvent)
{
    for (const auto& mischief : kMischiefs) {
        SCOPED_TRACE(mischief.name);
        disturbEverywhere(mischief.act,
                          [](const TPosCase& each, qsizetype at, TPosFixture& fixture, const QVariant&) {
                              EXPECT_EQ(fixture.trace.take().mid(0, at + 1), each.lines.first(at + 1));
                              if (!fixture.pos) {
                                  return;
                              }
                              // afterwards it pays as if nothing had been
                              fixture.OnCall = {};
                              fixture.attach();
                              fixture.pos->SetPosType(0);
                              fixture.answer("GetLastResult", {0});
                              EXPECT_TRUE(fixture.pos->Purchase(5, 0, 1));
                              fixture.trace.expect({kLogPurchase, "call PosPurchase(&5, &0, \"1\")",
                                                    kWaitLoop, "call GetLastResult()", "call GetLastResult()",
                                                    "call getRRN()", "call InvoiceNum()"});
                          });
    }
}

TEST(PosHostile, AMakerThatDestroysTheComponentIsNotListenedTo)
{
    const auto library = std::make_shared<testkit::TMemoryLibrary>();
    auto pos = std::make_unique<bank::TBankPOS>();
    const platform::automation::TRegisteredClass ours(bank::kControlClass.toStdU16String(), [&] {
        pos.reset();
        return library;
    });
    pos->SetPosType(2);
    EXPECT_FALSE(pos->Init());
    EXPECT_FALSE(library->listenedTo());
}

TEST(PosHostile, AMakerThatInitsMakesOneObject)
{
    std::vector<std::shared_ptr<testkit::TMemoryLibrary>> made;
    auto pos = std::make_unique<bank::TBankPOS>();
    bool again = true;
    const platform::automation::TRegisteredClass ours(bank::kControlClass.toStdU16String(), [&] {
        if (std::exchange(again, false)) {
            EXPECT_TRUE(pos->Init());
        }
        return made.emplace_back(std::make_shared<testkit::TMemoryLibrary>());
    });
    pos->SetPosType(2);
    EXPECT_TRUE(pos->Init());
    ASSERT_EQ(made.size(), 2U);
    EXPECT_EQ(pos->Instance(), made[0]);
    EXPECT_TRUE(made[0]->listenedTo());
    EXPECT_FALSE(made[1]->listenedTo());
    pos.reset();
    EXPECT_FALSE(made[0]->listenedTo());
}

TEST(PosHostile, TheTypeChosenAtTheBeginningCounts)
{
    TPosFixture fixture(0);
    fixture.trace.once("log", [&] { fixture.pos->SetPosType(3); });
    fixture.answer("Purchase", {{0, {TValue(1), TValue(u"x;0;r;4;5;t;7;a")}}});
    EXPECT_TRUE(fixture.pos->Purchase(5, 0, 1));
    EXPECT_EQ(fixture.pos->RRN(), "r");
}

TEST(PosHostile, TheTypeChosenBeforeTheWaitWaits)
{
    TPosFixture fixture(0);
    fixture.trace.once("log Цикл", [&] { fixture.pos->SetPosType(4); });
    fixture.answer("GetLastResult", {0});
    EXPECT_TRUE(fixture.pos->XReport(1));
    fixture.trace.expect({kLogXReport, "call PosXBalanceMer(\"1\")", kWaitLoop});
}

TEST(PosHostile, TheLibraryLivesUntilItsCallReturns)
{
    TPosFixture fixture(0, false);
    std::weak_ptr<TMemoryLibrary> library;
    bool lived = false;
    const TRegisteredClass ours(u"ECRCommX.ECRLibSgn", [&] {
        const auto made = std::make_shared<TMemoryLibrary>();
        made->OnCall = [&](const std::u16string& name, TArguments&) {
            if (name == u"CommClose") {
                fixture.pos.reset();
                lived = !library.expired();
            }
            return TValue();
        };
        library = made;
        return made;
    });
    EXPECT_TRUE(fixture.pos->Init());
    EXPECT_FALSE(fixture.pos->Disconnect());
    EXPECT_TRUE(lived);
    EXPECT_TRUE(library.expired());
}

TEST(PosHostile, TextsOfTheCallerMayChangeMeanwhile)
{
    TPosFixture fixture(1);
    QString rrn = "R1";
    fixture.answer("LastResult", {0});
    fixture.trace.once("call", [&] { rrn = "changed"; });
    EXPECT_TRUE(fixture.pos->PurchaseReturn(5, rrn, "A", 1));
    EXPECT_EQ(fixture.pos->RRN(), "R1");
}

TEST(PosWaiting, GoesOnAsLongAsTheLibraryDoes)
{
    TPosFixture fixture(0);
    fixture.answer("GetLastResult", {2});
    int turns = 0;
    fixture.clock.OnWait = [&] {
        if (++turns == 10'000) {
            fixture.answer("GetLastResult", {0});
        }
    };
    EXPECT_TRUE(fixture.pos->XReport(1));
    EXPECT_EQ(turns, 10'000);
    EXPECT_EQ(fixture.trace.countOf("status 0"), 10'000);
}

TEST(PosWaiting, MessagesForEverLetTheLoopRunEachTime)
{
    TPosFixture fixture(4);
    fixture.answer("pos_send", {true});
    fixture.answer("pos_receive", {rMessage});
    int turns = 0;
    fixture.clock.OnWait = [&] {
        if (++turns == 1'000) {
            fixture.pos.reset();
        }
    };
    EXPECT_FALSE(fixture.pos->ZReport(1));
    EXPECT_EQ(turns, 1'000);
}

TEST(PosWaiting, IsEndedByAHandlerThatDestroysTheComponent)
{
    for (const int type : {0, 1}) {
        TPosFixture fixture(type);
        fixture.answer(type == 0 ? "GetLastResult" : "LastResult", {2});
        fixture.trace.once("status", [&] { fixture.pos.reset(); });
        EXPECT_FALSE(fixture.pos->Connect());
        EXPECT_EQ(fixture.trace.take().last(), "log Заверщення роботи");
    }
}

TEST(PosWaiting, SleepsInTheRealMessageLoop)
{
    TPosFixture fixture(0);
    platform::TClock* const manual = platform::TClock::install(nullptr);
    fixture.answer("GetLastResult", {2});
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (++ticks == 3) {
            fixture.answer("GetLastResult", {0});
        }
    });
    timer.start(20);
    EXPECT_TRUE(fixture.pos->XReport(1));
    platform::TClock::install(manual);
    EXPECT_EQ(ticks, 3);
    EXPECT_LT(fixture.trace.countOf("status 0"), 50); // no busy loop: a pass for each thing that happened
}

} // namespace

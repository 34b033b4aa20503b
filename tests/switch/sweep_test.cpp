// The sweep over the jobs: its seven steps, each with every answer, and together.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Sweep = TSwitchTest;

TEST_F(Sweep, OnlyComesToAJobWithoutWork)
{
    for (const QString job : {"000A!1!OFF!OFF", "000A!2!ON!odd", "000A!3!odd!ON", "000A!4!odd!odd"}) {
        makeJob(job);
    }
    sweep(); // the last one first
    trace.expect({reached("000A!4!odd!odd"), reached("000A!3!odd!ON"), reached("000A!2!ON!odd"),
                  reached("000A!1!OFF!OFF")});
}

TEST_F(Sweep, WithoutJobsDoesNothing)
{
    sweep();
    trace.expect({});
}

TEST_F(Sweep, ABoardThatDoesNotAnswerIsGivenUpWhenTheHostAgrees)
{
    makeJob("000A!1!ON!NOTINLINE");
    Answers = {{3, 1}};
    sweep();
    trace.expect({reached("000A!1!ON!NOTINLINE"), stack("000A!1!ON!NOTINLINE"),
                  check("000A!1!ON!NOTINLINE", 3), stack("000A!1!OFF!XXX"),
                  "error Device 000A does not working"});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, ABoardThatDoesNotAnswerIsSwitchedOnWhenTheHostDoesNotAgree)
{
    for (const int answer : {0, 2, -1}) {
        makeJob("000A!1!ON!NOTINLINE");
        Answers = {{3, answer}};
        sweep(); // "OFF" is what step 5 finds
        trace.expect({reached("000A!1!ON!NOTINLINE"), stack("000A!1!ON!NOTINLINE"),
                      check("000A!1!ON!NOTINLINE", 3), stack("000A!1!ON!OFF"), check("000A!1!ON!OFF", 0),
                      commanded("RL0.0.0.0:000A1"), loggedSend("RL0.0.0.0:000A1"), stack("000A!1!ON!ON"),
                      "log $$ 30.12.1899 12:00:00 30.12.1899 12:01:00 1", check("000A!1!ON!ON", 2),
                      stack("000A!1!OFF!ON"), stack("000A!1!OFF!OFF"), commanded("RL0.0.0.0:000A1"),
                      loggedSend("RL0.0.0.0:000A1")});
        EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
    }
}

TEST_F(Sweep, ABoardThatNeverReportedIsNotInLineAtOnce)
{
    makeJob("000A!1!OFF!NONE");
    sweep(); // it was made with a date, the comparison is with a time of day
    trace.expect({reached("000A!1!OFF!NONE"), read("$0.0.0.0:000A900"), stack("000A!1!OFF!NOTINLINE")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!NOTINLINE");
    sweep();
    trace.expect({reached("000A!1!OFF!NOTINLINE"), stack("000A!1!OFF!NOTINLINE"),
                  check("000A!1!OFF!NOTINLINE", 3), stack("000A!1!OFF!XXX"),
                  "error Device 000A does not working"});
}

TEST_F(Sweep, ABoardHasMoreThanTwoWholeSecondsToReport)
{
    const auto job = makeJob("000A!1!OFF!NONE");
    job->Starttime = platform::TimeOfDay() - 2.999 / 86'400;
    sweep();
    trace.expect({reached("000A!1!OFF!NONE"), read("$0.0.0.0:000A900"), stack("000A!1!OFF!NONE")});
    job->Starttime = platform::TimeOfDay() - 3.0 / 86'400;
    sweep();
    trace.expect({reached("000A!1!OFF!NONE"), read("$0.0.0.0:000A900"), stack("000A!1!OFF!NOTINLINE")});
    job->StatusDevice = "NONE";
    job->Starttime = platform::TimeOfDay() + 3.0 / 86'400; // in either direction
    sweep();
    trace.expect({reached("000A!1!OFF!NONE"), read("$0.0.0.0:000A900"), stack("000A!1!OFF!NOTINLINE")});
}

TEST_F(Sweep, TheLineThatItFeedsAsksNoBoard)
{
    device->DevicePing(kLink, kBoard, "T");
    trace.take();
    makeJob("000A!1!OFF!NONE");
    sweep();
    EXPECT_EQ(trace.countOf("send"), 0);
}

TEST_F(Sweep, TheLineThatItFeedsStartsTheTimer)
{
    makeJob("000A!1!OFF!NONE");
    sweep();
    trace.take();
    clock.advance(3'000);
    EXPECT_EQ(trace.countOf("status XXXSTACK"), 1);
}

TEST_F(Sweep, ANewJobAsksForItsWantedState)
{
    makeJob("000A!1!NONE!OFF");
    NewStatus = "ON";
    Answers = {{0, 0}};
    sweep(); // step 5 sees it
    trace.expect({reached("000A!1!NONE!OFF"), asked("000A!1!NONE!OFF"), stack("000A!1!ON!OFF"),
                  check("000A!1!ON!OFF", 0)});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, ANewJobWithoutAnAnswerIsOff)
{
    makeJob("000A!1!NONE!OFF");
    sweep();
    trace.expect({reached("000A!1!NONE!OFF"), asked("000A!1!NONE!OFF")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
    device->SetOnNewItem({});
    makeJob("000A!1!NONE!OFF");
    sweep();
    trace.expect({reached("000A!1!NONE!OFF")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, TheWantedStateIsTakenAsText)
{
    for (const auto& [answer, state] : std::initializer_list<std::pair<QVariant, QString>>{
             {7, "7"}, {3e9, "3000000000"}, {QString("on"), "on"}, {QString(), ""}, {true, "true"}}) {
        makeJob("000A!1!NONE!OFF");
        NewStatus = answer;
        sweep();
        EXPECT_EQ(device->StackItem(0)->Status, state);
    }
}

TEST_F(Sweep, SwitchesOnWhenTheHostAgrees)
{
    makeJob("012A!4!ON!OFF", -60); // its time is over: only reported
    Answers = {{0, 1}};
    sweep();
    trace.expect({reached("012A!4!ON!OFF"), stack("012A!4!ON!OFF"), check("012A!4!ON!OFF", 0),
                  commanded("RL0.0.0.0:012B2"), loggedSend("RL0.0.0.0:012B2"), stack("012A!4!ON!ON"),
                  "log $$ 30.12.1899 12:00:00 30.12.1899 11:59:00 1"});
    EXPECT_EQ(jobAt(0), "012A!4!ON!ON");
}

TEST_F(Sweep, DoesNotSwitchOnWhenTheHostDoesNotAgree)
{
    for (const int answer : {0, 2, -1}) {
        makeJob("000A!1!ON!OFF");
        Answers = {{0, answer}};
        sweep();
        trace.expect({reached("000A!1!ON!OFF"), stack("000A!1!ON!OFF"), check("000A!1!ON!OFF", 0)});
        EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
    }
}

TEST_F(Sweep, SwitchesOffWhenTheHostAgrees)
{
    makeJob("000A!1!OFF!ON");
    Answers = {{1, 1}};
    sweep();
    trace.expect({reached("000A!1!OFF!ON"), stack("000A!1!OFF!ON"), check("000A!1!OFF!ON", 1),
                  commanded("RL0.0.0.0:000A1"), loggedSend("RL0.0.0.0:000A1")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, LeavesItOnWhenTheHostDoesNotAgree)
{
    for (const int answer : {0, 2, -1}) {
        makeJob("000A!1!OFF!ON", -1);
        Answers = {{1, answer}};
        sweep(); // step 7 sees it
        trace.expect({reached("000A!1!OFF!ON"), stack("000A!1!OFF!ON"), check("000A!1!OFF!ON", 1),
                      stack("000A!1!ON!ON"), "log $$ 30.12.1899 12:00:00 30.12.1899 11:59:59 0"});
        EXPECT_EQ(jobAt(0), "000A!1!ON!ON");
    }
}

TEST_F(Sweep, ARunningJobIsSwitchedOffWhenTheHostSaysSo)
{
    makeJob("000A!1!ON!ON", 90);
    Answers = {{2, 1}};
    sweep();
    trace.expect({reached("000A!1!ON!ON"), stack("000A!1!ON!ON"),
                  "log $$ 30.12.1899 12:00:00 30.12.1899 12:01:30 1", check("000A!1!ON!ON", 2),
                  stack("000A!1!OFF!ON"), stack("000A!1!OFF!OFF"), commanded("RL0.0.0.0:000A1"),
                  loggedSend("RL0.0.0.0:000A1")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, ARunningJobGoesOnOtherwiseAndItsTimeIsAMinuteFromNow)
{
    for (const int answer : {0, 2, -1}) {
        const auto job = makeJob("000A!1!ON!ON", 3'600);
        Answers = {{2, answer}};
        sweep();
        trace.expect({reached("000A!1!ON!ON"), stack("000A!1!ON!ON"),
                      "log $$ 30.12.1899 12:00:00 30.12.1899 13:00:00 60", check("000A!1!ON!ON", 2)});
        EXPECT_EQ(jobAt(0), "000A!1!ON!ON");
        EXPECT_DOUBLE_EQ(job->Finishtime, platform::Now() + 1.0 / 1440);
    }
}

TEST_F(Sweep, AJobWhoseTimeIsOverIsOnlyReported)
{
    for (const int seconds : {0, -1, -3'600}) {
        const auto job = makeJob("000A!1!ON!ON", seconds);
        const double finish = job->Finishtime;
        sweep();
        EXPECT_EQ(trace.countOf("check"), 0);
        EXPECT_EQ(trace.take().mid(0, 2), QStringList({reached("000A!1!ON!ON"), stack("000A!1!ON!ON")}));
        EXPECT_EQ(job->Finishtime, finish);
    }
}

TEST_F(Sweep, WithoutAHandlerEveryChangeIsCarriedOut)
{
    device->SetOnCheckSQL({});
    makeJob("000A!1!ON!OFF", -60);
    makeJob("001A!1!OFF!ON");
    makeJob("002A!1!ON!ON");
    makeJob("003A!1!ON!NOTINLINE");
    sweep();
    EXPECT_EQ(jobAt(0), "000A!1!ON!ON");
    EXPECT_EQ(jobAt(1), "001A!1!OFF!OFF");
    EXPECT_EQ(jobAt(2), "002A!1!OFF!OFF");
    EXPECT_EQ(jobAt(3), "003A!1!OFF!OFF");
    EXPECT_EQ(trace.countOf("send"), 3);
}

TEST_F(Sweep, StatesChangeWithoutAConnector)
{
    device->SetConnector(nullptr);
    makeJob("000A!1!OFF!ON");
    sweep();
    trace.expect({reached("000A!1!OFF!ON"), stack("000A!1!OFF!ON"), check("000A!1!OFF!ON", 1),
                  loggedSend("RL0.0.0.0:000A1")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, ANewJobOfADeadBoardGoesThroughEveryStepInOneSweep)
{
    makeJob("000A!7!NONE!NONE");
    NewStatus = "ON";
    Answers = {{3, 0}};
    sweep();
    trace.expect({reached("000A!7!NONE!NONE"), read("$0.0.0.0:000A900"), stack("000A!7!NONE!NOTINLINE"),
                  asked("000A!7!NONE!NOTINLINE")});
    EXPECT_EQ(jobAt(0), "000A!7!ON!NOTINLINE");
    trace.take();
    sweep();
    trace.expect({reached("000A!7!ON!NOTINLINE"), stack("000A!7!ON!NOTINLINE"),
                  check("000A!7!ON!NOTINLINE", 3), stack("000A!7!ON!OFF"), check("000A!7!ON!OFF", 0),
                  commanded(""), loggedSend(""), stack("000A!7!ON!ON"), // no such relay: an empty command
                  "log $$ 30.12.1899 12:00:00 30.12.1899 12:01:00 1", check("000A!7!ON!ON", 2),
                  stack("000A!7!OFF!ON"), stack("000A!7!OFF!OFF"), commanded(""), loggedSend("")});
}

TEST_F(Sweep, HandlersAreBelievedWhatTheyWriteIntoAJob)
{
    const auto job = makeJob("000A!1!OFF!OFF");
    trace.once("status XXXSTACK", [&] {
        job->Status = "ON";
        job->Relay = "2";
    });
    Answers = {{0, 0}};
    sweep();
    trace.expect({reached("000A!1!OFF!OFF"), stack("000A!2!ON!OFF"), check("000A!2!ON!OFF", 0)});
}

TEST_F(Sweep, JobsThatAHandlerAddsWaitForTheNextOne)
{
    makeJob("000A!1!OFF!OFF");
    trace.once("status", [&] { makeJob("001A!1!OFF!OFF"); });
    sweep();
    trace.expect({reached("000A!1!OFF!OFF")});
    sweep();
    trace.expect({reached("001A!1!OFF!OFF"), reached("000A!1!OFF!OFF")});
}

TEST_F(Sweep, OneInsideAnotherDoesNothing)
{
    makeJob("000A!1!OFF!ON");
    trace.each("", [&] { sweep(); });
    sweep();
    EXPECT_EQ(trace.take().filter("XXXSTACK").size(), 1);
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Sweep, LinesThatAHandlerFeedsAreHandledInside)
{
    makeJob("000A!1!ON!OFF");
    trace.once("check", [&] { inject("#0.0.0.0:000ARELAY1Y00"); });
    Answers = {{0, 0}};
    sweep();
    trace.expect({reached("000A!1!ON!OFF"), stack("000A!1!ON!OFF"), check("000A!1!ON!OFF", 0),
                  read("#0.0.0.0:000ARELAY1Y00"), stack("000A!1!OFF!ON"), check("000A!1!OFF!ON", 1),
                  commanded("RL0.0.0.0:000A1"), loggedSend("RL0.0.0.0:000A1")}); // step 6 sees it
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

} // namespace

// One pass over the table: every state, every type of controller, every answer of the host.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Pass = TD24Test;

QString who(const QString& type)
{
    return "10.0.0.5!001x!" + type;
}

const QStringList kTypes{"T", "G", "I", "D", "X"};
const QStringList kCards{"77", kManualCard, kButtonCard};

/// The commands and their log by type, for an empty message.
QStringList commands(const QString& type, const QString& code)
{
    const QString address = QStringLiteral("10.0.0.5:001x");
    if (type == "T") {
        return {commanded(code + address), loggedSend(code + address)};
    }
    if (type == "G") {
        return {commanded("SH" + address), commanded(code + address), loggedSend(code + address)};
    }
    if (type == "I") {
        return {commanded("SH" + address), commanded(""), loggedSend("")};
    }
    return {commanded(""), loggedSend("")};
}

// "NEW"

TEST_F(Pass, NewWithoutAnswerIsNotAnswered)
{
    for (const QString& type : kTypes) {
        for (const QString& card : kCards) {
            for (const bool leaves :
                 {true, false}) { // a handler that leaves the result, and one that says -1
                SCOPED_TRACE((type + ' ' + card).toStdString());
                TD24Fixture fixture;
                if (!leaves) {
                    fixture.Answers = {{0, -1}};
                }
                fixture.makePass(who(type), card);
                fixture.runPass();
                fixture.trace.expect({stack(who(type), card, "NEW"), check(who(type), card, "NEW", 0)});
                EXPECT_EQ(fixture.statusOf(0), "NOANSWER");
            }
        }
    }
}

TEST_F(Pass, NewWithoutHandlerIsNotAnswered)
{
    for (const QString& type : kTypes) {
        for (const QString& card : kCards) {
            SCOPED_TRACE((type + ' ' + card).toStdString());
            TD24Fixture fixture;
            fixture.gate->SetOnCheckSQL({});
            fixture.makePass(who(type), card);
            fixture.runPass();
            fixture.trace.expect({stack(who(type), card, "NEW")});
            EXPECT_EQ(fixture.statusOf(0), "NOANSWER");
            fixture.runPass();
            fixture.trace.expect({stack(who(type), card, "NOANSWER")});
            EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
        }
    }
}

TEST_F(Pass, NewRefusedIsClosed)
{
    for (const QString& type : kTypes) {
        for (const QString& card : kCards) {
            SCOPED_TRACE((type + ' ' + card).toStdString());
            TD24Fixture fixture;
            fixture.Answers = {{0, 0}};
            fixture.makePass(who(type), card);
            fixture.runPass();
            fixture.trace.expect(
                QStringList{stack(who(type), card, "NEW"), check(who(type), card, "NEW", 0)} +
                commands(type, "PH"));
            EXPECT_EQ(fixture.statusOf(0), "CLOSE");
        }
    }
}

TEST_F(Pass, NewAllowedIsOpenedAndADisplayFinished)
{
    for (const QString& type : kTypes) {
        for (const QString& card : kCards) {
            SCOPED_TRACE((type + ' ' + card).toStdString());
            TD24Fixture fixture;
            fixture.Answers = {{0, 1}};
            fixture.makePass(who(type), card);
            fixture.runPass();
            QStringList lines{stack(who(type), card, "NEW"), check(who(type), card, "NEW", 0)};
            if (card != kButtonCard) { // the exit button opens by itself
                lines += commands(type, "GO");
            }
            fixture.trace.expect(lines);
            EXPECT_EQ(fixture.statusOf(0), type == "I" ? "FINISH" : "OPEN");
        }
    }
}

TEST_F(Pass, NewWithAnyOtherAnswerIsAskedAgain)
{
    for (const int answer : {2, 3, -2, 100}) {
        for (const QString type : {"T", "G", "D", "X"}) {
            TD24Fixture fixture;
            fixture.Answers = {{0, answer}};
            fixture.makePass(who(type), "77");
            for (int i = 0; i < 3; ++i) {
                fixture.runPass();
                fixture.trace.expect({stack(who(type), "77", "NEW"), check(who(type), "77", "NEW", 0)});
                EXPECT_EQ(fixture.statusOf(0), "NEW");
            }
        }
    }
}

TEST_F(Pass, NewWithAnyOtherAnswerKeepsWhatTheCheckSet)
{
    for (const QString& type : kTypes) {
        for (const QString& card : kCards) {
            TD24Fixture fixture;
            fixture.Answers = {{0, 2}};
            fixture.makePass(who(type), card);
            fixture.runPass();
            fixture.trace.expect({stack(who(type), card, "NEW"), check(who(type), card, "NEW", 0)});
            EXPECT_EQ(fixture.statusOf(0), type == "I"    ? "FINISH"
                                           : card == "77" ? "NEW"
                                                          : "OPEN")
                << type.toStdString() << ' ' << card.toStdString();
        }
    }
}

TEST_F(Pass, TheMessageGoesToTheDisplayFirst)
{
    Answers = {{0, 0}};
    Message = "NO ENTRY";
    inject("$10.0.0.5:001TRQ12345678AB");
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack(kT, "12345678", "NEW"), check(kT, "12345678", "NEW", 0),
                           commanded("SH10.0.0.5:001TNO ENTRY"), commanded("PH10.0.0.5:001TNO ENTRY"),
                           loggedSend("PH10.0.0.5:001TNO ENTRY")}));
    clock.advance(10);
    trace.expect({stack(kT, "12345678", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Pass, TheStateChangesAfterTheCommands)
{
    for (const int answer : {0, 1}) {
        TD24Fixture fixture;
        fixture.Answers = {{0, answer}};
        fixture.makePass(kG, "77");
        fixture.trace.OnLine = [&](const QString&) { EXPECT_EQ(fixture.statusOf(0), "NEW"); };
        fixture.runPass();
        EXPECT_EQ(fixture.statusOf(0), answer == 0 ? "CLOSE" : "OPEN");
    }
}

TEST_F(Pass, AStateChangedWhileSendingHoldsOnlyForAPassWithoutCard)
{
    const std::map<QString, QString> results{{"77", "OPEN"}, {kManualCard, "HOLD"}};
    for (const auto& [card, result] : results) {
        TD24Fixture fixture;
        fixture.Answers = {{0, 1}};
        fixture.makePass(kT, card);
        fixture.trace.each("send", [&] { fixture.gate->StackItem(0)->Status = "HOLD"; });
        fixture.runPass();
        EXPECT_EQ(fixture.statusOf(0), result) << card.toStdString();
    }
}

// "OPEN"; the times are in pass_time_test.cpp

TEST_F(Pass, OpenWaitsOrIsNotAnswered)
{
    const std::map<QString, QString> results{
        {"T", "OPEN"}, {"G", "NOANSWER"}, {"I", "NOANSWER"}, {"D", "OPEN"}, {"X", "OPEN"}};
    for (const auto& [type, result] : results) {
        TD24Fixture fixture;
        fixture.makePass(who(type), "77", "OPEN");
        fixture.runPass();
        fixture.trace.expect({stack(who(type), "77", "OPEN")});
        EXPECT_EQ(fixture.statusOf(0), result) << type.toStdString();
    }
}

TEST_F(Pass, OpenWithoutCardIsFinishedWhateverElseHolds)
{
    for (const QString& type : kTypes) {
        for (const QString& card : {kManualCard, kButtonCard}) {
            for (const int seconds : {0, 3'600}) {
                for (const bool confirming : {false, true}) {
                    TD24Fixture fixture;
                    fixture.gate->SetCheckET(confirming);
                    fixture.makePass(who(type), card, "OPEN");
                    fixture.clock.advance(seconds * 1'000);
                    fixture.runPass();
                    fixture.trace.expect({stack(who(type), card, "OPEN")});
                    EXPECT_EQ(fixture.statusOf(0), "FINISH") << type.toStdString();
                }
            }
        }
    }
}

// The states that ask the host once more

struct TEnd
{
    const char* status;
    int mode;
    int answer;
    const char* after;
};

const TEnd kEnds[] = {
    {"NOANSWER", 3, 1, "no pass"},    {"NOANSWER", 3, 0, "NOANSWER"},    {"NOANSWER", 3, -1, "no pass"},
    {"NOANSWER", 3, 2, "no pass"},    {"CRC-ERROR", 3, 1, "no pass"},    {"CRC-ERROR", 3, 0, "CRC-ERROR"},
    {"CRC-ERROR", 3, 2, "CRC-ERROR"}, {"CRC-ERROR", 3, -1, "CRC-ERROR"}, {"TIMEOUT", 1, 1, "no pass"},
    {"TIMEOUT", 1, 0, "TIMEOUT"},     {"TIMEOUT", 1, 2, "TIMEOUT"},      {"TIMEOUT", 1, -1, "TIMEOUT"},
    {"FINISH", 2, 1, "no pass"},      {"FINISH", 2, 0, "NOANSWER"},      {"FINISH", 2, 2, "NOANSWER"},
    {"FINISH", 2, -1, "NOANSWER"},
};

TEST_F(Pass, TheHostEndsIt)
{
    for (const TEnd& end : kEnds) {
        for (const QString& type : kTypes) {
            for (const QString& card : kCards) {
                SCOPED_TRACE(::testing::Message()
                             << end.status << ' ' << end.answer << ' ' << type.toStdString());
                TD24Fixture fixture;
                fixture.Answers = {{end.mode, end.answer}};
                fixture.makePass(who(type), card, end.status);
                fixture.runPass();
                fixture.trace.expect(
                    {stack(who(type), card, end.status), check(who(type), card, end.status, end.mode)});
                EXPECT_EQ(fixture.statusOf(0), end.after);
            }
        }
    }
}

TEST_F(Pass, AHandlerThatLeavesTheResultSaysMinusOne)
{
    const std::map<QString, QString> results{{"NOANSWER", "no pass"},
                                             {"CRC-ERROR", "CRC-ERROR"},
                                             {"TIMEOUT", "TIMEOUT"},
                                             {"FINISH", "NOANSWER"},
                                             {"PROGRESSSTART", "PROGRESS"}};
    for (const auto& [status, result] : results) {
        TD24Fixture fixture;
        fixture.makePass(kT, "77", status);
        fixture.runPass();
        EXPECT_EQ(fixture.statusOf(0), result) << status.toStdString();
    }
}

TEST_F(Pass, WithoutHandlerEveryEndIsAgreedTo)
{
    for (const char* status : {"NOANSWER", "CRC-ERROR", "TIMEOUT", "FINISH", "CLOSE"}) {
        TD24Fixture fixture;
        fixture.gate->SetOnCheckSQL({});
        fixture.makePass(kT, "77", status);
        fixture.runPass();
        fixture.trace.expect({stack(kT, "77", status)});
        EXPECT_EQ(fixture.gate->StackItemsCount(), 0) << status;
    }
}

TEST_F(Pass, ClosedIsRemovedWithoutAsking)
{
    for (const QString& type : kTypes) {
        TD24Fixture fixture;
        fixture.makePass(who(type), "77", "CLOSE");
        fixture.runPass();
        fixture.trace.expect({stack(who(type), "77", "CLOSE")});
        EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
    }
}

// Progress

TEST_F(Pass, ABeginningIsToldAndIsProgressThen)
{
    for (const int answer : {-1, 0, 1, 2}) {
        for (const QString& type : kTypes) {
            TD24Fixture fixture;
            fixture.Answers = {{5, answer}};
            fixture.makePass(who(type), "77", "PROGRESSSTART");
            fixture.runPass();
            fixture.trace.expect(
                {stack(who(type), "77", "PROGRESSSTART"), check(who(type), "77", "PROGRESSSTART", 5)});
            EXPECT_EQ(fixture.statusOf(0), "PROGRESS");
        }
    }
}

TEST_F(Pass, ProgressOverridesWhatTheHandlerSets)
{
    makePass(kT, "77", "PROGRESSSTART");
    trace.each("check", [this] { gate->StackItem(0)->Status = "CLOSE"; });
    runPass();
    EXPECT_EQ(statusOf(0), "PROGRESS");
}

TEST_F(Pass, ProgressOnlyWaits)
{
    for (const QString& type : kTypes) {
        TD24Fixture fixture;
        fixture.makePass(who(type), "77", "PROGRESS");
        fixture.runPass();
        fixture.trace.expect({stack(who(type), "77", "PROGRESS")});
        EXPECT_EQ(fixture.statusOf(0), "PROGRESS");
    }
}

TEST_F(Pass, AnyOtherStateIsLeftAlone)
{
    for (const char* status : {"", "new", "Open", "NEW ", "PING", "NONE", "FINISHED", "CRC ERROR"}) {
        TD24Fixture fixture;
        fixture.makePass(kT, "77", status);
        fixture.clock.advance(3'600'000);
        fixture.runPass();
        fixture.trace.expect({});
        EXPECT_EQ(fixture.statusOf(0), status);
    }
}

TEST_F(Pass, AStateChangedInsideTheReportIsActedOn)
{
    makePass(kT, "77", "NEW");
    trace.each("status STACK", [this] { gate->StackItem(0)->Status = "CLOSE"; });
    runPass();
    trace.expect({stack(kT, "77", "NEW")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Pass, AStateChangedToNothingInsideTheReportIsLeftAlone)
{
    makePass(kT, "77", "CLOSE");
    trace.OnLine = [this](const QString&) { gate->StackItem(0)->Status = "HOLD"; };
    runPass();
    trace.expect({stack(kT, "77", "CLOSE")});
    EXPECT_EQ(statusOf(0), "HOLD");
}

// Whole passes

TEST_F(Pass, AMemberWalksThroughATurnstile)
{
    Answers = {{0, 1}, {2, 1}, {5, 1}};
    inject("$10.0.0.5:001TRQ77AB");
    clock.advance(10);
    inject("$10.0.0.5:001TPR77AB");
    clock.advance(20);
    inject("$10.0.0.5:001TGR77AB");
    clock.advance(20);
    QStringList lines = trace.take();
    lines.removeIf([](const QString& line) { return line.startsWith("log"); });
    EXPECT_EQ(
        lines,
        QStringList({"img 001T", looked(kT, "77", "NEW"), come(kT, "77", "NEW"), stack(kT, "77", "NEW"),
                     check(kT, "77", "NEW", 0), commanded("GO10.0.0.5:001T"), stack(kT, "77", "OPEN"),
                     come(kT, "77", "PROGRESSSTART"), stack(kT, "77", "PROGRESSSTART"),
                     check(kT, "77", "PROGRESSSTART", 5), stack(kT, "77", "PROGRESS"),
                     come(kT, "77", "FINISH"), stack(kT, "77", "FINISH"), check(kT, "77", "FINISH", 2)}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Pass, AGateIsOpenedForAnAllowedCard)
{
    Answers = {{0, 1}};
    inject("$10.0.0.5:002GRQ77AB");
    clock.advance(30);
    QStringList lines = trace.take();
    EXPECT_EQ(lines.mid(4), QStringList({stack(kG, "77", "NEW"), check(kG, "77", "NEW", 0),
                                         commanded("SH10.0.0.5:002G"), commanded("GO10.0.0.5:002G"),
                                         loggedSend("GO10.0.0.5:002G"), stack(kG, "77", "OPEN"),
                                         stack(kG, "77", "NOANSWER"), check(kG, "77", "NOANSWER", 3)}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Pass, ADisplayShowsAndIsFinished)
{
    Answers = {{0, 1}, {2, 1}};
    Message = "|Hello|";
    inject("$10.0.0.5:003IRQ77AB");
    clock.advance(20);
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack(kI, "77", "NEW"), check(kI, "77", "NEW", 0),
                           commanded("SH10.0.0.5:003I|Hello|"), commanded(""), loggedSend(""),
                           stack(kI, "77", "FINISH"), check(kI, "77", "FINISH", 2)}));
}

TEST_F(Pass, AMemberWhoGivesUpIsRetired)
{
    Answers = {{0, 1}, {1, 1}};
    inject("$10.0.0.5:001TRQ77AB");
    inject("$10.0.0.5:001TFK77AB");
    trace.take();
    clock.advance(10);
    trace.expect({stack(kT, "77", "TIMEOUT"), check(kT, "77", "TIMEOUT", 1)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

} // namespace

// A host that decides about cards and nothing else.

#include "support/text_printers.h"
#include "tnv5/answers/gate_answers.h"
#include "tnv5/common/messages.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/wire.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace tnv5::answers {
namespace {

const QByteArray kOpen = "$01A10366\r";
const QByteArray kRefuse = "$01A00064\r";

/// What is told to the host's exception handler, and how passes end.
class TAnswersTest : public ::testing::Test
{
protected:
    TAnswersTest()
    {
        platform::setExceptionHandler(
            [this](const QString& text, const std::exception_ptr&) { raised << text; });
    }
    ~TAnswersTest() override { platform::setExceptionHandler({}); }

    void hear(TGateAnswers& answers)
    {
        answers.onEnd([this](const TCardQuestion& pass, TPassEnd end) {
            const char* const words[] = {"passed", "not used", "not answered"};
            ends << pass.link + pass.gate + ' ' + pass.card + ' ' + words[int(end)];
        });
    }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    testkit::TWire wire{port};
    QStringList raised;
    QStringList ends;
};

/// A line of classic controllers.
class TClassicAnswersTest : public TAnswersTest
{
protected:
    TClassicAnswersTest()
    {
        gate->SetComport(&port);
        hear(*answers);
        port.Open();
    }

    void passThrough()
    {
        wire.inject("#01ARelay 1\r$01AP\r$01AG\r");
        clock.advance(200);
    }

    std::unique_ptr<turnstile::TTurnStylerDevice> gate = std::make_unique<turnstile::TTurnStylerDevice>();
    std::unique_ptr<TGateAnswers> answers = std::make_unique<TGateAnswers>(*gate);
};

TEST_F(TClassicAnswersTest, ACardOpensOrIsRefused)
{
    TCardQuestion asked;
    answers->onCard([&](const TCardQuestion& question) {
        asked = question;
        return question.card == "7" ? TAnswer::open() : TAnswer::refuse();
    });
    wire.inject("$01AR7\r");
    wire.expect(kOpen);
    EXPECT_EQ(asked.gate, "01A");
    EXPECT_EQ(asked.card, "7");
    EXPECT_EQ(asked.link, QString());
    passThrough();
    EXPECT_EQ(ends, QStringList("01A 7 passed"));
    wire.inject("$01AR8\r");
    wire.expect(kRefuse);
    clock.advance(200);
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_EQ(ends.size(), 1) << "a refused card makes no pass";
}

TEST_F(TClassicAnswersTest, TheGateIsReadyAgainHoweverAPassEnds)
{
    answers->onCard([](const TCardQuestion&) { return TAnswer::open(); });
    wire.inject("$01AR1\r#01ARelay 1\r");
    clock.advance(10'000); // nobody comes
    wire.inject("$01AR2\r");
    clock.advance(10'000); // nothing answers
    wire.inject("$01AR3\r");
    clock.advance(100);
    passThrough();
    EXPECT_EQ(ends, QStringList({"01A 1 not used", "01A 2 not answered", "01A 3 passed"}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(TClassicAnswersTest, WithoutAHandlerCardsAreRefusedAndButtonsOpen)
{
    wire.inject("$01AR7\r");
    wire.expect(kRefuse);
    clock.advance(200);
    wire.inject("#01DBtn-Activ\r");
    wire.expect("$01D32363\r");
    wire.inject("#01DRelay 3\r#01DGate-Open\r");
    clock.advance(200);
    EXPECT_EQ(ends, QStringList("01D -2-2-2-2-2 passed"));
}

TEST_F(TClassicAnswersTest, OpenedByHandWithoutAQuestion)
{
    int asked = 0;
    answers->onCard([&](const TCardQuestion&) {
        ++asked;
        return TAnswer::refuse();
    });
    wire.inject("$01AR" + common::kCardManual.toLatin1() + "\r");
    wire.expect(kOpen);
    EXPECT_EQ(asked, 0);
}

TEST_F(TClassicAnswersTest, AGatesOwnHandlerComesFirst)
{
    answers->onCard([](const TCardQuestion&) { return TAnswer::refuse(); });
    answers->onCard("01A", [](const TCardQuestion&) { return TAnswer::open(); });
    wire.inject("$01AR7\r");
    wire.expect(kOpen);
    wire.inject("$02AR7\r");
    EXPECT_EQ(gate->StackItemsCount(), 2);
    clock.advance(100);
    EXPECT_EQ(gate->StackItemsCount(), 1) << "02A was refused";
}

TEST_F(TClassicAnswersTest, AHandlerThatRaisesRefusesAndIsTold)
{
    answers->onCard([](const TCardQuestion&) -> TAnswer { throw std::runtime_error("no books"); });
    answers->onEnd([](const TCardQuestion&, TPassEnd) { throw std::runtime_error("no journal"); });
    wire.inject("$01AR7\r");
    wire.expect(kRefuse);
    EXPECT_EQ(raised, QStringList("no books"));
    answers->onCard([](const TCardQuestion&) { return TAnswer::open(); });
    clock.advance(200);
    wire.inject("$01AR7\r");
    wire.expect(kOpen);
    passThrough();
    EXPECT_EQ(raised, QStringList({"no books", "no journal"}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(TClassicAnswersTest, AHandlerMayReplaceItself)
{
    answers->onCard([&](const TCardQuestion&) {
        answers->onCard([](const TCardQuestion&) { return TAnswer::open(); });
        return TAnswer::refuse();
    });
    wire.inject("$01AR7\r");
    wire.expect(kRefuse);
    clock.advance(200);
    wire.inject("$01AR7\r");
    wire.expect(kOpen);
}

TEST_F(TClassicAnswersTest, AHandlerMayEndTheAnswers)
{
    answers->onCard([&](const TCardQuestion&) {
        answers.reset();
        return TAnswer::open();
    });
    wire.inject("$01AR7\r");
    wire.expect(kOpen);
    EXPECT_FALSE(gate->OnCheckSQL());
}

TEST_F(TClassicAnswersTest, AHandlerMayEndTheComponent)
{
    answers->onCard([&](const TCardQuestion&) {
        gate.reset();
        return TAnswer::open();
    });
    wire.inject("$01AR7\r");
    wire.expectNothing();
    answers.reset();
    EXPECT_EQ(raised, QStringList());
}

TEST_F(TClassicAnswersTest, TheComponentAsksNobodyAfterTheEnd)
{
    answers.reset();
    EXPECT_FALSE(gate->OnCheckSQL());
}

/// A link that keeps the commands.
class TKeepingLink : public connector::TDeviceConnector
{
public:
    bool GetConnected() override { return true; }
    QString SendCommand(const QString& command) override
    {
        FCommands << command;
        return {};
    }
    QStringList take() { return std::exchange(FCommands, {}); }

private:
    QStringList FCommands;
};

/// Networked gates behind it.
class TNetworkedAnswersTest : public TAnswersTest
{
protected:
    TNetworkedAnswersTest()
    {
        gates.SetConnector(&link);
        hear(answers);
    }

    TKeepingLink link;
    d24::TTurnStylerDeviceD24 gates;
    TGateAnswers answers{gates};
};

TEST_F(TNetworkedAnswersTest, TheDisplaySaysWhatTheAnswerSays)
{
    TCardQuestion asked;
    answers.onCard([&](const TCardQuestion& question) {
        asked = question;
        return question.card == "1234" ? TAnswer::open(d24::TDisplayText("Anna|Berg", "12.50").light())
                                       : TAnswer::refuse(d24::TDisplayText("unknown"));
    });
    link.GetCommand("$10.0.0.5:001TRQ1234AB");
    EXPECT_EQ(link.take(),
              QStringList({"SH10.0.0.5:001T|Anna Berg|12.50|||L|", "GO10.0.0.5:001T|Anna Berg|12.50|||L|"}));
    EXPECT_EQ(asked.gate, "001T");
    EXPECT_EQ(asked.card, "1234");
    EXPECT_EQ(asked.link, "10.0.0.5");
    link.GetCommand("$10.0.0.5:001TPR1234AB");
    link.GetCommand("$10.0.0.5:001TGR1234AB");
    clock.advance(100);
    EXPECT_EQ(ends, QStringList("10.0.0.5001T 1234 passed"));
    link.GetCommand("$10.0.0.5:001TRQ99AB");
    EXPECT_EQ(link.take(), QStringList({"SH10.0.0.5:001T|unknown|||||", "PH10.0.0.5:001T|unknown|||||"}));
    clock.advance(100);
    EXPECT_EQ(gates.StackItemsCount(), 0);
}

TEST_F(TNetworkedAnswersTest, WithoutAHandlerCardsAreRefused)
{
    link.GetCommand("$10.0.0.5:001TRQ1234AB");
    EXPECT_EQ(link.take(), QStringList("PH10.0.0.5:001T"));
    clock.advance(100);
    EXPECT_EQ(gates.StackItemsCount(), 0);
}

TEST_F(TNetworkedAnswersTest, APassThatNobodyUsesEnds)
{
    answers.onCard([](const TCardQuestion&) { return TAnswer::open(); });
    link.GetCommand("$10.0.0.5:001TRQ1AB");
    link.GetCommand("$10.0.0.5:001TFK1AB");
    clock.advance(20'000);
    EXPECT_EQ(ends, QStringList("10.0.0.5001T 1 not used"));
    EXPECT_EQ(gates.StackItemsCount(), 0);
}

TEST_F(TNetworkedAnswersTest, AHandlerThatRaisesRefusesAndIsTold)
{
    answers.onCard([](const TCardQuestion&) -> TAnswer { throw std::runtime_error("no books"); });
    link.GetCommand("$10.0.0.5:001TRQ1AB");
    EXPECT_EQ(link.take(), QStringList("PH10.0.0.5:001T"));
    EXPECT_EQ(raised, QStringList("no books"));
}

} // namespace
} // namespace tnv5::answers

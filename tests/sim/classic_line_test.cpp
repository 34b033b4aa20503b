#include "classic_fixture.h"
#include "tnv5/platform/errors.h"

namespace tnv5::sim {
namespace {

using ClassicLine = TClassicFixture;

TEST_F(ClassicLine, TakesControllersWithProperAddressesOnce)
{
    EXPECT_EQ(line->addresses(), (QStringList{kTurnstile, kDoor}));
    for (const char* wrong : {"", "01", "01A", "01a", "0AA", "A1A", "011", "001A", "01\xd0\x90"}) {
        EXPECT_FALSE(line->addController(QString::fromUtf8(wrong))) << wrong;
    }
    EXPECT_TRUE(line->addController(QStringLiteral("03A")));
    EXPECT_EQ(line->addresses().size(), 3);
}

TEST_F(ClassicLine, APersonWithACardIsLetThroughTheTurnstile)
{
    const quint64 id = line->readCard(kTurnstile, kCard);
    EXPECT_EQ(stream.takeWritten(), "$01AR12345678\r");
    EXPECT_EQ(fate(id), TFate::Waiting);
    stream.feed(kOpenTurnstile);
    EXPECT_EQ(heardIn(line->Delays.AcknowledgeMs - 1), "");
    EXPECT_FALSE(line->gateOpen(kTurnstile));
    EXPECT_EQ(heardIn(1), "#01ARelay 1\r");
    EXPECT_TRUE(line->gateOpen(kTurnstile));
    EXPECT_EQ(fate(id), TFate::Opened);
    EXPECT_FALSE(line->reading(id).Passed);
    EXPECT_EQ(heardIn(line->Delays.ProgressMs), "$01AP\r");
    EXPECT_EQ(heardIn(line->Delays.PassageMs), "$01AG\r");
    EXPECT_TRUE(line->reading(id).Passed);
    EXPECT_FALSE(line->gateOpen(kTurnstile));
    EXPECT_EQ(diary, (QStringList{"opened 01A", "closed 01A", "passed 01A"}));
    EXPECT_EQ(heardIn(60'000), "");
}

TEST_F(ClassicLine, ADoorTellsThatItWasOpenedAndClosesInTime)
{
    const quint64 id = line->readCard(kDoor, kCard);
    EXPECT_EQ(stream.takeWritten(), "$02DR12345678\r");
    EXPECT_EQ(command(kOpenDoor), "#02DRelay 3\r");
    EXPECT_EQ(heardIn(line->Delays.ProgressMs), "#02DGate-Open\r");
    EXPECT_TRUE(line->reading(id).Passed);
    clock.advance(3'000 - line->Delays.ProgressMs - 1);
    EXPECT_TRUE(line->gateOpen(kDoor));
    clock.advance(1);
    EXPECT_FALSE(line->gateOpen(kDoor));
    EXPECT_EQ(diary, (QStringList{"opened 02D", "passed 02D", "closed 02D"}));
}

TEST_F(ClassicLine, ARefusedPersonStaysOutside)
{
    const quint64 id = line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    EXPECT_EQ(command(kRefuseTurnstile), "#01ARelay 0\r");
    EXPECT_EQ(fate(id), TFate::Refused);
    EXPECT_FALSE(line->gateOpen(kTurnstile));
    EXPECT_EQ(heardIn(60'000), "");
    EXPECT_EQ(diary, QStringList{"refused 01A"});
}

TEST_F(ClassicLine, RefusingClosesAnOpenGate)
{
    command(kHoldDoor);
    EXPECT_TRUE(line->gateOpen(kDoor));
    command("$02D00062\r");
    EXPECT_FALSE(line->gateOpen(kDoor));
    EXPECT_EQ(diary, (QStringList{"opened 02D", "closed 02D", "refused 02D"}));
}

TEST_F(ClassicLine, ADoorIsHeldOpenUntilACommandReleasesIt)
{
    EXPECT_EQ(command(kHoldDoor), "#02DRelay 3\r");
    EXPECT_EQ(heardIn(3'600'000), "");
    EXPECT_TRUE(line->gateOpen(kDoor));
    EXPECT_EQ(command(kReleaseDoor), "#02DRelay 3\r");
    EXPECT_FALSE(line->gateOpen(kDoor));
    EXPECT_EQ(diary, (QStringList{"opened 02D", "closed 02D"}));
}

TEST_F(ClassicLine, ASecondOpeningProlongsTheFirst)
{
    line->Guest = TBehaviour::WalksAway;
    command(kOpenDoor);
    clock.advance(2'000);
    command(kOpenDoor);
    clock.advance(2'900);
    EXPECT_TRUE(line->gateOpen(kDoor));
    clock.advance(100);
    EXPECT_FALSE(line->gateOpen(kDoor));
    EXPECT_EQ(line->counts(kDoor).Opened, 2);
}

TEST_F(ClassicLine, TheButtonAndTheInGateSensorAskWithoutACard)
{
    const quint64 button = line->pressButton(kDoor);
    const quint64 sensor = line->inGate(kTurnstile);
    EXPECT_EQ(stream.takeWritten(), "#02DBtn-Activ\r#01AInG-Activ\r");
    command(kOpenDoor + kRefuseTurnstile);
    EXPECT_EQ(fate(button), TFate::Opened);
    EXPECT_EQ(fate(sensor), TFate::Refused);
    EXPECT_EQ(line->reading(button).Card, QString());
}

TEST_F(ClassicLine, AHardResetClosesTheGateAndForgetsThePeople)
{
    command(kOpenTurnstile);
    const quint64 id = line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    EXPECT_TRUE(line->hardReset(kTurnstile));
    EXPECT_EQ(stream.takeWritten(), "#01AHardReset\r");
    EXPECT_FALSE(line->gateOpen(kTurnstile));
    EXPECT_EQ(fate(id), TFate::NoCommand);
    EXPECT_EQ(heardIn(line->Delays.RestartMs), "#01AWait-Card\r");
    EXPECT_EQ(heardIn(60'000), ""); // the passage that was under way is forgotten
    EXPECT_FALSE(line->hardReset(QStringLiteral("09A")));
}

TEST_F(ClassicLine, EveryControllerAnswersThePoll)
{
    EXPECT_EQ(command(kPoll), "#01AWait-Card\r#02DWait-Card\r");
    EXPECT_EQ(line->totals().Commands, 0);
}

TEST_F(ClassicLine, AWrongChecksumIsAnsweredAndCounted)
{
    QByteArrayList bad;
    line->OnBadCommand = [&](const QByteArray& bytes) { bad += bytes; };
    EXPECT_EQ(command("$01A10367\r"), "#01ACRC-ERROR\r");
    EXPECT_EQ(command("$01A120367\r"), "#01ACRC-ERROR\r"); // a field of two digits
    EXPECT_EQ(command("$09A10367\r"), "");                 // for nobody here
    EXPECT_EQ(command("$\r"), "");
    EXPECT_EQ(bad, (QByteArrayList{"$01A10367", "$01A120367", "$09A10367", "$"}));
    EXPECT_EQ(line->badCommands(), 4);
    EXPECT_EQ(line->counts(kTurnstile).BadCommands, 2);
    EXPECT_EQ(line->counts(kTurnstile).Commands, 0);
    EXPECT_FALSE(line->gateOpen(kTurnstile));
}

TEST_F(ClassicLine, CommandsForOthersAreLeftAlone)
{
    EXPECT_EQ(command("$03A10364\r"), "");
    EXPECT_EQ(command("$00010015\r"), ""); // to all, but not the poll
    EXPECT_EQ(line->strayCommands(), 2);
    EXPECT_EQ(line->badCommands(), 0);
}

TEST_F(ClassicLine, CommandsAreRememberedWithTheirTimes)
{
    const double noon = platform::Now();
    command(kOpenTurnstile);
    clock.advance(1'000);
    const double later = platform::Now();
    command("\xff\r$01A00000\r");
    ASSERT_EQ(line->commands().size(), 2U);
    EXPECT_EQ(line->commands()[0].Line, "$01A10366");
    EXPECT_EQ(line->commands()[0].Time, noon);
    EXPECT_TRUE(line->commands()[0].Right);
    EXPECT_EQ(line->commands()[1].Line, "$01A00000");
    EXPECT_EQ(line->commands()[1].Time, later);
    EXPECT_FALSE(line->commands()[1].Right);
}

TEST_F(ClassicLine, CountsEachGateAndAll)
{
    line->readCard(kTurnstile, kCard);
    command(kOpenTurnstile);
    line->readCard(kDoor, kCard);
    command("$02D00062\r$02D00063\r");
    clock.advance(60'000);
    EXPECT_EQ(line->counts(kTurnstile).Asked, 1);
    EXPECT_EQ(line->counts(kTurnstile).Opened, 1);
    EXPECT_EQ(line->counts(kTurnstile).Passed, 1);
    EXPECT_EQ(line->counts(kDoor).Refused, 1);
    EXPECT_EQ(line->counts(QStringLiteral("09A")).Asked, 0);
    const TGateCounts all = line->totals();
    EXPECT_EQ(all.Asked, 2);
    EXPECT_EQ(all.Commands, 2);
    EXPECT_EQ(all.BadCommands, 1);
    EXPECT_EQ(all.Opened, 1);
    EXPECT_EQ(all.Refused, 1);
    EXPECT_EQ(all.Passed, 1);
    EXPECT_EQ(all.NoCommand, 0);
    EXPECT_EQ(all.GaveUp, 0);
}

TEST_F(ClassicLine, NothingGrowsWithoutBound)
{
    stream.KeepWrites = false;
    for (std::size_t i = 0; i < TClassicLine::kMaxRemembered + 100; ++i) {
        line->readCard(kTurnstile, kCard);
        stream.feed("$01A00000\r");
    }
    EXPECT_EQ(line->readings().size(), TClassicLine::kMaxRemembered);
    EXPECT_EQ(line->commands().size(), TClassicLine::kMaxRemembered);
    EXPECT_EQ(line->reading(1).Id, 0U);
    EXPECT_EQ(line->reading(101).Id, 101U);
    EXPECT_EQ(line->reading(1'000'000).Id, 0U);
    const auto waiting = qint64(TClassicLine::kMaxWaiting);
    EXPECT_EQ(line->totals().NoCommand, line->totals().Asked - waiting);
}

TEST_F(ClassicLine, WithoutDelaysEverythingHappensWithinTheCommand)
{
    line->Delays = TClassicDelays{0, 0, 0, 0, 5'000, 0};
    stream.OnWritten = [this](const QByteArray& bytes) {
        if (bytes.startsWith("$01AR")) {
            stream.feed(kOpenTurnstile);
        }
    };
    const quint64 id = line->readCard(kTurnstile, kCard);
    EXPECT_EQ(stream.takeWrites(),
              (QByteArrayList{"$01AR12345678\r", "#01ARelay 1\r", "$01AP\r", "$01AG\r"}));
    EXPECT_TRUE(line->reading(id).Passed);
    clock.advance(60'000);
    EXPECT_EQ(fate(id), TFate::Opened); // the limit of the wait is gone with the wait
}

TEST_F(ClassicLine, AnyHookMayDestroyTheLine)
{
    const auto destroy = [this](const auto&...) { line.reset(); };
    const auto arm = [&](int which) {
        line = std::make_unique<TClassicLine>(stream);
        line->addController(kTurnstile);
        line->addController(kDoor);
        switch (which) {
        case 0:
            line->OnOpened = destroy;
            break;
        case 1:
            line->OnClosed = destroy;
            break;
        case 2:
            line->OnRefused = destroy;
            break;
        case 3:
            line->OnPassed = destroy;
            break;
        case 4:
            line->OnGaveUp = destroy;
            break;
        case 5:
            line->OnFate = destroy;
            break;
        case 6:
            line->OnCommand = destroy;
            break;
        case 7:
            line->OnBadCommand = destroy;
            break;
        default:
            stream.OnWritten = destroy;
            break;
        }
    };
    for (int which = 0; which < 9; ++which) {
        for (const int delay : {0, 1}) {
            line.reset();
            arm(which);
            line->Delays = TClassicDelays{delay, delay, delay, delay, 5'000, delay};
            const auto step = [&](auto&& act) {
                if (line) {
                    act();
                    clock.advance(100);
                }
            };
            step([&] { line->readCard(kTurnstile, kCard); });
            step([&] { stream.feed(kOpenTurnstile + "$01A10367\r" + kPoll); });
            step([&] { line->readCard(kDoor, kCard, TBehaviour::GivesUp); });
            step([&] { stream.feed(kOpenDoor); });
            step([&] { stream.feed("$02D00062\r"); });
            step([&] { line->hardReset(kTurnstile); });
            EXPECT_EQ(line, nullptr) << which;
            stream.OnWritten = nullptr;
        }
    }
    stream.feed(kPoll); // nobody hears it
}

TEST_F(ClassicLine, AHookThatRaisesSpoilsNothing)
{
    QStringList reported;
    const auto previous = platform::setExceptionHandler(
        [&](const QString& message, const std::exception_ptr&) { reported += message; });
    line->OnCommand = [](const TReceivedCommand&) {
        throw platform::Exception(QStringLiteral("in the hook"));
    };
    command(kOpenTurnstile + kOpenTurnstile);
    EXPECT_EQ(reported, (QStringList{"in the hook", "in the hook"}));
    line->OnCommand = nullptr;
    EXPECT_EQ(command(kOpenTurnstile), "#01ARelay 1\r");
    platform::setExceptionHandler(previous);
}

} // namespace
} // namespace tnv5::sim

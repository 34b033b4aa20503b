#include "club_fixture.h"
#include "support/fixture.h"
#include "tnv5/host/club_host.h"
#include "tnv5/host/d24_host.h"

namespace tnv5::host {
namespace {

/// A connector that notes the commands that it gets.
class TNotingConnector final : public connector::TDeviceConnector
{
public:
    bool GetConnected() override { return true; }
    QString SendCommand(const QString& AMess) override
    {
        sent << AMess;
        return QStringLiteral("00");
    }

    QStringList sent;
};

/// The host of D24 controllers with time in hand. Gates: 101T in, 102T out, 103I in, 104G in; cards as in the
/// classic host's tests.
class TD24HostTest : public TClubFixture, protected tests::TFixture
{
protected:
    TD24HostTest()
    {
        for (const auto& [address, direction] :
             {std::pair("101T", TDirection::In), std::pair("102T", TDirection::Out),
              std::pair("103I", TDirection::In), std::pair("104G", TDirection::In)}) {
            club.setGate({QString::fromLatin1(address), QStringLiteral("hall"), direction});
        }
        anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
        club.setBalance(anna, 1'250);
        device.SetConnector(&connector);
        desk.OnPass = [this](const TPass& pass) { news.append(logLine(pass).mid(14)); };
        desk.OnTrouble = [this](const QString& text) { troubles.append(text); };
    }

    void inject(const char* line) { device.p_hw_ProtocolIn(QString::fromLatin1(line)); }
    QStringList takeSent() { return std::exchange(connector.sent, {}); }
    /// Lets the component make its passes and the journal be written.
    void settle() { clock.advance(200); }

    TNotingConnector connector;
    d24::TTurnStylerDeviceD24 device;
    qint64 anna = 0;
    QStringList news;
    QStringList troubles;
    TClubDesk desk{club};
    TD24Host host{device, desk};
};

TPass passOf(const char* name, qint64 balance, TRefusal refusal)
{
    TPass pass;
    pass.card = QStringLiteral("7");
    pass.name = QString::fromLatin1(name);
    pass.balance = balance;
    pass.refusal = refusal;
    return pass;
}

TEST(D24Display, NameAndBalanceOrReason)
{
    EXPECT_EQ(displayText(passOf("Anna Berg", 1'250, TRefusal::None)),
              QStringLiteral("|Anna Berg|Balance 12.50||||"));
    EXPECT_EQ(displayText(passOf("Anna Berg", 1'250, TRefusal::Expired)),
              QStringLiteral("|Anna Berg|expired||||"));
    EXPECT_EQ(displayText(passOf("", 0, TRefusal::UnknownCard)), QStringLiteral("|Card 7|unknown card||||"));
    EXPECT_EQ(displayText(passOf("A|B\rC", 0, TRefusal::None)), QStringLiteral("|A B C|Balance 0.00||||"));
    TPass button;
    button.card = QStringLiteral("-2-2-2-2-2");
    EXPECT_EQ(displayText(button), QString());
}

TEST_F(TD24HostTest, ACardFromReadingToPassage)
{
    inject("$0.0.0.0:101TRQ100");
    EXPECT_EQ(takeSent(), QStringList({QStringLiteral("SH0.0.0.0:101T|Anna Berg|Balance 12.50||||"),
                                       QStringLiteral("GO0.0.0.0:101T|Anna Berg|Balance 12.50||||")}));
    inject("$0.0.0.0:101TPR00");
    settle();
    inject("$0.0.0.0:101TGR00");
    settle();
    EXPECT_EQ(news, QStringList({QStringLiteral("101T  Anna Berg (1)  opened"),
                                 QStringLiteral("101T  Anna Berg (1)  passed")}));
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].member, anna);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_TRUE(club.holderOf(QStringLiteral("1"))->member.inside);
    EXPECT_EQ(device.StackItemsCount(), 0);
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(TD24HostTest, ARefusedCardIsToldWhy)
{
    inject("$0.0.0.0:101TRQ300");
    EXPECT_EQ(takeSent(), QStringList({QStringLiteral("SH0.0.0.0:101T|Card 3|unknown card||||"),
                                       QStringLiteral("PH0.0.0.0:101T|Card 3|unknown card||||")}));
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].refusal, TRefusal::UnknownCard);
    EXPECT_EQ(device.StackItemsCount(), 0);
}

TEST_F(TD24HostTest, WhoDoesNotPassIsTimedOut)
{
    inject("$0.0.0.0:101TRQ100");
    inject("$0.0.0.0:101TFK00");
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::TimedOut);
    EXPECT_FALSE(club.holderOf(QStringLiteral("1"))->member.inside);
}

TEST_F(TD24HostTest, AGateTellsNothingAboutThePassage)
{
    inject("$0.0.0.0:104GRQ100");
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_TRUE(club.holderOf(QStringLiteral("1"))->member.inside);
    EXPECT_EQ(device.StackItemsCount(), 0);
}

TEST_F(TD24HostTest, AGateThatMustConfirmAndDoesNotHasLetNobodyPass)
{
    device.SetCheckET(true);
    inject("$0.0.0.0:104GRQ100");
    clock.advance(10'000);
    inject("$0.0.0.0:104GRQ100");
    ASSERT_EQ(device.StackItemsCount(), 1);
    device.StackItem(0)->Finish = true; // what the component notes when it hears "ET"
    settle();
    ASSERT_EQ(journal().size(), 2);
    EXPECT_EQ(journal()[0].ending, TEnding::Unanswered);
    EXPECT_EQ(journal()[1].ending, TEnding::Passed) << "it confirmed";
}

TEST_F(TD24HostTest, ADisplayWithoutAGateHasLetEveryAllowedCardPass)
{
    inject("$0.0.0.0:103IRQ100");
    EXPECT_EQ(takeSent().value(0), QStringLiteral("SH0.0.0.0:103I|Anna Berg|Balance 12.50||||"));
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
}

TEST_F(TD24HostTest, TheExitButtonIsJournaledAndNotCommanded)
{
    inject("#0.0.0.0:101TBTPH00");
    settle();
    EXPECT_EQ(takeSent(), QStringList());
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].card, QStringLiteral("-2-2-2-2-2"));
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
}

TEST_F(TD24HostTest, AnOpeningByHandOpens)
{
    device.p_hw_manual(QStringLiteral("0.0.0.0"), QStringLiteral("101T"), QStringLiteral("OPEN"));
    EXPECT_EQ(takeSent(), QStringList({QStringLiteral("GO0.0.0.0:101T")}));
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
}

TEST_F(TD24HostTest, AFailingDatabaseRefusesTheCardAndSaysSo)
{
    elsewhere(QStringLiteral("ALTER TABLE card RENAME TO card_away"));
    inject("$0.0.0.0:101TRQ100");
    EXPECT_EQ(takeSent().value(0), QStringLiteral("SH0.0.0.0:101T|Card 1|host fault||||"));
    settle();
    ASSERT_FALSE(troubles.isEmpty());
    EXPECT_TRUE(troubles.last().contains(QStringLiteral("card 1 at 101T cannot be decided about")))
        << qPrintable(troubles.last());
    elsewhere(QStringLiteral("ALTER TABLE card_away RENAME TO card"));
    inject("$0.0.0.0:101TRQ100");
    EXPECT_EQ(takeSent().value(1).left(2), QStringLiteral("GO"));
}

TEST_F(TD24HostTest, TheHoldersPictureIsDrawn)
{
    device.SetTimerInterval(1'000);
    inject("$0.0.0.0:101TRQ100");
    ASSERT_EQ(device.StackItemsCount(), 1);
    EXPECT_FALSE(device.StackItem(0)->Img.isNull());
}

TEST_F(TD24HostTest, ErrorsOfTheComponentAreTold)
{
    device.SetConnector(nullptr);
    inject("$0.0.0.0:101TRQ300");
    settle();
    ASSERT_FALSE(troubles.isEmpty());
    EXPECT_TRUE(troubles.first().startsWith(QStringLiteral("[04] "))) << qPrintable(troubles.first());
}

TEST_F(TD24HostTest, ClosingInterruptsWhatIsUnderWay)
{
    inject("$0.0.0.0:101TRQ100");
    host.close();
    EXPECT_FALSE(device.OnCheckSQL());
    desk.close();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Interrupted);
}

TEST_F(TD24HostTest, TheComponentMayGoFirst)
{
    auto other = std::make_unique<d24::TTurnStylerDeviceD24>();
    TD24Host second(*other, desk);
    other.reset();
    second.close();
}

TEST_F(TD24HostTest, BothKindsOfGatesShareOneDesk)
{
    testkit::TMemoryPort port;
    port.Open();
    turnstile::TTurnStylerDevice line;
    line.SetComport(&port);
    TClubHost classic(line, club);
    EXPECT_EQ(line.DeviceList().size(), 4) << "the gates with an address of three characters";
    d24::TTurnStylerDeviceD24 other;
    other.SetConnector(&connector);
    TD24Host networked(other, classic.desk());
    port.feed("$01AR1\r");
    EXPECT_EQ(port.takeWritten().left(7), "$01A103");
    other.p_hw_ProtocolIn(QStringLiteral("$0.0.0.0:101TRQ100"));
    EXPECT_EQ(takeSent().value(1), QStringLiteral("PH0.0.0.0:101T|Anna Berg|already inside||||"));
}

} // namespace
} // namespace tnv5::host

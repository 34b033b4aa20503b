// A bank terminal of a running club, as those see it who watch the club.

#include "tnv5/host/club/club_counters.h"

#include "club_fixture.h"
#include "sim/pty.h"
#include "support/bytes.h"
#include "support/wait.h"

namespace tnv5::host {
namespace {

using tests::framed;

const QByteArray kRequest = "\x02\x05\x03\x06";
const QByteArray kCard = framed("01=4111111111111111\x1C"
                                "03=1\x1C"
                                "04=VISA\x1C"
                                "10=7");
const QByteArray kApproved = framed("01=4111111111111111\x1C"
                                    "04=VISA\x1C"
                                    "06=00");

class TClubTerminalTest : public TClubFixture
{
protected:
    TClubTerminalTest()
    {
        pty.OnRead = [this](const QByteArray& bytes) { heard += bytes; };
        terminal.port().start();
        eventually([this] { return pty.opened(); });
    }

    /// The terminal says something and hears this.
    void says(const QByteArray& bytes, const QByteArray& answer)
    {
        heard.clear();
        pty.write(bytes);
        EXPECT_TRUE(eventually([&] { return heard == answer; })) << heard.toHex(' ').toStdString();
    }
    void beginPayment(qint64 cents, const QByteArray& amount)
    {
        ASSERT_EQ(terminal.pay(cents), QString());
        EXPECT_EQ(shown(), QStringLiteral("%1 waiting until the terminal asks for the amount").arg(cents));
        says(kRequest, "\x06" + framed("05=" + amount));
        says(kCard, "\x06");
    }
    QString shown() const
    {
        const QJsonObject state = terminal.state();
        return QStringLiteral("%1 %2")
            .arg(state.value(u"cents").toInteger())
            .arg(state.value(u"stage").toString());
    }

    QByteArray heard;
    TClubLog log{FDirectory.filePath(QStringLiteral("club.log"))};
    TClubDesk desk{club};
    TClubSite site{club, desk, log, [](const QJsonObject&) {}};
    sim::TPty pty{QStringLiteral("bank")};
    TClubTerminal terminal{site, {QStringLiteral("bar"), pty.path(), 1, {}}};
};

TEST_F(TClubTerminalTest, AnAmountIsShownUntilItsOutcomeIsTold)
{
    beginPayment(1'250, "000000001250");
    EXPECT_EQ(shown(), QStringLiteral("1250 card 411111******1111 VISA"));
    says(kApproved, "\x06");
    ASSERT_TRUE(eventually([this] { return shown().startsWith(u'0'); }));
    EXPECT_EQ(shown(), QStringLiteral("0 approved"));
}

TEST_F(TClubTerminalTest, ALateAnswerIsNotAboutTheAmountThatWaits)
{
    beginPayment(1'250, "000000001250");
    says(kRequest, "\x06!"); // anew: what became of the first is not known
    EXPECT_EQ(shown(), QStringLiteral("0 unknown"));
    ASSERT_EQ(terminal.pay(300), QString());
    says(kApproved, "\x06");
    ASSERT_TRUE(
        eventually([this] { return club.paymentsAfter(0, 9).value(0).outcome == TOutcome::Approved; }));
    EXPECT_EQ(shown(), QStringLiteral("300 waiting until the terminal asks for the amount"));
    says(kRequest, "\x06" + framed("05=000000000300"));
    EXPECT_EQ(shown(), QStringLiteral("300 the amount 3.00 goes to the terminal"));
}

TEST_F(TClubTerminalTest, WhatIsWithdrawnIsNotUnderWay)
{
    ASSERT_EQ(terminal.pay(300), QString());
    terminal.cancel();
    EXPECT_EQ(shown(), QStringLiteral("0 "));
    beginPayment(1'250, "000000001250");
    terminal.cancel(); // the next step is refused
    EXPECT_EQ(shown(), QStringLiteral("1250 card 411111******1111 VISA"));
}

} // namespace
} // namespace tnv5::host

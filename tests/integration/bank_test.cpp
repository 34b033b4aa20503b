// Card payments over a pseudo-terminal in random scenarios: the database, the terminal's own book and the
// events of the component must agree on every one.
//
// TNV5_LONG=1 plays 5,000 of them; TNV5_SEED=n others than usual.

#include "bank_line.h"

#include "support/text_printers.h"
#include "tnv5/host/payment_counter.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

namespace tnv5::integration {
namespace {

using host::TOutcome;
using sim::TBankFate;
using sim::TBankScenario;
using TStage = sim::TSimulatedBankTerminal::TStage;

constexpr int kVersion = 2;
constexpr int kLimitMs = 20'000; // no payment takes longer, but one whose terminal is silent

/// One payment as it is to be played.
struct TPlay
{
    TBankScenario scenario;
    qint64 cents = 0;
    qint64 discount = 0;
    bool ordered = true;
    std::optional<TStage> cancelAt;
    std::optional<TStage> unplugAt;
    int awayMs = 0;
    int pieceBytes = 8;
    bool clear = true; ///< what must come of it can be told beforehand
    TOutcome expected = TOutcome::Approved;
    QString name;
};

class TPlays
{
public:
    explicit TPlays(unsigned seed) : FRandom(seed) {}

    TPlay next()
    {
        TPlay play;
        play.cents = 1 + below(1'000'000);
        play.discount = below(3) == 0 ? below(500) : 0;
        play.scenario.Card = "4" + QByteArray::number(qint64(100'000'000'000'000) + below(1'000'000'000));
        play.scenario.Holder = QByteArray("HOLDER/").append(char('A' + below(26)));
        play.pieceBytes = pick({4, 8, 8, 8, 16});
        kind(play);
        if (play.clear && below(3) == 0) {
            trouble(play);
        }
        return play;
    }

private:
    int below(int limit) { return int(FRandom() % unsigned(limit)); }
    int pick(std::initializer_list<int> from) { return from.begin()[below(int(from.size()))]; }
    TStage anyStage()
    {
        static const TStage stages[] = {TStage::Asking, TStage::Card,       TStage::CardSent,
                                        TStage::Bank,   TStage::AnswerSent, TStage::Ending};
        return stages[below(6)];
    }

    void kind(TPlay& play)
    {
        TBankScenario& scenario = play.scenario;
        switch (below(14)) {
        case 0:
        case 1:
            play.name = "declined";
            scenario.BankApproves = false;
            scenario.Code = below(2) == 0 ? "51" : "05";
            play.expected = TOutcome::Declined;
            break;
        case 2:
            play.name = "unknown code";
            scenario.Code = "Z9";
            scenario.BankApproves = below(2) == 0;
            play.expected = TOutcome::Unknown;
            break;
        case 3:
            play.name = "code in both lists";
            scenario.Code = "77";
            play.expected = TOutcome::Unknown;
            break;
        case 4:
            play.name = "nothing ordered";
            play.ordered = false;
            break;
        case 5:
            play.name = "cancelled before the card";
            play.cancelAt = TStage::Card;
            play.expected = TOutcome::Cancelled;
            break;
        case 6:
            play.name = "cancelled before the answer";
            play.cancelAt = TStage::Bank;
            play.expected = TOutcome::Cancelled;
            break;
        case 7:
            play.name = "customer leaves";
            scenario.CustomerLeaves = true;
            play.expected = TOutcome::Cancelled;
            break;
        case 8:
            play.name = "silent after the amount";
            scenario.SilentAfterAmount = true;
            play.expected = TOutcome::Unknown;
            break;
        case 9:
            play.name = "silent at the bank";
            scenario.NoAnswer = true;
            play.expected = TOutcome::Unknown;
            break;
        case 10:
            play.name = "unplugged";
            play.unplugAt = anyStage();
            play.awayMs = below(400);
            play.clear = false;
            if (below(4) == 0) {
                play.cancelAt = anyStage();
            }
            break;
        case 11:
            play.name = "bytes one by one, or whole frames in one read";
            play.pieceBytes = pick({1, 2, 3, 64, 256});
            play.clear = false;
            break;
        default:
            play.name = "approved";
            break;
        }
    }

    /// Bad frames and repeated ones that the dialogue gets over.
    void trouble(TPlay& play)
    {
        TBankScenario& scenario = play.scenario;
        play.name += " with trouble on the line";
        scenario.DamagedRequests = below(2);
        scenario.DamagedAmounts = below(2);
        scenario.DamagedCards = below(3);
        scenario.DamagedAnswers = below(3);
        scenario.DamagedEnds = below(3);
        if (scenario.DamagedCards == 0) {
            scenario.UnheardCards = below(3);
        }
        if (scenario.DamagedAnswers == 0) {
            scenario.UnheardAnswers = below(3);
        }
        if (scenario.DamagedRequests + scenario.DamagedAmounts == 0) {
            scenario.UnheardRequests = below(3);
        }
    }

    std::mt19937 FRandom;
};

bool agree(TOutcome outcome, const sim::TBankRecord& record)
{
    switch (outcome) {
    case TOutcome::Approved:
        return record.Fate == TBankFate::Approved;
    case TOutcome::Declined:
        return record.Fate == TBankFate::Declined;
    case TOutcome::Cancelled:
        return record.Fate == TBankFate::NoAmount || record.Fate == TBankFate::Cancelled ||
               record.Fate == TBankFate::Reversed;
    case TOutcome::Unknown:
        return true; // somebody looks at the terminal
    case TOutcome::UnderWay:
        return false;
    }
    return false;
}

class BankPayments : public ::testing::Test
{
protected:
    BankPayments()
    {
        line.terminal.CardMs = line.terminal.BankMs = 5;
        line.terminal.AckMs = 250;
        line.terminal.EndMs = 30;
        pos.SetPosType(kVersion);
        pos.SetCodeOk(QStringLiteral("00;77;"));
        pos.SetCodeError(QStringLiteral("05;51;77;"));
        pos.SetComport(&line.port);
        hearEvents();
        counter.OnOutcome = [this](const host::TPayment& payment) { told.append(payment); };
        line.port.OnException = [this](auto*, platform::TComExceptionKind, const QString& message, qint64,
                                       const QString&) {
            if (!line.port.Connected()) {
                counter.lineLost(message);
            }
        };
        line.terminal.OnStage = [this](TStage stage) { onStage(stage); };
    }

    /// The component's events, on their way to the host.
    void hearEvents()
    {
        const bank::TRequestOperation host = pos.OnRequestOperation();
        pos.SetOnRequestOperation([this, host](auto* Sender, const QString& CardNo, const QString& CardType,
                                               const QString& CardHolder, const QString& Operation,
                                               const QString& Answer, const QString& BankType, bool& Apply,
                                               const QString& Status, const QString& DiscountType,
                                               const QString& Discount) {
            events << Status;
            if (Status == u"START" || Status == u"GET") {
                EXPECT_EQ(CardNo.toLatin1(), playing.scenario.Card);
                EXPECT_EQ(CardHolder.toLatin1(), playing.scenario.Holder);
                EXPECT_EQ(DiscountType, "CL");
                EXPECT_EQ(Discount, QString::number(playing.discount));
            }
            if (Status == u"GET") {
                EXPECT_EQ(Answer.toLatin1(), playing.scenario.Code);
            }
            host(Sender, CardNo, CardType, CardHolder, Operation, Answer, BankType, Apply, Status,
                 DiscountType, Discount);
        });
    }

    void onStage(TStage stage)
    {
        if (playing.cancelAt == stage) {
            playing.cancelAt.reset();
            counter.cancel();
        }
        if (playing.unplugAt == stage) {
            playing.unplugAt.reset();
            unplugging = true; // not from here
        }
    }

    bool advance(int ms)
    {
        for (; ms > 0; --ms) {
            if (!line.advance(1)) {
                return false;
            }
            if (std::exchange(unplugging, false)) {
                if (!line.unplug()) {
                    return false;
                }
                line.clock.advance(1 + playing.awayMs); // the terminal goes on talking to nobody
                line.plug();
            }
        }
        return true;
    }

    void play(const TPlay& next)
    {
        playing = next;
        events.clear();
        told.clear();
        line.terminal.PieceBytes = next.pieceBytes;
        const qint64 before = club.lastPayment();
        if (next.ordered) {
            ASSERT_TRUE(counter.order(next.cents, next.discount));
        }
        ASSERT_TRUE(line.terminal.begin(next.scenario));
        for (int ms = 0; !line.terminal.idle() && line.terminal.stage() != TStage::Dead; ++ms) {
            ASSERT_LT(ms, kLimitMs) << "the payment does not end";
            ASSERT_TRUE(advance(1)) << "what was written does not arrive";
        }
        ASSERT_TRUE(advance(50));
        if (counter.underWay()) { // the terminal is silent, or its end was not understood
            line.clock.advance(1'802'000);
        }
        line.terminal.restart();
        counter.cancel(); // an order that the terminal never asked for
        compare(before);
    }

    void compare(qint64 before)
    {
        const QList<host::TPayment> rows = club.paymentsAfter(before, 10);
        const sim::TBankRecord& record = line.terminal.book().back();
        if (rows.isEmpty()) {
            EXPECT_TRUE(!playing.ordered || !playing.clear) << "no row";
            EXPECT_FALSE(record.HasAmount);
            EXPECT_EQ(record.Fate, TBankFate::NoAmount);
            EXPECT_TRUE(told.isEmpty());
            EXPECT_FALSE(events.contains("OK") || events.contains("ERROR") || events.contains("TIMEOUT"));
            ++outcomes["not begun"];
            return;
        }
        ASSERT_EQ(rows.size(), 1) << "one row a payment";
        const host::TPayment& row = rows.first();
        ++outcomes[toText(row.outcome)];
        EXPECT_TRUE(playing.ordered);
        EXPECT_EQ(row.cents, playing.cents);
        if (record.HasAmount) {
            EXPECT_EQ(record.Amount.Amount, playing.cents);
            EXPECT_EQ(record.Amount.Discount, playing.discount);
        }
        EXPECT_TRUE(agree(row.outcome, record))
            << "database: " << toText(row.outcome).toStdString() << ", terminal: " << int(record.Fate);
        if (playing.clear) {
            EXPECT_EQ(toText(row.outcome), toText(playing.expected));
        }
        // the desk was told the same, last
        ASSERT_FALSE(told.isEmpty());
        EXPECT_EQ(toText(told.last().outcome), toText(row.outcome));
        // and the events say why
        const bool both = playing.scenario.Code == "77";
        EXPECT_EQ(row.outcome == TOutcome::Approved, events.contains("OK") && !both);
        EXPECT_EQ(row.outcome == TOutcome::Declined, events.contains("ERROR") && !both);
        if (row.outcome == TOutcome::Cancelled) {
            EXPECT_TRUE(events.contains("FINISH") || events.contains("CANCEL_1") ||
                        events.contains("CANCEL_2") || events.contains("CANCEL_3"));
        }
        if (row.reason == "no answer in time") {
            EXPECT_TRUE(events.contains("TIMEOUT"));
        }
        if (!row.card.isEmpty()) {
            EXPECT_EQ(row.card, host::maskedCard(QString::fromLatin1(playing.scenario.Card)));
        }
    }

    TBankLine line{kVersion};
    host::TDatabase club{QStringLiteral(":memory:")};
    bank::TBankPos pos;
    host::TPaymentCounter counter{pos, club};
    TPlay playing;
    bool unplugging = false;
    QStringList events;
    QList<host::TPayment> told;
    std::map<QString, int> outcomes;
};

TEST_F(BankPayments, DatabaseTerminalAndEventsAgree)
{
    const int payments = qEnvironmentVariableIntValue("TNV5_LONG") != 0 ? 5'000 : 300;
    TPlays plays(qEnvironmentVariableIsSet("TNV5_SEED") ? qEnvironmentVariableIntValue("TNV5_SEED") : 1);
    ASSERT_TRUE(pos.SetConnection(true));
    for (int i = 0; i < payments; ++i) {
        const TPlay next = plays.next();
        const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                           "payment " + std::to_string(i) + ": " + next.name.toStdString());
        play(next);
        if (HasFailure()) {
            FAIL() << events.join(u' ').toStdString();
        }
    }
    QString summary;
    for (const auto& [outcome, count] : outcomes) {
        summary += QStringLiteral(" %1 %2,").arg(count).arg(outcome);
        EXPECT_GT(count, payments / 50) << outcome.toStdString();
    }
    EXPECT_EQ(outcomes.size(), 5U);
    std::printf("%d payments:%s\n", payments, qPrintable(summary.chopped(1)));
}

} // namespace
} // namespace tnv5::integration

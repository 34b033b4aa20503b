#include "tnv5/host/payment_counter.h"

#include "club_fixture.h"
#include "support/bytes.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::host {
namespace {

using tests::framed;

const QByteArray kRequest = "\x02\x05\x03\x06";
const QByteArray kEnd = "\x02\x04\x03\x07";
const QByteArray kCard = framed("01=4111111111111111\x1C"
                                "03=1\x1C"
                                "04=VISA\x1C"
                                "10=7");
const QString kMasked = QStringLiteral("411111******1111");

QByteArray answer(const QByteArray& code)
{
    return framed("01=4111111111111111\x1C"
                  "04=VISA\x1C"
                  "06=" +
                  code);
}

class TPaymentTest : public TClubFixture
{
protected:
    TPaymentTest()
    {
        pos.SetIDLang(2);
        pos.SetPosType(1);
        pos.SetCodeOk(QStringLiteral("00;77;"));
        pos.SetCodeError(QStringLiteral("51;77;"));
        pos.SetComport(&port);
        port.Open();
        counter.OnOutcome = [this](const TPayment& payment) {
            outcomes << toText(payment.outcome);
            last = payment;
        };
        counter.OnStep = [this](const QString& text) { texts << text; };
        counter.OnLine = [this](const QString& text) { texts << text; };
        counter.OnTrouble = [this](const QString& text) { troubles << text; };
    }

    QByteArray says(const QByteArray& bytes)
    {
        port.feed(bytes);
        return port.takeWritten();
    }
    void sendAmount()
    {
        ASSERT_TRUE(counter.order(1'250));
        ASSERT_EQ(says(kRequest), "\x06" + framed("05=000000001250"));
    }
    void acceptCard()
    {
        sendAmount();
        ASSERT_EQ(says(kCard), "\x06");
    }
    QList<TPayment> rows() { return club.paymentsAfter(0, 1'000); }
    QString outcome() { return rows().isEmpty() ? QStringLiteral("none") : toText(rows().last().outcome); }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    bank::TBankPos pos;
    TPaymentCounter counter{pos, club};
    QStringList outcomes;
    TPayment last;
    QStringList texts;
    QStringList troubles;
};

TEST_F(TPaymentTest, IsInTheBooksFromTheMomentTheAmountIsSent)
{
    EXPECT_TRUE(counter.order(1'250));
    EXPECT_EQ(rows().size(), 0);
    bool there = false;
    port.OnWritten = [&](const QByteArray& bytes) {
        if (bytes.size() > 1) {
            there = rows().size() == 1;
        }
    };
    says(kRequest);
    EXPECT_TRUE(there);
    EXPECT_EQ(rows().last().cents, 1'250);
    EXPECT_EQ(rows().last().outcome, TOutcome::UnderWay);
    EXPECT_TRUE(counter.underWay());
    EXPECT_FALSE(counter.waiting());
}

TEST_F(TPaymentTest, ApprovedAndDeclined)
{
    acceptCard();
    EXPECT_EQ(says(answer("00")), "\x06");
    EXPECT_EQ(outcome(), "approved");
    EXPECT_EQ(rows().last().card, kMasked);
    EXPECT_EQ(rows().last().cardType, "VISA");
    EXPECT_EQ(rows().last().answer, "00");
    EXPECT_EQ(rows().last().reason, "");
    says(kEnd);
    acceptCard();
    EXPECT_EQ(says(answer("51")), "\x06");
    EXPECT_EQ(outcome(), "declined");
    EXPECT_EQ(outcomes.join(u' '), "approved declined");
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(TPaymentTest, ACodeInNoListOrInBothIsUnknown)
{
    for (const QByteArray code : {"99", "77", ""}) {
        acceptCard();
        EXPECT_EQ(says(answer(code)), "\x06");
        EXPECT_EQ(outcome(), "unknown") << code.toStdString();
        says(kEnd);
        EXPECT_EQ(outcome(), "unknown");
    }
    EXPECT_EQ(outcomes.join(u' '), "unknown unknown unknown");
}

TEST_F(TPaymentTest, AnAnswerIsNoOutcomeBeforeItIsAcknowledged)
{
    acceptCard();
    QString before;
    port.OnWriting = [&] { before = outcome(); };
    says(answer("00"));
    EXPECT_EQ(before, "unknown");
    EXPECT_EQ(outcome(), "approved");
}

TEST_F(TPaymentTest, AnAcknowledgementThatCannotBeWrittenLeavesItUnknown)
{
    acceptCard();
    port.WriteFailure = QStringLiteral("gone");
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    says(answer("00"));
    platform::setExceptionHandler(previous);
    EXPECT_EQ(outcome(), "unknown");
    EXPECT_TRUE(outcomes.isEmpty());
    counter.lineLost(QStringLiteral("the device is gone"));
    EXPECT_EQ(outcomes.join(u' '), "unknown");
    port.WriteFailure.reset();
    EXPECT_EQ(says(answer("00")), "\x06");
    EXPECT_EQ(outcomes.join(u' '), "unknown approved");
}

TEST_F(TPaymentTest, NothingIsAcceptedWithoutAnOrder)
{
    EXPECT_EQ(says(kRequest), "\x06!");
    EXPECT_EQ(says(kCard), "!");
    EXPECT_EQ(says(answer("00")), "!");
    says(kEnd);
    EXPECT_EQ(rows().size(), 0);
    EXPECT_TRUE(outcomes.isEmpty());
}

TEST_F(TPaymentTest, ARepeatedRequestIsTheSamePayment)
{
    sendAmount();
    EXPECT_EQ(says(kRequest), "\x06" + framed("05=000000001250"));
    EXPECT_EQ(rows().size(), 1);
    says(kCard);
    EXPECT_EQ(says(kCard), "\x06");
    EXPECT_EQ(says(answer("00")), "\x06");
    EXPECT_EQ(says(answer("00")), "\x06");
    EXPECT_EQ(says(answer("51")), "!") << "another answer is no repetition";
    EXPECT_EQ(outcomes.join(u' '), "approved");
    EXPECT_EQ(outcome(), "approved");
    EXPECT_EQ(says(kRequest), "\x06!") << "paid";
}

TEST_F(TPaymentTest, WhenTheTerminalBeginsAnewTheCardIsUnknownAndNothingIsSent)
{
    acceptCard();
    EXPECT_EQ(says(kRequest), "\x06!");
    EXPECT_EQ(outcomes.join(u' '), "unknown");
    EXPECT_EQ(says(kRequest), "\x06!");
    EXPECT_EQ(rows().size(), 1);
}

TEST_F(TPaymentTest, TimeOutIsUnknownUntilAnAnswerComes)
{
    EXPECT_EQ(pos.TimeOut(), 1) << "0 would give up at once";
    acceptCard();
    clock.advance(1'801'000);
    EXPECT_EQ(outcome(), "unknown");
    EXPECT_EQ(rows().last().reason, "no answer in time");
    EXPECT_EQ(says(kCard), "!");
    EXPECT_EQ(outcome(), "unknown") << "a card was accepted before";
    EXPECT_EQ(says(answer("00")), "\x06");
    EXPECT_EQ(outcomes.join(u' '), "unknown approved");
}

TEST_F(TPaymentTest, ACardAfterTheTimeOutIsRefusedAndNothingWasPaid)
{
    sendAmount();
    clock.advance(1'801'000);
    EXPECT_EQ(says(kCard), "!");
    EXPECT_EQ(outcomes.join(u' '), "unknown cancelled");
}

TEST_F(TPaymentTest, ALongerTimeOutStays)
{
    bank::TBankPos other;
    other.SetTimeOut(3);
    const TPaymentCounter another(other, club);
    EXPECT_EQ(other.TimeOut(), 3);
}

TEST_F(TPaymentTest, LostLineIsUnknown)
{
    counter.lineLost(QStringLiteral("x"));
    EXPECT_TRUE(outcomes.isEmpty());
    sendAmount();
    counter.lineLost(QStringLiteral("the device is gone"));
    EXPECT_EQ(outcomes.join(u' '), "unknown");
    EXPECT_EQ(rows().last().reason, "the line was lost: the device is gone");
    counter.lineLost(QStringLiteral("again"));
    EXPECT_EQ(rows().last().reason, "the line was lost: the device is gone");
    EXPECT_TRUE(counter.order(700)) << "the desk decides, not the program";
    EXPECT_EQ(rows().size(), 1);
}

TEST_F(TPaymentTest, NobodyLooksAfterTheTerminalAnyMore)
{
    counter.order(100);
    counter.end();
    EXPECT_FALSE(counter.waiting());
    EXPECT_TRUE(outcomes.isEmpty());
    acceptCard();
    counter.end();
    EXPECT_EQ(outcomes.join(u' '), "unknown");
    EXPECT_EQ(outcome(), "unknown");
    EXPECT_EQ(rows().last().reason, "the program ended meanwhile");
    EXPECT_FALSE(counter.underWay());
    counter.end();
    EXPECT_EQ(outcomes.size(), 1);
}

TEST_F(TPaymentTest, CancelledAtTheDesk)
{
    counter.order(100);
    counter.cancel();
    EXPECT_FALSE(counter.waiting());
    EXPECT_EQ(says(kRequest), "\x06!");
    EXPECT_EQ(rows().size(), 0);

    sendAmount();
    counter.cancel();
    EXPECT_EQ(says(kRequest), "\x06!");
    EXPECT_EQ(outcome(), "cancelled");

    sendAmount();
    counter.cancel();
    EXPECT_EQ(says(kCard), "!");
    EXPECT_EQ(says(kCard), "!");
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(rows().last().reason, "cancelled at the desk");

    acceptCard();
    counter.cancel();
    EXPECT_EQ(says(answer("00")), "!");
    EXPECT_EQ(says(answer("00")), "!");
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(outcomes.join(u' '), "cancelled cancelled cancelled");
}

TEST_F(TPaymentTest, ARefusalMayBeLostWithTheLine)
{
    acceptCard();
    counter.cancel();
    says(answer("00"));
    counter.lineLost(QStringLiteral("gone"));
    EXPECT_EQ(outcomes.join(u' '), "cancelled unknown");
    EXPECT_EQ(says(answer("00")), "!") << "it stays refused";
    says(kEnd);
    counter.lineLost(QStringLiteral("gone"));
    EXPECT_EQ(outcomes.join(u' '), "cancelled unknown cancelled");
}

TEST_F(TPaymentTest, ARefusalIsNotTrustedWhenTheTerminalBeginsAnew)
{
    for (const bool ordered : {true, false}) {
        outcomes.clear();
        acceptCard();
        const qint64 paid = rows().last().id;
        whileLocked([&] { EXPECT_EQ(says(answer("00")), "!"); });
        if (ordered) {
            EXPECT_TRUE(counter.order(99))
                << "it counts as cancelled until the terminal does not do its part";
        }
        EXPECT_EQ(says(kRequest),
                  ordered ? QByteArray("\x06" + framed("05=000000000099")) : QByteArray("\x06!"));
        EXPECT_EQ(outcomes.join(u' '), "cancelled unknown");
        EXPECT_EQ(last.id, paid);
        EXPECT_EQ(last.reason, "the terminal began anew");
        EXPECT_EQ(club.paymentsAfter(paid - 1, 1).first().outcome, TOutcome::Unknown);
        says(kEnd);
    }
}

TEST_F(TPaymentTest, WhatIsNotWrittenIsTriedOnceMoreAtTheEnd)
{
    acceptCard();
    whileLocked([&] { counter.lineLost(QStringLiteral("gone")); });
    EXPECT_EQ(counter.unwritten(), 1);
    counter.end();
    EXPECT_EQ(counter.unwritten(), 0);
    EXPECT_EQ(outcome(), "unknown");
}

TEST_F(TPaymentTest, EndedAtTheTerminal)
{
    sendAmount();
    says(kEnd);
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(rows().last().reason, "ended at the terminal");
    acceptCard();
    says(kEnd);
    EXPECT_EQ(outcome(), "unknown") << "the bank may have been asked";
}

TEST_F(TPaymentTest, OneOrderAtATime)
{
    EXPECT_TRUE(counter.order(1));
    EXPECT_FALSE(counter.order(2));
    counter.cancel();
    sendAmount();
    EXPECT_FALSE(counter.order(2));
    EXPECT_EQ(troubles.size(), 2);
}

TEST_F(TPaymentTest, AmountsThatNoTerminalTakes)
{
    for (const qint64 cents : {qint64(0), qint64(-5), qint64(2'147'483'648)}) {
        EXPECT_FALSE(counter.order(cents)) << cents;
    }
    EXPECT_FALSE(counter.order(5, -1));
    EXPECT_TRUE(counter.order(2'147'483'647, 250));
    EXPECT_EQ(says(kRequest), "\x06" + framed("05=002147483647\x1C"
                                              "41=000000000250"));
    EXPECT_EQ(rows().last().discount, 250);
}

TEST_F(TPaymentTest, WhatCannotBeWrittenIsNotTaken)
{
    counter.order(1'250);
    whileLocked([&] { EXPECT_EQ(says(kRequest), "\x06!"); });
    EXPECT_EQ(rows().size(), 0);
    EXPECT_TRUE(counter.waiting()) << "the order stays";
    EXPECT_EQ(says(kRequest), "\x06" + framed("05=000000001250"));
    whileLocked([&] { EXPECT_EQ(says(kCard), "!"); });
    EXPECT_EQ(troubles.size(), 3) << troubles.join(u'\n').toStdString(); // card, then cancelling
    clock.advance(TPaymentCounter::kRetryMs);
    EXPECT_EQ(outcome(), "cancelled");
    acceptCard();
    whileLocked([&] { EXPECT_EQ(says(answer("00")), "!"); });
    clock.advance(TPaymentCounter::kRetryMs);
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(outcomes.join(u' '), "cancelled cancelled");
}

TEST_F(TPaymentTest, AnOutcomeThatCannotBeWrittenIsWrittenLater)
{
    acceptCard();
    const auto ok = pos.OnRequestOperation();
    whileLocked([&] {
        counter.lineLost(QStringLiteral("gone"));
        EXPECT_EQ(outcomes.join(u' '), "unknown");
        clock.advance(3 * TPaymentCounter::kRetryMs);
    });
    EXPECT_EQ(outcome(), "");
    clock.advance(TPaymentCounter::kRetryMs);
    EXPECT_EQ(outcome(), "unknown");
}

TEST_F(TPaymentTest, PaymentsOfAnEarlierRunAreUnknown)
{
    acceptCard();
    bank::TBankPos other;
    TPaymentCounter next(other, club);
    QStringList told;
    next.OnOutcome = [&](const TPayment& payment) { told << toText(payment.outcome); };
    next.recover();
    EXPECT_EQ(told.join(u' '), "unknown");
    EXPECT_EQ(outcome(), "unknown");
    EXPECT_EQ(rows().last().reason, "the program ended meanwhile");
    next.recover();
    EXPECT_EQ(told.size(), 1);
}

TEST_F(TPaymentTest, PaymentsOfAnEarlierRunAloneAreRecovered)
{
    acceptCard(); // under way since the program began
    EXPECT_EQ(recoverPayments(club, club.lastPayment() - 1).size(), 0);
    EXPECT_EQ(outcome(), "");
    const auto unknown = recoverPayments(club, club.lastPayment());
    ASSERT_EQ(unknown.size(), 1);
    EXPECT_EQ(unknown[0].outcome, TOutcome::Unknown);
    EXPECT_EQ(outcome(), "unknown");
}

TEST_F(TPaymentTest, CardNumbersAreMaskedEverywhere)
{
    acceptCard();
    says(answer("00"));
    says(kEnd);
    EXPECT_TRUE(texts.filter("Operation").size() >= 4);
    EXPECT_TRUE(texts.filter(kMasked).size() >= 2);
    EXPECT_TRUE(texts.filter("4111111111111111").isEmpty()) << texts.join(u'\n').toStdString();
    QFile file(FFile);
    for (const QString& each : {FFile, FFile + "-wal"}) {
        QFile bytes(each);
        ASSERT_TRUE(bytes.open(QIODevice::ReadOnly));
        EXPECT_FALSE(bytes.readAll().contains("4111111111111111"));
    }
}

TEST_F(TPaymentTest, RaisingHooksEndNothing)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    counter.OnStep = [](const QString&) { throw std::runtime_error("desk"); };
    counter.OnOutcome = [](const TPayment&) { throw std::runtime_error("desk"); };
    acceptCard();
    EXPECT_EQ(says(answer("00")), "\x06");
    platform::setExceptionHandler(previous);
    EXPECT_EQ(outcome(), "approved");
}

TEST_F(TPaymentTest, TheNextMayBeOrderedFromTheHook)
{
    counter.OnOutcome = [this](const TPayment&) { EXPECT_TRUE(counter.order(5)); };
    acceptCard();
    says(answer("00"));
    EXPECT_TRUE(counter.waiting());
    EXPECT_EQ(says(kRequest), "\x06" + framed("05=000000000005"));
    EXPECT_EQ(rows().size(), 2);
}

TEST(CardPayment, Masks)
{
    EXPECT_EQ(maskedCard("4111111111111111"), "411111******1111");
    EXPECT_EQ(maskedCard("12345678901"), "123456*8901");
    EXPECT_EQ(maskedCard("1234567890"), "**********");
    EXPECT_EQ(maskedCard("123"), "***");
    EXPECT_EQ(maskedCard(""), "");
    EXPECT_EQ(maskedText("Operation \x02"
                         "01=4111 1111 1111 1111\x1C"
                         "02=X 5500005555555559=2512\x03z"),
              "Operation \x02"
              "01=4111 1*********1111\x1C"
              "02=X 550000******5559=2512\x03z");
    EXPECT_EQ(maskedText("01=\x1C"
                         "01=5500005555555559"),
              "01=\x1C"
              "01=550000******5559");
    EXPECT_EQ(maskedText("nothing 12345678901"), "nothing 12345678901");
    EXPECT_EQ(maskedText(""), "");
}

TEST(CardPayment, AmountsOfPeople)
{
    EXPECT_EQ(toCents("12.50"), 1'250);
    EXPECT_EQ(toCents("12,5"), 1'250);
    EXPECT_EQ(toCents("12"), 1'200);
    EXPECT_EQ(toCents("0.01"), 1);
    EXPECT_EQ(toCents("21474836.47"), 2'147'483'647);
    for (const char* bad : {"", "0", "0.00", "-1", "1.", ".5", "1.234", "1.2.3", " 1", "1 ", "1e3", "abc",
                            "21474836.48", "99999999999", "12.50\n", "١"}) {
        EXPECT_EQ(toCents(QString::fromUtf8(bad)), std::nullopt) << bad;
    }
}

TEST(CardPayment, WordsAndLines)
{
    for (const TOutcome outcome : {TOutcome::UnderWay, TOutcome::Approved, TOutcome::Declined,
                                   TOutcome::Cancelled, TOutcome::Unknown}) {
        EXPECT_EQ(toOutcome(toText(outcome)), outcome);
    }
    EXPECT_EQ(toOutcome(u"perhaps"), std::nullopt);
    TPayment payment;
    payment.began = 46'027.5;
    payment.cents = 1'250;
    EXPECT_EQ(logLine(payment), "12:00:00.000  card payment  12.50  under way");
    payment.ended = 46'027.75;
    payment.card = kMasked;
    payment.cardType = "VISA";
    payment.answer = "00";
    payment.outcome = TOutcome::Approved;
    EXPECT_EQ(logLine(payment), "18:00:00.000  card payment  12.50  411111******1111 VISA  approved: 00");
    payment.answer.clear();
    payment.reason = "no answer in time";
    payment.outcome = TOutcome::Unknown;
    EXPECT_EQ(logLine(payment),
              "18:00:00.000  card payment  12.50  411111******1111 VISA  unknown: no answer in time");
}

} // namespace
} // namespace tnv5::host

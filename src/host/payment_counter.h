#pragma once

#include "tnv5/bank/serial_bank_pos.h"
#include "tnv5/host/books/database.h"

#include <optional>

namespace tnv5::host {

/// Codes of an answer that are an approval, and that are a refusal by the bank; any other is no clear answer.
inline const QString kUsualCodesOk = QStringLiteral("00;");
inline const QString kUsualCodesError =
    QStringLiteral("01;03;04;05;12;13;14;30;41;43;51;54;55;57;58;61;62;65;75;78;91;96;");

/// Payments that an earlier run of a program left under way become unknown, all or none.
/// @param last row of the payments that an earlier run can have written
/// @return them @throws EDatabase
QList<TPayment> recoverPayments(TDatabase& database, qint64 last);

/// Takes card payments with a bank terminal on a serial line; keeps each in the database from the moment its
/// amount is sent, and ends each with one outcome.
///
///     TPaymentCounter counter(pos, club);
///     counter.OnOutcome = [](const TPayment& payment) { print(logLine(payment)); };
///     counter.order(1'250); // waits for the terminal to ask
///
/// Money is never taken without a row in the books: a card or an answer that cannot be written down is
/// refused, and the terminal takes it back. A repeated frame of the terminal belongs to the payment that it
/// repeats. When the terminal asks anew although a card was accepted, that payment is unknown and nothing is
/// sent. An answer after an unknown outcome replaces it. A code that is in none of the component's lists, or
/// in both, is an unknown outcome.
///
/// It takes all events of the component and raises its time-out to 1 when it is less: with 0 a payment would
/// be given up within two seconds. Component and database must outlive it; the hooks must not destroy it.
class TPaymentCounter
{
public:
    static constexpr int kRetryMs = 500; ///< between tries to write what the database did not take

    TPaymentCounter(bank::TBankPos& pos, TDatabase& database);
    ~TPaymentCounter();
    TPaymentCounter(const TPaymentCounter&) = delete;
    TPaymentCounter& operator=(const TPaymentCounter&) = delete;

    /// Payments that an earlier run of the program left under way have become unknown; each is told. To be
    /// called once, before the first order. @throws EDatabase
    void recover();

    /// The next request of the terminal gets this amount. @param cents 1 to 2^31 - 1
    /// @return false, told through `OnTrouble`, when the amount is none, or another payment waits or is under
    /// way.
    bool order(qint64 cents, qint64 discountCents = 0);
    /// Withdraws an order, or refuses the next step of the payment under way.
    void cancel();
    /// The line has gone: a payment under way is unknown.
    void lineLost(const QString& why);
    /// Nobody looks after the terminal any more: an order is withdrawn, a payment under way is unknown.
    void end();

    /// An order waits for the terminal to ask.
    bool waiting() const { return FOrder.has_value(); }
    /// The amount was sent and nothing is decided yet.
    bool underWay() const { return FPayment && FPayment->outcome == TOutcome::UnderWay; }

    /// Payments whose outcome is not in the books yet: the database did not take it.
    qsizetype unwritten() const { return FUnwritten.size(); }

    /// A payment has an outcome, or another one than told before.
    std::function<void(const TPayment& payment)> OnOutcome;
    /// One step of a payment, for the person at the desk.
    std::function<void(const QString& text)> OnStep;
    /// A line of the component's log, card numbers masked.
    std::function<void(const QString& text)> OnLine;
    /// One line for the person in charge.
    std::function<void(const QString& text)> OnTrouble;

private:
    struct TOrder
    {
        int cents;
        int discount;
    };
    struct TStepOfPayment
    {
        QString card;
        QString cardType;
        QString answer;
    };

    void onAmount(int& amount, int& discount, bool& apply);
    void onOperation(const TStepOfPayment& step, const QString& status, bool& apply);
    bool beginPayment();
    bool sendsAgain();
    bool acceptsCard(const TStepOfPayment& step);
    bool acceptsAnswer(const TStepOfPayment& step);
    bool answered() const
    {
        return FPayment->outcome == TOutcome::Approved || FPayment->outcome == TOutcome::Declined;
    }
    TOutcome judge(const QString& answer) const;
    void onCardRefused();
    void onAnswerRefused();
    void onEndOfDialogue();
    void settle(TOutcome outcome, const QString& reason = {});
    void tellOutcome();
    bool store();
    void retry();
    void say(const std::function<void(const QString&)>& hook, const QString& text);

    bank::TBankPos& FPos;
    TDatabase& FDatabase;
    std::optional<TOrder> FOrder;
    std::optional<TPayment> FPayment; // the last one whose amount was sent
    bool FCardAccepted = false;       // the bank may have been asked
    bool FCancelling = false;         // the next step is refused
    bool FReversing = false;          // an answer was refused, and the dialogue has not ended yet
    TOutcome FJudged = TOutcome::UnderWay;
    TOutcome FTold = TOutcome::UnderWay;
    QList<TPayment> FUnwritten; // at most one a payment
    platform::TTimer FRetry;
};

} // namespace tnv5::host

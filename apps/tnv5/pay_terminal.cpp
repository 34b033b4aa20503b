#include "apps/tnv5/pay_terminal.h"

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "apps/tnv5/terminal_simulation.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/bank/bank_pos_texts.h"
#include "tnv5/host/club.h"
#include "tnv5/platform/errors.h"

#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kLastType = 4;

void setAddress(bank::TBankPOS& pos, const TTerminalPayment& payment)
{
    pos.SetComPort(payment.comPort);
    const auto colon = payment.address.lastIndexOf(u':');
    if (colon > 0) {
        pos.SetIP(payment.address.left(colon));
        pos.SetIPPort(payment.address.mid(colon + 1).toInt());
    }
}

/// Whether a payment that failed has certainly not been taken: nothing was sent, or the library has a code
/// for why not. One that has a reference was approved, and what came behind that failed.
bool isNotTaken(const bank::TBankPOS& pos)
{
    if (!pos.RRN().isEmpty() || !pos.AuthID().isEmpty()) {
        return false;
    }
    constexpr int kOwnError = -1; // of the component, which has heard nothing
    const int code = pos.GetLastError();
    const QString text = pos.LastErrorMsg();
    return text == bank::texts::kNotSent ||
           (code != 0 && code != kOwnError && text != bank::texts::kTimedOut);
}

int resultOf(const bank::TBankPOS& pos, bool paid)
{
    if (paid) {
        return kDone;
    }
    return isNotTaken(pos) ? kDeclined : kUnknown;
}

void tell(const bank::TBankPOS& pos, const TTerminalPayment& payment, int result)
{
    const QString amount = host::amountText(payment.cents);
    if (result == kDone) {
        print(QStringLiteral("%1 approved, reference %2, transaction %3")
                  .arg(amount, pos.RRN(), pos.TransactionID()),
              TColour::Green);
    } else if (result == kDeclined) {
        print(QStringLiteral("%1 not paid").arg(amount), TColour::Red);
    } else {
        complain(
            QStringLiteral("Nobody knows whether it was paid: look at the terminal before you try again."));
    }
}

/// The payment in the books: the wish before anything is sent, the outcome afterwards.
class TWrittenPayment
{
public:
    TWrittenPayment(host::TDatabase& club, const TTerminalPayment& payment) : FClub(club)
    {
        FClub.setBusyTimeout(host::TDatabase::kCloseMs); // no gate waits for this program
        FPayment.began = platform::Now();
        FPayment.cents = payment.cents;
        FPayment.discount = payment.discount;
        FClub.writePayment(FPayment);
    }

    /// @return false, which has been told, when the books do not take it
    bool end(host::TOutcome outcome, const QString& reason)
    {
        FPayment.ended = platform::Now();
        FPayment.outcome = outcome;
        FPayment.reason = reason;
        try {
            FClub.writePayment(FPayment);
        } catch (const host::EDatabase& error) {
            complain(QStringLiteral("%1: %2").arg(notInTheBooks(), error.message()));
            return false;
        }
        return true;
    }

private:
    host::TDatabase& FClub;
    host::TPayment FPayment;
};

host::TOutcome outcomeOf(int result)
{
    return result == kDone       ? host::TOutcome::Approved
           : result == kDeclined ? host::TOutcome::Declined
                                 : host::TOutcome::Unknown;
}

QString reasonOf(const bank::TBankPOS& pos, int result)
{
    if (result == kDone) {
        return QStringLiteral("reference %1, transaction %2").arg(pos.RRN(), pos.TransactionID());
    }
    return QString(pos.LastErrorMsg()).replace(QStringLiteral("\r\n"), QStringLiteral(" "));
}

int pay(const TTerminalPayment& payment, host::TDatabase& club)
{
    bank::TBankPOS pos;
    pos.SetPosType(payment.terminal.type);
    setAddress(pos, payment);
    pos.SetOnError([](platform::TComponent*, int code, const QString& text) {
        complain(QStringLiteral("[%1] %2").arg(code).arg(
            QString(text).replace(QStringLiteral("\r\n"), QStringLiteral(" "))));
    });
    QString shown;
    pos.SetOnStatus([&shown](platform::TComponent*, int, const QString& text) {
        if (text != shown) { // a library that is asked again and again says the same
            print(QStringLiteral("  terminal: ") + text, TColour::Yellow);
            shown = text;
        }
    });
    if (payment.trace) {
        pos.SetOnLog([](platform::TComponent*, const QString& text) {
            print(QStringLiteral("  ") + text, TColour::Faint);
        });
    }
    bool sent = false;
    const auto tellOfStop = [&sent] { // a library that has the amount cannot be told to stop
        if (sent) {
            complain(
                QStringLiteral("The terminal has the payment, and ends it. Ctrl-C again leaves this program "
                               "without its outcome."));
        }
    };
    const TStopSignal stop(tellOfStop);
    const THangUp hangUp(tellOfStop);
    if (!pos.Init() || !pos.Connect()) {
        return kFailed;
    }
    if (stop.received()) {
        pos.Disconnect();
        print(QStringLiteral("Stopped, nothing was sent."));
        return kInterrupted;
    }
    std::optional<TWrittenPayment> written;
    try {
        written.emplace(club, payment);
    } catch (const host::EDatabase&) { // nothing is sent
        pos.Disconnect();
        throw;
    }
    sent = true;
    print(QStringLiteral("%1 goes to the terminal").arg(host::amountText(payment.cents)));
    const bool paid = pos.Purchase(payment.cents, payment.discount, payment.merchant);
    const int result = resultOf(pos, paid);
    const bool inTheBooks =
        written->end(outcomeOf(result), reasonOf(pos, result)); // before anybody takes a line
    tell(pos, payment, result);
    if (result != kUnknown) {
        pos.Disconnect();
    }
    return inTheBooks ? result : kUnwritten;
}

} // namespace

std::optional<TTerminalName> terminalNameOf(const QString& text)
{
    TTerminalName name;
    QStringList parts = text.split(u':');
    if (parts[0] == u"sim") {
        name.simulated = true;
        parts.removeFirst();
    }
    bool isNumber = false;
    name.type = parts.value(0).toInt(&isNumber);
    if (parts.size() == 2 && name.simulated) {
        name.end = parts.takeLast();
    }
    const bool good =
        isNumber && name.type >= 0 && name.type <= kLastType && parts.size() == 1 && sim::posEndOf(name.end);
    return good ? std::optional(name) : std::nullopt;
}

int payAtTerminal(const TTerminalPayment& payment, host::TDatabase& club)
{
    const auto simulation = payment.terminal.simulated
                                ? std::make_unique<TTerminalSimulation>(payment.terminal, payment.stepMs)
                                : nullptr;
    return pay(payment, club);
}

} // namespace tnv5::cli

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/pay_terminal.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/bank/terminal_version.h"
#include "tnv5/host/club.h"
#include "tnv5/host/payment_counter.h"
#include "tnv5/platform/serial_port.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <limits>
#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kEnglishTexts = 2;

struct TPayOptions
{
    std::string port;
    std::string terminal;
    std::string address;
    std::string amount;
    std::string discount = "0";
    std::string database = ":memory:";
    std::string codesOk = host::kUsualCodesOk.toStdString();
    std::string codesError = host::kUsualCodesError.toStdString();
    int version = 0;
    int timeOut = 1;
    int comPort = 1;
    int merchant = 1;
    int stepMs = 400;
    bool trace = false;
};

int exitCode(host::TOutcome outcome)
{
    switch (outcome) {
    case host::TOutcome::Approved:
        return kDone;
    case host::TOutcome::Declined:
        return kDeclined;
    case host::TOutcome::Cancelled:
        return kCancelled;
    case host::TOutcome::Unknown:
    case host::TOutcome::UnderWay:
        break;
    }
    return kUnknown;
}

qint64 centsOf(const std::string& text)
{
    const std::optional<qint64> cents = host::toCents(QString::fromStdString(text));
    if (!cents) {
        throw platform::Exception(
            QStringLiteral("\"%1\" is no amount; write it like 12.50").arg(QString::fromStdString(text)));
    }
    return *cents;
}

/// One payment, from the wish of the desk to its outcome.
class TPaying
{
public:
    explicit TPaying(const TPayOptions& options)
        : FClub(QString::fromStdString(options.database), host::TOpening::Existing), FCounter(FPos, FClub)
    {
        FPort.SetPort(QString::fromStdString(options.port));
        FPort.OnException = [this](platform::TComponent*, platform::TComExceptionKind kind,
                                   const QString& message, qint64, const QString&) {
            if (FPort.Connected()) {
                complain(message);
            } else {
                lost(kind == platform::TComExceptionKind::Resource ? QStringLiteral("the device is gone")
                                                                   : message);
            }
        };
        FPos.SetIDLang(kEnglishTexts);
        FPos.SetPosType(options.version);
        FPos.SetTimeOut(options.timeOut);
        FPos.SetCodeOk(QString::fromStdString(options.codesOk));
        FPos.SetCodeError(QString::fromStdString(options.codesError));
        FPos.SetComport(&FPort);
        FCounter.OnOutcome = [this](const host::TPayment& payment) { onOutcome(payment); };
        FCounter.OnStep = [](const QString& text) { print(text); };
        FCounter.OnTrouble = [](const QString& text) { complain(text); };
        if (options.trace) {
            FCounter.OnLine = [](const QString& text) { print(QStringLiteral("  ") + text); };
        }
        FEnd.SetInterval(kEndMs);
        FEnd.OnTimer = [this](platform::TTimer*) { endWhenWritten(); };
    }

    /// @throws platform::EComPort, host::EDatabase
    void start(qint64 cents, qint64 discount)
    {
        FCounter.recover();
        FOrdered = FCounter.order(cents, discount);
        FPos.SetUpComport();
        openPort(FPort);
        print(QStringLiteral("%1: waiting until the terminal asks for the amount")
                  .arg(host::amountText(cents)));
    }

    /// Ctrl-C: before the amount is sent nothing has happened; then the next step is refused.
    void stop()
    {
        const bool nothingHappened = FCounter.waiting();
        FCounter.cancel();
        if (nothingHappened || (!FCounter.underWay() && FCounter.unwritten() == 0)) {
            QCoreApplication::quit();
        } else if (!FCounter.underWay()) {
            complain(QStringLiteral("the outcome waits for the books; Ctrl-C again leaves it out of them"));
        } else {
            print(QStringLiteral("the next step of the terminal will be refused; Ctrl-C again leaves the "
                                 "payment unknown"));
        }
    }

    int result() const { return FResult; }

private:
    static constexpr int kEndMs = 1'000; // for the end of the dialogue, or an answer repeated
    static constexpr int kMostWaits = 10;

    void onOutcome(const host::TPayment& payment)
    {
        print(host::logLine(payment));
        if (payment.outcome == host::TOutcome::Unknown) {
            complain(QStringLiteral("Nobody knows whether it was paid: look at the terminal before you try "
                                    "again."));
        }
        if (FOrdered) { // not one of an earlier run
            FResult = exitCode(payment.outcome);
            FEnd.SetEnabled(true);
        }
    }

    /// The counter tries again and again what the books do not take.
    void endWhenWritten()
    {
        const bool unwritten = FCounter.unwritten() > 0;
        if (unwritten && ++FWaited < kMostWaits) {
            return;
        }
        if (unwritten) {
            complain(notInTheBooks());
            FResult = kUnwritten;
        }
        QCoreApplication::quit();
    }

    void lost(const QString& why)
    {
        complain(FPort.Port() + QStringLiteral(": ") + why);
        const bool nothingHappened = FCounter.waiting();
        FCounter.lineLost(why);
        if (nothingHappened) {
            FResult = kFailed;
            QCoreApplication::quit();
        }
    }

    platform::TSerialPort FPort;
    bank::TBankPos FPos;
    host::TDatabase FClub;
    host::TPaymentCounter FCounter;
    platform::TTimer FEnd;
    bool FOrdered = false;
    int FWaited = 0; // for the books
    int FResult = kInterrupted;
};

/// A terminal with a library, which does the talking by itself.
int payByLibrary(const TPayOptions& options, qint64 cents, qint64 discount)
{
    const QString text = QString::fromStdString(options.terminal);
    const std::optional<TTerminalName> name = terminalNameOf(text);
    constexpr qint64 kMost = std::numeric_limits<int>::max();
    if (!name || cents > kMost || discount > kMost) {
        throw platform::Exception(
            QStringLiteral("\"%1\" is no terminal; write it like 1 or sim:1").arg(text));
    }
    TTerminalPayment payment;
    payment.terminal = *name;
    payment.cents = static_cast<int>(cents);
    payment.discount = static_cast<int>(discount);
    payment.merchant = options.merchant;
    payment.comPort = options.comPort;
    payment.address = QString::fromStdString(options.address);
    payment.stepMs = options.stepMs;
    payment.trace = options.trace;
    host::TDatabase club(QString::fromStdString(options.database), host::TOpening::Existing);
    return payAtTerminal(payment, club);
}

int pay(const TPayOptions& options)
{
    failInsteadOfEnding(); // the bank may have agreed when nobody takes any more what is printed
    const qint64 cents = centsOf(options.amount);
    const qint64 discount = options.discount == "0" ? 0 : centsOf(options.discount);
    if (!options.terminal.empty()) {
        return payByLibrary(options, cents, discount);
    }
    if (options.port.empty() || options.version == 0) {
        throw platform::Exception(QStringLiteral("Which terminal? Give --port and --type, or --terminal"));
    }
    TPaying paying(options);
    const TStopSignal stop([&paying] { paying.stop(); });
    const THangUp hangUp([&paying] { paying.stop(); });
    paying.start(cents, discount);
    QCoreApplication::exec();
    return paying.result();
}

} // namespace

void addPayCommand(CLI::App& app, TCommand& chosen)
{
    const int last = static_cast<int>(bank::terminalVersions().size()) - 1;
    const auto options = std::make_shared<TPayOptions>();
    CLI::App* command = app.add_subcommand("pay", "Take one payment with a bank card terminal");
    command->add_option("--port", options->port, "Serial port, best a stable name from \"tnv5 ports\"")
        ->type_name("NAME");
    command
        ->add_option("--type", options->version,
                     "Version of the terminal's software: 1 is 3, 2 is 3+, 3 is 3.2")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, last));
    command
        ->add_option(
            "--terminal", options->terminal,
            "Instead of a port: a terminal with a library, 0 to 4; \"sim:1\" plays one, "
            "\"sim:1:decline\" one that declines (or approve, timeout, break, crash, hang, unconfirmed)")
        ->type_name("NUMBER")
        ->excludes("--port")
        ->excludes("--type");
    command->add_option("--com", options->comPort, "Number of the library's serial port")
        ->capture_default_str();
    command->add_option("--address", options->address, "Instead of it: where the terminal is on the network")
        ->type_name("HOST:PORT");
    command->add_option("--merchant", options->merchant, "Index of the merchant in the terminal")
        ->capture_default_str();
    command->add_option("--step", options->stepMs, "Milliseconds between the texts of a simulated terminal")
        ->capture_default_str()
        ->check(CLI::Range(0, 60'000));
    command->add_option("--amount", options->amount, "Such as 12.50")->required()->type_name("AMOUNT");
    command->add_option("--discount", options->discount, "Sent beside the amount")->type_name("AMOUNT");
    command
        ->add_option("--db", options->database,
                     "Keep the payment in this club's database; else in the one that TNV5_DB names")
        ->envname("TNV5_DB")
        ->type_name("FILE");
    command->add_option("--ok", options->codesOk, "Codes of an approval, each followed by \";\"")
        ->capture_default_str();
    command->add_option("--error", options->codesError, "Codes of a refusal, the same way")
        ->capture_default_str();
    command
        ->add_option("--timeout", options->timeOut,
                     "How long the terminal may be silent, in units of 30 minutes")
        ->capture_default_str()
        ->check(CLI::Range(1, 10'000));
    command->add_flag("--trace", options->trace, "Show what the terminal says, card numbers masked");
    command->footer(
        "\nThe customer begins at the terminal. Ends with 0: approved, 3: declined, 4: cancelled,\n"
        "5: unknown (look at the terminal before you try again), 1: nothing was sent because the\n"
        "port, the database or the amount is wrong, 130: Ctrl-C before the amount was sent, 6: as it\n"
        "was told, but the books have not taken it.");
    command->callback([&chosen, options] { chosen = [options] { return pay(*options); }; });
}

} // namespace tnv5::cli

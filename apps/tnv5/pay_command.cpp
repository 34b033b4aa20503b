#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/bank/terminal_version.h"
#include "tnv5/host/club.h"
#include "tnv5/host/payment_counter.h"
#include "tnv5/platform/serial_port.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kEnglishTexts = 2;

// Exit codes beside those of all commands; 0: approved.
constexpr int kDeclined = 3;
constexpr int kCancelled = 4;
constexpr int kUnknown = 5;

struct TPayOptions
{
    std::string port;
    std::string amount;
    std::string discount = "0";
    std::string database = ":memory:";
    std::string codesOk = host::kUsualCodesOk.toStdString();
    std::string codesError = host::kUsualCodesError.toStdString();
    int version = 0;
    int timeOut = 1;
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
        : FClub(QString::fromStdString(options.database)), FCounter(FPos, FClub)
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
        FEnd.OnTimer = [](platform::TTimer*) { QCoreApplication::quit(); };
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
        if (nothingHappened || !FCounter.underWay()) {
            QCoreApplication::quit();
        } else {
            print(QStringLiteral("the next step of the terminal will be refused; Ctrl-C again leaves the "
                                 "payment unknown"));
        }
    }

    int result() const { return FResult; }

private:
    static constexpr int kEndMs = 1'000; // for the end of the dialogue, or an answer repeated

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
    int FResult = kInterrupted;
};

int pay(const TPayOptions& options)
{
    const qint64 cents = centsOf(options.amount);
    const qint64 discount = options.discount == "0" ? 0 : centsOf(options.discount);
    TPaying paying(options);
    const TStopSignal stop([&paying] { paying.stop(); });
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
        ->required()
        ->type_name("NAME");
    command
        ->add_option("--type", options->version,
                     "Version of the terminal's software: 1 is 3, 2 is 3+, 3 is 3.2")
        ->required()
        ->type_name("NUMBER")
        ->check(CLI::Range(1, last));
    command->add_option("--amount", options->amount, "Such as 12.50")->required()->type_name("AMOUNT");
    command->add_option("--discount", options->discount, "Sent beside the amount")->type_name("AMOUNT");
    command->add_option("--db", options->database, "Keep the payment in this club's database")
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
        "port, the database or the amount is wrong, 130: Ctrl-C before the amount was sent.");
    command->callback([&chosen, options] { chosen = [options] { return pay(*options); }; });
}

} // namespace tnv5::cli

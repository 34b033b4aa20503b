#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/connector/routed_line.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/switch/switch_line.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <memory>
#include <optional>

namespace tnv5::cli {

namespace {

constexpr int kRelayLookMs = 20;
constexpr int kAskMs = 700;        // from one question to the next
constexpr int kPatienceMs = 3'000; // four questions

const QString kBusLink = QStringLiteral("0.0.0.0");
const QStringList kRelays = {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                             QStringLiteral("4"), QStringLiteral("5")};

struct TRelayOptions
{
    std::string port;
    std::string pair;
    std::string relay;
    std::string order = "show";
    int baudRate = 9600;
};

/// Board of a relay of a pair.
QString boardOf(const QString& pair, const QString& relay)
{
    return pair + (relay < QStringLiteral("3") ? u'A' : u'B');
}

/// Shows or switches relays by hand. A board is asked for its state first and again afterwards: the command
/// only changes a relay over.
class TRelayHand
{
public:
    explicit TRelayHand(const TRelayOptions& options)
        : FPair(QString::fromStdString(options.pair)),
          FRelay(QString::fromStdString(options.relay)),
          FOrder(QString::fromStdString(options.order))
    {
        FPort.SetPort(QString::fromStdString(options.port));
        FPort.SetBaudRate(options.baudRate);
        FConnector.SetConnectorType(connector::podComPort);
        FConnector.SetComport(&FPort);
        FConnector.SetOnError([](platform::TComponent*, const QString& text) { complain(text); });
        FConnector.SetOnGetData([this](platform::TComponent*, const QString& line) { onLine(line); });
        for (const QString& relay : FRelay.isEmpty() ? kRelays : QStringList(FRelay)) {
            FUnknown << relay;
        }
        FTimer.SetInterval(kRelayLookMs);
        FTimer.OnTimer = [this](platform::TTimer*) { look(); };
    }

    /// @throws platform::EComPort
    void start()
    {
        openPort(FPort);
        ask();
        FTimer.SetEnabled(true);
    }

    int result() const { return FResult; }

private:
    QStringList boardsWaitedFor() const
    {
        QStringList boards;
        for (const QString& relay : FUnknown) {
            boards << boardOf(FPair, relay);
        }
        boards.removeDuplicates();
        return boards;
    }

    void ask()
    {
        FSinceAskMs = 0;
        for (const QString& board : boardsWaitedFor()) {
            FConnector.SendCommand(QStringLiteral("HW") + kBusLink + u':' + board);
        }
    }

    void look()
    {
        FSinceStartMs += kRelayLookMs;
        FSinceAskMs += kRelayLookMs;
        if (FSinceStartMs >= kPatienceMs) {
            giveUp();
        } else if (FSinceAskMs >= kAskMs) {
            ask();
        }
    }

    // "RELAY" lines are what the connector makes of a board's answer.
    void onLine(const QString& line)
    {
        const QString relay = switching::relayNumber(line).toString();
        if (line.startsWith(u'#') && FUnknown.contains(relay) &&
            connector::deviceOf(line) == boardOf(FPair, relay)) {
            onState(relay, switching::relayState(line) == u"Y");
        }
    }

    void onState(const QString& relay, bool on)
    {
        if (!FWanted) {
            FWanted = FOrder == u"toggle" ? !on : FOrder == u"on";
        }
        if (FOrder != u"show" && on != *FWanted) {
            if (!std::exchange(FCommanded, true)) { // once: after a second one it would be as it was
                FConnector.SendCommand(switching::relayCommand(kBusLink, boardOf(FPair, relay), relay));
                ask();
            }
            return;
        }
        print(QStringLiteral("relay %1 (board %2) is %3")
                  .arg(relay, boardOf(FPair, relay), on ? QStringLiteral("on") : QStringLiteral("off")));
        FUnknown.removeOne(relay);
        if (FUnknown.isEmpty()) {
            end(kDone);
        }
    }

    void giveUp()
    {
        for (const QString& board : boardsWaitedFor()) {
            complain(FCommanded
                         ? QStringLiteral("Board %1 got the command and does not say that the relay has "
                                          "changed over.")
                               .arg(board)
                         : QStringLiteral("Board %1 does not answer.").arg(board));
        }
        end(kFailed);
    }

    void end(int result)
    {
        FTimer.SetEnabled(false);
        FResult = result;
        QCoreApplication::quit();
    }

    const QString FPair;
    const QString FRelay;
    const QString FOrder;
    platform::TSerialPort FPort;
    connector::TDeviceConnector FConnector;
    platform::TTimer FTimer;
    QStringList FUnknown; // relays whose state is waited for
    int FSinceStartMs = 0;
    int FSinceAskMs = 0;
    std::optional<bool> FWanted;
    bool FCommanded = false;
    int FResult = kDone;
};

int switchByHand(const TRelayOptions& options)
{
    if (options.order != "show" && options.relay.empty()) {
        complain(QStringLiteral("Which relay? Add --relay, 1 to 5."));
        return kFailed;
    }
    TRelayHand hand(options);
    const TStopSignal stop(&QCoreApplication::quit);
    hand.start();
    QCoreApplication::exec();
    return stop.received() ? kInterrupted : hand.result();
}

} // namespace

void addRelayCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TRelayOptions>();
    CLI::App* command = app.add_subcommand("relay", "Show or switch the relays of a pair of boards by hand");
    command->add_option("order", options->order, "show, on, off or toggle")
        ->capture_default_str()
        ->check(CLI::IsMember({"show", "on", "off", "toggle"}));
    command->add_option("--port", options->port, "Serial port, best a stable name from \"tnv5 ports\"")
        ->required()
        ->type_name("NAME");
    command->add_option("--pair", options->pair, "The pair's three characters, such as 012 for 012A and 012B")
        ->required()
        ->type_name("PAIR")
        ->check([](const std::string& pair) {
            return pair.size() == 3 ? std::string() : std::string("a pair has three characters");
        });
    command->add_option("--relay", options->relay, "1 and 2 are those of board A, 3 to 5 those of board B")
        ->type_name("NUMBER")
        ->check(CLI::IsMember({"1", "2", "3", "4", "5"}));
    command->add_option("--baud", options->baudRate, "Speed of the line")->capture_default_str();
    command->footer("\nEnds with 0 only when the board itself has said that the relay is as it was ordered.\n"
                    "A host that sells time on the relay may switch it back.");
    command->callback([&chosen, options] { chosen = [options] { return switchByHand(*options); }; });
}

} // namespace tnv5::cli

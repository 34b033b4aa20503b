// A gate on the turnstile component, for comparison with the loops in peers/.
//
//   latency_gate PORT CARDS
//
// Opens for the cards in the file CARDS (one card a line) and refuses all others. Prints "ready" when the
// port is open.

#include "bench/latency_cards.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QCoreApplication>
#include <cstdio>

namespace {

using tnv5::platform::TComponent;
using tnv5::platform::TSerialPort;
using tnv5::turnstile::cmOpen;
using tnv5::turnstile::TTurnStylerDevice;

constexpr int kGates = 8; // 00A to 07A

int run(const QCoreApplication& application)
{
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: latency_gate PORT CARDS\n");
        return 2;
    }
    const QSet<QString> cards = tnv5::bench::loadCards(arguments[2]);

    TSerialPort port;
    port.SetPort(arguments[1]);
    port.OnException = [](TComponent*, auto&&...) { QCoreApplication::quit(); };

    TTurnStylerDevice gate;
    QStringList gates;
    for (int number = 0; number < kGates; ++number) {
        gates.append(QStringLiteral("0%1A").arg(number));
    }
    gate.SetDeviceList(gates);
    // a finished pass is retired within milliseconds, so that the next card finds the table empty
    gate.SetTimerInterval(1);
    gate.SetOnCheckSQL([&cards](TComponent*, const QVariant&, const QVariant& card, const QVariant&, QImage&,
                                const QVariant& mode, QVariant& result) {
        result = mode.toInt() == cmOpen ? int(cards.contains(card.toString())) : 1;
    });
    gate.SetOnError(
        [](TComponent*, const QString& text) { std::fprintf(stderr, "%s\n", qUtf8Printable(text)); });
    gate.SetComport(&port);
    port.Open();
    std::puts("ready");
    std::fflush(stdout);
    return application.exec();
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop: the shorter way from the port to the program
    const QCoreApplication application(argc, argv);
    try {
        return run(application);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "latency_gate: %s\n", error.what());
        return 1;
    }
}

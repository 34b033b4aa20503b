// Networked gates on the D24 component, through the connector, for comparison with the classic component.
//
//   latency_d24_gate PORT CARDS
//
// Opens for the cards in the file CARDS (one card a line) and refuses all others. Prints "ready" when the
// port is open.

#include "bench/latency_cards.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/serial_port.h"

#include <QCoreApplication>
#include <cstdio>

namespace {

using tnv5::connector::TDeviceConnector;
using tnv5::d24::cmOpen;
using tnv5::d24::TTurnStylerDeviceD24;
using tnv5::platform::TComponent;
using tnv5::platform::TSerialPort;

int run(const QCoreApplication& application)
{
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: latency_d24_gate PORT CARDS\n");
        return 2;
    }
    const QSet<QString> cards = tnv5::bench::loadCards(arguments[2]);

    TSerialPort port;
    port.SetPort(arguments[1]);
    TDeviceConnector connector;
    connector.SetConnectorType(tnv5::connector::podComPort);
    connector.SetComport(&port);
    connector.SetOnError([](TComponent*, const QString&) { QCoreApplication::quit(); });
    TTurnStylerDeviceD24 gates;
    gates.SetConnector(&connector);
    gates.SetTimerInterval(1); // as the classic gate beside it
    gates.SetOnCheckSQL([&cards](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                 const QVariant& card, const QVariant&, QImage&, const QVariant& mode,
                                 QVariant&, QVariant& result) {
        result = mode.toInt() == cmOpen ? int(cards.contains(card.toString())) : 1;
    });
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
        std::fprintf(stderr, "latency_d24_gate: %s\n", error.what());
        return 1;
    }
}

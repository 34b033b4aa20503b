// Networked gates on the D24 component, through the connector, for comparison with the classic component.
//
//   latency_d24_gate PORT CARDS

#include "bench/gate_program.h"
#include "tnv5/d24/d24_device.h"

namespace {

using namespace tnv5;
using platform::TComponent;

class TGates
{
public:
    TGates(platform::TSerialPort& port, const QSet<QString>& cards)
    {
        FConnector.SetConnectorType(connector::podComPort);
        FConnector.SetComport(&port);
        FConnector.SetOnError([](TComponent*, const QString&) { QCoreApplication::quit(); });
        FGates.SetConnector(&FConnector);
        FGates.SetTimerInterval(1); // as the classic gate beside it
        FGates.SetOnCheckSQL([&cards](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                      const QVariant& card, const QVariant&, QImage&, const QVariant& mode,
                                      QVariant&, QVariant& result) {
            result = mode.toInt() == d24::cmOpen ? int(cards.contains(card.toString())) : 1;
        });
    }

private:
    connector::TDeviceConnector FConnector;
    d24::TTurnStylerDeviceD24 FGates;
};

} // namespace

int main(int argc, char** argv)
{
    return bench::runGate<TGates>("latency_d24_gate", argc, argv);
}

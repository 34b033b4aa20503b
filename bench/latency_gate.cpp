// A gate on the turnstile component, for comparison with the loops in peers/.
//
//   latency_gate PORT CARDS

#include "bench/gate_program.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace {

using namespace tnv5;
using platform::TComponent;

constexpr int kGates = 8; // 00A to 07A

class TGate
{
public:
    TGate(platform::TSerialPort& port, const QSet<QString>& cards)
    {
        port.OnException = [](TComponent*, auto&&...) { QCoreApplication::quit(); };
        QStringList gates;
        for (int number = 0; number < kGates; ++number) {
            gates.append(QStringLiteral("0%1A").arg(number));
        }
        FGate.SetDeviceList(gates);
        // a finished pass is retired within milliseconds, so that the next card finds the table empty
        FGate.SetTimerInterval(1);
        FGate.SetOnCheckSQL([&cards](TComponent*, const QVariant&, const QVariant& card, const QVariant&,
                                     QImage&, const QVariant& mode, QVariant& result) {
            result = mode.toInt() == turnstile::cmOpen ? int(cards.contains(card.toString())) : 1;
        });
        FGate.SetOnError(
            [](TComponent*, const QString& text) { std::fprintf(stderr, "%s\n", qUtf8Printable(text)); });
        FGate.SetComport(&port);
    }

private:
    turnstile::TTurnStylerDevice FGate;
};

} // namespace

int main(int argc, char** argv)
{
    return bench::runGate<TGate>("latency_gate", argc, argv);
}

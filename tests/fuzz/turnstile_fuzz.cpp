// A line that says anything, a host that answers anything, time that passes as it likes: the component
// survives, and one report comes for every line. The first byte chooses the host's manners; in the stream, a
// byte 0xF0 to 0xFF lets time pass instead of arriving.

#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <cstdint>
#include <memory>
#include <stdexcept>

using namespace tnv5;
using turnstile::TComponent;

namespace {

class THost
{
public:
    explicit THost(std::uint8_t manners) : FManners(manners)
    {
        FGate = std::make_unique<turnstile::TTurnStylerDevice>();
        FGate->SetComport(&FPort);
        FGate->SetOnLog([](TComponent*, const QString&) {});
        FGate->SetOnError([this](TComponent*, const QString&) { act(); });
        FGate->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                       const QVariant&, const QVariant&) { act(); });
        FGate->SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant&, const QVariant&, QImage&,
                                    const QVariant&, QVariant& result) {
            act();
            answer(result);
        });
        if ((FManners & 1) == 0) {
            FPort.Open();
        }
        FPort.KeepWrites = false;
    }

    void arrive(std::uint8_t byte)
    {
        if (byte >= 0xF0) {
            FClock.advance((byte & 0x0F) * 300);
        } else {
            FPort.feed(QByteArray(1, static_cast<char>(byte)));
        }
    }

private:
    void act()
    {
        if (++FCalls % 7 != 0 || FDepth > 2) {
            return;
        }
        ++FDepth;
        switch (FManners >> 1 & 3) {
        case 1:
            FPort.feed("$01AR77\r#02DBtn-Activ\r"); // pumps messages
            break;
        case 2:
            FDepth = 0;
            throw std::runtime_error("host");
        case 3:
            FGate.reset(); // destroys the component
            break;
        default:
            FClock.advance(2'500);
            break;
        }
        --FDepth;
    }

    void answer(QVariant& result)
    {
        switch (FCalls % 5) {
        case 0:
            result = 0;
            break;
        case 1:
        case 2:
            result = 1;
            break;
        case 3:
            result = QStringLiteral("not a number");
            break;
        default:
            break;
        }
    }

    testkit::TManualClock FClock;
    testkit::TMemoryPort FPort;
    std::unique_ptr<turnstile::TTurnStylerDevice> FGate;
    std::uint8_t FManners;
    int FCalls = 0;
    int FDepth = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    if (size > 0) {
        THost host(data[0]);
        for (std::size_t i = 1; i < size; ++i) {
            host.arrive(data[i]);
        }
    }
    platform::setExceptionHandler(previous);
    return 0;
}

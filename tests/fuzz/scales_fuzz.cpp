// A scale that says anything, a host that does anything at each of its events, time that passes as it likes:
// the component survives, and every wait ends. The first byte chooses the family, the second the host's
// manners; in the stream, a byte 0xF0 to 0xFF ends a read and is something that the host or the clock does.

#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>

using namespace tnv5;
using platform::TComponent;

namespace {

/// Passes of the message loop that an input may take; what it does takes less, unless a wait never ends.
constexpr int kMaxPasses = 2'000'000;

/// Every family, none, and one number that is no family.
const int kNumbers = static_cast<int>(scales::families().size()) + 1;

class THost
{
public:
    THost(std::uint8_t family, std::uint8_t manners) : FManners(manners)
    {
        FClock.OnWait = [this] {
            if (++FPasses > kMaxPasses) {
                std::abort();
            }
            FClock.advance(100);
        };
        FPort.KeepWrites = false;
        FPort.Open();
        FScales->SetScalesType(family % kNumbers);
        FScales->SetComport(&FPort);
        FScales->SetOnLog([this](TComponent*, const QString&) { act(); });
        FScales->SetOnError([this](TComponent*, const QString&) { act(); });
        FScales->SetOnWeight([this](TComponent*, int) { act(); });
    }

    void arrive(std::uint8_t byte)
    {
        if (byte < 0xF0) {
            FRead += static_cast<char>(byte);
            return;
        }
        flush();
        if (FScales) {
            platform::guarded([&] { command(byte & 0x0F); });
        }
    }

    void flush() { FPort.feed(std::exchange(FRead, {})); }

private:
    void command(int number)
    {
        switch (number) {
        case 0:
            break; // the read ends here
        case 1:
            FScales->GetWeight(true);
            break;
        case 2:
            FScales->GetWeight(false);
            break;
        case 3:
            FScales->Reset();
            break;
        case 4:
            FScales->SetConnection(false);
            break;
        case 5:
            FScales->SetConnection(true);
            break;
        case 6:
            FScales->SetSendInterval(FScales->SendInterval() == -1 ? 5'000 : -1);
            break;
        case 7:
            FScales->SetUpComport();
            break;
        case 8:
            FScales->SetScalesType((FScales->ScalesType() + 1) % kNumbers);
            break;
        default:
            FClock.advance((number - 8) * 700);
            break;
        }
    }

    void act()
    {
        if (++FCalls % 5 != 0 || FDepth > 1 || !FScales) {
            return;
        }
        ++FDepth;
        switch (FManners % 8) {
        case 1:
            if (++FMore < 100) { // each read makes events: without an end the scale would talk for ever
                FPort.feed("\x06\x01\x02S 00100\x04<xx00100>B1\r\nW1kg"); // pumps messages
            }
            break;
        case 2:
            FDepth = 0;
            throw std::runtime_error("host");
        case 3:
            if (FCalls > FManners) {
                FScales.reset(); // destroys the component
            }
            break;
        case 4:
            platform::guarded([this] { FScales->GetWeight(true); });
            break;
        case 5:
            platform::guarded([this] { FScales->GetWeight(false); });
            break;
        case 6:
            platform::guarded([this] { FScales->Reset(); });
            break;
        case 7:
            FClock.advance(2'500);
            break;
        default:
            break;
        }
        --FDepth;
    }

    testkit::TManualClock FClock;
    testkit::TMemoryPort FPort;
    std::unique_ptr<scales::TScalesDevice> FScales = std::make_unique<scales::TScalesDevice>();
    QByteArray FRead;
    std::uint8_t FManners;
    int FCalls = 0;
    int FDepth = 0;
    int FPasses = 0;
    int FMore = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    if (size > 1) {
        THost host(data[0], data[1]);
        for (std::size_t i = 2; i < size; ++i) {
            host.arrive(data[i]);
        }
        host.flush();
    }
    platform::setExceptionHandler(previous);
    return 0;
}

// A scale that says anything, a host that does anything at each of its events, time that passes as it likes:
// the component survives, and every wait ends. The first byte chooses the family, the second the host's
// manners; in the stream, a byte 0xF0 to 0xFF ends a read and is something that the host or the clock does.

#include "fuzz_host.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_device.h"

using namespace tnv5;
using platform::TComponent;

namespace {

/// Passes of the message loop that an input may take; what it does takes less, unless a wait never ends.
constexpr int kMaxPasses = 2'000'000;

/// Every family, none, and one number that is no family.
const int kNumbers = static_cast<int>(scales::families().size()) + 1;

class THost final : public fuzz::TPortHost<scales::TScalesDevice>
{
public:
    static constexpr std::size_t kChoices = 2;

    explicit THost(const std::uint8_t* choices) : TPortHost(choices[1])
    {
        FClock.OnWait = [this] {
            fuzz::require(++FPasses <= kMaxPasses);
            FClock.advance(100);
        };
        FComponent->SetScalesType(choices[0] % kNumbers);
        FComponent->SetComport(&FPort);
        FComponent->SetOnLog([this](TComponent*, const QString&) { act(); });
        FComponent->SetOnError([this](TComponent*, const QString&) { act(); });
        FComponent->SetOnWeight([this](TComponent*, int) { act(); });
    }

private:
    void command(int number) override
    {
        switch (number) {
        case 0:
            break; // the read ends here
        case 1:
            FComponent->GetWeight(true);
            break;
        case 2:
            FComponent->GetWeight(false);
            break;
        case 3:
            FComponent->Reset();
            break;
        case 4:
            FComponent->SetConnection(false);
            break;
        case 5:
            FComponent->SetConnection(true);
            break;
        case 6:
            FComponent->SetSendInterval(FComponent->SendInterval() == -1 ? 5'000 : -1);
            break;
        case 7:
            FComponent->SetUpComport();
            break;
        case 8:
            FComponent->SetScalesType((FComponent->ScalesType() + 1) % kNumbers);
            break;
        default:
            FClock.advance((number - 8) * 700);
            break;
        }
    }

    void misbehave() override
    {
        if (!FComponent) {
            return;
        }
        switch (FManners % 8) {
        case 1:
            chatter("\x06\x01\x02S 00100\x04<xx00100>B1\r\nW1kg"); // pumps messages
            break;
        case 2:
            raise();
        case 3:
            if (FCalls > FManners) {
                FComponent.reset(); // destroys the component
            }
            break;
        case 4:
            platform::guarded([this] { FComponent->GetWeight(true); });
            break;
        case 5:
            platform::guarded([this] { FComponent->GetWeight(false); });
            break;
        case 6:
            platform::guarded([this] { FComponent->Reset(); });
            break;
        case 7:
            FClock.advance(2'500);
            break;
        default:
            break;
        }
    }

    int FPasses = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::play<THost>(data, size);
    return 0;
}

// A line that says anything, a host that answers anything, time that passes as it likes: the component
// survives, and one report comes for every line. The first byte chooses the host's manners; in the stream, a
// byte 0xF0 to 0xFF lets time pass instead of arriving.

#include "fuzz_host.h"
#include "tnv5/turnstile/turnstile_device.h"

using namespace tnv5;
using turnstile::TComponent;

namespace {

class THost final : public fuzz::THostBase
{
public:
    static constexpr std::size_t kChoices = 1;

    explicit THost(const std::uint8_t* choices) : THostBase(choices[0], 7, 3)
    {
        FGate->SetComport(&FPort);
        FGate->SetOnLog([](TComponent*, const QString&) {});
        FGate->SetOnError([this](TComponent*, const QString&) { act(); });
        FGate->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                       const QVariant&, const QVariant&) { act(); });
        FGate->SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant&, const QVariant&, QImage&,
                                    const QVariant&, QVariant& result) {
            act();
            answer(result, FCalls);
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
    void misbehave() override
    {
        switch (FManners >> 1 & 3) {
        case 1:
            FPort.feed("$01AR77\r#02DBtn-Activ\r"); // pumps messages
            break;
        case 2:
            raise();
        case 3:
            FGate.reset(); // destroys the component
            break;
        default:
            FClock.advance(2'500);
            break;
        }
    }

    testkit::TMemoryPort FPort;
    std::unique_ptr<turnstile::TTurnStylerDevice> FGate = std::make_unique<turnstile::TTurnStylerDevice>();
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::play<THost>(data, size);
    return 0;
}

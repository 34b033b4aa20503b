// Lines that say anything, a host and a link that answer anything, time that passes as it likes: the
// component survives, and in the end every pass is retired. The first byte chooses the host's manners; in the
// stream, a byte 0xF0 to 0xFF lets time pass, a carriage return ends a line.

#include "fuzz_host.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/code_page.h"

using namespace tnv5;
using d24::TComponent;

namespace {

class TLink : public connector::TDeviceConnector
{
public:
    std::function<void()> OnSend;
    std::uint32_t Sent = 0;

    bool GetConnected() override { return Sent % 5 != 4; }

    QString SendCommand(const QString& AMess) override
    {
        const bool even = ++Sent % 2 == 0;
        const QString result = even ? AMess.left(2) : QString();
        const auto hook = OnSend;
        hook(); // the link may be gone after this
        return result;
    }
};

class THost final : public fuzz::THostBase
{
public:
    static constexpr std::size_t kChoices = 1;

    explicit THost(const std::uint8_t* choices) : THostBase(choices[0], 7, 3)
    {
        FLink->OnSend = [this] { act(); };
        FGate->SetConnector(FLink.get());
        FGate->SetCheckET((FManners & 1) != 0);
        FGate->SetCheckCross((FManners & 2) != 0);
        FGate->SetOnLog([](TComponent*, const QString&) {});
        FGate->SetOnError([this](TComponent*, const QString&) { act(); });
        FGate->SetOnGetImg([this](TComponent*, const QString&, QImage&) { act(); });
        FGate->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                       const QVariant&, const QVariant&, const QVariant&,
                                       const QVariant&) { act(); });
        FGate->SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                    const QVariant&, const QVariant&, QImage&, const QVariant&,
                                    QVariant& message, QVariant& result) {
            message = FCalls % 2 == 0 ? QVariant() : QVariant(QStringLiteral("|Hello||||L|"));
            answer(result, FTired ? 1 : FCalls);
            act();
        });
    }

    void arrive(std::uint8_t byte)
    {
        if (byte >= 0xF0) {
            FClock.advance((byte & 0x0F) * 300);
        } else if (byte != '\r') {
            FLine.append(static_cast<char>(byte));
        } else if (FLink) {
            const QString line = platform::fromWire(std::exchange(FLine, {}));
            platform::guarded([&] { FLink->GetCommand(line); });
        }
    }

    /// The host agrees to everything and behaves: no pass is left.
    void evening()
    {
        FTired = true;
        if (!FGate) {
            return;
        }
        platform::guarded([this] { FGate->p_hw_ProtocolIn(QStringLiteral("odd")); });
        FClock.advance(20'000);
        for (int left = FGate->StackItemsCount(); left > 0; --left) {
            FClock.advance(100);
        }
        fuzz::require(FGate->StackItemsCount() == 0);
    }

private:
    void misbehave() override
    {
        if (FTired) {
            return;
        }
        switch (FManners >> 2 & 7) {
        case 1: // pumps messages
            if (FLink) {
                FLink->GetCommand(QStringLiteral("$1:001TRQ77AB"));
            }
            break;
        case 2:
            raise();
        case 3:
            FGate.reset(); // destroys the component
            break;
        case 4:
            FLink.reset(); // or its link
            break;
        case 5:
            if (FGate) {
                FGate->p_hw_CallStackArray();
            }
            break;
        case 6:
            if (FGate) {
                FGate->p_hw_manual(QStringLiteral("001T"), QStringLiteral("001T"), QStringLiteral("CLOSE"));
            }
            break;
        default:
            FClock.advance(2'500);
            break;
        }
    }

    std::unique_ptr<TLink> FLink = std::make_unique<TLink>();
    std::unique_ptr<d24::TTurnStylerDeviceD24> FGate = std::make_unique<d24::TTurnStylerDeviceD24>();
    QByteArray FLine;
    bool FTired = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::play<THost>(data, size);
    return 0;
}

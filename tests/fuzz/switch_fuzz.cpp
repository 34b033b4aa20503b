// Lines that say anything, a host and a link that answer anything, time that passes as it likes: the
// component survives, no job is lost, and in the end each job is swept again. The first byte chooses the
// host's manners; in the stream, a byte 0xF0 to 0xFF lets time pass, a carriage return ends a line.

#include "fuzz_host.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/switch/switch_device.h"

using namespace tnv5;
using switching::TComponent;

namespace {

const QString kOn = QStringLiteral("ON");

class TLink : public connector::TDeviceConnector
{
public:
    std::function<void()> OnSend;
    std::uint32_t Sent = 0;

    bool GetConnected() override { return Sent % 5 != 4; }

    QString SendCommand(const QString& /*AMess*/) override
    {
        ++Sent;
        const auto hook = OnSend;
        hook(); // the link may be gone after this
        return {};
    }
};

class THost final : public fuzz::THostBase
{
public:
    static constexpr std::size_t kChoices = 1;

    explicit THost(const std::uint8_t* choices) : THostBase(choices[0], 7, 3)
    {
        FLink->OnSend = [this] { act(); };
        FRelays->SetConnector(FLink.get());
        FRelays->SetOnLog([](TComponent*, const QString&) {});
        FRelays->SetOnError([this](TComponent*, const QString&) { act(); });
        FRelays->SetOnCheckStatus([this](TComponent*, const QVariant& name, const QVariant&, const QVariant&,
                                         const QVariant&, const QVariant&, const QVariant&) {
            FVisits += int(name.toString() == QStringLiteral("XXXSTACK"));
            act();
        });
        FRelays->SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                      const QVariant&, const QVariant&, QVariant& result) {
            answer(result, FTired ? 1 : FCalls);
            act();
        });
        FRelays->SetOnNewItem([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                     const QVariant&, QVariant& wanted) {
            wanted = FCalls % 3 == 0 ? QVariant() : QVariant(kOn);
            act();
        });
    }

    void arrive(std::uint8_t byte)
    {
        if (byte >= 0xF0) {
            FClock.advance((byte & 0x0F) * 1'000);
        } else if (byte != '\r') {
            FLine.append(static_cast<char>(byte));
        } else if (FLink) {
            const QString line = platform::fromWire(std::exchange(FLine, {}));
            platform::guarded([&] { FLink->GetCommand(line); });
            countJobs();
        }
    }

    /// The host behaves: one sweep comes to every job.
    void evening()
    {
        FTired = true;
        if (!FRelays) {
            return;
        }
        countJobs();
        FVisits = 0;
        platform::guarded([this] { FRelays->p_hw_CallStackArray(); });
        fuzz::require(FVisits == FRelays->StackItemsCount()); // else left busy
    }

private:
    void countJobs()
    {
        const int jobs = FRelays ? FRelays->StackItemsCount() : FJobs;
        fuzz::require(jobs >= std::exchange(FJobs, jobs));
    }

    void misbehave() override
    {
        if (FTired) {
            return;
        }
        switch (FManners & 7) {
        case 1: // pumps messages
            if (FLink) {
                FLink->GetCommand(QStringLiteral("#1:009ARELAY1Y00"));
            }
            break;
        case 2:
            raise();
        case 3:
            FRelays.reset(); // destroys the component
            break;
        case 4:
            FLink.reset(); // or its link
            break;
        case 5:
            if (FRelays) {
                FRelays->p_hw_CallStackArray();
            }
            break;
        case 6:
            if (FRelays) {
                FRelays->p_hw_CheckStatus(QString(), QStringLiteral("009A"), QStringLiteral("1"), kOn,
                                          platform::Now() + 1);
            }
            break;
        default:
            FClock.advance(3'500);
            break;
        }
    }

    std::unique_ptr<TLink> FLink = std::make_unique<TLink>();
    std::unique_ptr<switching::TSwitchDevice> FRelays = std::make_unique<switching::TSwitchDevice>();
    QByteArray FLine;
    int FJobs = 0;
    int FVisits = 0;
    bool FTired = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::play<THost>(data, size);
    return 0;
}

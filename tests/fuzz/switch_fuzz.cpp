// Lines that say anything, a host and a link that answer anything, time that passes as it likes: the
// component survives, no job is lost, and in the end each job is swept again. The first byte chooses the
// host's manners; in the stream, a byte 0xF0 to 0xFF lets time pass, a carriage return ends a line.

#include "tnv5/platform/code_page.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/testing/manual_clock.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>

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

class THost
{
public:
    explicit THost(std::uint8_t manners) : FManners(manners)
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
            answer(result);
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
        if (FVisits != FRelays->StackItemsCount()) {
            std::abort(); // left busy
        }
    }

private:
    void countJobs()
    {
        const int jobs = FRelays ? FRelays->StackItemsCount() : FJobs;
        if (jobs < std::exchange(FJobs, jobs)) {
            std::abort();
        }
    }

    void act()
    {
        if (FTired || ++FCalls % 7 != 0 || FDepth > 2) {
            return;
        }
        ++FDepth;
        switch (FManners & 7) {
        case 1: // pumps messages
            if (FLink) {
                FLink->GetCommand(QStringLiteral("#1:009ARELAY1Y00"));
            }
            break;
        case 2:
            FDepth = 0;
            throw std::runtime_error("host");
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
        --FDepth;
    }

    void answer(QVariant& result) const
    {
        switch (FTired ? 1 : FCalls % 5) {
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
    std::unique_ptr<TLink> FLink = std::make_unique<TLink>();
    std::unique_ptr<switching::TSwitchDevice> FRelays = std::make_unique<switching::TSwitchDevice>();
    QByteArray FLine;
    std::uint8_t FManners;
    int FCalls = 0;
    int FDepth = 0;
    int FJobs = 0;
    int FVisits = 0;
    bool FTired = false;
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
        host.evening();
    }
    platform::setExceptionHandler(previous);
    return 0;
}
